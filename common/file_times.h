#pragma once

// Birth and modification times of a file as epoch seconds, read in one
// status call. QFileInfo hands times out in local time, and every local-time
// conversion makes the C library look at the system's time-zone file again:
// six extra status calls per file, which a large library feels.

#include <QString>

namespace file_times {

struct times
{
    QString birth;         // empty when the file system keeps no birth time
    QString modification;
};

// For a path the source-path guard allowed; empty texts when it cannot be read.
times of(const QString& path);

}  // namespace file_times
