#include "sample_trees.h"

QList<sample_tree> sample_trees()
{
    return {
        {"macOS", "macos", {"alice", "bob"}, write_macos_sample_tree,
         {"--user", "alice", "--user", "", "--user", "alice", "--user", "bob", "--metadata-keys",
          "kMDItemWhereFroms,com.apple.quarantine,kMDItemFSName"}},
        {"winOS", "windows", {"carol", "dave"}, write_windows_sample_tree},
        {"androidOS", "android", {}, write_android_sample_tree},
        {"androidOS", "android_current", {}, write_android_current_sample_tree},
        {"iOS_UID", "ios", {}, write_ios_sample_tree,
         {"--os", "iOS_UID", "--user", "x", "--user", "y", "--tables", "album", "--source-number", "3", "--clear"}},
    };
}
