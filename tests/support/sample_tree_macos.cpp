#include "sample_trees.h"
#include "tree_writer.h"

bool write_macos_sample_tree(const QString& root, QString* error)
{
    for (const QString& user : {QString("alice"), QString("bob")}) {
        if (!tree_writer::make_dir(root, "Users/" + user + "/Library/Preferences", error))
            return false;
    }
    return true;
}
