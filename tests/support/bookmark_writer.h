#pragma once

// Writes the bookmarks macOS keeps in its recent-item lists ("book" blobs),
// so tests control every field; error cases corrupt one field of a valid blob.

#include <QByteArray>
#include <QDateTime>
#include <QString>

namespace bookmark_writer {

// path from the root of the system volume, without the leading "/"; a disk
// image path adds a second table that describes the image file.
QByteArray build(const QString& path, const QDateTime& created, const QString& user,
                 const QString& volume_url = "file:///", const QString& volume_name = "Macintosh HD",
                 quint64 volume_flags = 0x81 /* local, internal */, const QString& disk_image_path = QString());

// Where a blob's first table of contents starts; its link to the next table
// is 12 bytes further.
qint64 first_table_at(const QByteArray& blob);

}  // namespace bookmark_writer
