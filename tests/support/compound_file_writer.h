#pragma once

// Writes real OLE compound files (version 3, 512-byte sectors): header, FAT,
// directory with a sibling tree under the root, and a mini FAT with its mini
// stream for streams under 4096 bytes. Used for jump lists: a DestList stream
// and numbered streams that each hold one shell link.

#include <QByteArray>
#include <QList>
#include <QString>
#include <QtGlobal>

namespace compound_file_writer {

struct stream
{
    QString name;  // written as given (at most 31 UTF-16 units), hostile or not
    QByteArray data;
    // When set, the size the directory entry claims instead of the real one.
    qint64 declared_size = -1;
};

QByteArray build(const QList<stream>& streams);

// A jump list: the DestList stream and one stream per link, named 1, 2, ... in
// hexadecimal as Windows names them; the DestList given, or one of version 1
// listing every link undated.
QByteArray jump_list(const QList<QByteArray>& links, const QByteArray& destinations = QByteArray());

// One DestList entry: the link stream it names, when it was opened (FILETIME)
// and how often (versions 2 on), on which computer, and whether it is pinned.
struct dest_entry
{
    quint64 stream = 1;
    quint64 filetime = 0;
    quint32 access_count = 1;
    bool pinned = false;
    QString computer = "desktop-case01";
    QByteArray property_store;  // versions 2 on
};
// A DestList stream of the given version (1, or the later layout for 2 on),
// entries in the order given (most recent first).
QByteArray dest_list(quint32 version, const QList<dest_entry>& entries);
// Version 1, entries for streams 1 to n, undated.
QByteArray dest_list(int entries);

// For damaging one field of a file build() wrote: offsets of header fields,
// of a directory entry and its links, and of a sector's allocation-table entry.
namespace field {
constexpr int sector_shift = 30;
constexpr int fat_sectors = 44;
constexpr int directory_start = 48;
constexpr int mini_fat_start = 60;
constexpr int mini_fat_sectors = 64;
constexpr int entry_type = 66;
constexpr int entry_left = 68;
constexpr int entry_right = 72;
constexpr int entry_child = 76;
}  // namespace field
int directory_entry_offset(const QByteArray& file, int entry);
int fat_entry_offset(const QByteArray& file, quint32 sector);
quint32 get32(const QByteArray& file, int offset);
void set32(QByteArray& file, int offset, quint32 value);

}  // namespace compound_file_writer
