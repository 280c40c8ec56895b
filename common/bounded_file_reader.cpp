#include "bounded_file_reader.h"

#include <QFile>

namespace bounded_file_reader {

result read(const QString& path, qint64 cap_bytes)
{
    result out;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return out;
    out.opened = true;
    out.data = file.read(cap_bytes);
    // A device that reports no size (a pipe, a special file) is probed by
    // reading one byte past the ceiling.
    out.truncated = file.size() > cap_bytes || (out.data.size() == cap_bytes && !file.read(1).isEmpty());
    return out;
}

}  // namespace bounded_file_reader
