#include "bounded_file_reader.h"

#include <QFile>
#include <QFileInfo>

namespace bounded_file_reader {

result read(const QString& path, qint64 cap_bytes)
{
    result out;
    // Only regular files (links to them included) are opened: a named pipe
    // in the evidence has no writer, and opening it would wait for ever.
    if (!QFileInfo(path).isFile())
        return out;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return out;
    out.opened = true;
    cap_bytes = qMax<qint64>(0, cap_bytes);
    out.data = file.read(cap_bytes);
    // A file that reports no size (those of virtual file systems) is probed
    // by reading one byte past the ceiling.
    out.truncated = file.size() > cap_bytes || (out.data.size() == cap_bytes && !file.read(1).isEmpty());
    return out;
}

}  // namespace bounded_file_reader
