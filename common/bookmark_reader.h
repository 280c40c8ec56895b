#pragma once

// The bookmarks macOS keeps in its lists of recent items ("book" blobs): a
// header, a chain of tables of contents that name items by key, and typed
// items at offsets counted from the end of the header. Everything in a blob
// comes from evidence: every offset, length and count is checked against the
// blob before it is used, and a chain of tables or an array that leads back
// to itself is refused.

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// What a bookmark says of its target and the volume the target was on.
struct bookmark_record
{
    QStringList path_components;  // from the root of the system volume
    QList<qint64> file_ids;       // of each folder on the way, then the target
    std::optional<qint64> target_created;  // seconds since 1970
    QString volume_path;
    QString volume_url;  // where the volume was mounted from
    QString volume_name;
    QString volume_uuid;
    std::optional<qint64> volume_created;  // seconds since 1970
    std::optional<quint64> volume_flags;
    quint64 volume_flags_known = 0;  // which bits of the flags are meaningful
    QString disk_image_path;         // the image file a volume was attached from
    QString creator_user;
    QString display_name;

    // "/" and the components; empty when the bookmark holds no path.
    QString path() const;
    bool on_network() const;
    // "Internal", "External", "Removable", "Disk image" or "Network"; empty
    // when the bookmark does not tell.
    QString drive_type() const;
};

namespace bookmark_reader {

// Reads a blob; the reason it was refused, or an empty text when it was read.
QString read(const QByteArray& blob, bookmark_record* out);

}  // namespace bookmark_reader
