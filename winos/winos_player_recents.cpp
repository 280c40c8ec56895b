// The player's own recent list (vlc-qt-interface.ini): one recents row per
// media location, with where playback stopped, and one per network address
// typed into the open dialog.

#include <QFileInfo>
#include <QRegularExpression>
#include <QUrl>

#include "plugin_static_function.h"
#include "qt_interface_settings.h"
#include "source_path_guard.h"
#include "vlc_winos.h"

namespace {

const QString sig_recents = "void vlc_winos::extract_recents()";

// The local path a location names, in Windows form; empty when it names no
// local file (a stream, a share). Old versions of the player kept plain paths.
QString windows_path_of_location(const QString& location)
{
    static const QRegularExpression drive_path("^[A-Za-z]:[\\\\/]");
    static const QRegularExpression drive_in_url_path("^/[A-Za-z]:/");
    QString path;
    if (drive_path.match(location).hasMatch()) {
        path = location;
    } else if (location.startsWith("file:", Qt::CaseInsensitive)) {
        const QUrl url(location);
        if (!url.isValid() || !url.host().isEmpty())
            return QString();
        path = url.path(QUrl::FullyDecoded);
        if (drive_in_url_path.match(path).hasMatch())
            path.remove(0, 1);
    }
    return path.replace('/', '\\');
}

}  // namespace

void vlc_winos::read_player_recent_list(const QString& path)
{
    if (!QFileInfo(path).isFile() || !source_path_guard::allow(path, source_root, sig_recents))
        return;
    const auto read = bounded_file_reader::read(path, qt_interface_settings::k_max_bytes);
    if (!read.opened || read.truncated) {
        plugin_static_function::app_debug(
            QString("[extract_recents] recent list not read (%1): ")
                    .arg(read.opened ? "larger than " + QString::number(qt_interface_settings::k_max_bytes) + " bytes"
                                     : "cannot be opened")
                + path,
            sig_recents);
        return;
    }
    qt_interface_recents recents;
    const QString working_folder = destination_tmp_dir.isEmpty() ? destination_result_dir : destination_tmp_dir;
    if (!qt_interface_settings::read(read.data, working_folder, &recents)) {
        plugin_static_function::app_debug("[extract_recents] no working copy of the recent list in " + working_folder
                                              + ": " + path,
                                          sig_recents);
        return;
    }

    const QString user = plugin_static_function::extract_user_name_from_sourcefile(path, source_root);
    const auto append = [&](const QString& location, const QString& description) {
        struct_recents record;
        record.user_name = user;
        record.jump_list_path = path;
        record.local_path = windows_path_of_location(location);
        record.network_path = record.local_path.isEmpty() ? location : QString();
        const QString media_path = media_path_on_source(record.local_path);
        if (source_path_guard::exists_inside(media_path, source_root, sig_recents))
            record.file_size = QString::number(QFileInfo(media_path).size());
        record.description = description;
        recents_list.append(record);
    };
    const qsizetype total = recents.recent.size();
    for (qsizetype i = 0; i < total; ++i) {
        const auto& item = recents.recent.at(i);
        QString description = QString("Recent list %1 of %2").arg(i + 1).arg(total);
        if (item.resume_ms > 0)
            description += "; resume at " + plugin_static_function::clock_text_from_milliseconds(item.resume_ms);
        append(item.location, description);
    }
    const QStringList& typed = recents.typed_network_addresses;
    for (qsizetype i = 0; i < typed.size(); ++i)
        append(typed.at(i), QString("Typed network address %1 of %2").arg(i + 1).arg(typed.size()));
}
