#include "vlc_winos.h"

#include <QFileInfo>
#include <QSqlError>

#include "plugin_static_function.h"
#include "prepared_statement.h"
#include "source_path_guard.h"
#include "sqlite_connection_scope.h"

namespace {

const QString sig_find = "void vlc_winos::find_source_file()";
const QString sig_driver = "void vlc_winos::extract_plugin_artifacts()";

}  // namespace

vlc_winos::vlc_winos(QWidget* parent) : extractor_base(parent)
{
}

vlc_winos::~vlc_winos() = default;

void vlc_winos::winos_set_source_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info info)
{
    // Both names of every account are candidate home folders. The list is
    // not cleared first: a second call adds to it.
    store_source_texts(info);
    user_names = distinct_non_empty(user_names + account_names(info, true));
}

void vlc_winos::find_source_file()
{
    plugin_static_function::app_debug("[find_source_file]---STARTS---", sig_find);
    log_undecodable_account_folders(sig_find);
    // Discovery opens a run: refusals are logged afresh, folders resolved afresh.
    source_path_guard::reset_log();
    art_folder_list.clear();
    preference_file_list.clear();
    jump_list_folder_list.clear();
    interface_settings_file_list.clear();
    desktop_media_library_files.clear();

    QStringList media_library_databases;
    const struct
    {
        const char* suffix;
        QStringList* list;
    } candidates[] = {
        {"/AppData/Roaming/vlc/art", &art_folder_list},
        {"/AppData/Roaming/vlc/vlcrc", &preference_file_list},
        {"/AppData/Roaming/Microsoft/Windows/Recent/AutomaticDestinations", &jump_list_folder_list},
        {"/AppData/Roaming/vlc/ml/ml.db", &media_library_databases},
    };
    for (const QString& user : user_names) {
        for (const auto& candidate : candidates) {
            const QString path = source_root + "Users/" + user + candidate.suffix;
            // A candidate that is a link out of the source (or a user name
            // that climbs out of it) counts as absent: it is never read.
            if (source_path_guard::exists_inside(path, source_root, sig_find))
                candidate.list->append(path);
            else
                plugin_static_function::app_debug("[find_source_file]----  FILE NOT EXISTS" + path, sig_find);
        }
        // The player's interface settings sit beside vlcrc; a user without
        // them is common and not worth a line.
        const QString settings = source_root + "Users/" + user + "/AppData/Roaming/vlc/vlc-qt-interface.ini";
        if (source_path_guard::exists_inside(settings, source_root, sig_find))
            interface_settings_file_list.append(settings);
        if (!media_library_databases.isEmpty())
            desktop_media_library_files.append({user, media_library_databases.takeFirst()});
    }
    plugin_static_function::app_debug("[find_source_file]---ENDS---", sig_find);
}

QString vlc_winos::prepare_windows_path(QString path)
{
    if (path.isEmpty())
        return QString();
    // Only the root's length is cut, the prefix itself is not compared: every
    // path handed here was built from the root.
    QString windows = "C:/" + path.mid(source_root.size());
    return windows.replace(QChar('/'), QChar('\\'));
}

QString vlc_winos::media_path_on_source(const QString& windows_path) const
{
    QString path = windows_path;
    path.replace('\\', '/');
    if (!path.startsWith("C:/"))
        return QString();
    path.replace("C:/", "/");
    path = plugin_static_function::get_complete_file_path(path, QString(), source_type);
    if (path.startsWith('/'))
        path.remove(0, 1);
    return source_root + path;
}

QString vlc_winos::last_path_part(const QString& path)
{
    const QStringList parts = path.split('/');
    return parts.size() >= 2 ? parts.last() : QString();
}

struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_system_account vlc_winos::account_of(const QString& path) const
{
    return plugin_static_function::extract_account_from_sourcefile(path, source_root);
}

void vlc_winos::extract_plugin_artifacts()
{
    plugin_static_function::app_debug("[extract_plugins_artifacts]---STARTS---", sig_driver);
    if (extraction_allowed()) {
        // The player 4's database of each account adds to the tables it shares.
        open_desktop_media_libraries("vlc_winos");
        // Fixed order: playlists read what the recents run collected.
        const struct
        {
            const char* table;
            void (vlc_winos::*run)();
            void (media_library_reader::*database_table)();
        } steps[] = {
            {"recents", &vlc_winos::extract_recents, nullptr},
            {"playlists", &vlc_winos::extract_playlists, &media_library_reader::extract_playlist},
            {"album_art", &vlc_winos::album_arts_artifacts, &media_library_reader::extract_album_art},
            {"podcasts", &vlc_winos::extract_podcasts_vlc, nullptr},
            {"media_library", nullptr, &media_library_reader::extract_media_library},
            {"album", nullptr, &media_library_reader::extract_album},
        };
        for (const auto& step : steps) {
            if (!is_table_selected(step.table))
                continue;
            if (step.run)
                (this->*step.run)();
            if (step.database_table)
                run_desktop_media_libraries(step.database_table);
            finish_table();
        }
        desktop_media_libraries.clear();
    }
    plugin_static_function::app_debug("[extract_plugins_artifacts]---ENDS---", sig_driver);
}

QString vlc_winos::relative_to_source(const QString& path) const
{
    const QString below_root = path.startsWith(source_root) ? path.mid(source_root.size()) : path;
    return plugin_static_function::get_relative_file_path(below_root, source_root, source_type);
}

QString vlc_winos::source_file_text(const QString& path) const
{
    const QString below_root = path.startsWith(source_root) ? path.mid(source_root.size()) : path;
    return plugin_static_function::get_final_artifact_source_file(below_root, source_root, source_type).value(0);
}

void vlc_winos::insert_row(prepared_statement& insert, const QStringList& values, const QString& failure_prefix,
                           const QString& signature)
{
    if (insert.execute(values)) {
        count_inserted_row();
        return;
    }
    plugin_static_function::app_debug(failure_prefix + insert.statement() + " " + insert.error_text(), signature);
}

std::unique_ptr<prepared_statement> vlc_winos::begin_table_run(sqlite_connection_scope& scope, const QString& insert,
                                                               const QString& open_failure, const QString& signature)
{
    if (!scope.open_for_writing()) {
        plugin_static_function::app_debug(open_failure + scope.last_error_text(), signature);
        return nullptr;
    }
    // Text columns hold text: a value the evidence lacks is an empty text, not NULL.
    return std::make_unique<prepared_statement>(scope.db(), insert, prepared_statement::text_binding::null_as_empty);
}

bounded_file_reader::result vlc_winos::read_capped(const QString& path, const QString& signature)
{
    auto read = bounded_file_reader::read(path);
    if (read.truncated)
        plugin_static_function::app_debug("file larger than the read limit, only its start is read: " + path,
                                          signature);
    return read;
}
