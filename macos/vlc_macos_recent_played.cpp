// Recently played media ("recentlyPlayedMediaList" of each user's preference
// file) into the recent_played table, with the facts of each media file.

#include <QUrl>

#include "plist_document.h"
#include "prepared_statement.h"
#include "sqlite_connection_scope.h"
#include "vlc_macos.h"

namespace {

const QString sig_recent_played = "void vlc_macos::xcode_extract_recent_played_11_12(QString, QString)";

const QString k_insert_recent_played =
    "insert into recent_played(bookmark, system_user, file_url, file_name, file_size, file_exist, file_path, "
    "file_extension, fs_name, fs_node_count, content_type, file_type, wherefrom, latitude, longitude, altitude, "
    "date_added, content_modification_date, fs_creation_date, fs_content_change_date, content_creation_date, "
    "last_used_date, first_date, last_date, all_used_dates,preview_file_path, export_file_paths , "
    "extended_attributes_key_value, extended_attributes_value_for_search ,source_count_name, "
    "os_scheme_display,source_file,artifacts_relation_source_file)values (?,?,?,?,?, ?,?,?,?,?, ?,?,?,?,?, "
    "?,?,?,?,?, ?,?,?,?,?, ?,?,?,?,?, ?,?,?)";

const QString k_file_url = "file:///";

// The path on the examined machine a played URL names; empty for a stream
// or anything else that is not a local file.
QString played_file_path(const QString& url)
{
    if (!url.startsWith(k_file_url))
        return QString();
    return "/" + QUrl::fromPercentEncoding(url.mid(k_file_url.size()).toUtf8());
}

}  // namespace

void vlc_macos::xcode_extract_recent_played_11_12(QString file_path, QString user_name)
{
    plugin_static_function::app_debug("[xcode_extract_recent_played_11_12] START", sig_recent_played);
    sqlite_connection_scope connection(sig_recent_played, destination_db_path);
    if (!connection.open_for_writing()) {
        plugin_static_function::app_debug(
            "[xcode_extract_recent_played_11_12]open destination DB ------FAILED-------", sig_recent_played);
        return;
    }
    const plist_owner preferences = plist_document::load_file(file_path);
    if (!plist_document::is_dict(preferences.get())) {
        plugin_static_function::app_debug("target_file file open --------FAILED------", sig_recent_played);
        plugin_static_function::app_debug("end with failure", sig_recent_played);
        return;
    }
    prepared_statement insert(connection.db(), k_insert_recent_played, prepared_statement::text_binding::empty_as_null);
    const QStringList source_columns = source_file_columns(file_path);

    const plist_t list = plist_document::dict_item(preferences.get(), "recentlyPlayedMediaList");
    const uint32_t count = plist_document::is_array(list) ? plist_array_get_size(list) : 0;
    for (uint32_t i = 0; i < count && !cancel_requested; ++i) {
        const plist_t element = plist_array_get_item(list, i);
        if (!element || plist_get_node_type(element) != PLIST_STRING)
            continue;
        const QString url = plist_document::string_of(element);
        const QString machine_path = played_file_path(url);
        const media_file_facts facts =
            gather_media_file_facts(path_inside_source(machine_path, user_name), sig_recent_played);
        const auto& a = facts.attributes;
        const QStringList values = {
            "0", user_name, url, facts.file_name, facts.size, facts.exists ? "YES" : "NO", machine_path,
            facts.suffix, a.fs_name, a.fs_node_count, a.content_type, a.kind, a.wherefrom, a.latitude, a.longitude,
            a.altitude, a.date_added, a.content_modification_date, a.fs_creation_date, a.fs_content_change_date,
            a.content_creation_date, facts.used.last_used_date, facts.used.first_date, facts.used.last_date,
            facts.used.used_dates.join(";++::++;"), facts.source_path, facts.source_path, facts.extended.value(0),
            facts.extended.value(1), plugin_static_function::get_source_count_name(), os_scheme_display,
            source_columns.value(0), source_columns.value(1)};
        if (insert.execute(values))
            count_inserted_row();
        else
            plugin_static_function::app_debug(
                "[xcode_extract_recent_played_11_12] insert query execution ------------FAILED---------- "
                    + insert.error_text(),
                sig_recent_played);
    }
    // Rows written before a cancel stay: the commit runs either way.
    insert.finish();
    connection.db().commit();
    if (!cancel_requested)
        plugin_static_function::app_debug("[xcode_extract_recent_played_11_12] - END", sig_recent_played);
}
