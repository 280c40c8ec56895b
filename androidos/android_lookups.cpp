// Single facts about one media item, read from the copied media database.
// Every lookup owns the statement of its query object: the first call
// prepares it, later calls only bind the new key, so a run of many rows does
// not parse the same SQL again for each row.

#include "android_query.h"
#include "plugin_static_function.h"
#include "source_path_guard.h"
#include "vlc_androidos.h"

namespace {

const QString k_separator = ";++::++;";

// Runs the lookup's statement with its key; on failure logs the error and the
// statement with the caller's signature and gives nothing.
prepared_statement* run_lookup(android_query& query, const QString& statement, const QString& key,
                              const QString& signature)
{
    prepared_statement& prepared = query.prepared(statement);
    if (prepared.execute(key))
        return &prepared;
    plugin_static_function::app_debug(prepared.error_text(), signature);
    plugin_static_function::app_debug(prepared.statement(), signature);
    return nullptr;
}

}  // namespace

struct_audio_track vlc_androidos::get_audio_track_details(QString media_id, android_query& query)
{
    static const QString signature =
        QStringLiteral("struct_audio_track vlc_androidos::get_audio_track_details(QString, QSqlQuery)");
    plugin_static_function::app_debug(QStringLiteral("Starts"), signature);
    struct_audio_track track;
    prepared_statement* rows = run_lookup(query, statements().audio_track, media_id, signature);
    if (!rows)
        return track;
    if (rows->next()) {
        track.codec = rows->text(1);
        track.bitrate = rows->text(2);
        track.samplerate = rows->text(3);
        track.nb_channels = rows->text(4);
        track.language = rows->text(5);
        track.description = rows->text(6);
    }
    rows->finish();
    plugin_static_function::app_debug(QStringLiteral("Ends"), signature);
    return track;
}

struct_video_track vlc_androidos::get_video_track_details(QString media_id, android_query& query)
{
    static const QString signature =
        QStringLiteral("struct_video_track vlc_androidos::get_video_track_details(QString, QSqlQuery)");
    plugin_static_function::app_debug(QStringLiteral("Starts"), signature);
    struct_video_track track;
    prepared_statement* rows = run_lookup(query, statements().video_track, media_id, signature);
    if (!rows)
        return track;
    // The description is selected but deliberately not read: it stays empty.
    if (rows->next()) {
        track.codec = rows->text(0);
        track.bitrate = rows->text(1);
        track.width = rows->text(2);
        track.height = rows->text(3);
        track.language = rows->text(4);
        track.fps_num = rows->text(6);
        track.fps_den = rows->text(7);
        track.sar_num = rows->text(8);
        track.sar_den = rows->text(9);
    }
    rows->finish();
    plugin_static_function::app_debug(QStringLiteral("Ends"), signature);
    return track;
}

struct_artist vlc_androidos::get_artist_details(QString media_id, android_query& album_track_query,
                                                android_query& album_query)
{
    static const QString signature =
        QStringLiteral("struct_artist vlc_androidos::get_artist_details(QString, QSqlQuery, QSqlQuery)");
    plugin_static_function::app_debug(QStringLiteral("Starts"), signature);
    struct_artist artist;
    prepared_statement* tracks = run_lookup(album_track_query, statements().album_of_media, media_id, signature);
    if (!tracks)
        return artist;
    QString album_id;
    if (tracks->next())
        album_id = tracks->text(0);
    tracks->finish();

    // An album's dozen tracks ask for the same album.
    const auto cached = album_cache.constFind(album_id);
    if (cached != album_cache.constEnd()) {
        plugin_static_function::app_debug(QStringLiteral("Ends"), signature);
        return cached.value();
    }
    prepared_statement* albums = run_lookup(album_query, statements().album_title, album_id, signature);
    if (!albums)
        return artist;
    if (albums->next()) {
        artist.album_title = albums->is_null(0) ? QStringLiteral("Unknown Album") : albums->text(0);
        artist.artist_id = albums->text(1);
    }
    albums->finish();
    album_cache.insert(album_id, artist);
    plugin_static_function::app_debug(QStringLiteral("Ends"), signature);
    return artist;
}

QString vlc_androidos::get_playlist_name(QString media_id, android_query& relation_query,
                                         android_query& playlist_query)
{
    static const QString signature =
        QStringLiteral("QString vlc_androidos::get_playlist_name(QString, QSqlQuery, QSqlQuery)");
    plugin_static_function::app_debug(QStringLiteral(" Starts"), signature);
    prepared_statement* relations = run_lookup(relation_query, statements().media_playlists, media_id, signature);
    if (!relations)
        return QString();
    QStringList playlist_ids;
    while (relations->next())
        playlist_ids << relations->text(0);
    relations->finish();

    QString names;
    for (const QString& playlist_id : playlist_ids) {
        // Every member of a playlist asks for the same names.
        auto cached = playlist_names_cache.constFind(playlist_id);
        if (cached == playlist_names_cache.constEnd()) {
            prepared_statement* playlists =
                run_lookup(playlist_query, statements().playlist_name, playlist_id, signature);
            if (!playlists)
                return QString();
            QString found;
            while (playlists->next())
                found += playlists->text(0) + k_separator;
            playlists->finish();
            cached = playlist_names_cache.insert(playlist_id, found);
        }
        names += cached.value();
    }
    if (names.endsWith(k_separator))
        names.chop(k_separator.size());
    plugin_static_function::app_debug(QStringLiteral(" Ends"), signature);
    return names;
}

QString vlc_androidos::get_artist_name(QString artist_id, android_query& query)
{
    static const QString signature = QStringLiteral("QString vlc_androidos::get_artist_name(QString, QSqlQuery)");
    const auto cached = artist_name_cache.constFind(artist_id);
    if (cached != artist_name_cache.constEnd())
        return cached.value();
    plugin_static_function::app_debug(QStringLiteral("Starts"), signature);
    prepared_statement* rows = run_lookup(query, statements().artist_name, artist_id, signature);
    if (!rows)
        return QString();
    const QString name = rows->next() ? rows->text(0) : QString();
    rows->finish();
    artist_name_cache.insert(artist_id, name);
    plugin_static_function::app_debug(QStringLiteral("Ends"), signature);
    return name;
}

QString vlc_androidos::get_thumbnail_path(QString thumbnail_id, android_query& query)
{
    static const QString signature = QStringLiteral("QString vlc_androidos::get_thumbnail_path(QString, QSqlQuery)");
    const auto cached = thumbnail_path_cache.constFind(thumbnail_id);
    if (cached != thumbnail_path_cache.constEnd())
        return cached.value();
    plugin_static_function::app_debug(QStringLiteral("Starts"), signature);
    prepared_statement* rows = run_lookup(query, statements().thumbnail, thumbnail_id, signature);
    if (!rows)
        return QString();
    const bool found = rows->next();
    QString mrl = found ? rows->text(0) : QString();
    rows->finish();

    const QString path = found ? thumbnail_path_from_mrl(mrl, signature) : QString();
    thumbnail_path_cache.insert(thumbnail_id, path);
    plugin_static_function::app_debug(QStringLiteral("Ends"), signature);
    return path;
}

QString vlc_androidos::thumbnail_path_from_mrl(QString mrl, const QString& signature) const
{
    if (full_file_system) {
        const QString path = phone_path_in_source(phone_path_of_mrl(mrl));
        return source_path_guard::exists_inside(path, source_root, signature) ? path : QString();
    }
    mrl.replace("%20", " ").replace("%2C", ",").replace("%29", ")").replace("%28", "(");
    // The app writes thumbnails either to its external files folder (ef/
    // beside r/ in the backup) or to its private app_vlc folder.
    const int thumbs = mrl.indexOf("thumbs");
    const QString app_folder = media_library_source.left(media_library_source.indexOf("/r/"));
    const QString external = app_folder + "/ef/" + (thumbs >= 0 ? mrl.mid(thumbs) : mrl);
    const int app_vlc = mrl.indexOf("app_vlc");
    const QString internal = source_root + private_folder + (app_vlc >= 0 ? mrl.mid(app_vlc) : mrl);
    if (source_path_guard::exists_inside(external, source_root, signature))
        return external;
    if (source_path_guard::exists_inside(internal, source_root, signature))
        return internal;
    // From model 17 the app also keeps thumbnails elsewhere in its external
    // files folder; earlier models never wrote there.
    const QString marker = "/Android/data/org.videolan.vlc/files/";
    const int files = database_shape.model() >= 17 ? mrl.indexOf(marker) : -1;
    const QString elsewhere = files >= 0 ? source_root + external_files + mrl.mid(files + marker.size()) : QString();
    if (!elsewhere.isEmpty() && source_path_guard::exists_inside(elsewhere, source_root, signature))
        return elsewhere;
    return QString();
}

QString vlc_androidos::thumbnail_of(const QString& reference, bool mrl_in_row, android_query& query)
{
    if (!mrl_in_row)
        return get_thumbnail_path(reference, query);
    static const QString signature =
        QStringLiteral("QString vlc_androidos::thumbnail_of(const QString&, bool, android_query&)");
    if (reference.isEmpty())
        return QString();
    auto cached = thumbnail_path_cache.constFind(reference);
    if (cached == thumbnail_path_cache.constEnd())
        cached = thumbnail_path_cache.insert(reference, thumbnail_path_from_mrl(reference, signature));
    return cached.value();
}

struct_media vlc_androidos::get_file_name(QString media_id, android_query& query)
{
    static const QString signature = QStringLiteral("struct_media vlc_androidos::get_file_name(QString, QSqlQuery)");
    plugin_static_function::app_debug(QStringLiteral("Starts"), signature);
    struct_media media;
    prepared_statement* rows = run_lookup(query, statements().media_name, media_id, signature);
    if (!rows)
        return media;
    if (rows->next()) {
        media.file_name = rows->text(0);
        media.duration = rows->text(1);
    }
    rows->finish();
    plugin_static_function::app_debug(QStringLiteral("Ends"), signature);
    return media;
}

struct_file vlc_androidos::get_file_path(QString media_id, android_query& query)
{
    static const QString signature = QStringLiteral("struct_file vlc_androidos::get_file_path(QString, QSqlQuery)");
    plugin_static_function::app_debug(QStringLiteral("Starts"), signature);
    struct_file file;
    prepared_statement* rows = run_lookup(query, statements().file, media_id, signature);
    if (!rows)
        return file;
    if (rows->next()) {
        file.file_size = rows->text(3);
        file.file_path = media_path_from_mrl(rows->text(1));
        file.file_exist = source_path_guard::exists_inside(file.file_path, source_root, signature) ? "YES" : "NO";
    }
    rows->finish();
    plugin_static_function::app_debug(QStringLiteral("Ends"), signature);
    return file;
}
