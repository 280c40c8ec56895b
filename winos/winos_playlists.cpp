// Playlists named among the recent items: every M3U/M3U8 or XSPF file that a
// jump list points at is read, and each of its entries becomes one row.

#include <QBuffer>
#include <QFileInfo>
#include <QXmlStreamReader>

#include "bounded_file_reader.h"
#include "plugin_static_function.h"
#include "source_path_guard.h"
#include "sqlite_connection_scope.h"
#include "xml_doctype_filter.h"
#include "vlc_winos.h"

namespace {

const QString sig_playlists = "void vlc_winos::extract_playlists()";
const QString sig_m34 = "void vlc_winos::get_info_from_m34_file(QString, QString, QString)";
const QString sig_xspf = "void vlc_winos::get_info_from_xspf_file(QString, QString, QString)";

const QString k_insert_playlists =
    "INSERT INTO playlists(bookmark,system_user,domain_user,playlist_name,file_name,file_path,file_size,file_exist,"
    "preview_file_path,export_file_paths ,windows_path,duration,creation_timestamp,modification_timestamp,"
    "last_access_timestamp,source_file, source_count_name, os_scheme_display)VALUES(0,?,?,? ,?,?,?,? ,?,?,?,? ,?,?,?,? ,?,?)";

// The text of the element the reader stands on; empty on any other token.
QString element_text(QXmlStreamReader& xml)
{
    return xml.isStartElement() ? xml.readElementText() : QString();
}

// Far more entries than any real playlist collection holds, few enough that
// the collected list stays within a modest amount of memory.
constexpr qsizetype k_max_playlist_entries = 200000;

}  // namespace

void vlc_winos::append_playlist_entry()
{
    if (!playlist_entries_full())
        playlist_list.append(playlist_work_record);
}

bool vlc_winos::playlist_entries_full() const
{
    return playlist_list.size() >= k_max_playlist_entries;
}

// A playlist's bytes, read only when its path stays inside the source and
// never beyond the reader's ceiling; false with a log line otherwise.
bool vlc_winos::read_playlist(const QString& path, const QString& signature, QByteArray* data)
{
    const auto read = source_path_guard::allow(path, source_root, signature) ? read_capped(path, signature)
                                                                             : bounded_file_reader::result();
    if (!read.opened) {
        plugin_static_function::app_debug(" Unable to open the playlist file", signature);
        return false;
    }
    *data = read.data;
    return true;
}

void vlc_winos::extract_playlists()
{
    plugin_static_function::app_debug("[extract_playlists]---STARTS---", sig_playlists);
    sqlite_connection_scope scope(sig_playlists, destination_db_path);
    const auto insert = begin_table_run(scope, k_insert_playlists, "[extract_playlists]Destination Db opening ---FAILED--- ", sig_playlists);
    if (!insert)
        return;

    for (const struct_recents& record : recents_list) {
        if (cancel_requested) {
            scope.db().commit();
            return;
        }
        const QString path = media_path_on_source(record.local_path);
        const bool m34 = path.endsWith(".m3u") || path.endsWith(".m3u8");
        if (!m34 && !path.endsWith(".xspf"))
            continue;
        if (m34)
            get_info_from_m34_file(path, record.user_name, record.jump_list_path);
        else
            get_info_from_xspf_file(path, record.user_name, record.jump_list_path);
        if (playlist_entries_full()) {
            plugin_static_function::app_debug("playlist entries beyond the limit are not read, from: " + path,
                                              sig_playlists);
            break;
        }
    }

    for (const struct_playlist& entry : playlist_list) {
        if (cancel_requested)
            break;
        const QString media_path = media_path_on_source(entry.media_path);
        const bool exists = source_path_guard::exists_inside(media_path, source_root, sig_playlists);
        // Nothing outside the source is measured: those fields stay empty.
        const QString size = exists ? QString::number(QFileInfo(media_path).size()) : QString();
        const auto time_of = [&](const char* which) {
            return exists ? plugin_static_function::get_posix_timestamp(media_path, which) : QString();
        };
        const QString relative = relative_to_source(media_path);
        const auto account = account_of(entry.jump_list_path);
        QString windows_path = entry.media_path;
        windows_path.replace('/', '\\');
        insert_row(*insert,
                   {account.system_user, account.domain_user, entry.playlist_name, last_path_part(media_path), relative,
                    size, exists ? "YES" : "NO", relative, relative, windows_path,
                    plugin_static_function::get_human_readable_time(entry.duration), time_of("birth"),
                    time_of("modification"), time_of("access"), source_file_text(entry.playlist_path),
                    plugin_static_function::get_source_count_name(), os_scheme_display},
                   "[extract_playlists]--- insertion query fails   --- ", sig_playlists);
    }
    scope.db().commit();
    plugin_static_function::app_debug("[extract_playlists]---ENDS---", sig_playlists);
}

void vlc_winos::get_info_from_m34_file(QString playlist_path, QString context1, QString context2)
{
    QByteArray data;
    if (!read_playlist(playlist_path, sig_m34, &data))
        return;
    playlist_work_record.playlist_path = playlist_path;
    playlist_work_record.user_name = context1;
    playlist_work_record.jump_list_path = context2;
    playlist_work_record.playlist_name = QFileInfo(playlist_path).fileName();

    // Lines before the first extended-info marker carry no entry.
    const QByteArray marker = "EXTINF";
    qsizetype at = data.indexOf(marker);
    while (at >= 0 && !playlist_entries_full()) {
        const qsizetype next = data.indexOf(marker, at + marker.size());
        get_further_info(data.mid(at, next < 0 ? -1 : next - at));
        at = next;
    }
}

void vlc_winos::get_further_info(const QByteArray& chunk)
{
    // The player writes its M3U files with Windows line ends; an entry
    // without them is not one of its own and is left alone.
    const QString text = QString::fromUtf8(chunk);
    if (!text.contains("\r\n"))
        return;
    const QStringList lines = text.split("\r\n");
    if (lines.size() < 3)
        return;
    QString title;
    QString duration;
    if (lines.first().contains(',')) {
        const QStringList parts = lines.first().split(',');
        title = parts.value(1);
        duration = parts.first().split(':').value(1);
    }
    playlist_work_record.title = title;
    playlist_work_record.duration = duration;
    playlist_work_record.media_path = QString(lines.at(1)).replace('\\', '/');
    append_playlist_entry();
}

void vlc_winos::get_info_from_xspf_file(QString playlist_path, QString context1, QString context2)
{
    playlist_work_record.playlist_path = playlist_path;
    playlist_work_record.user_name = context1;
    playlist_work_record.jump_list_path = context2;
    playlist_work_record.playlist_name = QFileInfo(playlist_path).fileName();
    QByteArray data;
    if (!read_playlist(playlist_path, sig_xspf, &data))
        return;

    // Each step looks at the token after the next one that is not a start
    // tag: in the player's files that is the tag after a whitespace run. The
    // token is judged by its name whatever its kind: where no whitespace
    // separates the tags it is a closing tag, whose text is empty, so such a
    // track keeps no value of an earlier one. A track is complete when its
    // closing id tag is read.
    QBuffer buffer(&data);
    buffer.open(QIODevice::ReadOnly);
    xml_doctype_filter filtered(&buffer);
    QXmlStreamReader xml(&filtered);
    while (!xml.atEnd() && !playlist_entries_full()) {
        xml.readNext();
        if (xml.isStartElement())
            continue;
        xml.readNext();
        const auto name = xml.name();
        if (name == QLatin1String("location")) {
            QString location = element_text(xml);
            location.remove("file:///");
            location.replace("%20", " ");
            playlist_work_record.media_path = location;
        } else if (name == QLatin1String("duration")) {
            playlist_work_record.duration = QString::number(element_text(xml).toLongLong() / 1000);
        } else if (name == QLatin1String("id") && xml.isEndElement()) {
            append_playlist_entry();
        }
    }
}
