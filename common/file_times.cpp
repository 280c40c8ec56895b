#include "file_times.h"

#include <QFileInfo>

#if defined(__linux__)
#include <fcntl.h>
#include <sys/stat.h>
#endif

namespace file_times {

#if defined(__linux__) && defined(STATX_BTIME)

times of(const QString& path)
{
    times found;
    struct statx status {};
    if (statx(AT_FDCWD, path.toUtf8().constData(), AT_STATX_SYNC_AS_STAT, STATX_BTIME | STATX_MTIME, &status) != 0)
        return found;
    if (status.stx_mask & STATX_BTIME)
        found.birth = QString::number(qint64(status.stx_btime.tv_sec));
    if (status.stx_mask & STATX_MTIME)
        found.modification = QString::number(qint64(status.stx_mtime.tv_sec));
    return found;
}

#else

times of(const QString& path)
{
    const QFileInfo info(path);
    const auto seconds = [](const QDateTime& moment) {
        return moment.isValid() ? QString::number(moment.toMSecsSinceEpoch() / 1000) : QString();
    };
    return {seconds(info.birthTime()), seconds(info.lastModified())};
}

#endif

}  // namespace file_times
