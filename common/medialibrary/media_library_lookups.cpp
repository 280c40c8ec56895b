// Single facts about one media item, read from the copied media database.
// Every lookup owns the statement of its query object: the first call
// prepares it, later calls only bind the new key, so a run of many rows does
// not parse the same SQL again for each row.

#include "media_library_query.h"
#include "media_library_reader.h"
#include "plugin_static_function.h"
#include "source_path_guard.h"

namespace {

const QString k_separator = ";++::++;";

// Runs the lookup's statement with its key; on failure logs the error and the
// statement with the caller's signature and gives nothing.
prepared_statement* run_lookup(media_library_query& query, const QString& statement, const QString& key,
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

struct_audio_track media_library_reader::get_audio_track_details(QString media_id, media_library_query& query)
{
    const QString& signature = m_signatures->audio_track;
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

struct_video_track media_library_reader::get_video_track_details(QString media_id, media_library_query& query)
{
    const QString& signature = m_signatures->video_track;
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

struct_artist media_library_reader::get_artist_details(QString media_id, media_library_query& album_track_query,
                                                       media_library_query& album_query)
{
    const QString& signature = m_signatures->artist_details;
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
    const auto cached = m_album_cache.constFind(album_id);
    if (cached != m_album_cache.constEnd()) {
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
    m_album_cache.insert(album_id, artist);
    plugin_static_function::app_debug(QStringLiteral("Ends"), signature);
    return artist;
}

QString media_library_reader::get_playlist_name(QString media_id, media_library_query& relation_query,
                                                media_library_query& playlist_query)
{
    const QString& signature = m_signatures->playlist_name;
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
        auto cached = m_playlist_names_cache.constFind(playlist_id);
        if (cached == m_playlist_names_cache.constEnd()) {
            prepared_statement* playlists =
                run_lookup(playlist_query, statements().playlist_name, playlist_id, signature);
            if (!playlists)
                return QString();
            QString found;
            while (playlists->next())
                found += playlists->text(0) + k_separator;
            playlists->finish();
            cached = m_playlist_names_cache.insert(playlist_id, found);
        }
        names += cached.value();
    }
    if (names.endsWith(k_separator))
        names.chop(k_separator.size());
    plugin_static_function::app_debug(QStringLiteral(" Ends"), signature);
    return names;
}

QString media_library_reader::get_artist_name(QString artist_id, media_library_query& query)
{
    const QString& signature = m_signatures->artist_name;
    const auto cached = m_artist_name_cache.constFind(artist_id);
    if (cached != m_artist_name_cache.constEnd())
        return cached.value();
    plugin_static_function::app_debug(QStringLiteral("Starts"), signature);
    prepared_statement* rows = run_lookup(query, statements().artist_name, artist_id, signature);
    if (!rows)
        return QString();
    const QString name = rows->next() ? rows->text(0) : QString();
    rows->finish();
    m_artist_name_cache.insert(artist_id, name);
    plugin_static_function::app_debug(QStringLiteral("Ends"), signature);
    return name;
}

QString media_library_reader::get_thumbnail_path(QString thumbnail_id, media_library_query& query)
{
    const QString& signature = m_signatures->thumbnail_path;
    const auto cached = m_thumbnail_path_cache.constFind(thumbnail_id);
    if (cached != m_thumbnail_path_cache.constEnd())
        return cached.value();
    plugin_static_function::app_debug(QStringLiteral("Starts"), signature);
    prepared_statement* rows = run_lookup(query, statements().thumbnail, thumbnail_id, signature);
    if (!rows)
        return QString();
    const bool found = rows->next();
    QString mrl = found ? rows->text(0) : QString();
    rows->finish();

    const QString path = found ? m_places.thumbnail_path(mrl, m_shape.model(), signature) : QString();
    m_thumbnail_path_cache.insert(thumbnail_id, path);
    plugin_static_function::app_debug(QStringLiteral("Ends"), signature);
    return path;
}

QString media_library_reader::thumbnail_of(const QString& reference, bool mrl_in_row, media_library_query& query)
{
    if (!mrl_in_row)
        return get_thumbnail_path(reference, query);
    const QString& signature = m_signatures->thumbnail_of;
    if (reference.isEmpty())
        return QString();
    auto cached = m_thumbnail_path_cache.constFind(reference);
    if (cached == m_thumbnail_path_cache.constEnd())
        cached = m_thumbnail_path_cache.insert(reference,
                                               m_places.thumbnail_path(reference, m_shape.model(), signature));
    return cached.value();
}

struct_media media_library_reader::get_file_name(QString media_id, media_library_query& query)
{
    const QString& signature = m_signatures->file_name;
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

struct_file media_library_reader::get_file_path(QString media_id, media_library_query& query)
{
    const QString& signature = m_signatures->file_path;
    plugin_static_function::app_debug(QStringLiteral("Starts"), signature);
    struct_file file;
    prepared_statement* rows = run_lookup(query, statements().file, media_id, signature);
    if (!rows)
        return file;
    if (rows->next()) {
        file.file_size = rows->text(3);
        file.file_path = m_places.media_path(rows->text(1));
        file.file_exist =
            source_path_guard::exists_inside(file.file_path, m_context.source_root, signature) ? "YES" : "NO";
    }
    rows->finish();
    plugin_static_function::app_debug(QStringLiteral("Ends"), signature);
    return file;
}
