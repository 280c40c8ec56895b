#pragma once

// Copies of evidence files that take no more room than the originals: the
// holes of a sparse file stay holes in its copy (a database of a few pages
// that claims gigabytes copies as a few pages), and so do runs of zeros the
// file system does not report as holes.

#include <QString>

namespace sparse_file_copy {

// Copies the regular file at from to to (made or truncated, mode 0600);
// false when either cannot be opened or a read or write fails.
bool copy(const QString& from, const QString& to);

// The bytes the entry occupies on its disk (a link is not followed); 0 when
// there is none.
qint64 allocated_size(const QString& path);

}  // namespace sparse_file_copy
