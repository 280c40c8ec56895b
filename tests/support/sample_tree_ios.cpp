#include "sample_trees.h"
#include "tree_writer.h"

// The iOS extractor is a stub; its sample only gives the run a root to visit.
bool write_ios_sample_tree(const QString& root, QString* error)
{
    return tree_writer::write_entries(root, {{"Manifest", {}, tree_writer::kind::folder}}, error);
}
