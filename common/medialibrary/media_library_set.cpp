#include "media_library_set.h"

#include <QFileInfo>
#include <QRegularExpression>

#include "source_path_guard.h"

void media_library_set::add(std::unique_ptr<media_library_places> places, const media_library_context& context,
                            const QString& database)
{
    m_readers.push_back(std::make_unique<media_library_reader>(context, *places, database));
    m_places.push_back(std::move(places));
}

void media_library_set::run(void (media_library_reader::*table)(), const bool& cancel_requested) const
{
    for (const auto& reader : m_readers) {
        if (cancel_requested)
            return;
        ((*reader).*table)();
    }
}

void media_library_set::clear()
{
    m_readers.clear();
    m_places.clear();
}

desktop_media_places::desktop_media_places(const QString& source_root, const QString& database)
    : m_source_root(source_root), m_storage(QFileInfo(database).path() + "/mlstorage/")
{
}

QString desktop_media_places::media_path(const QString& mrl) const
{
    QString path = media_library_reader::path_of_file_mrl(mrl);
    if (path.isEmpty())
        return QString();
    static const QRegularExpression drive("^/?[A-Za-z]:/");
    path.replace('\\', '/');
    const QRegularExpressionMatch letter = drive.match(path);
    if (letter.hasMatch())
        path = path.mid(letter.capturedLength());
    else if (path.startsWith('/'))
        path = path.mid(1);
    return m_source_root + path;
}

QString desktop_media_places::thumbnail_path(const QString& mrl, int, const QString& signature) const
{
    // A thumbnail the player made is named by its place in the storage folder.
    const QString path = media_library_reader::path_of_file_mrl(mrl);
    const bool relative = !path.isEmpty() && !path.startsWith('/') && !path.contains(':');
    const QStringList candidates =
        relative ? QStringList{m_storage + "thumbnails/" + path, m_storage + path} : QStringList{media_path(mrl)};
    for (const QString& candidate : candidates) {
        if (!candidate.isEmpty() && source_path_guard::exists_inside(candidate, m_source_root, signature))
            return candidate;
    }
    return QString();
}
