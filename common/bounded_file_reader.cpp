#include "bounded_file_reader.h"

#include <QFile>
#include <QFileInfo>

namespace bounded_file_reader {

bool open_regular(QFile& file)
{
    return QFileInfo(file.fileName()).isFile() && file.open(QIODevice::ReadOnly);
}

result read(const QString& path, qint64 cap_bytes)
{
    result out;
    QFile file(path);
    if (!open_regular(file))
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
