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
    // read(n) sets n bytes aside before reading: ask for no more than the
    // file says it holds, or every small file would cost the whole ceiling.
    const qint64 known = file.size();
    out.data = file.read(known > 0 ? qMin(cap_bytes, known) : cap_bytes);
    // A file that reports no size (those of virtual file systems) is probed
    // by reading one byte past the ceiling.
    out.truncated = file.size() > cap_bytes || (out.data.size() == cap_bytes && !file.read(1).isEmpty());
    return out;
}

}  // namespace bounded_file_reader
