// Podcast subscriptions from the player's preference file: every line that
// holds the podcast key, commented or not, split into its URLs.

#include <QFile>
#include <QFileInfo>

#include "plugin_static_function.h"
#include "podcast_url_list.h"
#include "sqlite_connection_scope.h"
#include "vlc_winos.h"

namespace {

const QString sig_podcasts = "void vlc_winos::extract_podcasts_vlc()";

const QString k_insert_podcasts =
    "insert into podcasts(bookmark,system_user,domain_user,podcasts,source_file, source_count_name, "
    "os_scheme_display) values(0,?,?,?,?,?,?)";

// Each line from the key to its line feed; a key without a line feed after
// it ends the search (the player always ends its lines).
QStringList podcast_lines(const QByteArray& data)
{
    const QByteArray key = "podcast-urls";
    QStringList lines;
    qsizetype at = data.indexOf(key);
    while (at >= 0) {
        const qsizetype end = data.indexOf('\n', at);
        if (end < 0)
            break;
        const QByteArray line = data.mid(at, end - at);
        const qsizetype nul = line.indexOf('\0');
        lines << QString::fromUtf8(nul < 0 ? line : line.left(nul));
        at = data.indexOf(key, end);
    }
    return lines;
}

// Why a preference file could not be read: the file's own error text. A
// named pipe or a device is not opened again to ask, as opening it could
// wait for a writer for ever.
QString open_error_text(const QString& path)
{
    const QFileInfo info(path);
    if (info.exists() && !info.isFile() && !info.isDir())
        return "not a regular file";
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return file.errorString();
}

}  // namespace

void vlc_winos::extract_podcasts_vlc()
{
    plugin_static_function::app_debug("[extract_podcasts_vlc]---STARTS---", sig_podcasts);
    sqlite_connection_scope scope(sig_podcasts, destination_db_path);
    const auto insert = begin_table_run(scope, k_insert_podcasts, "[extract_podcasts_vlc]Destination Db opening failed ", sig_podcasts);
    if (!insert)
        return;

    for (const QString& path : preference_file_list) {
        // A cancelled run keeps its rows and stops without the end line.
        if (cancel_requested) {
            scope.db().commit();
            return;
        }
        const auto read = read_capped(path, sig_podcasts);
        if (!read.opened) {
            plugin_static_function::app_debug("[pub_registry_view]- file not opened: [File Path]" + path,
                                              sig_podcasts);
            plugin_static_function::app_debug("[ERROR:]" + open_error_text(path), sig_podcasts);
            continue;
        }
        const auto account = account_of(path);
        const QString source_file = source_file_text(path);
        for (const QString& line : podcast_lines(read.data)) {
            bool cut = false;
            const QStringList values = podcast_url_list::split(line, &cut);
            if (cut)
                plugin_static_function::app_debug(podcast_url_list::cut_message(path), sig_podcasts);
            for (const QString& value : values) {
                if (cancel_requested) {
                    scope.db().commit();
                    return;
                }
                insert_row(*insert,
                           {account.system_user, account.domain_user, value, source_file,
                            plugin_static_function::get_source_count_name(), os_scheme_display},
                           "Data insertion QUERY ---FAILED--- at podcasts: ", sig_podcasts);
            }
        }
    }
    scope.db().commit();
    plugin_static_function::app_debug("[extract_podcasts_vlc]---ENDS---", sig_podcasts);
}
