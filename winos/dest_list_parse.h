#pragma once

// Reads the DestList stream of a jump list: Windows' own record of when each
// link stream was last opened, how often, in which order, on which computer
// and whether the user pinned it. Windows 7 to 8.1 write version 1; later
// systems versions 3 to 6, which share one layout (read for every version
// from 2 on).

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

struct dest_list_entry
{
    quint64 stream_number = 0;  // the link stream's name, read as hexadecimal
    quint64 last_opened = 0;    // FILETIME; 0 when Windows left it unset
    bool pinned = false;
    bool has_access_count = false;  // version 1 keeps no count
    quint32 access_count = 0;
    QString computer_name;  // NetBIOS name of the computer that opened it
    QString path;
};

struct dest_list
{
    quint32 version = 0;
    quint32 pinned_count = 0;
    QList<dest_list_entry> entries;  // most recently used first
};

namespace dest_list_parse {

// The stream's entries, or nothing when the stream is empty, of an unknown
// version, or damaged anywhere (a length or offset that leaves the stream):
// half-read facts would misdate the links.
std::optional<dest_list> parse(const QByteArray& stream);

// The entry that names a link stream, or -1.
int entry_of_stream(const dest_list& list, const QString& stream_name);

// "Opened 2024-05-01 10:22:33 UTC; most recent 2 of 5; opened 3 times;
// pinned", leaving out what the entry does not hold.
QString describe(const dest_list& list, int index);

}  // namespace dest_list_parse
