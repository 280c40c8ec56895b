#include "olecf_file_parse.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QtEndian>

#include <vector>

#include "bounded_file_reader.h"
#include "little_endian_bytes.h"
#include "memory_io_handle.h"


namespace {

using olecf_error_owner = libyal_error_owner<libolecf_error_t, libolecf_error_free>;
using olecf_file_owner =
    libyal_handle_owner<libolecf_file_t, libolecf_error_t, libolecf_file_free, libolecf_error_free>;
using olecf_item_owner =
    libyal_handle_owner<libolecf_item_t, libolecf_error_t, libolecf_item_free, libolecf_error_free>;

// Drops the error a failed call left behind, so the next call starts clean.
void clear_error(libolecf_error_t** error)
{
    if (error && *error)
        libolecf_error_free(error);
}

// Directory entry names hold at most 31 UTF-16 characters, so a 1024-byte
// buffer always has room for the UTF-8 form.
constexpr size_t k_name_buffer_size = 1024;

bool needs_encoding(const QString& name)
{
    if (name.isEmpty() || name == "." || name.contains(".."))
        return true;
    for (const QChar c : name) {
        if (c.unicode() < 0x20 || c.unicode() == 0x7f || c == '/' || c == '\\' || c == '%')
            return true;
    }
    return false;
}

// A look at a compound file's own bookkeeping before the library sees it.
// Some inconsistencies lead the library into paths that keep memory it
// allocated (a sector buffer, or directory entries no tree holds) even though
// every handle is freed; over many damaged files that memory would only grow.
// Files with such inconsistencies are left unread, as files the library cannot
// open are. Every read here is bounded by the file's size.
class compound_file_check
{
public:
    // The file's bytes when they were read into memory, else the file.
    compound_file_check(const QString& path, const QByteArray* bytes)
    {
        if (bytes) {
            m_buffer.setData(*bytes);
            m_file = &m_buffer;
        } else {
            m_disk_file.setFileName(path);
        }
    }

    bool consistent()
    {
        if (!m_file->open(QIODevice::ReadOnly))
            return true;  // the library gives its own answer
        const QByteArray header = m_file->read(k_header_size);
        if (header.size() < k_header_size || !header.startsWith(QByteArray::fromHex("d0cf11e0a1b11ae1")))
            return true;  // not a compound file at all: the library refuses it cleanly
        if (u16(header, 28) != 0xFFFE)
            return true;
        const quint16 shift = u16(header, 30);
        if (shift != 9 && shift != 12)
            return false;
        m_sector_size = 1 << shift;
        m_sectors = static_cast<quint32>(
            qBound<qint64>(0, m_file->size() / m_sector_size - 1, qint64(k_last_sector_id) + 1));
        return read_allocation_index(header) && mini_allocation_chain_fits(header) && directory_is_one_tree(header);
    }

private:
    static constexpr int k_header_size = 512;
    static constexpr int k_header_index_entries = 109;
    static constexpr quint32 k_end_of_chain = 0xFFFFFFFE;
    static constexpr quint32 k_free = 0xFFFFFFFF;
    static constexpr quint32 k_last_sector_id = 0xFFFFFFF9;
    static constexpr int k_entry_size = 128;

    static quint16 u16(const QByteArray& data, int offset) { return little_endian_at<quint16>(data, offset); }
    static quint32 u32(const QByteArray& data, int offset) { return little_endian_at<quint32>(data, offset); }

    // The library ends a chain at either of these marks.
    static bool ends_chain(quint32 sector) { return sector == k_end_of_chain || sector == k_free; }

    // A sector wholly inside the file.
    bool in_file(quint32 sector) const { return sector < m_sectors; }

    QByteArray read_sector(quint32 sector)
    {
        if (!in_file(sector) || !m_file->seek((static_cast<qint64>(sector) + 1) * m_sector_size))
            return QByteArray();
        const QByteArray data = m_file->read(m_sector_size);
        return data.size() == m_sector_size ? data : QByteArray();
    }

    // The sectors holding the allocation table: the header lists the first
    // 109, further index sectors the rest. Every count must fit in the file.
    bool read_allocation_index(const QByteArray& header)
    {
        const quint32 table_sectors = u32(header, 44);
        quint32 index_sector = u32(header, 68);
        const quint32 index_sectors = u32(header, 72);
        if (table_sectors == 0 || table_sectors > m_sectors || index_sectors > m_sectors)
            return false;
        for (int i = 0; i < k_header_index_entries && m_table.size() < table_sectors; ++i)
            m_table.push_back(u32(header, 76 + 4 * i));
        const int per_index_sector = m_sector_size / 4 - 1;
        for (quint32 read = 0; m_table.size() < table_sectors; ++read) {
            if (read == index_sectors)
                return false;
            const QByteArray data = read_sector(index_sector);
            if (data.isEmpty())
                return false;
            for (int i = 0; i < per_index_sector && m_table.size() < table_sectors; ++i)
                m_table.push_back(u32(data, 4 * i));
            index_sector = u32(data, 4 * per_index_sector);
        }
        return true;
    }

    // The allocation table's entry for a sector, or false when the table does
    // not cover it.
    bool next_sector(quint32 sector, quint32& next)
    {
        const quint32 per_sector = static_cast<quint32>(m_sector_size / 4);
        const quint32 table_index = sector / per_sector;
        if (table_index >= m_table.size() || !in_file(m_table[table_index]))
            return false;
        char bytes[4];
        const qint64 offset = (static_cast<qint64>(m_table[table_index]) + 1) * m_sector_size + 4 * (sector % per_sector);
        if (!m_file->seek(offset) || m_file->read(bytes, 4) != 4)
            return false;
        next = qFromLittleEndian<quint32>(bytes);
        return true;
    }

    // The short-sector table is read sector by sector along its chain for as
    // many sectors as the header declares; each must be in the file and
    // covered by the allocation table.
    bool mini_allocation_chain_fits(const QByteArray& header)
    {
        quint32 sector = u32(header, 60);
        const quint32 declared = u32(header, 64);
        if (declared > m_sectors)
            return false;
        for (quint32 i = 0; i < declared; ++i) {
            if (ends_chain(sector))
                return true;
            if (sector > k_last_sector_id || !in_file(sector) || !next_sector(sector, sector))
                return false;
        }
        return true;
    }

    // The directory's chain lies in the file, and every entry in use hangs in
    // the tree under the root entry.
    bool directory_is_one_tree(const QByteArray& header)
    {
        struct entry
        {
            quint8 type;
            quint32 links[3];  // left, right, child
        };
        std::vector<entry> entries;
        QSet<quint32> seen;
        for (quint32 sector = u32(header, 48); !ends_chain(sector) && !seen.contains(sector);) {
            seen.insert(sector);
            const QByteArray data = read_sector(sector);
            if (data.isEmpty())
                return false;
            for (int at = 0; at + k_entry_size <= data.size(); at += k_entry_size)
                entries.push_back({static_cast<quint8>(data.at(at + 66)),
                                   {u32(data, at + 68), u32(data, at + 72), u32(data, at + 76)}});
            if (!next_sector(sector, sector))
                return false;
        }
        if (entries.empty() || entries[0].type != 5)
            return false;

        std::vector<bool> reached(entries.size(), false);
        std::vector<quint32> pending{entries[0].links[2]};
        qsizetype reached_count = 0;
        while (!pending.empty()) {
            const quint32 id = pending.back();
            pending.pop_back();
            if (id == 0 || id >= entries.size() || reached[id] || entries[id].type == 0)
                continue;
            reached[id] = true;
            ++reached_count;
            for (const quint32 link : entries[id].links)
                pending.push_back(link);
        }
        qsizetype in_use = 0;
        for (size_t id = 1; id < entries.size(); ++id)
            in_use += entries[id].type != 0;
        return reached_count == in_use;
    }

    QFile m_disk_file;
    QBuffer m_buffer;
    QIODevice* m_file = &m_disk_file;
    int m_sector_size = 512;
    quint32 m_sectors = 0;
    std::vector<quint32> m_table;
};

}  // namespace

QString olecf_file_parse::stream_folder_name(const QString& stream_name)
{
    if (!needs_encoding(stream_name))
        return stream_name;
    if (stream_name.isEmpty())
        return QString("%");
    QString encoded;
    for (const QChar c : stream_name) {
        const ushort u = c.unicode();
        if (u < 0x20 || u == 0x7f || c == '/' || c == '\\' || c == '%' || c == '.')
            encoded += QString("%%1").arg(u, 2, 16, QChar('0')).toUpper();
        else
            encoded += c;
    }
    return encoded;
}

QString olecf_file_parse::jump_list_folder(const QString& export_location, const QString& user_name,
                                           const QString& jumplist_name)
{
    return export_location + "Files/" + stream_folder_name(user_name + "_" + jumplist_name) + "/";
}

QString olecf_file_parse::start_parsing_olecf(QString file_path, QString export_location, QString user_name)
{
    QString result;
    visit_root(file_path, [&](libolecf_file_t* file, libolecf_error_t** error) {
        QString jumplist_name;
        const QStringList parts = file_path.split('/');
        if (parts.size() >= 2)
            jumplist_name = parts.last();
        result = jump_list_folder(export_location, user_name, jumplist_name);
        get_root_item(file, error, jumplist_name, export_location, user_name);
    });
    return result;
}

bool olecf_file_parse::read_streams(const QString& file_path, const stream_taker& take)
{
    m_take = &take;
    const bool opened = visit_root(file_path, [&](libolecf_file_t* file, libolecf_error_t** error) {
        get_root_item(file, error, QString(), QString(), QString());
    });
    m_take = nullptr;
    return opened;
}

bool olecf_file_parse::visit_root(const QString& file_path,
                                  const std::function<void(libolecf_file_t*, libolecf_error_t**)>& visit)
{
    // A jump list of any real size is read once into memory and checked and
    // parsed from there: the library reads a stream in 64-byte pieces, each a
    // system call on a file. Anything larger is read from the file. The bytes
    // and their handle outlive the library's file object. What cannot be
    // opened as a regular file (a named pipe would block) is no jump list.
    const bounded_file_reader::result bytes = bounded_file_reader::read(file_path, k_max_in_memory);
    if (!bytes.opened)
        return false;
    const bool in_memory = !bytes.truncated;
    if (!compound_file_check(file_path, in_memory ? &bytes.data : nullptr).consistent())
        return false;
    const memory_io_handle handle(bytes.data);
    olecf_error_owner error;
    libolecf_file_t* raw = nullptr;
    if (libolecf_file_initialize(&raw, &error.error) != 1)
        return false;
    olecf_file_owner file(raw);

    const QByteArray local_path = file_path.toLocal8Bit();
    const int read_flag = libolecf_get_access_flags_read();
    const int opened = in_memory && handle.get()
                           ? libolecf_file_open_file_io_handle(file.get(), handle.get(), read_flag, &error.error)
                           : libolecf_file_open(file.get(), local_path.constData(), read_flag, &error.error);
    if (opened != 1)
        return false;
    error.release();

    m_file_size = QFileInfo(file_path).size();
    m_bytes_left = m_file_size;
    visit(file.get(), &error.error);
    error.release();
    libolecf_file_close(file.get(), &error.error);
    return true;
}

int olecf_file_parse::get_root_item(libolecf_file_t* file, libolecf_error_t** error, QString jumplist_name,
                                    QString export_location, QString user_name)
{
    libolecf_item_t* raw = nullptr;
    const int result = libolecf_file_get_root_item(file, &raw, error);
    if (result != 1) {
        clear_error(error);
        return -1;
    }
    olecf_item_owner root(raw);
    int count = 0;
    if (libolecf_item_get_number_of_sub_items(root.get(), &count, error) == 1)
        get_sub_item_info(root.get(), error, count, jumplist_name, export_location, user_name);
    clear_error(error);
    return result;
}

void olecf_file_parse::get_sub_item_info(libolecf_item_t* root, libolecf_error_t** error, int count,
                                         QString jumplist_name, QString export_location, QString user_name)
{
    for (int index = 0; index < count; ++index) {
        libolecf_item_t* raw = nullptr;
        if (libolecf_item_get_sub_item(root, index, &raw, error) != 1) {
            clear_error(error);
            continue;
        }
        olecf_item_owner item(raw);
        size_t utf16_size = 0;
        if (libolecf_item_get_utf16_name_size(item.get(), &utf16_size, error) != 1) {
            clear_error(error);
            continue;
        }
        char name[k_name_buffer_size] = {};
        const size_t asked = qMin(utf16_size, k_name_buffer_size - 1);
        if (libolecf_item_get_utf8_name(item.get(), reinterpret_cast<uint8_t*>(name), asked, error) != 1) {
            clear_error(error);
            continue;
        }
        write_data_to_file(get_sub_items_data(item.get(), error), QString::fromUtf8(name), jumplist_name,
                           export_location, user_name);
    }
}

QByteArray olecf_file_parse::get_sub_items_data(libolecf_item_t* item, libolecf_error_t** error)
{
    uint32_t size = 0;
    if (libolecf_item_get_size(item, &size, error) != 1) {
        clear_error(error);
        return QByteArray();
    }
    // A damaged or hostile directory entry may claim up to 4 GiB; the stream
    // cannot hold more than the file does. Streams of a sound file share no
    // sectors, so all of them together hold no more than the file either:
    // entries that point many times at the same data must not multiply what
    // is read and written. A stream larger than any jump list holds is not read.
    if (size > k_max_stream_size)
        return QByteArray();
    const qint64 wanted = qMin<qint64>(size, m_bytes_left);
    if (wanted <= 0)
        return QByteArray();
    QByteArray data(static_cast<qsizetype>(wanted), '\0');
    const ssize_t got = libolecf_stream_read_buffer(item, reinterpret_cast<uint8_t*>(data.data()),
                                                    static_cast<size_t>(wanted), error);
    if (got < 0) {
        clear_error(error);
        return QByteArray();
    }
    data.truncate(static_cast<qsizetype>(got));
    m_bytes_left -= got;
    return data;
}

void olecf_file_parse::write_data_to_file(QByteArray data, QString stream_name, QString jumplist_name,
                                          QString export_location, QString user_name)
{
    if (m_take) {
        (*m_take)(stream_name, data);
        return;
    }
    const QString folder = jump_list_folder(export_location, user_name, jumplist_name)
                           + stream_folder_name(stream_name);
    QDir().mkpath(folder);
    QFile file(folder + "/file");
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return;
    file.write(data);
    file.flush();
    file.close();
}
