// Recently opened documents into the recents table: the older per-application
// list in the preferences folder, the archive of macOS 10.11 and 10.12, and
// the shared-file lists of later systems. The items of the first and the last
// carry bookmarks, which say where the document was and on what volume.

#include <QUrl>

#include "bookmark_reader.h"
#include "keyed_archive.h"
#include "plist_document.h"
#include "prepared_statement.h"
#include "sqlite_connection_scope.h"
#include "vlc_macos.h"

namespace {

const QString sig_recents = "void vlc_macos::xcode_extract_recents_items(QString, QString, QString)";
const QString sig_recents_11_12 =
    "void vlc_macos::xcode_extract_recents_items_11_12(QString, QString, QString, QString)";
const QString sig_recents_10_13 = "void vlc_macos::xcode_extract_recents_items_10_13(QString, QString, QString)";

// The rows of the lists whose items carry bookmarks.
const QString k_insert_bookmarked =
    "insert into recents(bookmark, system_user, file_name, file_path, file_size, file_exist, suffix, file_type, "
    "drive_type, serial_no, volume_label, description, network_path, creation_timestamp, preview_file_path, "
    "export_file_paths, extended_attributes_key_value, extended_attributes_value_for_search, source_count_name, "
    "os_scheme_display, source_file, artifacts_relation_source_file) "
    "values(?,?,?,?,?, ?,?,?,?,?, ?,?,?,?,?, ?,?,?,?,?, ?,?)";
const QString k_insert_recents_11_12 =
    "insert into recents(bookmark , system_user , file_name, file_path,preview_file_path, export_file_paths , "
    "extended_attributes_key_value, extended_attributes_value_for_search ,source_count_name, "
    "os_scheme_display,source_file,artifacts_relation_source_file) values(?,?,?,?,?, ?,?,?,?,?,?,?)";

// Strings of the archive that are bookkeeping of the list, never documents.
const QStringList k_archive_markers = {"com.apple.LSSharedFileList.MaxAmount",
                                       "com.apple.LSSharedFileList.OverrideIcon.OSType", "srvr"};
const QStringList k_file_url_forms = {"file:///", "file://localhost", "file://", "file:/"};
const QString k_fact_separator = ";++::++;";

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

// "Recent item N of M" (1 the most recent, so the list's order survives any
// sorting), then the bookmark's facts that have no column of their own.
QString item_description(const bookmark_record& mark, int position, int count)
{
    QStringList parts{QString("Recent item %1 of %2").arg(position).arg(count)};
    if (mark.volume_created)
        parts << "Volume created: " + QString::number(*mark.volume_created);
    if (!mark.disk_image_path.isEmpty())
        parts << "Disk image: " + mark.disk_image_path;
    if (!mark.creator_user.isEmpty())
        parts << "Bookmark user: " + mark.creator_user;
    if (!mark.file_ids.isEmpty())
        parts << "File id: " + QString::number(mark.file_ids.last());
    return parts.join(k_fact_separator);
}

}  // namespace

void vlc_macos::insert_recents_row(prepared_statement& insert, const QStringList& values, const QString& failure,
                                   const QString& caller)
{
    if (insert.execute(values))
        count_inserted_row();
    else
        plugin_static_function::app_debug(failure, caller);
}

QStringList vlc_macos::bookmarked_recents_row(const bookmark_record& mark, const QString& listed_name, bool name_wins,
                                              int position, int count, const QString& user,
                                              const QString& list_file, const QString& caller)
{
    const QString machine_path = mark.path();
    media_file_facts facts;
    if (!machine_path.isEmpty())
        facts = gather_media_file_facts(path_inside_source(machine_path, user), caller,
                                        file_facts::without_folder_sizes);
    QString name = mark.path_components.isEmpty() ? QString() : mark.path_components.last();
    if (name_wins || name.isEmpty())
        name = listed_name.isEmpty() ? mark.display_name : listed_name;
    const QString source_file = path_below_root(list_file);
    return {"0",
            user,
            name,
            machine_path,
            facts.size,
            machine_path.isEmpty() ? QString() : (facts.exists ? "YES" : "NO"),
            facts.suffix,
            facts.attributes.kind,
            mark.drive_type(),
            mark.volume_uuid,
            mark.volume_name,
            item_description(mark, position, count),
            mark.on_network() ? mark.volume_url : QString(),
            mark.target_created ? QString::number(*mark.target_created) : QString(),
            facts.source_path,
            facts.source_path,
            facts.extended.value(0),
            facts.extended.value(1),
            plugin_static_function::get_source_count_name(),
            os_scheme_display,
            source_file,
            source_file};
}

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

    prepared_statement insert(connection.db(), k_insert_bookmarked, prepared_statement::text_binding::empty_as_null);
    const uint32_t count = plist_array_get_size(items);
    for (uint32_t i = 0; i < count && !cancel_requested; ++i) {
        const plist_t element = plist_array_get_item(items, i);
        const plist_t name = plist_document::dict_item(element, "Name");
        if (!name || plist_get_node_type(name) != PLIST_STRING)
            continue;
        // The list names the item whatever its bookmark says: a damaged
        // bookmark costs the row its location only.
        bookmark_record mark;
        const plist_t bookmark = plist_document::dict_item(element, "Bookmark");
        const QString why = bookmark ? bookmark_reader::read(plist_document::data_of(bookmark), &mark) : QString();
        if (!why.isEmpty())
            plugin_static_function::app_debug(
                QString("[extract_recents_items] bookmark of item %1 ------FAILED------ %2").arg(i + 1).arg(why),
                sig_recents);
        insert_recents_row(insert,
                           bookmarked_recents_row(mark, plist_document::string_of(name), true, int(i) + 1, int(count),
                                                  user_name, file_path, sig_recents),
                           "[extract_recents_items]---------FAILED----- to execute query", sig_recents);
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

    // The archive's own keys are walked as the list's first readers did,
    // for their log lines; the documents are the strings its objects reach.
    keyed_archive objects(archive.get());
    plist_document::for_each_member(archive.get(), [&](const char* key, plist_t) {
        if (qstrcmp(key, "$objects") != 0) {
            plugin_static_function::app_debug(
                "[xcode_extract_recents_items_11_12]- Not matched $objects string so Continuing..", sig_recents_11_12);
            return;
        }
        const QStringList texts = objects.reachable_strings();
        if (!objects.problem().isEmpty())
            plugin_static_function::app_debug("[xcode_extract_recents_items_11_12] damaged archive: "
                                                  + objects.problem(),
                                              sig_recents_11_12);
        for (qsizetype i = 0; i < texts.size() && !cancel_requested; ++i) {
            const QString& text = texts.at(i);
            if (!text.contains(":/") || k_archive_markers.contains(text))
                continue;
            const QString machine_path = document_path(text);
            if (machine_path.isEmpty())
                continue;
            const QString source_path = path_inside_source(machine_path, user_name);
            const media_file_facts facts =
                gather_media_file_facts(source_path, sig_recents_11_12, file_facts::names_only);
            insert_recents_row(insert,
                               {"0", user_name, facts.file_name, machine_path, facts.source_path, facts.source_path,
                                facts.extended.value(0), facts.extended.value(1),
                                plugin_static_function::get_source_count_name(), os_scheme_display, source_file,
                                source_file},
                               "[xcode_extract_recents_items_11_12] execute query ------FAILED------",
                               sig_recents_11_12);
        }
    });
    insert.finish();
    connection.db().commit();
    Q_UNUSED(root);
    plugin_static_function::app_debug("[xcode_extract_recents_items_11_12] - END", sig_recents_11_12);
}

void vlc_macos::xcode_extract_recents_items_10_13(QString file_path, QString db_path, QString user_name)
{
    plugin_static_function::app_debug("[xcode_extract_recents_items_10_13] START", sig_recents_10_13);
    sqlite_connection_scope connection(sig_recents_10_13, db_path);
    if (!connection.open_for_writing()) {
        plugin_static_function::app_debug(
            "[xcode_extract_recents_items_10_13] open destination DB ------FAILED-------", sig_recents_10_13);
        return;
    }
    const plist_owner list = plist_document::load_file(file_path);
    keyed_archive archive(list.get());
    if (!archive.is_archive()) {
        plugin_static_function::app_debug("[xcode_extract_recents_items_10_13] source file open ------FAILED------",
                                          sig_recents_10_13);
        return;
    }
    // Items come most recent first.
    const QVariantList items = archive.top("root").toMap().value("items").toList();
    if (!archive.problem().isEmpty())
        plugin_static_function::app_debug("[xcode_extract_recents_items_10_13] damaged archive: " + archive.problem(),
                                          sig_recents_10_13);

    prepared_statement insert(connection.db(), k_insert_bookmarked, prepared_statement::text_binding::empty_as_null);
    const int count = int(items.size());
    for (int i = 0; i < count && !cancel_requested; ++i) {
        const QVariantMap item = items.at(i).toMap();
        const QString name = item.value("Name").toString();
        const QVariant bookmark = item.value("Bookmark");
        const QString position = QString("item %1 of %2").arg(i + 1).arg(count);
        bookmark_record mark;
        if (bookmark.isValid()) {
            const QString why = bookmark_reader::read(bookmark.toByteArray(), &mark);
            if (!why.isEmpty()) {
                plugin_static_function::app_debug("[xcode_extract_recents_items_10_13] " + position
                                                      + " skipped, bookmark ------FAILED------ " + why,
                                                  sig_recents_10_13);
                continue;
            }
        } else if (name.isEmpty()) {
            plugin_static_function::app_debug(
                "[xcode_extract_recents_items_10_13] " + position + " skipped, no bookmark and no name",
                sig_recents_10_13);
            continue;
        }
        insert_recents_row(insert,
                           bookmarked_recents_row(mark, name, false, i + 1, count, user_name, file_path,
                                                  sig_recents_10_13),
                           "[xcode_extract_recents_items_10_13] execute query ------FAILED------", sig_recents_10_13);
    }
    // Rows written before a cancel stay: the commit runs either way.
    insert.finish();
    connection.db().commit();
    if (!cancel_requested)
        plugin_static_function::app_debug("[xcode_extract_recents_items_10_13] - END", sig_recents_10_13);
}
