#include "sample_trees.h"
#include "tree_writer.h"

bool write_windows_sample_tree(const QString& root, QString* error)
{
    for (const QString& user : {QString("carol"), QString("dave")}) {
        if (!tree_writer::make_dir(root, "Users/" + user + "/AppData/Roaming", error))
            return false;
    }
    return true;
}
