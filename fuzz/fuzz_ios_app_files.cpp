// The iOS extraction over the app's own damaged files: the input replaces
// both the preferences (a property list) and the Core Data store (SQLite) of
// the sample extraction, so each seed feeds the reader it was made for.

#include "fuzz_support.h"
#include "sample_trees.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static fuzz_support::tree_run run({"iOS_UID", write_ios_sample_tree, {}, {"media_library", "recents"}});
    run.run_with({"private/var/mobile/Containers/Data/Application/5C1D7A2E-1F0B-4E8C-9D3A-6B2F8E4A1C70/Library/"
                  "Preferences/org.videolan.vlc-ios.plist",
                  "private/var/mobile/Containers/Shared/AppGroup/0F6E2B9C-3A1D-4C7E-8B5F-2D9A4E6C1B83/"
                  "MediaLibrary.sqlite"},
                 data, size);
    return 0;
}
