// The playlists table: one row per media item of every playlist in the media
// database.

#include "media_library_query.h"
#include "media_library_reader.h"
#include "media_library_run.h"
#include "plugin_static_function.h"

namespace {

const QString k_separator = ";++::++;";

const QString k_insert =
    "insert into playlists(bookmark,playlist_name,file_name,duration,creation_timestamp,file_path,file_exist,"
    "suffix,file_size,preview_file_path,export_file_paths,source_file,os_scheme_display,source_count_name) "
    "values(0,?,?,?,?, ?,?,?,?,?, ?,?,?,?)";

}  // namespace

bool media_library_reader::insert_playlist_rows(media_library_run& run)
{
    prepared_statement insert(run.result(), with_account(k_insert));
    prepared_statement members(run.source(), statements().playlist_members);
    media_library_query file_name_query(run.source());
    media_library_query file_query(run.source());
    const QString source_file = source_file_text();
    const QString source_count_name = plugin_static_function::get_source_count_name();
    prepared_statement& playlist = run.rows();

    while (run.next_row()) {
        if (cancelled())
            return false;
        const QString name = playlist.text(1);
        const QString creation_date = playlist.text(3);
        QStringList media_ids;
        if (!media_library_run::read_ids(members, playlist.text(0), &media_ids)) {
            // Nothing more can be trusted of this table: end it, keeping the rows so far.
            run.log_query_failure("query_select_media_id --------FAILED---------- ", members);
            return false;
        }

        for (const QString& media_id : media_ids) {
            if (cancelled())
                return false;
            run.row_started();
            const struct_media media = get_file_name(media_id, file_name_query);
            const struct_file file = get_file_path(media_id, file_query);
            QString file_name = media.file_name;
            if (file_name.endsWith(k_separator))
                file_name.chop(k_separator.size());
            const QString relative_path = below_root(file.file_path);
            const QStringList values = {name,
                                        file_name,
                                        plugin_static_function::duration_text_from_milliseconds(media.duration),
                                        creation_date,
                                        relative_path,
                                        file.file_exist,
                                        plugin_static_function::mining_suffix(file.file_path),
                                        file.file_size,
                                        relative_path,
                                        relative_path,
                                        source_file,
                                        m_context.os_scheme_display,
                                        source_count_name};
            insert_row(run, insert, values);
        }
    }
    return true;
}
