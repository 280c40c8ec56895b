// The player's cover-art cache: one row per PNG or JPG picture, named by the
// artist and album folders that hold it.

#include <QDirIterator>
#include <QFileInfo>

#include "plugin_static_function.h"
#include "source_path_guard.h"
#include "sqlite_connection_scope.h"
#include "vlc_winos.h"

namespace {

const QString sig_art = "void vlc_winos::album_arts_artifacts()";

const QString k_insert_art =
    "insert into album_art(bookmark,system_user,domain_user,file_name,art_file_name,file_path,windows_path,"
    "creation_timestamp,modification_timestamp,last_access_timestamp, preview_file_path, export_file_paths,"
    "source_file, source_count_name, os_scheme_display) values(0,?,?,?,?,?,?,?,?,?,?,?,?,?,?)";

// "<artist>-<album>" from the two folders above the picture.
QString art_name_of(const QString& path)
{
    const QStringList parts = path.split('/');
    if (parts.size() < 3)
        return QString();
    return parts.at(parts.size() - 3) + "-" + parts.at(parts.size() - 2);
}

}  // namespace

void vlc_winos::album_arts_artifacts()
{
    plugin_static_function::app_debug("[album_arts_artifacts]---STARTS---", sig_art);
    if (art_folder_list.isEmpty())
        return;
    sqlite_connection_scope scope(sig_art, destination_db_path);
    const auto insert = begin_table_run(scope, k_insert_art, "[album_arts_artifacts]Destination Db opening failed ", sig_art);
    if (!insert)
        return;

    // A cancelled run keeps its rows and stops without the end line.
    const auto stop_on_cancel = [&] {
        if (cancel_requested)
            scope.db().commit();
        return cancel_requested;
    };
    for (const QString& folder : art_folder_list) {
        if (stop_on_cancel())
            return;
        const auto account = account_of(folder);
        // Linked folders are not walked; a linked picture counts when it
        // resolves to a regular file inside the source.
        QDirIterator entries(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            if (stop_on_cancel())
                return;
            const QString found = entries.next();
            const QFileInfo& info = entries.fileInfo();
            if (info.isSymLink() && !source_path_guard::allow(found, source_root, sig_art))
                continue;
            if (!info.isFile())
                continue;
            const QString path = plugin_static_function::get_complete_file_path(found, QString(), source_type);
            const QString suffix = plugin_static_function::mining_suffix(path);
            if (suffix != "png" && suffix != "jpg")
                continue;
            const QString relative = relative_to_source(path);
            insert_row(*insert,
                       {account.system_user, account.domain_user, entries.fileName(), art_name_of(path), relative,
                        prepare_windows_path(path),
                        QString::number(plugin_static_function::get_posix_timestamp(path, "birth").toLongLong()),
                        QString::number(plugin_static_function::get_posix_timestamp(path, "modification").toLongLong()),
                        QString::number(plugin_static_function::get_posix_timestamp(path, "access").toLongLong()), relative, relative,
                        source_file_text(path), plugin_static_function::get_source_count_name(), os_scheme_display},
                       "Data insertion QUERY -----FAILED----- at album_art: ", sig_art);
        }
    }
    scope.db().commit();
    plugin_static_function::app_debug("[album_arts_artifacts]---ENDS---", sig_art);
}
