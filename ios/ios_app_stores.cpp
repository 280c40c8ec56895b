#include "ios_app_stores.h"

#include <QFileInfo>
#include <QUrl>

#include "media_library_run.h"
#include "plist_document.h"
#include "plugin_helper_functions.h"
#include "plugin_static_function.h"
#include "source_path_guard.h"
#include "sqlite_connection_scope.h"

#include <plist/plist.h>

namespace ios_app_stores {

namespace {

const QString k_separator = ";++::++;";

const QString k_insert_media =
    "insert into media_library(bookmark,file_name,location,file_size,file_exist,file_type,suffix,title,duration,"
    "artist,album,play_count,description,preview_file_path,export_file_paths,source_file,os_scheme_display,"
    "source_count_name) values(0,?,?,?,?, ?,?,?,?,? ,?,?,?,?,?, ?,?,?)";
const QString k_insert_recent =
    "insert into recents(bookmark,file_name,network_path,description,source_file,os_scheme_display,"
    "source_count_name) values(0,?,?,?,?, ?,?)";

// Columns of the store's statement.
enum store_column { url, title, type, duration, last_position, play_count, unread, artist, album };

bool cancelled(const media_library_context& context)
{
    return context.cancel_requested && *context.cancel_requested;
}

void count_row(const media_library_context& context)
{
    if (context.count_row)
        context.count_row();
}

// The app files a movie, a clip or an episode as video, and names its type
// in words; without the column the file's extension tells.
QString file_type_of(const QString& type, const QString& name, plugin_helper_functions* helper)
{
    if (!type.isEmpty())
        return type == "audio" ? "Audio" : "Video";
    return helper && helper->check_is_audio_by_extn(name) ? "Audio" : "Video";
}

// Where playback stopped, and whether the app still showed the file as new.
QString description_of(const prepared_statement& row)
{
    bool has_fraction = false;
    const double fraction = row.text(last_position).toDouble(&has_fraction);
    QStringList parts;
    const QString position =
        media_library_reader::position_text(has_fraction ? fraction : -1, 0, row.text(duration).toLongLong());
    if (!position.isEmpty())
        parts << position;
    if (!row.is_null(unread))
        parts << QString("Unread: ") + (row.text(unread) == "0" ? "NO" : "YES");
    return parts.join(k_separator);
}

}  // namespace

namespace {

// The store's rows into media_library; false when the run was cancelled.
// The insert is finished here, before the run closes its connections.
bool insert_store_rows(media_library_run& run, const media_library_context& context,
                       const media_library_places& places, const QString& store_path, const QString& signature)
{
    prepared_statement insert(run.result(), k_insert_media);
    const QString source_file = media_library_reader::source_file_of(context, store_path);
    const QString source_count_name = plugin_static_function::get_source_count_name();
    prepared_statement& row = run.rows();
    while (run.next_row()) {
        if (cancelled(context))
            return false;
        const QString path = places.media_path(row.text(url));
        // The name the app knew: a backup's stored file has only its id.
        const QString name = QFileInfo(media_library_reader::path_of_file_mrl(row.text(url))).fileName();
        const bool exists = source_path_guard::exists_inside(path, context.source_root, signature);
        const QString relative = media_library_reader::path_below_root(path, context.source_root);
        const QString existence = path.isEmpty() ? QString() : exists ? "YES" : "NO";
        const QString length = row.is_null(duration)
                                   ? QString()
                                   : plugin_static_function::duration_text_from_milliseconds(row.text(duration));
        const QStringList values = {
            name,
            relative,
            exists ? QString::number(QFileInfo(path).size()) : QString(),
            existence,
            file_type_of(row.text(type), name, context.helper),
            plugin_static_function::mining_suffix(name),
            row.text(title),
            length,
            row.text(artist),
            row.text(album),
            row.text(play_count),
            description_of(row),
            relative,
            relative,
            source_file,
            context.os_scheme_display,
            source_count_name};
        if (run.insert(insert, values))
            count_row(context);
    }
    return true;
}

}  // namespace

void extract_core_data_library(const media_library_context& context, const media_library_places& places,
                               const QString& store_path)
{
    const QString signature = "void " + context.owner + "::extract_media_library_store(QString)";
    media_library_run run(signature, context.result_db_path);
    const auto copy = [&] {
        return media_library_reader::checked_working_copy(store_path, context.source_root, context.helper, signature);
    };
    if (!run.open(store_path, copy))
        return;
    QStringList missing;
    const QString select = media_library_shape::select_by_name(
        run.source(), "ZFILE",
        {"ZURL", "ZTITLE", "?ZTYPE", "ZDURATION", "ZLASTPOSITION", "ZPLAYCOUNT", "ZUNREAD", "?ZARTIST", "?ZALBUM"},
        &missing);
    for (const QString& column : missing)
        plugin_static_function::app_debug("not in this media library store, its columns stay empty: " + column,
                                          signature);
    if (run.select(select) && insert_store_rows(run, context, places, store_path, signature))
        run.finish();
}

namespace {

// The title the app keeps for the address at index: by its position (as
// text), or in older versions by the address itself.
QString title_of(plist_t titles, int index, const QString& address)
{
    const QString by_index = plist_document::string_of(plist_document::dict_item(titles, QString::number(index)));
    return by_index.isEmpty() ? plist_document::string_of(plist_document::dict_item(titles, address)) : by_index;
}

// The last part of the address's path, else its host.
QString name_of_address(const QString& address)
{
    const QUrl url(address);
    const QString last = QUrl::fromPercentEncoding(url.path().section('/', -1).toUtf8());
    return last.isEmpty() ? url.host() : last;
}

}  // namespace

void extract_recent_addresses(const media_library_context& context, const QString& preferences_path)
{
    const QString signature = "void " + context.owner + "::extract_recents(QString)";
    plugin_static_function::app_debug("START", signature);
    if (!source_path_guard::exists_inside(preferences_path, context.source_root, signature))
        return;
    plist_document::load_failure why = plist_document::load_failure::none;
    plist_owner preferences = plist_document::load_file(preferences_path, &why);
    if (!preferences) {
        plugin_static_function::app_debug("preferences cannot be read as a property list: " + preferences_path,
                                          signature);
        return;
    }
    const plist_t root = static_cast<plist_t>(preferences.get());
    const plist_t addresses = plist_document::dict_item(root, "recent-urls");
    const plist_t titles = plist_document::dict_item(root, "recent-url-titles");
    if (!plist_document::is_array(addresses))
        return;
    const int count = int(std::min<uint32_t>(plist_array_get_size(addresses), k_max_addresses));
    if (plist_array_get_size(addresses) > uint32_t(k_max_addresses))
        plugin_static_function::app_debug(
            QString("more than %1 recent network addresses, the rest is skipped: ").arg(k_max_addresses)
                + preferences_path,
            signature);

    sqlite_connection_scope result(signature, context.result_db_path);
    if (!result.open_for_writing()) {
        plugin_static_function::app_debug("Destination Db opening ---FAILED--- " + context.result_db_path, signature);
        plugin_static_function::app_debug(result.last_error_text(), signature);
        return;
    }
    prepared_statement insert(result.db(), k_insert_recent);
    const QString source_file = media_library_reader::source_file_of(context, preferences_path);
    for (int i = 0; i < count && !cancelled(context); ++i) {
        const QString address = plist_document::string_of(plist_array_get_item(addresses, uint32_t(i)));
        if (address.isEmpty())
            continue;
        const QString title = title_of(titles, i, address);
        const QStringList values = {title.isEmpty() ? name_of_address(address) : title,
                                    address,
                                    QString("Recent network address %1 of %2").arg(i + 1).arg(count),
                                    source_file,
                                    context.os_scheme_display,
                                    plugin_static_function::get_source_count_name()};
        if (insert.execute(values))
            count_row(context);
        else
            plugin_static_function::app_debug("Insertion Query -----FAILED----- " + insert.error_text(), signature);
    }
    insert.finish();
    result.db().commit();
    if (!cancelled(context))
        plugin_static_function::app_debug("ENDS", signature);
}

}  // namespace ios_app_stores
