#pragma once

// Decides whether a path taken from evidence content (a playlist entry, a
// link's target, an mrl, a location) may be looked at. Such a path may only
// be tested, measured or opened when it stays inside the source root after
// normalisation and after resolving the symbolic links that exist on the
// source; anything else counts as absent.

#include <QString>

namespace source_path_guard {

// Pure test, no logging.
bool is_inside_root(const QString& path, const QString& source_root);

// The test every reader uses before an existence, size, time or metadata read.
// A refused path is logged once per run with the caller's signature.
bool allow(const QString& path, const QString& source_root, const QString& caller);

// Existence through the guard: a path outside the root never "exists".
bool exists_inside(const QString& path, const QString& source_root, const QString& caller);

// Forgets which refusals were already logged and the folders resolved (start
// of a run).
void reset_log();

}  // namespace source_path_guard
