#include "bookmark_writer.h"

#include <QMap>
#include <QStringList>
#include <QtEndian>

#include "little_endian_writer.h"

using little_endian_writer::put32;

namespace bookmark_writer {

QByteArray build(const QString& path, const QDateTime& created, const QString& user, const QString& volume_url,
                 const QString& volume_name, quint64 volume_flags, const QString& disk_image_path)
{
    QByteArray body(4, '\0');  // items at offsets counted from the header's end; first the table's offset
    const auto item = [&body](quint32 type, const QByteArray& data) {
        const quint32 at = quint32(body.size());
        put32(body, quint32(data.size()));
        put32(body, type);
        body += data + QByteArray((4 - data.size() % 4) % 4, '\0');
        return at;
    };
    const auto strings = [&item](const QString& path) {
        QByteArray offsets;
        for (const QString& part : path.split('/'))
            put32(offsets, item(0x0101, part.toUtf8()));
        return item(0x0601, offsets);
    };
    const auto date = [&item](const QDateTime& when) {
        char be[8];
        qToBigEndian(double(when.toMSecsSinceEpoch()) / 1000 - 978307200, be);
        return item(0x0400, QByteArray(be, 8));
    };
    const auto table = [&body](quint32 id, const QMap<quint32, quint32>& entries, quint32 next) {
        const quint32 at = quint32(body.size());
        for (quint32 value : {quint32(12 + 12 * entries.size()), 0xFFFFFFFEu, id, next, quint32(entries.size())})
            put32(body, value);
        for (auto it = entries.constBegin(); it != entries.constEnd(); ++it) {
            put32(body, it.key());
            put32(body, it.value());
            put32(body, 0);
        }
        return at;
    };
    QByteArray flags;
    little_endian_writer::put64(flags, volume_flags);
    little_endian_writer::put64(flags, 0x13ef);  // the bits that are known
    QMap<quint32, quint32> main{{0x1004, strings(path)},
                                {0x1040, date(created)},
                                {0x2005, item(0x0901, volume_url.toUtf8())},
                                {0x2010, item(0x0101, volume_name.toUtf8())},
                                {0x2011, item(0x0101, "0A81F3B1-51D9-3335-B3E3-169C3640360D")},
                                {0x2013, date(QDateTime::fromSecsSinceEpoch(1631817458))},
                                {0x2020, item(0x0201, flags)},
                                {0xc011, item(0x0101, user.toUtf8())}};
    quint32 next = 0;
    if (!disk_image_path.isEmpty()) {
        main[0x2040] = item(0x0303, QByteArray::fromHex("a00f0000"));  // the id of the image's table
        next = table(0xfa0, {{0x1004, strings(disk_image_path)}}, 0);
    }
    const quint32 first = table(1, main, next);
    qToLittleEndian(first, body.data());
    QByteArray header("book");
    for (quint32 value : {quint32(48 + body.size()), 0x10040000u, 48u})
        put32(header, value);
    return header + QByteArray(32, '\0') + body;
}

qint64 first_table_at(const QByteArray& blob)
{
    return 48 + qFromLittleEndian<quint32>(blob.constData() + 48);
}

}  // namespace bookmark_writer
