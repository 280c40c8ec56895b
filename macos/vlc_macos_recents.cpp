// Recently opened documents into the recents table: the older per-application
// list in the preferences folder, and the newer shared-file-list archive.

#include <QUrl>

#include "plist_document.h"
#include "prepared_statement.h"
#include "sqlite_connection_scope.h"
#include "vlc_macos.h"

namespace {

const QString sig_recents = "void vlc_macos::xcode_extract_recents_items(QString, QString, QString)";
const QString sig_recents_11_12 =
    "void vlc_macos::xcode_extract_recents_items_11_12(QString, QString, QString, QString)";

const QString k_insert_recents = "insert into recents(bookmark, system_user ,file_name , source_count_name, "
                                 "os_scheme_display,source_file,artifacts_relation_source_file)"
                                 "values(?,?,?,?,?,?,?)";
const QString k_insert_recents_11_12 =
    "insert into recents(bookmark , system_user , file_name, file_path,preview_file_path, export_file_paths , "
    "extended_attributes_key_value, extended_attributes_value_for_search ,source_count_name, "
    "os_scheme_display,source_file,artifacts_relation_source_file) values(?,?,?,?,?, ?,?,?,?,?,?,?)";

// Strings of the archive that are bookkeeping of the list, never documents.
const QStringList k_archive_markers = {"com.apple.LSSharedFileList.MaxAmount",
                                       "com.apple.LSSharedFileList.OverrideIcon.OSType", "srvr"};
const QStringList k_file_url_forms = {"file:///", "file://localhost", "file://", "file:/"};

// The path a document URL of the archive names; empty for anything that is
// not a file URL.
QString document_path(const QString& text)
{
    const int colon = text.indexOf(':');
    if (colon <= 0 || text.left(colon).compare("file", Qt::CaseInsensitive) != 0)
        return QString();
    QString rest = text;
    for (const QString& form : k_file_url_forms) {
        if (rest.startsWith(form, Qt::CaseInsensitive)) {
            rest.remove(0, form.size());
            break;
        }
    }
    const QString path = QUrl::fromPercentEncoding(rest.toUtf8());
    return path.startsWith('/') ? path : "/" + path;
}

}  // namespace

void vlc_macos::xcode_extract_recents_items(QString file_path, QString db_path, QString user_name)
{
    plugin_static_function::app_debug("[extract_recents_items] starts.", sig_recents);
    sqlite_connection_scope connection(sig_recents, db_path);
    if (!connection.open_for_writing()) {
        plugin_static_function::app_debug("[extract_recents_items] open destination DB------FAILED--------",
                                          sig_recents);
        return;
    }
    plist_document::load_failure why = plist_document::load_failure::none;
    const plist_owner root = plist_document::load_file(file_path, &why);
    if (!plist_document::is_dict(root.get())) {
        plugin_static_function::app_debug(why == plist_document::load_failure::unreadable
                                              ? "[extract_recents_items] source file open ------------FAILED------"
                                              : "[extract_recents_items] source file open ---------FAILED-----",
                                          sig_recents);
        return;
    }
    const plist_t recent = plist_document::dict_item(root.get(), "RecentDocuments");
    if (!plist_document::is_dict(recent)) {
        plugin_static_function::app_debug(
            "[extract_recents_items] Empty handle_completion_dict Dictionary ------- Failed -------", sig_recents);
        return;
    }
    const plist_t items = plist_document::dict_item(recent, "CustomListItems");
    if (!plist_document::is_array(items)) {
        plugin_static_function::app_debug(
            "[extract_recents_items] Empty DUSavedDiskImageList_array array  ------- Failed -------", sig_recents);
        return;
    }

    prepared_statement insert(connection.db(), k_insert_recents, prepared_statement::text_binding::empty_as_null);
    const QString source_file = path_below_root(file_path);
    const uint32_t count = plist_array_get_size(items);
    for (uint32_t i = 0; i < count && !cancel_requested; ++i) {
        const plist_t name = plist_document::dict_item(plist_array_get_item(items, i), "Name");
        if (!name || plist_get_node_type(name) != PLIST_STRING)
            continue;
        const QStringList values = {"0", user_name, plist_document::string_of(name),
                                    plugin_static_function::get_source_count_name(), os_scheme_display,
                                    source_file, source_file};
        if (insert.execute(values))
            count_inserted_row();
        else
            plugin_static_function::app_debug("[extract_recents_items]---------FAILED----- to execute query",
                                              sig_recents);
    }
    insert.finish();
    connection.db().commit();
}

void vlc_macos::xcode_extract_recents_items_11_12(QString file_path, QString db_path, QString user_name,
                                                   QString root)
{
    plugin_static_function::app_debug("[xcode_extract_recents_items_11_12] START", sig_recents_11_12);
    sqlite_connection_scope connection(sig_recents_11_12, db_path);
    if (!connection.open_for_writing()) {
        plugin_static_function::app_debug(
            "[xcode_extract_recents_items_11_12]open destination DB ------FAILED-------", sig_recents_11_12);
        return;
    }
    const plist_owner archive = plist_document::load_file(file_path);
    if (!plist_document::is_dict(archive.get())) {
        plugin_static_function::app_debug("[xcode_extract_recents_items_11_12] source file open ------FAILED------",
                                          sig_recents_11_12);
        plugin_static_function::app_debug("[xcode_extract_recents_items_11_12] end with failure",
                                          sig_recents_11_12);
        return;
    }
    if (plist_dict_get_size(archive.get()) == 0)
        plugin_static_function::app_debug("[xcode_extract_recents_items_11_12]- Array is Nil for the..",
                                          sig_recents_11_12);

    prepared_statement insert(connection.db(), k_insert_recents_11_12, prepared_statement::text_binding::empty_as_null);
    // Both source columns as the older list's rows give them.
    const QString source_file = path_below_root(file_path);

    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(archive.get(), &iterator);
    for (;;) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(archive.get(), iterator, &key, &value);
        if (!key)
            break;
        const bool is_objects = qstrcmp(key, "$objects") == 0;
        free(key);
        if (!is_objects) {
            plugin_static_function::app_debug(
                "[xcode_extract_recents_items_11_12]- Not matched $objects string so Continuing..", sig_recents_11_12);
            continue;
        }
        const uint32_t count = plist_document::is_array(value) ? plist_array_get_size(value) : 0;
        for (uint32_t i = 0; i < count && !cancel_requested; ++i) {
            const QString text = plist_document::string_of(plist_array_get_item(value, i));
            if (!text.contains(":/") || k_archive_markers.contains(text))
                continue;
            const QString machine_path = document_path(text);
            if (machine_path.isEmpty())
                continue;
            const QString source_path = path_inside_source(machine_path, user_name);
            const media_file_facts facts = gather_media_file_facts(source_path, sig_recents_11_12, false);
            const QStringList values = {"0",
                                        user_name,
                                        facts.file_name,
                                        machine_path,
                                        facts.source_path,
                                        facts.source_path,
                                        facts.extended.value(0),
                                        facts.extended.value(1),
                                        plugin_static_function::get_source_count_name(),
                                        os_scheme_display,
                                        source_file,
                                        source_file};
            if (insert.execute(values))
                count_inserted_row();
            else
                plugin_static_function::app_debug(
                    "[xcode_extract_recents_items_11_12] execute query ------FAILED------", sig_recents_11_12);
        }
    }
    free(iterator);
    insert.finish();
    connection.db().commit();
    Q_UNUSED(root);
    plugin_static_function::app_debug("[xcode_extract_recents_items_11_12] - END", sig_recents_11_12);
}
