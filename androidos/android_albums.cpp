// The album_art and album tables: one row each per Album row of the media
// database, the first with the album's cover, the second with its tracks.

#include <QFileInfo>

#include "android_query.h"
#include "android_source_run.h"
#include "plugin_static_function.h"
#include "vlc_androidos.h"

namespace {

const QString k_album_art_signature = "void vlc_androidos::extract_album_art()";
const QString k_album_signature = "void vlc_androidos::extract_album()";
const QString k_separator = ";++::++;";

const QString k_insert_album_art =
    "insert into album_art(bookmark,file_name,art_file_name,file_path,duration,no_of_tracks,artist,"
    "preview_file_path,export_file_paths,source_file,os_scheme_display,source_count_name) "
    "values(0,?,?,?,?, ?,?,?,?,? ,?,?)";
const QString k_insert_album =
    "insert into album(bookmark, album_name,album_item_info,album_item_count,artist,album_duration,"
    "preview_file_path,export_file_paths,source_file,os_scheme_display,source_count_name) "
    "values(0,?,?,?,?, ?,?,?,?,? ,?)";

// Columns of the Album statement.
enum album_column { id_album = 0, title = 1, artist_id = 2, thumbnail_id = 5, nb_tracks = 6, duration = 7 };

QString album_title(const prepared_statement& album)
{
    return album.is_null(title) ? QStringLiteral("Unknown Album") : album.text(title);
}

// The tracks' paths joined: an album with tracks keeps the empty text even
// when none of them has a path; one without tracks keeps none (NULL).
QString joined_paths(const QStringList& paths)
{
    const QString joined = paths.join(k_separator);
    return paths.isEmpty() || !joined.isNull() ? joined : QString(0, QChar());
}

}  // namespace

void vlc_androidos::extract_album_art()
{
    run_table(k_album_art_signature, album_source, &android_statements::album, &vlc_androidos::insert_album_art_rows);
}

bool vlc_androidos::insert_album_art_rows(android_source_run& run)
{
    prepared_statement insert(run.result(), k_insert_album_art);
    android_query thumbnail_query(run.source());
    android_query artist_query(run.source());
    const QString source_file = source_file_text(album_source);
    prepared_statement& album = run.rows();

    while (run.next_row()) {
        if (cancel_requested)
            return false;
        const QString thumbnail =
            thumbnail_of(album.text(thumbnail_id), database_shape.album_thumbnail_in_row(), thumbnail_query);
        const QString artist = get_artist_name(album.text(artist_id), artist_query);
        const QString relative_thumbnail = path_below_root(thumbnail);
        const QStringList values = {QFileInfo(thumbnail).fileName(),
                                    album_title(album),
                                    relative_thumbnail,
                                    convert_sec_to_hh_mm_ss(album.text(duration)),
                                    album.text(nb_tracks),
                                    artist,
                                    relative_thumbnail,
                                    relative_thumbnail,
                                    source_file,
                                    os_scheme_display,
                                    plugin_static_function::get_source_count_name()};
        if (run.insert(insert, values))
            count_inserted_row();
    }
    return true;
}

void vlc_androidos::extract_album()
{
    run_table(k_album_signature, album_source, &android_statements::album, &vlc_androidos::insert_album_rows);
}

bool vlc_androidos::insert_album_rows(android_source_run& run)
{
    prepared_statement insert(run.result(), k_insert_album);
    prepared_statement tracks(run.source(), statements().album_members);
    android_query file_name_query(run.source());
    android_query file_query(run.source());
    android_query artist_query(run.source());
    const QString source_file = source_file_text(album_source);
    prepared_statement& album = run.rows();

    while (run.next_row()) {
        if (cancel_requested)
            return false;
        const QString artist = get_artist_name(album.text(artist_id), artist_query);
        QStringList item_info;
        QStringList export_paths;
        if (!collect_album_tracks(run, album.text(id_album), tracks, file_name_query, file_query, &item_info,
                                  &export_paths))
            return false;
        const QStringList values = {album_title(album),
                                    item_info.join(k_separator),
                                    QString::number(item_info.size()),
                                    artist,
                                    convert_sec_to_hh_mm_ss(album.text(duration)),
                                    export_paths.value(0),
                                    joined_paths(export_paths),
                                    source_file,
                                    os_scheme_display,
                                    plugin_static_function::get_source_count_name()};
        if (run.insert(insert, values))
            count_inserted_row();
    }
    return true;
}

bool vlc_androidos::collect_album_tracks(android_source_run& run, const QString& album_id, prepared_statement& tracks,
                                         android_query& file_name_query, android_query& file_query,
                                         QStringList* item_info, QStringList* export_paths)
{
    QStringList media_ids;
    if (!android_source_run::read_ids(tracks, album_id, &media_ids)) {
        // The album is still written, as one without tracks.
        run.log_query_failure("query_select_media_id --------FAILED---------- ", tracks);
        return true;
    }

    for (const QString& media_id : media_ids) {
        if (cancel_requested)
            return false;
        run.row_started();
        const struct_media media = get_file_name(media_id, file_name_query);
        const struct_file file = get_file_path(media_id, file_query);
        const QString relative_path = path_below_root(file.file_path);
        *export_paths << relative_path;
        *item_info << "File Name: " + media.file_name + "; File Size: " + file.file_size + "; File Path:" + relative_path;
    }
    return true;
}
