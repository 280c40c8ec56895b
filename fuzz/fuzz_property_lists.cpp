// Property lists (XML, binary, keyed archives): the shared loader on the
// bytes, then the macOS readers of recent documents and the recently played
// list on the sample tree. Alice's recents list is the older property list;
// Bob has only the shared-file-list archive, so both readers see the input.

#include "fuzz_support.h"
#include "plist_document.h"
#include "sample_trees.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static fuzz_support::tree_run run(
        {"macOS", write_macos_sample_tree, {"alice", "bob"}, {"recents", "recent_played"}});
    plist_owner parsed =
        plist_document::from_bytes(QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size)));
    (void)parsed;
    run.run_with({"Users/alice/Library/Preferences/org.videolan.vlc.LSSharedFileList.plist",
                  "Users/alice/Library/Preferences/org.videolan.vlc.plist",
                  "Users/bob/Library/Application Support/com.apple.sharedfilelist/"
                  "com.apple.LSSharedFileList.ApplicationRecentDocuments/org.videolan.vlc.sfl"},
                 data, size);
    return 0;
}
