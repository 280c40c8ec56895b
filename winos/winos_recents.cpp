// Recent media from the user's jump lists: each jump list is split into its
// streams, each stream parsed as a shell link, each link one row, dated and
// ranked by the jump list's own DestList. Everything is read in memory: a run
// over thousands of links makes no file per link. The player's own recent
// list follows (winos_player_recents.cpp).

#include <QDirIterator>

#include <algorithm>
#include <optional>

#include "dest_list_parse.h"
#include "lnk_paser_class.h"
#include "olecf_file_parse.h"
#include "plugin_static_function.h"
#include "source_path_guard.h"
#include "sqlite_connection_scope.h"
#include "vlc_winos.h"

namespace {

const QString sig_recents = "void vlc_winos::extract_recents()";

// The application ids of the player's jump lists, matched exactly as
// written: the current two (the second also as Windows writes it, with its
// leading zero) and those of older versions of the player.
const QStringList k_jump_list_names = {
    "9fda41b86ddcf1db.automaticDestinations-ms", "faef7def55a1d4b.automaticDestinations-ms",
    "0faef7def55a1d4b.automaticDestinations-ms", "4acae695c73a28c7.automaticDestinations-ms",
    "e6ee34ac9913c0a9.automaticDestinations-ms", "cbeb786f0132005d.automaticDestinations-ms"};

const QString k_insert_recents =
    "INSERT INTO recents(bookmark,system_user,domain_user,file_name,file_path,file_size,file_exist,"
    "preview_file_path ,export_file_paths,windows_path,drive_type,serial_no,volume_label,description,machine_id,"
    "network_path,creation_timestamp,modification_timestamp,last_access_timestamp,source_file, source_count_name, "
    "os_scheme_display) VALUES(0,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)";

// Link streams in the order Windows numbers them: their names are
// hexadecimal, so shorter names come first, then names in text order.
bool stream_order(const QString& a, const QString& b)
{
    return a.size() != b.size() ? a.size() < b.size() : a < b;
}

}  // namespace

void vlc_winos::extract_recents()
{
    plugin_static_function::app_debug("[extract_recents]---STARTS---", sig_recents);
    sqlite_connection_scope scope(sig_recents, destination_db_path);
    const auto insert = begin_table_run(scope, k_insert_recents, "[extract_recents]Destination Db opening ---FAILED--- ", sig_recents);
    if (!insert)
        return;
    recents_list.clear();
    olecf_file_parse compound_reader;
    lnk_paser_class link_reader;

    // On the normal end and on cancel alike: keep what was written. The
    // scratch folder earlier versions copied streams to goes too.
    auto finish = [&] {
        scope.db().commit();
        plugin_static_function::remove_directory(temporary_files_folder());
    };

    for (const QString& folder : jump_list_folder_list) {
        if (cancel_requested)
            break;
        const QString user = plugin_static_function::extract_user_name_from_sourcefile(folder, source_root);
        QDirIterator entries(folder, QDir::Files | QDir::Hidden | QDir::System);
        while (entries.hasNext() && !cancel_requested) {
            const QString path = entries.next();
            if (!k_jump_list_names.contains(entries.fileName()))
                continue;
            // Only a regular file inside the source is opened: a named pipe
            // would block the open for ever, a link may point anywhere.
            if (!entries.fileInfo().isFile() || !source_path_guard::allow(path, source_root, sig_recents))
                continue;
            recents_work_record.user_name = user;
            recents_work_record.jump_list_output_folder.clear();
            recents_work_record.jump_list_path = path;
            read_jump_list(path, compound_reader, link_reader);
        }
    }
    for (const QString& path : interface_settings_file_list) {
        if (cancel_requested)
            break;
        read_player_recent_list(path);
    }

    for (const struct_recents& record : recents_list) {
        if (cancel_requested)
            break;
        const QString media_path = media_path_on_source(record.local_path);
        const bool exists = source_path_guard::exists_inside(media_path, source_root, sig_recents);
        const QString relative = relative_to_source(media_path);
        const auto account = account_of(record.jump_list_path);
        insert_row(*insert,
                   {account.system_user, account.domain_user, last_path_part(media_path), relative, record.file_size,
                    exists ? "YES" : "NO", relative, relative, record.local_path, record.drive_type,
                    record.drive_serial_number, record.volume_label, record.description, record.machine_identifier,
                    record.network_path, record.creation_time, record.modification_time, record.access_time,
                    source_file_text(record.jump_list_path), plugin_static_function::get_source_count_name(),
                    os_scheme_display},
                   "[extract_recents]--- insertion query fails   --- ", sig_recents);
    }
    finish();
    // A cancelled run keeps its rows and stops without the end line.
    if (!cancel_requested)
        plugin_static_function::app_debug("[extract_recents]---ENDS---", sig_recents);
}

void vlc_winos::read_jump_list(const QString& path, olecf_file_parse& compound_reader, lnk_paser_class& link_reader)
{
    struct link_stream
    {
        QString name;
        struct_lnk_info link;
    };
    QList<link_stream> links;
    std::optional<dest_list> destinations;
    // Streams come in directory order; the DestList may come before or
    // after the links it describes.
    compound_reader.read_streams(path, [&](const QString& name, const QByteArray& data) {
        if (cancel_requested)
            return;
        if (name == "DestList") {
            destinations = dest_list_parse::parse(data);
            return;
        }
        link_reader.lnk_info_list.clear();
        if (link_reader.start_parsing_lnk_data(data) == 0)
            links.append({name, link_reader.lnk_info_list.constLast()});
    });
    if (!destinations && !links.isEmpty() && !cancel_requested)
        plugin_static_function::app_debug("[extract_recents] no readable DestList, links are not dated: " + path,
                                          sig_recents);
    std::sort(links.begin(), links.end(),
              [](const link_stream& a, const link_stream& b) { return stream_order(a.name, b.name); });

    for (const link_stream& stream : links) {
        const struct_lnk_info& link = stream.link;
        recents_work_record.creation_time = link.creation_time;
        recents_work_record.modification_time = link.modification_time;
        recents_work_record.access_time = link.access_time;
        recents_work_record.file_size = link.file_size;
        recents_work_record.drive_type = link.drive_type;
        recents_work_record.drive_serial_number = link.drive_serial_number;
        recents_work_record.local_path = link.local_path;
        recents_work_record.volume_label = link.volume_label;
        recents_work_record.description = link.description;
        recents_work_record.machine_identifier = link.machine_identifier;
        recents_work_record.network_path = link.network_path;
        const int entry = destinations ? dest_list_parse::entry_of_stream(*destinations, stream.name) : -1;
        if (entry >= 0) {
            recents_work_record.description = plugin_static_function::description_with(
                link.description, dest_list_parse::describe(*destinations, entry));
            if (link.machine_identifier.isEmpty())
                recents_work_record.machine_identifier = destinations->entries.at(entry).computer_name;
        }
        recents_list.append(recents_work_record);
    }
}
