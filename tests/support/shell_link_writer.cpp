#include "shell_link_writer.h"

#include "little_endian_writer.h"

namespace shell_link_writer {

namespace {

enum link_flag : quint32 {
    has_target_id_list = 0x01,
    has_link_info = 0x02,
    has_name = 0x04,
    has_working_dir = 0x10,
    is_unicode = 0x80,
};

using little_endian_writer::put16;
using little_endian_writer::put32;
using little_endian_writer::put64;

QByteArray ansi_z(const QString& text)
{
    return text.toLatin1() + QByteArray(1, '\0');
}

QByteArray fixed_ansi(const QString& text, int size)
{
    QByteArray bytes = text.toLatin1().left(size - 1);
    bytes.append(QByteArray(size - bytes.size(), '\0'));
    return bytes;
}

void put_string_data(QByteArray& out, const QString& text)
{
    put16(out, static_cast<quint16>(text.size()));
    for (const QChar c : text)
        put16(out, c.unicode());
}

QByteArray header(const link_fields& f, quint32 flags)
{
    // Header size and the link class id, then the caller's fields; icon
    // index 0, shown normally, no hot key.
    QByteArray out = QByteArray::fromHex("4c0000000114020000000000c000000000000046");
    put32(out, {flags, f.file_attributes});
    for (quint64 time : {f.creation_filetime, f.access_filetime, f.write_filetime})
        put64(out, time);
    put32(out, {f.file_size, 0, 1});
    out.append(QByteArray(12, '\0'));
    return out;
}

QByteArray id_list(const QByteArray& item)
{
    QByteArray out;
    put16(out, static_cast<quint16>(item.size() + 2 + 2));
    put16(out, static_cast<quint16>(item.size() + 2));
    out.append(item);
    put16(out, 0);  // terminal id
    return out;
}

QByteArray volume_id(const link_fields& f)
{
    const QByteArray label = ansi_z(f.volume_label);
    QByteArray out;
    put32(out, {quint32(16 + label.size()), f.drive_type, f.drive_serial, 16});  // the label at offset 16
    return out + label;
}

QByteArray network_link(const QString& share)
{
    const QByteArray name = ansi_z(share);
    // A valid net type, the name at offset 20, no device name, the LanMan provider.
    QByteArray out;
    put32(out, {quint32(20 + name.size()), 0x2, 20, 0, 0x00020000});
    return out + name;
}

QByteArray link_info(const link_fields& f)
{
    const quint32 header_size = 0x1C;
    QByteArray body;
    quint32 flags = 0;
    quint32 volume_offset = 0;
    quint32 local_offset = 0;
    quint32 network_offset = 0;
    if (!f.local_path.isEmpty()) {
        flags |= 0x1;
        volume_offset = header_size;
        body.append(volume_id(f));
        local_offset = header_size + body.size();
        body.append(ansi_z(f.local_path));
    } else {
        flags |= 0x2;
        network_offset = header_size;
        body.append(network_link(f.network_share));
    }
    const quint32 suffix_offset = header_size + body.size();
    body.append('\0');  // empty common path suffix

    QByteArray out;
    put32(out, {quint32(header_size + body.size()), header_size, flags, volume_offset, local_offset, network_offset,
                suffix_offset});
    return out + body;
}

QByteArray tracker_block(const QString& machine)
{
    QByteArray out;
    put32(out, {0x60, 0xA0000003, 0x58, 0});
    out.append(fixed_ansi(machine, 16));
    // Volume and object ids, current and at birth: fixed test values.
    for (int i = 0; i < 4; ++i)
        out.append(QByteArray::fromHex("0123456789abcdef0123456789abcdef"));
    return out;
}

}  // namespace

quint64 filetime_from_unix(qint64 seconds)
{
    return static_cast<quint64>(seconds * 10000000LL + 116444736000000000LL);
}

QByteArray build(const link_fields& f)
{
    quint32 flags = is_unicode;
    if (!f.target_id_list.isEmpty())
        flags |= has_target_id_list;
    const bool with_info = !f.local_path.isEmpty() || !f.network_share.isEmpty();
    if (with_info)
        flags |= has_link_info;
    const struct
    {
        quint32 flag;
        const QString* text;
    } strings[] = {{has_name, &f.description}, {has_working_dir, &f.working_directory}};
    for (const auto& s : strings) {
        if (!s.text->isEmpty())
            flags |= s.flag;
    }

    QByteArray out = header(f, flags);
    if (!f.target_id_list.isEmpty())
        out.append(id_list(f.target_id_list));
    if (with_info)
        out.append(link_info(f));
    for (const auto& s : strings) {
        if (!s.text->isEmpty())
            put_string_data(out, *s.text);
    }
    if (!f.machine_id.isEmpty())
        out.append(tracker_block(f.machine_id));
    put32(out, 0);  // terminal block
    return out;
}

link_fields media_link(const QString& windows_path, qint64 unix_time, quint32 size)
{
    link_fields f;
    f.creation_filetime = filetime_from_unix(unix_time);
    f.write_filetime = filetime_from_unix(unix_time + 60);
    f.access_filetime = filetime_from_unix(unix_time + 120);
    f.file_size = size;
    // A root-folder shell item (My Computer), as Explorer writes first.
    f.target_id_list = QByteArray::fromHex("1f50e04fd020ea3a6910a2d808002b30309d");
    f.local_path = windows_path;
    f.drive_type = 3;
    f.drive_serial = 0xA1B2C3D4;
    f.volume_label = "OS";
    f.working_directory = windows_path.left(windows_path.lastIndexOf('\\'));
    f.machine_id = "desktop-case01";
    return f;
}

}  // namespace shell_link_writer
