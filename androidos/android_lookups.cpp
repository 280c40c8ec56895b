// Single facts about one media item, read from the copied media database.
// Every lookup owns the statement of its query object: the first call
// prepares it, later calls only bind the new key, so a run of many rows does
// not parse the same SQL again for each row.

#include <QSqlError>
#include <QVariant>

#include "plugin_static_function.h"
#include "vlc_androidos.h"

namespace {

const QString k_separator = ";++::++;";

// Prepares the statement unless the query already holds it, binds the key and
// runs it; on failure logs the error and the statement with the caller's signature.
bool run_lookup(QSqlQuery& query, const QString& statement, const QString& key, const QString& signature)
{
    if (query.lastQuery() != statement) {
        query.setForwardOnly(true);
        if (!query.prepare(statement)) {
            plugin_static_function::app_debug(query.lastError().text(), signature);
            plugin_static_function::app_debug(statement, signature);
            return false;
        }
    }
    query.addBindValue(key);
    if (query.exec())
        return true;
    plugin_static_function::app_debug(query.lastError().text(), signature);
    plugin_static_function::app_debug(query.executedQuery(), signature);
    return false;
}

QString text_of(const QSqlQuery& query, int column)
{
    return query.value(column).toString();
}

QString cut_trailing_separator(QString text)
{
    if (text.endsWith(k_separator))
        text.chop(k_separator.size());
    return text;
}

}  // namespace

struct_audio_track vlc_androidos::get_audio_track_details(QString media_id, QSqlQuery& query)
{
    static const QString signature =
        QStringLiteral("struct_audio_track vlc_androidos::get_audio_track_details(QString, QSqlQuery)");
    plugin_static_function::app_debug(QStringLiteral("Starts"), signature);
    struct_audio_track track;
    if (!run_lookup(query,
                    QStringLiteral("SELECT id_track,codec,bitrate,samplerate,nb_channels,language,description from "
                                   "AudioTrack where media_id = ?"),
                    media_id, signature))
        return track;
    if (query.next()) {
        track.codec = text_of(query, 1);
        track.bitrate = text_of(query, 2);
        track.samplerate = text_of(query, 3);
        track.nb_channels = text_of(query, 4);
        track.language = text_of(query, 5);
        track.description = text_of(query, 6);
    }
    query.finish();
    plugin_static_function::app_debug(QStringLiteral("Ends"), signature);
    return track;
}

struct_video_track vlc_androidos::get_video_track_details(QString media_id, QSqlQuery& query)
{
    static const QString signature =
        QStringLiteral("struct_video_track vlc_androidos::get_video_track_details(QString, QSqlQuery)");
    plugin_static_function::app_debug(QStringLiteral("Starts"), signature);
    struct_video_track track;
    if (!run_lookup(query,
                    QStringLiteral("SELECT codec,bitrate,width,height,language,description,fps_num,fps_den,sar_num,"
                                   "sar_den from VideoTrack where media_id = ?"),
                    media_id, signature))
        return track;
    // The description is selected but deliberately not read: it stays empty.
    if (query.next()) {
        track.codec = text_of(query, 0);
        track.bitrate = text_of(query, 1);
        track.width = text_of(query, 2);
        track.height = text_of(query, 3);
        track.language = text_of(query, 4);
        track.fps_num = text_of(query, 6);
        track.fps_den = text_of(query, 7);
        track.sar_num = text_of(query, 8);
        track.sar_den = text_of(query, 9);
    }
    query.finish();
    plugin_static_function::app_debug(QStringLiteral("Ends"), signature);
    return track;
}

struct_artist vlc_androidos::get_artist_details(QString media_id, QSqlQuery& album_track_query,
                                                QSqlQuery& album_query)
{
    static const QString signature =
        QStringLiteral("struct_artist vlc_androidos::get_artist_details(QString, QSqlQuery, QSqlQuery)");
    plugin_static_function::app_debug(QStringLiteral("Starts"), signature);
    struct_artist artist;
    if (!run_lookup(album_track_query, QStringLiteral("SELECT album_id from AlbumTrack where media_id = ?"),
                    media_id, signature))
        return artist;
    QString album_id;
    if (album_track_query.next())
        album_id = text_of(album_track_query, 0);
    album_track_query.finish();

    if (!run_lookup(album_query, QStringLiteral("SELECT title, artist_id from Album where id_album = ?"), album_id,
                    signature))
        return artist;
    if (album_query.next()) {
        const QVariant title = album_query.value(0);
        artist.album_title = title.isNull() ? QStringLiteral("Unknown Album") : title.toString();
        artist.artist_id = text_of(album_query, 1);
    }
    album_query.finish();
    plugin_static_function::app_debug(QStringLiteral("Ends"), signature);
    return artist;
}

QString vlc_androidos::get_playlist_name(QString media_id, QSqlQuery& relation_query, QSqlQuery& playlist_query)
{
    static const QString signature =
        QStringLiteral("QString vlc_androidos::get_playlist_name(QString, QSqlQuery, QSqlQuery)");
    plugin_static_function::app_debug(QStringLiteral(" Starts"), signature);
    if (!run_lookup(relation_query, QStringLiteral("SELECT playlist_id from PlaylistMediaRelation where media_id = ?"),
                    media_id, signature))
        return QString();
    QStringList playlist_ids;
    while (relation_query.next())
        playlist_ids << text_of(relation_query, 0);
    relation_query.finish();

    QString names;
    for (const QString& playlist_id : playlist_ids) {
        if (!run_lookup(playlist_query, QStringLiteral("SELECT name from Playlist where id_playlist = ?"),
                        playlist_id, signature))
            continue;
        while (playlist_query.next())
            names += text_of(playlist_query, 0) + k_separator;
        playlist_query.finish();
    }
    plugin_static_function::app_debug(QStringLiteral(" Ends"), signature);
    return cut_trailing_separator(names);
}

QString vlc_androidos::get_artist_name(QString artist_id, QSqlQuery& query)
{
    static const QString signature = QStringLiteral("QString vlc_androidos::get_artist_name(QString, QSqlQuery)");
    const auto cached = artist_name_cache.constFind(artist_id);
    if (cached != artist_name_cache.constEnd())
        return cached.value();
    plugin_static_function::app_debug(QStringLiteral("Starts"), signature);
    if (!run_lookup(query, QStringLiteral("SELECT name from Artist where id_artist = ?"), artist_id, signature))
        return QString();
    const QString name = query.next() ? text_of(query, 0) : QString();
    query.finish();
    artist_name_cache.insert(artist_id, name);
    plugin_static_function::app_debug(QStringLiteral("Ends"), signature);
    return name;
}

QString vlc_androidos::get_thumbnail_path(QString thumbnail_id, QSqlQuery& query)
{
    static const QString signature = QStringLiteral("QString vlc_androidos::get_thumbnail_path(QString, QSqlQuery)");
    const auto cached = thumbnail_path_cache.constFind(thumbnail_id);
    if (cached != thumbnail_path_cache.constEnd())
        return cached.value();
    plugin_static_function::app_debug(QStringLiteral("Starts"), signature);
    if (!run_lookup(query, QStringLiteral("SELECT mrl from Thumbnail where id_thumbnail = ?"), thumbnail_id,
                    signature))
        return QString();
    QString mrl;
    const bool found = query.next();
    if (found)
        mrl = text_of(query, 0);
    query.finish();

    QString path;
    if (found) {
        mrl.replace("%20", " ").replace("%2C", ",").replace("%29", ")").replace("%28", "(");
        // The app writes thumbnails either to its external files folder (ef/
        // beside r/ in the backup) or to its private app_vlc folder.
        const int thumbs = mrl.indexOf("thumbs");
        const QString app_folder = media_library_source.left(media_library_source.indexOf("/r/"));
        const QString external = app_folder + "/ef/" + (thumbs >= 0 ? mrl.mid(thumbs) : mrl);
        const int app_vlc = mrl.indexOf("app_vlc");
        const QString internal =
            source_root + "apps/org.videolan.vlc/r/" + (app_vlc >= 0 ? mrl.mid(app_vlc) : mrl);
        if (exists_in_image(external, signature))
            path = external;
        else if (exists_in_image(internal, signature))
            path = internal;
    }
    thumbnail_path_cache.insert(thumbnail_id, path);
    plugin_static_function::app_debug(QStringLiteral("Ends"), signature);
    return path;
}

struct_media vlc_androidos::get_file_name(QString media_id, QSqlQuery& query)
{
    static const QString signature = QStringLiteral("struct_media vlc_androidos::get_file_name(QString, QSqlQuery)");
    plugin_static_function::app_debug(QStringLiteral("Starts"), signature);
    struct_media media;
    if (!run_lookup(query, QStringLiteral("SELECT filename,duration from Media where id_media = ? "), media_id,
                    signature))
        return media;
    if (query.next()) {
        media.file_name = text_of(query, 0);
        media.duration = text_of(query, 1);
    }
    query.finish();
    plugin_static_function::app_debug(QStringLiteral("Ends"), signature);
    return media;
}

struct_file vlc_androidos::get_file_path(QString media_id, QSqlQuery& query)
{
    static const QString signature = QStringLiteral("struct_file vlc_androidos::get_file_path(QString, QSqlQuery)");
    plugin_static_function::app_debug(QStringLiteral("Starts"), signature);
    struct_file file;
    if (!run_lookup(query,
                    QStringLiteral("SELECT playlist_id,mrl,last_modification_date,size,is_removable,is_external from "
                                   "File where media_id = ?"),
                    media_id, signature))
        return file;
    if (query.next()) {
        file.file_size = text_of(query, 3);
        file.file_path = media_path_from_mrl(text_of(query, 1));
        file.file_exist = exists_in_image(file.file_path, signature) ? "YES" : "NO";
    }
    query.finish();
    plugin_static_function::app_debug(QStringLiteral("Ends"), signature);
    return file;
}
