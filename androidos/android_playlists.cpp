// The playlists table: one row per media item of every playlist in the media
// database.

#include "android_query.h"
#include "android_source_run.h"
#include "plugin_static_function.h"
#include "vlc_androidos.h"

namespace {

const QString k_signature = "void vlc_androidos::extract_playlist()";
const QString k_separator = ";++::++;";

const QString k_insert =
    "insert into playlists(bookmark,playlist_name,file_name,duration,creation_timestamp,file_path,file_exist,"
    "suffix,file_size,preview_file_path,export_file_paths,source_file,os_scheme_display,source_count_name) "
    "values(0,?,?,?,?, ?,?,?,?,?, ?,?,?,?)";

}  // namespace

void vlc_androidos::extract_playlist()
{
    run_table(k_signature, playlist_source, &android_statements::playlist, &vlc_androidos::insert_playlist_rows);
}

bool vlc_androidos::insert_playlist_rows(android_source_run& run)
{
    prepared_statement insert(run.result(), k_insert);
    prepared_statement members(run.source(), statements().playlist_members);
    android_query file_name_query(run.source());
    android_query file_query(run.source());
    const QString source_file = source_file_text(playlist_source);
    const QString source_count_name = plugin_static_function::get_source_count_name();
    prepared_statement& playlist = run.rows();

    while (run.next_row()) {
        if (cancel_requested)
            return false;
        const QString name = playlist.text(1);
        const QString creation_date = playlist.text(3);
        QStringList media_ids;
        if (!android_source_run::read_ids(members, playlist.text(0), &media_ids)) {
            // Nothing more can be trusted of this table: end it, keeping the rows so far.
            run.log_query_failure("query_select_media_id --------FAILED---------- ", members);
            return false;
        }

        for (const QString& media_id : media_ids) {
            if (cancel_requested)
                return false;
            run.row_started();
            const struct_media media = get_file_name(media_id, file_name_query);
            const struct_file file = get_file_path(media_id, file_query);
            QString file_name = media.file_name;
            if (file_name.endsWith(k_separator))
                file_name.chop(k_separator.size());
            const QString relative_path = path_below_root(file.file_path);
            const QStringList values = {name,
                                        file_name,
                                        convert_sec_to_hh_mm_ss(media.duration),
                                        creation_date,
                                        relative_path,
                                        file.file_exist,
                                        plugin_static_function::mining_suffix(file.file_path),
                                        file.file_size,
                                        relative_path,
                                        relative_path,
                                        source_file,
                                        os_scheme_display,
                                        source_count_name};
            if (run.insert(insert, values))
                count_inserted_row();
        }
    }
    return true;
}
