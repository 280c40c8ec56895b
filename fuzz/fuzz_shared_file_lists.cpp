// Shared-file lists (keyed archives): the archive resolver on the bytes, then
// the macOS recents readers on the sample tree with the input in place of
// carol's 10.13 list and bob's 10.11 archive, both of which resolve through it.

#include "fuzz_support.h"
#include "keyed_archive.h"
#include "plist_document.h"
#include "sample_trees.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static fuzz_support::tree_run run({"macOS", write_macos_sample_tree, {"bob", "carol"}, {"recents"}});
    const plist_owner parsed =
        plist_document::from_bytes(QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size)));
    keyed_archive archive(parsed.get());
    (void)archive.top("root");
    (void)archive.reachable_strings();
    const QString lists = "Library/Application Support/com.apple.sharedfilelist/"
                          "com.apple.LSSharedFileList.ApplicationRecentDocuments/org.videolan.vlc.sfl";
    run.run_with({"Users/carol/" + lists + "2", "Users/bob/" + lists}, data, size);
    return 0;
}
