#include "vlc_androidos.h"

#include <QDir>
#include <QFileInfo>
#include <QUrl>

#include "android_source_run.h"
#include "plugin_static_function.h"
#include "source_path_guard.h"

namespace {

const QString k_database_relative = "apps/org.videolan.vlc/r/app_db/vlc_media.db";
const QString k_file_system_database = "data/data/org.videolan.vlc/app_db/vlc_media.db";
// Shared storage of the primary user, where a full file-system extraction
// may keep it.
const char* const k_file_system_storage[] = {"data/media/", "media/"};

// Whether a fixed path of the app's layout is present, judged without
// looking outside the source: its folder must stay inside, and the entry is
// only looked at itself (a link counts as present, so that the guard refuses
// and logs it where the layout is chosen).
bool entry_present(const QString& path, const QString& source_root)
{
    const QFileInfo entry(path);
    return source_path_guard::is_inside_root(entry.path(), source_root) && (entry.isSymLink() || entry.exists());
}

}  // namespace

QString vlc_androidos::phone_path_of_mrl(const QString& mrl)
{
    // A stream (http://, smb://, ...) has no file on the phone.
    if (!mrl.startsWith("file://") && mrl.contains("://"))
        return QString();
    const QString path = mrl.startsWith("file://") ? mrl.mid(7) : mrl;
    return QUrl::fromPercentEncoding(path.toUtf8());
}

vlc_androidos::vlc_androidos(QWidget* parent) : extractor_base(parent)
{
}

vlc_androidos::~vlc_androidos() = default;

void vlc_androidos::androidos_set_source_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info info)
{
    store_source_texts(info);
    user_names = distinct_non_empty(account_names(info, false));
}

void vlc_androidos::find_source_file()
{
    const QString signature = "void vlc_androidos::find_source_file()";
    plugin_static_function::app_debug("[find_source_file] starts", signature);

    media_library_source.clear();
    album_source.clear();
    playlist_source.clear();
    // The backup layout keeps an app's private data in r/ below apps/<package>;
    // a full file-system extraction keeps it in data/data/<package>.
    QString candidate = source_root + k_database_relative;
    use_backup_layout();
    if (!entry_present(candidate, source_root)) {
        candidate = source_root + k_file_system_database;
        use_file_system_layout();
    }
    // A database that is a link out of the source is not the evidence's.
    if (source_path_guard::exists_inside(candidate, source_root, signature)) {
        media_library_source = candidate;
        album_source = candidate;
        playlist_source = candidate;
    }

    plugin_static_function::app_debug("[find_source_file] ends", signature);
}

void vlc_androidos::extract_plugin_artifacts()
{
    const QString signature = "void vlc_androidos::extract_plugin_artifacts()";
    plugin_static_function::app_debug("[extract_plugin_artifacts] starts", signature);
    source_path_guard::reset_log();

    if (extraction_allowed()) {
        clear_lookup_caches();
        const QList<QPair<QString, void (vlc_androidos::*)()>> tables = {
            {"media_library", &vlc_androidos::extract_media_library},
            {"album_art", &vlc_androidos::extract_album_art},
            {"album", &vlc_androidos::extract_album},
            {"playlists", &vlc_androidos::extract_playlist},
        };
        for (const auto& table : tables) {
            if (!is_table_selected(table.first))
                continue;
            (this->*table.second)();
            finish_table();
        }
    }

    plugin_static_function::app_debug("[extract_plugin_artifacts] ends", signature);
}

void vlc_androidos::use_backup_layout()
{
    full_file_system = false;
    private_folder = "apps/org.videolan.vlc/r/";
    shared_storage = "shared/";
    external_files = "apps/org.videolan.vlc/ef/";
}

void vlc_androidos::use_file_system_layout()
{
    full_file_system = true;
    private_folder = "data/data/org.videolan.vlc/";
    shared_storage = k_file_system_storage[0];
    for (const char* storage : k_file_system_storage) {
        const QString folder = source_root + storage + "0";
        if (source_path_guard::is_inside_root(folder, source_root) && QFileInfo(folder).isDir()) {
            shared_storage = storage;
            break;
        }
    }
    external_files = shared_storage + "0/Android/data/org.videolan.vlc/files/";
}

void vlc_androidos::run_table(const QString& signature, const QString& source_path,
                              QString android_statements::*select,
                              bool (vlc_androidos::*insert_rows)(android_source_run&))
{
    android_source_run run(signature, destination_db_path);
    if (!run.open(source_path, source_root, helper_obj))
        return;
    if (!database_shape_read)
        read_database_shape(run.source());
    if (!run.select(statements().*select))
        return;
    // A cancelled or broken-off table closes without its end line.
    if ((this->*insert_rows)(run))
        run.finish();
}

void vlc_androidos::read_database_shape(const QSqlDatabase& source)
{
    const QString signature = "void vlc_androidos::read_database_shape(const QSqlDatabase&)";
    database_shape_read = true;
    database_shape = android_database_shape::read(source);
    plugin_static_function::app_debug("media database model " + QString::number(database_shape.model()), signature);
    // Once a run, not once a row: what the database cannot give stays empty.
    for (const QString& missing : database_shape.missing())
        plugin_static_function::app_debug("not in this media database, its columns stay empty: " + missing, signature);
}

void vlc_androidos::clear_lookup_caches()
{
    database_shape = android_database_shape();
    database_shape_read = false;
    album_cache.clear();
    playlist_names_cache.clear();
    artist_name_cache.clear();
    thumbnail_path_cache.clear();
}

QString vlc_androidos::convert_sec_to_hh_mm_ss(QString milliseconds)
{
    return plugin_static_function::duration_text_from_milliseconds(milliseconds);
}

QString vlc_androidos::prepend_zero_for_time(QString number, int width)
{
    return plugin_static_function::zero_padded_number(number, width);
}

QString vlc_androidos::media_path_from_mrl(QString mrl) const
{
    if (full_file_system)
        return phone_path_in_source(phone_path_of_mrl(mrl));
    mrl.replace("%20", " ");
    // Primary storage is .../emulated/0/...; the backup keeps it below shared/0/.
    const int zero = mrl.indexOf('0');
    if (zero > 0)
        mrl = mrl.mid(zero);
    return source_root + "shared/" + mrl;
}

QString vlc_androidos::phone_path_in_source(const QString& phone_path) const
{
    // The phone reaches the primary user's shared storage and the app's
    // private folder under several names.
    const QList<QPair<QString, QString>> places = {
        {"/storage/emulated/0/", shared_storage + "0/"},
        {"/sdcard/", shared_storage + "0/"},
        {"/storage/self/primary/", shared_storage + "0/"},
        {"/data/media/0/", shared_storage + "0/"},
        {"/data/user/0/org.videolan.vlc/", private_folder},
        {"/data/data/org.videolan.vlc/", private_folder},
    };
    for (const auto& place : places) {
        if (phone_path.startsWith(place.first))
            return source_root + place.second + phone_path.mid(place.first.size());
    }
    // Anything else (a memory card, say) lies where the phone had it.
    return phone_path.isEmpty() ? QString() : source_root + phone_path.mid(phone_path.startsWith('/') ? 1 : 0);
}

QString vlc_androidos::source_file_text(const QString& source_path) const
{
    const QStringList parts =
        plugin_static_function::get_final_artifact_source_file(path_below_root(source_path), source_root, source_type);
    return parts.value(0);
}

