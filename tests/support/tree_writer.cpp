#include "tree_writer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

namespace tree_writer {

bool write_file(const QString& root, const QString& relative, const QByteArray& data, QString* error)
{
    const QString path = QDir(root).filePath(relative);
    if (!QDir().mkpath(QFileInfo(path).absolutePath())) {
        if (error)
            *error = "cannot make the folder of " + path;
        return false;
    }
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(data) != data.size()) {
        if (error)
            *error = "cannot write " + path + ": " + file.errorString();
        return false;
    }
    return true;
}

bool write_file(const QString& path, const QByteArray& data)
{
    const QFileInfo info(path);
    return write_file(info.absolutePath(), info.fileName(), data, nullptr);
}

QByteArray read_file(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool write_entries(const QString& root, const QList<entry>& entries, QString* error)
{
    for (const entry& e : entries) {
        const QString path = QDir(root).filePath(e.path);
        bool ok = QDir().mkpath(e.what == kind::folder ? path : QFileInfo(path).absolutePath());
        if (e.what == kind::file || e.what == kind::oversized)
            ok = write_file(root, e.path, e.data, error) && (e.what == kind::file || QFile(path).resize(65LL * 1024 * 1024));
        else if (e.what == kind::link)
            ok = QFile::link(QString::fromUtf8(e.data), path);
        else if (e.what == kind::pipe)
            ok = ::mkfifo(QFile::encodeName(path).constData(), 0600) == 0;
        if (!ok) {
            if (error && error->isEmpty())
                *error = "cannot make " + path;
            return false;
        }
    }
    return true;
}

QString shared_fixtures_dir()
{
    const QString configured = qEnvironmentVariable("VLC_SHARED_FIXTURES");
    if (!configured.isEmpty())
        return QDir::cleanPath(configured);
    // shared/ sits beside the checkout, or beside a folder that holds it (a
    // CI clone may be one level deeper than a developer's).
    QDir dir(QStringLiteral(VLC_FIXTURES_SOURCE_DIR));
    const QString nearest = QDir::cleanPath(dir.absoluteFilePath("../shared/fixtures"));
    while (dir.cdUp()) {
        const QString candidate = dir.absoluteFilePath("shared/fixtures");
        if (QFileInfo(candidate).isDir())
            return QDir::cleanPath(candidate);
    }
    return nearest;
}

}  // namespace tree_writer
