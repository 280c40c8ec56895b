// The media library table: one row per Media row of the media database,
// enriched with its file, tracks, album, artist, playlists and thumbnail.

#include "android_query.h"
#include "android_source_run.h"
#include "plugin_static_function.h"
#include "source_path_guard.h"
#include "vlc_androidos.h"

namespace {

const QString k_signature = "void vlc_androidos::extract_media_library()";
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

// Where playback stopped, as "Position: 42% (00:12:34)": from the fraction
// played (progress, later last_position) and the time (last_time, else the
// fraction of the duration). The app keeps -1 for no position, and a
// position at the very start tells nothing.
QString position_text(const prepared_statement& media)
{
    using shape = android_database_shape;
    bool has_fraction = false;
    const int fraction_column = media.is_null(shape::last_position) ? shape::progress : shape::last_position;
    double fraction = media.text(fraction_column).toDouble(&has_fraction);
    has_fraction = has_fraction && fraction > 0;
    bool has_time = false;
    qint64 time_ms = media.text(shape::last_time).toLongLong(&has_time);
    has_time = has_time && time_ms > 0;
    const qint64 duration_ms = media.text(3).toLongLong();
    if (!has_time && has_fraction && duration_ms > 0) {
        time_ms = qint64(fraction * double(duration_ms));
        has_time = true;
    }
    if (!has_fraction && has_time && duration_ms > 0) {
        fraction = double(time_ms) / double(duration_ms);
        has_fraction = true;
    }
    QStringList parts;
    if (has_fraction)
        parts << QString::number(qRound(fraction * 100)) + "%";
    if (has_time)
        parts << "(" + plugin_static_function::clock_text_from_milliseconds(time_ms) + ")";
    return parts.isEmpty() ? QString() : "Position: " + parts.join(' ');
}

// The lookup query objects of one run, each kept prepared for its statement.
struct media_lookups
{
    explicit media_lookups(const QSqlDatabase& db)
        : audio(db), video(db), album_track(db), album(db), relation(db), playlist(db), artist(db), thumbnail(db)
    {
    }
    android_query audio, video, album_track, album, relation, playlist, artist, thumbnail;
};

}  // namespace

void vlc_androidos::extract_media_library()
{
    run_table(k_signature, media_library_source, &android_statements::media, &vlc_androidos::insert_media_library_rows);
}

bool vlc_androidos::insert_media_library_rows(android_source_run& run)
{
    media_lookups lookups(run.source());
    prepared_statement file(run.source(), statements().file);
    const bool with_positions = !database_shape.is_original();
    const bool thumbnail_in_row = database_shape.media_thumbnail_in_row();
    prepared_statement insert(run.result(), k_insert);
    const QString source_file = source_file_text(media_library_source);
    const QString source_count_name = plugin_static_function::get_source_count_name();
    prepared_statement& media = run.rows();
    QStringList values;
    values.reserve(39);

    while (run.next_row()) {
        if (cancel_requested)
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
            full_path = media_path_from_mrl(file.text(1));
            file_exist = source_path_guard::exists_inside(full_path, source_root, k_signature) ? "YES" : "NO";
            suffix = plugin_static_function::mining_suffix(full_path);
            removable = yes_unless_zero(file.text(4));
            external = yes_unless_zero(file.text(5));
        }
        file.finish();

        struct_audio_track audio = get_audio_track_details(id_media, lookups.audio);
        const struct_video_track video = is_video ? get_video_track_details(id_media, lookups.video)
                                                  : struct_video_track();
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
            audio.description = plugin_static_function::description_with(audio.description, position_text(media));

        const QString relative_path = path_below_root(full_path);
        const QString relative_thumbnail = path_below_root(thumbnail);
        QString export_paths = relative_path + k_separator + relative_thumbnail;
        if (export_paths.endsWith(k_separator))
            export_paths.chop(k_separator.size());
        const QString duration = media.is_null(3) ? QString() : convert_sec_to_hh_mm_ss(media.text(3));

        values.clear();
        values << media.text(11) << relative_path << file_size << file_exist << (is_video ? "Video" : "Audio")
               << suffix << media.text(10) << playlists << duration << artist << relative_thumbnail << media.text(4)
               << yes_unless_zero(media.text(12)) << yes_unless_zero(media.text(13)) << removable << external
               << album.album_title << audio.codec << audio.bitrate << audio.samplerate << audio.nb_channels
               << audio.language << audio.description << video.width << video.height << video.fps_num
               << video.fps_den << video.sar_num << video.sar_den << media.text(5) << media.text(6) << media.text(7)
               << media.text(8) << modification_date << relative_path << export_paths << source_file
               << os_scheme_display << source_count_name;
        if (run.insert(insert, values))
            count_inserted_row();
    }
    return true;
}
