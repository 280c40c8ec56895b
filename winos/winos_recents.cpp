// Recent media from the user's jump lists: each jump list is split into its
// streams, each stream parsed as a shell link, each link one row.

#include <QDirIterator>

#include <algorithm>
#include <memory>

#include "lnk_paser_class.h"
#include "olecf_file_parse.h"
#include "plugin_static_function.h"
#include "source_path_guard.h"
#include "sqlite_connection_scope.h"
#include "vlc_winos.h"

namespace {

const QString sig_recents = "void vlc_winos::extract_recents()";

// The application ids of the player's jump lists, matched exactly as written.
const QStringList k_jump_list_names = {"9fda41b86ddcf1db.automaticDestinations-ms",
                                       "faef7def55a1d4b.automaticDestinations-ms"};

const QString k_insert_recents =
    "INSERT INTO recents(bookmark,system_user,domain_user,file_name,file_path,file_size,file_exist,"
    "preview_file_path ,export_file_paths,windows_path,drive_type,serial_no,volume_label,description,machine_id,"
    "network_path,creation_timestamp,modification_timestamp,last_access_timestamp,source_file, source_count_name, "
    "os_scheme_display) VALUES(0,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)";

}  // namespace

void vlc_winos::extract_recents()
{
    plugin_static_function::app_debug("[extract_recents]---STARTS---", sig_recents);
    sqlite_connection_scope scope(sig_recents, destination_db_path);
    const auto insert = begin_table_run(scope, k_insert_recents, "[extract_recents]Destination Db opening ---FAILED--- ", sig_recents);
    if (!insert)
        return;
    recents_list.clear();
    auto reader = std::make_unique<olecf_file_parse>();
    // Streams left by a run that never finished would be walked as if this
    // evidence held them.
    plugin_static_function::remove_directory(temporary_files_folder());

    // On the normal end and on cancel alike: keep what was written, drop the
    // scratch copies of the streams.
    auto finish = [&] {
        scope.db().commit();
        reader.reset();
        plugin_static_function::remove_directory(temporary_files_folder());
    };

    for (const QString& folder : jump_list_folder_list) {
        if (cancel_requested)
            break;
        const QString user = plugin_static_function::extract_user_name_from_sourcefile(folder, source_root);
        QDirIterator entries(folder, QDir::Files | QDir::Hidden | QDir::System);
        while (entries.hasNext()) {
            if (cancel_requested) {
                finish();
                return;
            }
            const QString path = entries.next();
            if (!k_jump_list_names.contains(entries.fileName()))
                continue;
            // Only a regular file inside the source is opened: a named pipe
            // would block the open for ever, a link may point anywhere.
            if (!entries.fileInfo().isFile() || !source_path_guard::allow(path, source_root, sig_recents))
                continue;
            const QString output = reader->start_parsing_olecf(path, destination_result_dir, user);
            recents_work_record.user_name = user;
            recents_work_record.jump_list_output_folder = output;
            recents_work_record.jump_list_path = path;
            // Not a compound file: nothing was written, nothing to walk.
            if (!output.isEmpty())
                get_lnk_info(output);
        }
    }

    if (cancel_requested) {
        finish();
        return;
    }
    for (const struct_recents& record : recents_list) {
        if (cancel_requested) {
            finish();
            return;
        }
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
    plugin_static_function::app_debug("[extract_recents]---ENDS---", sig_recents);
}

void vlc_winos::get_lnk_info(QString folder)
{
    lnk_paser_class reader;
    reader.lnk_info_list.clear();
    // Hidden entries too: a stream's folder may carry any name the file gave.
    QDirIterator entries(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    QStringList stream_files;
    while (entries.hasNext()) {
        if (cancel_requested)
            return;
        const QString path = entries.next();
        if (entries.fileName() == "file")
            stream_files << path;
    }
    // Stream order, not the file system's: numbered streams are hexadecimal,
    // so shorter names come first, then names in text order.
    std::sort(stream_files.begin(), stream_files.end(), [](const QString& a, const QString& b) {
        return a.size() != b.size() ? a.size() < b.size() : a < b;
    });
    for (const QString& path : stream_files) {
        if (cancel_requested)
            return;
        reader.start_parsing_lnk(path);
    }
    for (const struct_lnk_info& link : reader.lnk_info_list) {
        if (cancel_requested)
            return;
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
        recents_list.append(recents_work_record);
    }
}
