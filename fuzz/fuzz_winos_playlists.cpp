// The Windows playlist readers (M3U, M3U8, XSPF) reached the way evidence
// reaches them: the sample account's jump list names the playlists, and the
// input stands in for each of them.

#include "fuzz_support.h"
#include "sample_trees.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static fuzz_support::tree_run run({"winOS", write_windows_sample_tree, {"carol"}, {"recents", "playlists"}});
    run.run_with({"Users/carol/Music/mix.m3u", "Users/carol/Music/road.m3u8", "Users/carol/Music/party.xspf"}, data,
                 size);
    return 0;
}
