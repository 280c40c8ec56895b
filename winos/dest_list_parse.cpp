#include "dest_list_parse.h"

#include <QDateTime>
#include <QTimeZone>

#include "little_endian_bytes.h"

namespace {

constexpr qint64 k_header_size = 32;

// Offsets inside an entry. Both layouts start alike up to the pin status;
// version 1 then holds the path, later versions an access count, reserved
// bytes, the path and a property store.
constexpr qint64 k_computer_name = 72;
constexpr qint64 k_computer_name_size = 16;
constexpr qint64 k_stream_number = 88;
constexpr qint64 k_last_opened = 100;
constexpr qint64 k_pin_status = 108;
constexpr qint64 k_v1_path_length = 112;
constexpr qint64 k_access_count = 116;
constexpr qint64 k_path_length = 128;

constexpr qint64 k_filetime_unix_epoch = 116444736000000000LL;

QString computer_name_at(const QByteArray& stream, qint64 at)
{
    QByteArray name = stream.mid(at, k_computer_name_size);
    const qsizetype end = name.indexOf('\0');
    if (end >= 0)
        name.truncate(end);
    return QString::fromLatin1(name);
}

// Reads one entry at `at`; false when any part of it leaves the stream.
bool read_entry(const QByteArray& stream, quint32 version, qint64& at, dest_list_entry& entry)
{
    const qint64 size = stream.size();
    const qint64 length_at = version == 1 ? k_v1_path_length : k_path_length;
    if (size - at < length_at + 2)
        return false;
    entry.computer_name = computer_name_at(stream, at + k_computer_name);
    entry.stream_number = little_endian_at<quint64>(stream, at + k_stream_number);
    entry.last_opened = little_endian_at<quint64>(stream, at + k_last_opened);
    entry.pinned = little_endian_at<qint32>(stream, at + k_pin_status) != -1;
    entry.has_access_count = version != 1;
    if (entry.has_access_count)
        entry.access_count = little_endian_at<quint32>(stream, at + k_access_count);

    const qint64 path_bytes = 2 * qint64(little_endian_at<quint16>(stream, at + length_at));
    const qint64 path_at = at + length_at + 2;
    if (size - path_at < path_bytes)
        return false;
    // A copy of its own: the path may start at an odd offset of the stream.
    const QByteArray path = stream.mid(path_at, path_bytes);
    entry.path = QString::fromUtf16(reinterpret_cast<const char16_t*>(path.constData()), path_bytes / 2);
    at = path_at + path_bytes;
    if (version == 1)
        return true;

    if (size - at < 4)
        return false;
    const qint64 store_bytes = little_endian_at<quint32>(stream, at);
    at += 4;
    if (size - at < store_bytes)
        return false;
    at += store_bytes;
    return true;
}

}  // namespace

namespace dest_list_parse {

std::optional<dest_list> parse(const QByteArray& stream)
{
    if (stream.size() < k_header_size)
        return std::nullopt;
    dest_list list;
    list.version = little_endian_at<quint32>(stream, 0);
    const quint32 count = little_endian_at<quint32>(stream, 4);
    list.pinned_count = little_endian_at<quint32>(stream, 8);
    if (list.version == 0)
        return std::nullopt;
    qint64 at = k_header_size;
    // Every entry takes more than 100 bytes: a count the stream cannot hold
    // fails on the way without reserving anything for it.
    for (quint32 i = 0; i < count; ++i) {
        dest_list_entry entry;
        if (!read_entry(stream, list.version, at, entry))
            return std::nullopt;
        list.entries.append(entry);
    }
    return list;
}

int entry_of_stream(const dest_list& list, const QString& stream_name)
{
    bool ok = false;
    const quint64 number = stream_name.toULongLong(&ok, 16);
    if (!ok)
        return -1;
    for (int i = 0; i < list.entries.size(); ++i) {
        if (list.entries.at(i).stream_number == number)
            return i;
    }
    return -1;
}

QString describe(const dest_list& list, int index)
{
    if (index < 0 || index >= list.entries.size())
        return QString();
    const dest_list_entry& entry = list.entries.at(index);
    QStringList facts;
    // A time before 1970 or unset tells nothing about when the player opened it.
    if (entry.last_opened > quint64(k_filetime_unix_epoch)) {
        const qint64 seconds = qint64((entry.last_opened - k_filetime_unix_epoch) / 10000000);
        facts << "Opened " + QDateTime::fromSecsSinceEpoch(seconds, QTimeZone::utc()).toString("yyyy-MM-dd HH:mm:ss")
                     + " UTC";
    }
    facts << QString("most recent %1 of %2").arg(index + 1).arg(list.entries.size());
    if (entry.has_access_count)
        facts << QString("opened %1 times").arg(entry.access_count);
    if (entry.pinned)
        facts << "pinned";
    return facts.join("; ");
}

}  // namespace dest_list_parse
