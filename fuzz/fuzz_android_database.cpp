// The Android extraction over a damaged media database: the input replaces
// the sample backup's database and all four tables are extracted from it.

#include "fuzz_support.h"
#include "sample_trees.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static fuzz_support::tree_run run(
        {"androidOS", write_android_sample_tree, {}, {"media_library", "album_art", "album", "playlists"}});
    run.run_with({"apps/org.videolan.vlc/r/app_db/vlc_media.db"}, data, size);
    return 0;
}
