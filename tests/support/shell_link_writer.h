#pragma once

// Writes real Windows shell links (.lnk): the header, an optional target ID
// list, a link-info block with a volume and local path or a network share,
// Unicode string data and a tracker block with the machine name. Every field
// is the caller's, so tests can assert each one.

#include <QByteArray>
#include <QString>
#include <QtGlobal>

namespace shell_link_writer {

struct link_fields
{
    // Header: FILETIME values (100 ns ticks since 1601), size, attributes.
    quint64 creation_filetime = 0;
    quint64 access_filetime = 0;
    quint64 write_filetime = 0;
    quint32 file_size = 0;
    quint32 file_attributes = 0x20;  // archive

    QByteArray target_id_list;  // item data of one shell item; none when empty

    // Link info: a local volume when local_path is set, else a share when
    // network_share is set, else no link info at all.
    QString local_path;  // stored in the ANSI code page, as Windows does
    quint32 drive_type = 3;
    quint32 drive_serial = 0;
    QString volume_label;
    QString network_share;  // "\\\\server\\share"

    // String data, stored as UTF-16.
    QString description;
    QString working_directory;

    QString machine_id;  // tracker block when set (at most 15 characters)
};

// Unix seconds as FILETIME ticks.
quint64 filetime_from_unix(qint64 seconds);

QByteArray build(const link_fields& fields);

// A typical media link: local path on C, a few strings, a tracker block.
link_fields media_link(const QString& windows_path, qint64 unix_time, quint32 size);

}  // namespace shell_link_writer
