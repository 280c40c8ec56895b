#include "ios_places.h"

#include <QRegularExpression>

#include "source_path_guard.h"

ios_places::ios_places(const QString& source_root, const ios_app_files& app, const QString& signature)
    : m_source_root(source_root), m_app(app), m_signature(signature)
{
}

QString ios_places::app_relative(const QString& phone_path)
{
    static const QRegularExpression in_container("/Containers/Data/Application/[^/]+/(.+)$");
    const QRegularExpressionMatch match = in_container.match(phone_path);
    if (match.hasMatch())
        return match.captured(1);
    return phone_path.startsWith('/') ? QString() : phone_path;
}

QString ios_places::media_path(const QString& mrl) const
{
    const QString path = media_library_reader::path_of_file_mrl(mrl);
    if (path.isEmpty())
        return QString();
    const QString relative = app_relative(path);
    // Anything outside the app's container lies where the phone had it.
    return relative.isEmpty() ? m_source_root + path.mid(1) : m_app.path_of(relative, m_signature);
}

QString ios_places::thumbnail_path(const QString& mrl, int, const QString& signature) const
{
    // The database names a thumbnail by its full path, or by its place in
    // the media library's folder.
    QStringList candidates = {media_path(mrl)};
    const QString path = media_library_reader::path_of_file_mrl(mrl);
    if (!path.isEmpty() && !path.startsWith('/'))
        candidates << m_app.path_of("Library/MediaLibrary/" + path, signature);
    for (const QString& candidate : candidates) {
        if (!candidate.isEmpty() && source_path_guard::exists_inside(candidate, m_source_root, signature))
            return candidate;
    }
    return QString();
}
