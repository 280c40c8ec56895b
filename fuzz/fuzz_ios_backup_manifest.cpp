// The iOS extraction over a damaged backup manifest: the input replaces the
// sample backup's Manifest.db, and every table is extracted through it.

#include "fuzz_support.h"
#include "sample_trees.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static fuzz_support::tree_run run(
        {"iOS_UID", write_ios_backup_sample_tree, {}, {"media_library", "album_art", "album", "playlists", "recents"}});
    run.run_with({"Manifest.db"}, data, size);
    return 0;
}
