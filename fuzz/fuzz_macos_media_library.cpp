// The macOS media library (an XSPF file) read by the extractor on the sample
// tree, the input standing in for one account's library.

#include "fuzz_support.h"
#include "sample_trees.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static fuzz_support::tree_run run({"macOS", write_macos_sample_tree, {"alice"}, {"media_library"}});
    run.run_with({"Users/alice/Library/Application Support/org.videolan.vlc/ml.xspf"}, data, size);
    return 0;
}
