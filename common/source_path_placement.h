#pragma once

// Where a path lands against a source root, once cleaned and with the
// symbolic links that exist on the source resolved: outside the root, inside
// but absent, or inside and present. The plug-in's guard logs its refusals on
// top of this; the host program asks the same question, without a log, before
// it hashes or copies a file a result row names.

#include <QString>

namespace source_path_placement {

enum class placement { outside, inside_missing, inside_present };

placement locate(const QString& path, const QString& source_root);

// Forgets the folders resolved so far (the start of a run: the tree may
// have been remounted since).
void forget_resolved_folders();

}  // namespace source_path_placement
