#include "bookmark_reader.h"

#include <QHash>
#include <QSet>
#include <QUrl>
#include <QtEndian>

#include <cmath>

#include "apple_dates.h"
#include "little_endian_bytes.h"

namespace {

constexpr qint64 k_fixed_header = 16;  // magic, size, version, header size
constexpr quint32 k_table_marker = 0xFFFFFFFE;
constexpr qint64 k_table_header = 20;  // size, marker, id, next table, entry count
constexpr qint64 k_table_entry = 12;   // key, item offset, reserved
// Real bookmarks chain two or three tables; more is damage.
constexpr int k_max_tables = 64;
constexpr quint32 k_custom_key = 0x80000000;  // a key that names a string item instead

enum item_type : quint32 {
    k_string = 0x0101,
    k_data = 0x0201,
    k_number_family = 0x0300,
    k_date = 0x0400,
    k_array = 0x0601,
    k_url = 0x0901,
    k_relative_url = 0x0902,
};

enum item_key : quint32 {
    k_path = 0x1004,
    k_file_ids = 0x1005,
    k_target_created = 0x1040,
    k_volume_path = 0x2002,
    k_volume_url = 0x2005,
    k_volume_name = 0x2010,
    k_volume_uuid = 0x2011,
    k_volume_created = 0x2013,
    k_volume_flags = 0x2020,
    k_disk_image_table = 0x2040,
    k_volume_mount_url = 0x2050,  // older bookmarks of network volumes
    k_creator_user = 0xc011,
    k_display_name = 0xf017,
};

// Bits of the volume flags.
constexpr quint64 k_flag_local = 0x1;
constexpr quint64 k_flag_removable = 0x40;
constexpr quint64 k_flag_internal = 0x80;
constexpr quint64 k_flag_external = 0x100;
constexpr quint64 k_flag_disk_image = 0x200;

using table = QHash<quint32, quint32>;  // key -> item offset

struct item
{
    quint32 type = 0;
    qint64 at = 0;  // first byte of the data in the blob
    qint64 length = 0;
};

class parser
{
public:
    explicit parser(const QByteArray& blob) : blob(blob) {}

    QString error;

    bool read(bookmark_record* out)
    {
        if (!read_header() || !read_tables())
            return false;
        const table& main = tables.value(first_table);
        out->path_components = strings(main, k_path);
        out->file_ids = numbers(main, k_file_ids);
        out->target_created = date(main, k_target_created);
        out->volume_path = text(main, k_volume_path);
        out->volume_url = text(main, k_volume_url);
        if (out->volume_url.isEmpty())
            out->volume_url = text(main, k_volume_mount_url);
        out->volume_name = text(main, k_volume_name);
        out->volume_uuid = text(main, k_volume_uuid);
        out->volume_created = date(main, k_volume_created);
        const auto flags = item_of(main, k_volume_flags);
        if (flags && flags->type == k_data && flags->length >= 8) {
            out->volume_flags = little_endian_at<quint64>(blob, flags->at);
            out->volume_flags_known = flags->length >= 16 ? little_endian_at<quint64>(blob, flags->at + 8) : 0;
        }
        // The image a volume was attached from is described by a table of its own.
        const auto image_table = number(main, k_disk_image_table);
        if (image_table && quint32(*image_table) != first_table && tables.contains(quint32(*image_table))) {
            const QStringList image = strings(tables.value(quint32(*image_table)), k_path);
            if (!image.isEmpty())
                out->disk_image_path = "/" + image.join('/');
        }
        out->creator_user = text(main, k_creator_user);
        out->display_name = text(main, k_display_name);
        return error.isEmpty();
    }

private:
    const QByteArray& blob;
    qint64 end = 0;
    qint64 base = 0;  // offsets are counted from the end of the header
    QHash<quint32, table> tables;
    quint32 first_table = 0;

    bool fail(const QString& why)
    {
        if (error.isEmpty())
            error = why;
        return false;
    }

    quint32 u32(qint64 at) const { return little_endian_at<quint32>(blob, at); }

    bool read_header()
    {
        if (blob.size() < k_fixed_header + 4 || !blob.startsWith("book"))
            return fail("not a bookmark");
        end = u32(4);
        base = u32(12);
        if (end > blob.size())
            return fail("shorter than its header says");
        if (base < k_fixed_header || base + 4 > end)
            return fail("header size out of range");
        return true;
    }

    bool read_tables()
    {
        QSet<quint32> seen;
        quint32 offset = u32(base);
        bool first = true;
        while (first || offset != 0) {
            if (seen.contains(offset))
                return fail("tables of contents loop");
            if (seen.size() == k_max_tables)
                return fail("too many tables of contents");
            seen.insert(offset);
            const qint64 at = base + offset;
            if (at + k_table_header > end || u32(at + 4) != k_table_marker)
                return fail("table of contents out of range");
            const quint32 id = u32(at + 8);
            const quint32 count = u32(at + 16);
            if (qint64(count) > (end - at - k_table_header) / k_table_entry)
                return fail("table of contents entries out of range");
            table entries;
            for (quint32 i = 0; i < count; ++i) {
                const qint64 entry = at + k_table_header + qint64(i) * k_table_entry;
                const quint32 key = u32(entry);
                if (!(key & k_custom_key))
                    entries.insert(key, u32(entry + 4));
            }
            if (first)
                first_table = id;
            if (!tables.contains(id))
                tables.insert(id, entries);
            first = false;
            offset = u32(at + 12);
        }
        return true;
    }

    std::optional<item> item_at(quint32 offset)
    {
        const qint64 at = base + offset;
        if (at + 8 > end) {
            fail("item out of range");
            return std::nullopt;
        }
        const item found{u32(at + 4), at + 8, u32(at)};
        if (found.length > end - found.at) {
            fail("item longer than the bookmark");
            return std::nullopt;
        }
        return found;
    }

    std::optional<item> item_of(const table& entries, quint32 key)
    {
        const auto found = entries.constFind(key);
        if (found == entries.constEnd())
            return std::nullopt;
        return item_at(*found);
    }

    QString plain_text(const item& value) const
    {
        if (value.type != k_string && value.type != k_url)
            return QString();
        return QString::fromUtf8(blob.constData() + value.at, value.length);
    }

    QString text_of(const item& value)
    {
        if (value.type != k_relative_url || value.length < 8)
            return plain_text(value);
        // A base and a relative part, each a plain text item.
        const auto base_url = item_at(u32(value.at));
        const auto relative = item_at(u32(value.at + 4));
        if (!base_url || !relative)
            return QString();
        return QUrl(plain_text(*base_url)).resolved(QUrl(plain_text(*relative))).toString();
    }

    QString text(const table& entries, quint32 key)
    {
        const auto found = item_of(entries, key);
        return found ? text_of(*found) : QString();
    }

    std::optional<qint64> number_of(const item& value) const
    {
        if ((value.type & 0xFF00) != k_number_family)
            return std::nullopt;
        const quint32 kind = value.type & 0xFF;
        const bool real = kind == 5 || kind == 6 || kind == 12 || kind == 13;
        const char* data = blob.constData() + value.at;
        if (real && (value.length == 4 || value.length == 8)) {
            const double v =
                value.length == 4 ? double(qFromLittleEndian<float>(data)) : qFromLittleEndian<double>(data);
            if (!std::isfinite(v) || std::fabs(v) > 9e18)
                return std::nullopt;
            return qint64(v);
        }
        switch (value.length) {
        case 1:
            return qint64(qint8(data[0]));
        case 2:
            return qint64(qFromLittleEndian<qint16>(data));
        case 4:
            return qint64(qFromLittleEndian<qint32>(data));
        case 8:
            return qFromLittleEndian<qint64>(data);
        default:
            return std::nullopt;
        }
    }

    std::optional<qint64> number(const table& entries, quint32 key)
    {
        const auto found = item_of(entries, key);
        return found ? number_of(*found) : std::nullopt;
    }

    std::optional<qint64> date(const table& entries, quint32 key)
    {
        const auto found = item_of(entries, key);
        if (!found || found->type != k_date || found->length != 8)
            return std::nullopt;
        const double since_2001 = qFromBigEndian<double>(blob.constData() + found->at);
        const auto since_1970 = apple_dates::since_1970(since_2001);
        if (!since_1970)
            return std::nullopt;
        return qint64(std::trunc(*since_1970));
    }

    // The items of an array; an array among them (in real bookmarks never,
    // in a looping one the array itself) refuses the whole blob.
    QList<item> elements(const table& entries, quint32 key)
    {
        QList<item> out;
        const auto array = item_of(entries, key);
        if (!array || array->type != k_array)
            return out;
        for (qint64 i = 0; i + 4 <= array->length; i += 4) {
            const auto element = item_at(u32(array->at + i));
            if (!element)
                return {};
            if (element->type == k_array) {
                fail("array holds an array (a loop)");
                return {};
            }
            out << *element;
        }
        return out;
    }

    QStringList strings(const table& entries, quint32 key)
    {
        QStringList out;
        for (const item& element : elements(entries, key))
            out << text_of(element);
        return out;
    }

    QList<qint64> numbers(const table& entries, quint32 key)
    {
        QList<qint64> out;
        for (const item& element : elements(entries, key))
            out << number_of(element).value_or(0);
        return out;
    }
};

}  // namespace

QString bookmark_record::path() const
{
    return path_components.isEmpty() ? QString() : "/" + path_components.join('/');
}

bool bookmark_record::on_network() const
{
    const int colon = volume_url.indexOf(':');
    if (colon > 0)
        return volume_url.left(colon).compare("file", Qt::CaseInsensitive) != 0;
    // Without a URL: flags that say the volume is not a local one.
    return volume_flags && (volume_flags_known & k_flag_local) && !(*volume_flags & k_flag_local);
}

QString bookmark_record::drive_type() const
{
    if (on_network())
        return "Network";
    const quint64 flags = volume_flags.value_or(0);
    // A mounted image also calls itself removable: the image is what it is.
    if ((flags & k_flag_disk_image) || !disk_image_path.isEmpty())
        return "Disk image";
    if (flags & k_flag_removable)
        return "Removable";
    if (flags & k_flag_external)
        return "External";
    if (flags & k_flag_internal)
        return "Internal";
    return QString();
}

namespace bookmark_reader {

QString read(const QByteArray& blob, bookmark_record* out)
{
    bookmark_record record;
    parser reader(blob);
    if (!reader.read(&record))
        return reader.error;
    *out = record;
    return QString();
}

}  // namespace bookmark_reader
