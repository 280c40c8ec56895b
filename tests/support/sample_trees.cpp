#include "sample_trees.h"

QList<sample_tree> sample_trees()
{
    return {
        {"macOS", "macos", {"alice", "bob", "carol", "dave"}, write_macos_sample_tree},
        {"winOS", "windows", {"carol", "dave"}, write_windows_sample_tree},
        {"androidOS", "android", {}, write_android_sample_tree},
        {"androidOS", "android_current", {}, write_android_current_sample_tree},
        {"iOS_UID", "ios", {}, write_ios_sample_tree},
    };
}
