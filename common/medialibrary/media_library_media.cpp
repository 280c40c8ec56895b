// The media library table: one row per Media row of the media database,
// enriched with its file, tracks, album, artist, playlists and thumbnail.

#include "media_library_query.h"
#include "media_library_reader.h"
#include "media_library_run.h"
#include "plugin_static_function.h"
#include "source_path_guard.h"

namespace {

const QString k_separator = ";++::++;";

const QString k_insert =
    "insert into media_library(bookmark,file_name,location,file_size,file_exist,file_type,suffix,title,"
    "playlist_name,duration,artist,image,play_count,favorite,present,removable,external,album,codec,bitrate,"
    "samplerate,nb_channels,language,description,width,height,fps_num,fps_den,sar_num,sar_den,last_played_date,"
    "real_last_played_date,insertion_date,release_date,last_modification_date,preview_file_path,export_file_paths,"
    "source_file,os_scheme_display,source_count_name) values(0,?,?,?,?, ?,?,?,?,? ,?,?,?,?,?, ?,?,?,?,? ,?,?,?,?,?, "
    "?,?,?,?,? ,?,?,?,?,? ,?,?,?,?,?)";

QString yes_unless_zero(const QString& value)
{
    return value == "0" ? "NO" : "YES";
}

// Where playback stopped: the fraction played (progress, later
// last_position) and the time (last_time).
QString position_of(const prepared_statement& media)
{
    using shape = media_library_shape;
    const int fraction_column = media.is_null(shape::last_position) ? shape::progress : shape::last_position;
    bool has_fraction = false;
    const double fraction = media.text(fraction_column).toDouble(&has_fraction);
    return media_library_reader::position_text(has_fraction ? fraction : -1, media.text(shape::last_time).toLongLong(),
                                               media.text(3).toLongLong());
}

// The lookup query objects of one run, each kept prepared for its statement.
struct media_lookups
{
    explicit media_lookups(const QSqlDatabase& db)
        : audio(db), video(db), album_track(db), album(db), relation(db), playlist(db), artist(db), thumbnail(db)
    {
    }
    media_library_query audio, video, album_track, album, relation, playlist, artist, thumbnail;
};

}  // namespace

bool media_library_reader::insert_media_library_rows(media_library_run& run)
{
    media_lookups lookups(run.source());
    prepared_statement file(run.source(), statements().file);
    const bool with_positions = !m_shape.is_original();
    const bool thumbnail_in_row = m_shape.media_thumbnail_in_row();
    prepared_statement insert(run.result(), with_account(k_insert));
    const QString source_file = source_file_text();
    const QString source_count_name = plugin_static_function::get_source_count_name();
    prepared_statement& media = run.rows();
    QStringList values;
    values.reserve(39);

    while (run.next_row()) {
        if (cancelled())
            return false;
        const QString id_media = media.text(0);
        const bool is_video = media.text(1) == "1";

        if (!file.execute(id_media)) {
            run.log_query_failure("query_select_file --------FAILED---------- ", file);
            continue;
        }
        QString full_path, file_size, file_exist, suffix, removable, external, modification_date;
        if (file.next()) {
            modification_date = file.text(2);
            file_size = file.text(3);
            full_path = m_places.media_path(file.text(1));
            file_exist = source_path_guard::exists_inside(full_path, m_context.source_root, m_signatures->media_library)
                             ? "YES"
                             : "NO";
            suffix = plugin_static_function::mining_suffix(full_path);
            // A backup's stored file has only its id for a name.
            if (suffix.isEmpty())
                suffix = plugin_static_function::mining_suffix(path_of_file_mrl(file.text(1)));
            removable = yes_unless_zero(file.text(4));
            external = yes_unless_zero(file.text(5));
        }
        file.finish();

        struct_audio_track audio = get_audio_track_details(id_media, lookups.audio);
        const struct_video_track video =
            is_video ? get_video_track_details(id_media, lookups.video) : struct_video_track();
        if (is_video) {
            audio.codec = video.codec;
            audio.bitrate = video.bitrate;
            audio.language = video.language;
            audio.description = video.description;
        }
        const struct_artist album = get_artist_details(id_media, lookups.album_track, lookups.album);
        const QString playlists = get_playlist_name(id_media, lookups.relation, lookups.playlist);
        const QString artist = get_artist_name(album.artist_id, lookups.artist);
        const QString thumbnail = thumbnail_of(media.text(9), thumbnail_in_row, lookups.thumbnail);
        if (with_positions)
            audio.description = plugin_static_function::description_with(audio.description, position_of(media));

        const QString relative_path = below_root(full_path);
        const QString relative_thumbnail = below_root(thumbnail);
        QString export_paths = relative_path + k_separator + relative_thumbnail;
        if (export_paths.endsWith(k_separator))
            export_paths.chop(k_separator.size());
        const QString duration =
            media.is_null(3) ? QString() : plugin_static_function::duration_text_from_milliseconds(media.text(3));

        values.clear();
        values << media.text(11) << relative_path << file_size << file_exist
               << (is_video ? "Video" : "Audio") << suffix << media.text(10) << playlists << duration << artist
               << relative_thumbnail << media.text(4) << yes_unless_zero(media.text(12))
               << yes_unless_zero(media.text(13)) << removable << external << album.album_title << audio.codec
               << audio.bitrate << audio.samplerate << audio.nb_channels << audio.language << audio.description
               << video.width << video.height << video.fps_num << video.fps_den << video.sar_num << video.sar_den
               << media.text(5) << media.text(6) << media.text(7) << media.text(8) << modification_date << relative_path
               << export_paths << source_file << m_context.os_scheme_display << source_count_name;
        insert_row(run, insert, values);
    }
    return true;
}
