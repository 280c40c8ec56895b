#include "sample_trees.h"
#include "tree_writer.h"

bool write_android_sample_tree(const QString& root, QString* error)
{
    return tree_writer::make_dir(root, "apps/org.videolan.vlc/r/app_db", error)
           && tree_writer::make_dir(root, "shared/0", error);
}
