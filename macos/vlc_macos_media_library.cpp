// The media library ("ml.xspf" of each user) into the media_library table,
// one row per track, with the facts of the media file inside the source.

#include <QFile>
#include <QUrl>

#include "bounded_file_reader.h"
#include "prepared_statement.h"
#include "sqlite_connection_scope.h"
#include "vlc_macos.h"
#include "xspf_track_reader.h"

namespace {

const QString sig_media_library = "void vlc_macos::extract_media_library()";

const QString k_insert_media_library =
    "insert into media_library(bookmark,system_user,file_name, file_size, file_exist, "
    "suffix,location,title,artist,album,track_number,description,image,duration,value,id,date_added,"
    "content_creation_date,content_modification_date,content_type,preview_file_path, export_file_paths, "
    "fs_content_change_date, fs_creation_date,fs_name,fs_node_count,last_used_date,used_dates,first_date, "
    "last_date,wherefrom,latitude,longitude,altitude,torrent_file_list,file_type,extended_attributes_key_value, "
    "extended_attributes_value_for_search,source_count_name, os_scheme_display,source_file,"
    "artifacts_relation_source_file)values(?,?,?,?,?, ?,?,?,?,? ,?,?,?,?,?, ?,?,?,?,?, ?,?,?,?,?, ?,?,?,?,?, "
    "?,?,?,?,?, ?,?,?,?,?,?,?)";

QString decoded_location(QString location)
{
    if (location.startsWith("file://"))
        location.remove(0, 7);
    return QUrl::fromPercentEncoding(location.toUtf8());
}

}  // namespace

void vlc_macos::extract_media_library()
{
    plugin_static_function::app_debug("[extract_media_library] starts", sig_media_library);
    sqlite_connection_scope connection(sig_media_library, destination_db_path);
    if (!connection.open_for_writing()) {
        plugin_static_function::app_debug(
            "[extract_media_library] destination db open -------FAILED------- " + connection.last_error_text(),
            sig_media_library);
        return;
    }
    prepared_statement insert(connection.db(), k_insert_media_library, prepared_statement::text_binding::empty_as_null);
    const auto stop = [this] { return cancel_requested; };

    for (const QString& library_file : media_library_files) {
        if (cancel_requested)
            break;  // rows already written are kept: the commit below still runs
        const QString user = plugin_static_function::extract_user_name_from_sourcefile(library_file, source_root);
        QFile file(library_file);
        if (!bounded_file_reader::open_regular(file)) {
            plugin_static_function::app_debug("[extract_media_library] file open --------FAILED-------",
                                              sig_media_library);
            continue;
        }
        const QStringList source_columns = source_file_columns(library_file);
        xspf_track_reader reader(&file);
        xspf_track track;
        while (reader.next(&track, stop)) {
            const QString location = decoded_location(track.location);
            const media_file_facts facts =
                gather_media_file_facts(path_inside_source(location, user), sig_media_library);
            const auto& a = facts.attributes;
            const QStringList values = {
                "0", user, facts.file_name, facts.size, facts.exists ? "YES" : "NO", facts.suffix, location,
                track.title, track.creator, track.album, track.track_num, track.annotation, track.image,
                convert_sec_to_hh_mm_ss(track.duration), track.application,
                track.id, facts.birth_seconds, a.content_creation_date, a.content_modification_date, a.content_type,
                facts.source_path, facts.source_path, a.fs_content_change_date, a.fs_creation_date, a.fs_name,
                a.fs_node_count, facts.used.last_used_date, facts.used.used_dates.join(";++::++;"),
                facts.used.first_date, facts.used.last_date, a.wherefrom, a.latitude, a.longitude, a.altitude,
                a.torrent_file_list, a.kind, facts.extended.value(0), facts.extended.value(1),
                plugin_static_function::get_source_count_name(), os_scheme_display, source_columns.value(0),
                source_columns.value(1)};
            if (insert.execute(values)) {
                count_inserted_row();
            } else {
                plugin_static_function::app_debug(
                    "[extract_media_library] insert query executin ------------FAILED---------- "
                        + insert.error_text(),
                    sig_media_library);
            }
        }
        if (reader.token_too_large())
            plugin_static_function::app_debug("[extract_media_library] a single entry is larger than the read limit "
                                              "---FAILED--- rest of the file left unread: "
                                                  + library_file,
                                              sig_media_library);
        if (reader.reached_end_of_document())
            plugin_static_function::app_debug("[extract_media_library] end of document ---------FOUND-----",
                                              sig_media_library);
    }
    insert.finish();
    connection.db().commit();
    // A cancelled reader keeps its rows but does not log a normal end.
    if (!cancel_requested)
        plugin_static_function::app_debug("[extract_media_library] ends", sig_media_library);
}
