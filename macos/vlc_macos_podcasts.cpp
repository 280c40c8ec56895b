// Podcast subscriptions ("podcast-urls=" of each user's "vlcrc") into the
// podcasts table, and the duration texts of the media library.

#include <QFile>

#include "bounded_file_reader.h"
#include "podcast_url_list.h"
#include "prepared_statement.h"
#include "sqlite_connection_scope.h"
#include "vlc_macos.h"

namespace {

const QString sig_podcasts = "void vlc_macos::extract_podcasts()";
const QString k_insert_podcasts = "insert into podcasts(bookmark,system_user,podcasts ,source_count_name, "
                                  "os_scheme_display,source_file,artifacts_relation_source_file)"
                                  "values(?,?,?,?,?,?,?)";
const QByteArray k_podcast_key = "podcast-urls=";
// A configuration line is short; a longer one is read in pieces of this size,
// so a damaged file never has to fit in memory.
constexpr qint64 k_max_line_bytes = 1024 * 1024;

}  // namespace

void vlc_macos::extract_podcasts()
{
    plugin_static_function::app_debug("[extract_podcasts] starts", sig_podcasts);
    sqlite_connection_scope connection(sig_podcasts, destination_db_path);
    if (!connection.open_for_writing()) {
        plugin_static_function::app_debug("[extract_podcasts] destination db open -------FAILED------- "
                                              + connection.last_error_text(),
                                          sig_podcasts);
        return;
    }
    prepared_statement insert(connection.db(), k_insert_podcasts, prepared_statement::text_binding::empty_as_null);

    // One buffer for every line: readLine(max) would allocate the whole
    // ceiling afresh for each line, however short, and a file of many short
    // lines would cost a megabyte per line.
    QByteArray buffer(k_max_line_bytes + 1, Qt::Uninitialized);
    for (const QString& configuration : configuration_files) {
        if (cancel_requested)
            break;
        const QString user = plugin_static_function::extract_user_name_from_sourcefile(configuration, source_root);
        QFile file(configuration);
        if (!bounded_file_reader::open_regular(file)) {
            plugin_static_function::app_debug("[extract_podcasts] file open -------FAILED-----------", sig_podcasts);
            continue;
        }
        const QString source_file = path_below_root(configuration);
        const QString relation = source_file_columns(configuration).value(1);
        while (!file.atEnd() && !cancel_requested) {
            const qint64 length = file.readLine(buffer.data(), buffer.size());
            if (length < 0)
                break;
            const QByteArray line = QByteArray::fromRawData(buffer.constData(), length);
            if (!line.startsWith(k_podcast_key))
                continue;
            if (length == k_max_line_bytes && !line.endsWith('\n'))
                plugin_static_function::app_debug("podcast line larger than the read limit, only its start is read: "
                                                      + configuration,
                                                  sig_podcasts);
            const QString urls = QString::fromUtf8(line).trimmed().mid(k_podcast_key.size());
            bool cut = false;
            const QStringList parts = podcast_url_list::split(urls, &cut);
            if (cut)
                plugin_static_function::app_debug(podcast_url_list::cut_message(configuration), sig_podcasts);
            for (const QString& part : parts) {
                if (cancel_requested)
                    break;
                // "a||b" and a trailing "|" leave empty parts: they name nothing.
                const QString url = part.trimmed();
                if (url.isEmpty())
                    continue;
                const QStringList values = {"0", user, url, plugin_static_function::get_source_count_name(),
                                            os_scheme_display, source_file, relation};
                if (insert.execute(values))
                    count_inserted_row();
                else
                    plugin_static_function::app_debug("[extract_podcasts] insert query execution -------FAILED---------- "
                                                          + insert.error_text(),
                                                      sig_podcasts);
            }
        }
    }
    insert.finish();
    connection.db().commit();
    plugin_static_function::app_debug("[extract_podcasts] ends", sig_podcasts);
}

QString vlc_macos::convert_sec_to_hh_mm_ss(QString duration)
{
    // The text is milliseconds, as the library stores it.
    return plugin_static_function::duration_text_from_milliseconds(duration);
}

QString vlc_macos::prepend_zero_for_time(QString value, int width)
{
    return plugin_static_function::zero_padded_number(value, width);
}
