// The player's configuration file (vlcrc) read for podcast addresses by both
// desktop extractors.

#include "fuzz_support.h"
#include "sample_trees.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static fuzz_support::tree_run macos({"macOS", write_macos_sample_tree, {"alice"}, {"podcasts"}});
    static fuzz_support::tree_run windows({"winOS", write_windows_sample_tree, {"carol"}, {"podcasts"}});
    macos.run_with({"Users/alice/Library/Preferences/org.videolan.vlc/vlcrc"}, data, size);
    windows.run_with({"Users/carol/AppData/Roaming/vlc/vlcrc"}, data, size);
    return 0;
}
