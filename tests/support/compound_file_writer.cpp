#include "compound_file_writer.h"

#include "little_endian_writer.h"

#include <QtEndian>

#include <algorithm>

namespace compound_file_writer {

namespace {

constexpr int k_sector = 512;
constexpr int k_mini_sector = 64;
constexpr qint64 k_mini_cutoff = 4096;
constexpr quint32 k_free = 0xFFFFFFFF;
constexpr quint32 k_end_of_chain = 0xFFFFFFFE;
constexpr quint32 k_fat_sector = 0xFFFFFFFD;
constexpr quint32 k_no_stream = 0xFFFFFFFF;

using little_endian_writer::put16;
using little_endian_writer::put32;
using little_endian_writer::put64;

void pad_to(QByteArray& data, int unit)
{
    const int rest = data.size() % unit;
    if (rest)
        data.append(QByteArray(unit - rest, '\0'));
}

// Directory order of names: shorter first, then by upper-cased code units.
bool name_less(const QString& a, const QString& b)
{
    if (a.size() != b.size())
        return a.size() < b.size();
    return a.toUpper() < b.toUpper();
}

struct entry
{
    QString name;
    quint8 type = 0;  // 2 stream, 5 root
    quint32 left = k_no_stream;
    quint32 right = k_no_stream;
    quint32 child = k_no_stream;
    quint32 start = k_end_of_chain;
    quint64 size = 0;
};

QByteArray entry_bytes(const entry& e)
{
    QByteArray out;
    const QString name = e.name.left(31);
    for (const QChar c : name)
        put16(out, c.unicode());
    out.append(QByteArray(64 - out.size(), '\0'));
    put16(out, e.type ? static_cast<quint16>((name.size() + 1) * 2) : 0);
    out.append(static_cast<char>(e.type));
    out.append(static_cast<char>(1));  // black
    put32(out, {e.left, e.right, e.child});
    out.append(QByteArray(16 + 4 + 8 + 8, '\0'));  // class id, state, times
    put32(out, e.start);
    put64(out, e.size);
    return out;
}

// Balanced sibling tree over entries [first, last) of the sorted ids.
quint32 link_tree(QList<entry>& entries, const QList<int>& sorted, int first, int last)
{
    if (first >= last)
        return k_no_stream;
    const int middle = (first + last) / 2;
    entry& e = entries[sorted.at(middle)];
    e.left = link_tree(entries, sorted, first, middle);
    e.right = link_tree(entries, sorted, middle + 1, last);
    return static_cast<quint32>(sorted.at(middle));
}

// Appends a chain of sectors to the FAT and returns its first sector.
quint32 chain(QList<quint32>& fat, int first_sector, int count)
{
    if (count == 0)
        return k_end_of_chain;
    for (int i = 0; i < count; ++i)
        fat.append(i + 1 < count ? static_cast<quint32>(first_sector + i + 1) : k_end_of_chain);
    return static_cast<quint32>(first_sector);
}

}  // namespace

QByteArray build(const QList<stream>& streams)
{
    QList<entry> entries;
    entries.append(entry{"Root Entry", 5});
    QByteArray sectors;      // regular sectors after the header, in order
    QByteArray mini_stream;  // small streams, 64-byte units
    QList<quint32> fat;
    QList<quint32> mini_fat;

    // Large streams first, each in its own run of sectors.
    for (const stream& s : streams) {
        entry e{s.name, 2};
        e.size = s.declared_size >= 0 ? static_cast<quint64>(s.declared_size) : s.data.size();
        QByteArray data = s.data;
        if (s.data.size() >= k_mini_cutoff) {
            pad_to(data, k_sector);
            e.start = chain(fat, sectors.size() / k_sector, data.size() / k_sector);
            sectors.append(data);
        } else if (!s.data.isEmpty()) {
            pad_to(data, k_mini_sector);
            e.start = chain(mini_fat, mini_stream.size() / k_mini_sector, data.size() / k_mini_sector);
            mini_stream.append(data);
        }
        entries.append(e);
    }
    // The mini stream is a regular chain owned by the root entry.
    if (!mini_stream.isEmpty()) {
        entries[0].size = mini_stream.size();
        pad_to(mini_stream, k_sector);
        entries[0].start = chain(fat, sectors.size() / k_sector, mini_stream.size() / k_sector);
        sectors.append(mini_stream);
    }
    QByteArray mini_fat_bytes;
    for (quint32 next : mini_fat)
        put32(mini_fat_bytes, next);
    pad_to(mini_fat_bytes, k_sector);
    const int mini_fat_sectors = mini_fat.isEmpty() ? 0 : mini_fat_bytes.size() / k_sector;
    const quint32 mini_fat_start = chain(fat, sectors.size() / k_sector, mini_fat_sectors);
    if (mini_fat_sectors)
        sectors.append(mini_fat_bytes);

    QList<int> sorted;
    for (int i = 1; i < entries.size(); ++i)
        sorted.append(i);
    std::stable_sort(sorted.begin(), sorted.end(),
                     [&](int a, int b) { return name_less(entries.at(a).name, entries.at(b).name); });
    entries[0].child = link_tree(entries, sorted, 0, sorted.size());
    QByteArray directory;
    for (const entry& e : entries)
        directory.append(entry_bytes(e));
    while (directory.size() % k_sector)
        directory.append(entry_bytes(entry{}));
    const quint32 directory_start = chain(fat, sectors.size() / k_sector, directory.size() / k_sector);
    sectors.append(directory);

    // The FAT covers itself too: grow it until it has room for every sector.
    int fat_sectors = 1;
    while ((fat.size() + fat_sectors) > fat_sectors * (k_sector / 4))
        ++fat_sectors;
    const int fat_start = fat.size();
    for (int i = 0; i < fat_sectors; ++i)
        fat.append(k_fat_sector);
    QByteArray fat_bytes;
    for (quint32 next : fat)
        put32(fat_bytes, next);
    while (fat_bytes.size() < fat_sectors * k_sector)
        put32(fat_bytes, k_free);
    sectors.append(fat_bytes);

    // Signature, class id, version 3 with 512-byte sectors and 64-byte mini
    // sectors; no directory sector count (version 3) and no DIFAT sectors.
    QByteArray header = QByteArray::fromHex("d0cf11e0a1b11ae100000000000000000000000000000000"
                                            "3e000300feff09000600000000000000");
    put32(header, {0, quint32(fat_sectors), directory_start, 0, quint32(k_mini_cutoff),
                   mini_fat_sectors ? mini_fat_start : k_end_of_chain, quint32(mini_fat_sectors), k_end_of_chain, 0});
    for (int i = 0; i < 109; ++i)
        put32(header, i < fat_sectors ? static_cast<quint32>(fat_start + i) : k_free);
    return header + sectors;
}

QByteArray dest_list(int entries)
{
    QByteArray out;
    // Version, entries, pinned entries, last entry number, last revision.
    put32(out, {1, quint32(entries), 0, 0, quint32(entries), 0, quint32(entries), 0});
    for (int i = 1; i <= entries; ++i) {
        out.append(QByteArray(8 + 16 * 4, '\0'));  // checksum and object ids
        out.append(QByteArray("desktop-case01").leftJustified(16, '\0'));
        put32(out, {quint32(i), 0, 0, 0, 0xFFFFFFFF});  // entry number, access time, not pinned
        const QString path = "C:\\item" + QString::number(i);
        put16(out, static_cast<quint16>(path.size()));
        for (const QChar c : path)
            put16(out, c.unicode());
    }
    return out;
}

QByteArray jump_list(const QList<QByteArray>& links)
{
    QList<stream> streams;
    for (int i = 0; i < links.size(); ++i)
        streams.append({QString::number(i + 1, 16), links.at(i)});
    streams.append({"DestList", dest_list(links.size())});
    return build(streams);
}

quint32 get32(const QByteArray& file, int offset)
{
    return qFromLittleEndian<quint32>(file.constData() + offset);
}

void set32(QByteArray& file, int offset, quint32 value)
{
    qToLittleEndian(value, file.data() + offset);
}

// build() writes the directory and the allocation table each as one run of
// sectors, so both are found from the header alone.
int directory_entry_offset(const QByteArray& file, int entry)
{
    return (static_cast<int>(get32(file, field::directory_start)) + 1) * k_sector + entry * 128;
}

int fat_entry_offset(const QByteArray& file, quint32 sector)
{
    constexpr int first_fat_sector_field = 76;
    return (static_cast<int>(get32(file, first_fat_sector_field)) + 1) * k_sector + 4 * static_cast<int>(sector);
}

}  // namespace compound_file_writer
