#include "lnk_paser_class.h"

#include <QByteArray>

#include "bounded_file_reader.h"
#include "little_endian_bytes.h"
#include "memory_io_handle.h"
#include "plugin_static_function.h"

namespace {

// liblnk hands out error objects on failure; every one must be freed, on
// every path, or a run over thousands of links leaks them all.
using lnk_error_owner = libyal_error_owner<liblnk_error_t, liblnk_error_free>;
using lnk_file_owner = libyal_handle_owner<liblnk_file_t, liblnk_error_t, liblnk_file_free, liblnk_error_free>;

// Drops the error a failed call left behind, so the next call starts clean.
void clear_error(liblnk_error_t** error)
{
    if (error && *error)
        liblnk_error_free(error);
}

using size_call = int (*)(liblnk_file_t*, size_t*, liblnk_error_t**);
using value_call = int (*)(liblnk_file_t*, uint8_t*, size_t, liblnk_error_t**);

// Size first, then the value into a zeroed buffer of that size.
QByteArray read_sized(liblnk_file_t* file, liblnk_error_t** error, size_call get_size, value_call get_value)
{
    size_t size = 0;
    if (get_size(file, &size, error) != 1) {
        clear_error(error);
        size = 0;
    }
    QByteArray buffer(static_cast<qsizetype>(size), '\0');
    if (size > 0 && get_value(file, reinterpret_cast<uint8_t*>(buffer.data()), size, error) != 1) {
        clear_error(error);
        buffer.fill('\0');
    }
    return buffer;
}

QString read_text(liblnk_file_t* file, liblnk_error_t** error, size_call get_size, value_call get_value)
{
    QByteArray bytes = read_sized(file, error, get_size, get_value);
    bytes.replace('\0', QByteArray());
    // Most fields of a link are absent; skip the conversion for those.
    static const QString empty("");
    if (bytes.isEmpty())
        return empty;
    return QString::fromLocal8Bit(bytes);
}

using filetime_call = int (*)(liblnk_file_t*, uint64_t*, liblnk_error_t**);

// Real links are a few kilobytes; a bigger file is not one.
constexpr qint64 k_max_link_bytes = 4LL * 1024 * 1024;

// liblnk allocates the location-information block and each extra data block
// at the size the file declares, before reading it: a hundred hostile bytes
// can ask for gigabytes. Links whose declared 32-bit sizes reach past the end
// of the file are left unread, as links the library cannot open are. Only
// what decides those positions is looked at; the rest is the library's job.
bool declared_sizes_fit(const QByteArray& data)
{
    const qint64 size = data.size();
    if (size > k_max_link_bytes)
        return false;
    constexpr qint64 k_header_size = 76;
    if (size < k_header_size)
        return true;
    const auto u16 = [&](qint64 at) { return little_endian_at<quint16>(data, at); };
    const auto u32 = [&](qint64 at) { return little_endian_at<quint32>(data, at); };
    const quint32 flags = u32(20);
    qint64 at = k_header_size;
    if ((flags & 0x01) && at + 2 <= size)  // target identifier list
        at += 2 + u16(at);
    if (flags & 0x02) {  // location information
        if (at + 4 > size)
            return true;
        if (u32(at) > size - at)
            return false;
        at += u32(at);
    }
    const int char_size = (flags & 0x80) ? 2 : 1;
    for (const quint32 string_flag : {0x04u, 0x08u, 0x10u, 0x20u, 0x40u}) {
        if ((flags & string_flag) && at + 2 <= size)
            at += 2 + qint64(u16(at)) * char_size;
    }
    for (; at + 4 <= size; at += u32(at)) {  // extra data blocks, up to the terminal one
        if (u32(at) < 4)
            break;
        if (u32(at) > size - at)
            return false;
    }
    return true;
}

bool declared_sizes_fit(const QString& path)
{
    const bounded_file_reader::result read = bounded_file_reader::read(path, k_max_link_bytes);
    if (!read.opened)
        return true;  // the library gives its own answer
    if (read.truncated) {
        plugin_static_function::app_debug("file larger than the read limit, not read: " + path,
                                          "int lnk_paser_class::start_parsing_lnk(QString)");
        return false;
    }
    return declared_sizes_fit(read.data);
}

}  // namespace

int lnk_paser_class::start_parsing_lnk_data(const QByteArray& data)
{
    if (!declared_sizes_fit(data))
        return -1;
    const memory_io_handle handle(data);
    if (!handle.get())
        return -1;
    return read_link([&](liblnk_file_t* file, liblnk_error_t** error) {
        return liblnk_file_open_file_io_handle(file, handle.get(), liblnk_get_access_flags_read(), error);
    });
}

int lnk_paser_class::start_parsing_lnk(QString path)
{
    if (!declared_sizes_fit(path))
        return -1;
    const QByteArray local_path = path.toLocal8Bit();
    return read_link([&](liblnk_file_t* file, liblnk_error_t** error) {
        return liblnk_file_open(file, local_path.constData(), liblnk_get_access_flags_read(), error);
    });
}

int lnk_paser_class::read_link(const std::function<int(liblnk_file_t*, liblnk_error_t**)>& open)
{
    lnk_error_owner error;
    liblnk_file_t* raw = nullptr;
    if (liblnk_file_initialize(&raw, &error.error) != 1)
        return -1;
    lnk_file_owner file(raw);
    if (open(file.get(), &error.error) != 1)
        return -1;
    error.release();
    get_lnk_info(file.get(), &error.error);
    liblnk_file_close(file.get(), &error.error);
    return 0;
}

void lnk_paser_class::get_lnk_info(liblnk_file_t* file, liblnk_error_t** error)
{
    struct_lnk_info record;
    current_record = &record;
    record.creation_time = QString::number(creation_time(file, error));
    record.modification_time = QString::number(modification(file, error));
    record.access_time = QString::number(access_time(file, error));
    record.file_size = QString::number(get_size(file, error));
    record.drive_type = extract_drive_type_fun(file, error);
    record.drive_serial_number = get_serial_str(file, error);
    record.local_path = get_local_path(file, error);
    record.volume_label = get_volume_label(file, error);
    record.description = get_description_str(file, error);
    record.machine_identifier = get_machine_id(file, error);
    record.network_path = get_network_path(file, error);
    record.relative_path = get_relative_path(file, error);
    record.working_directory = get_working_directory(file, error);
    record.command_line_arguments = get_commd_line_arguments(file, error);
    record.environment_variables_location = get_env_variable(file, error);
    record.link_target = get_link_target(file, error);
    record.icon_location = get_icon_location_path(file, error);
    lnk_info_list.append(record);
    current_record = nullptr;
}

QString lnk_paser_class::get_link_target(liblnk_file_t* file, liblnk_error_t** error)
{
    return QString::fromLatin1(read_sized(file, error, liblnk_file_get_link_target_identifier_data_size,
                                          liblnk_file_copy_link_target_identifier_data)
                                   .toHex());
}

QString lnk_paser_class::get_env_variable(liblnk_file_t* file, liblnk_error_t** error)
{
    return read_text(file, error, liblnk_file_get_utf8_environment_variables_location_size,
                     liblnk_file_get_utf8_environment_variables_location);
}

QString lnk_paser_class::get_commd_line_arguments(liblnk_file_t* file, liblnk_error_t** error)
{
    return read_text(file, error, liblnk_file_get_utf8_command_line_arguments_size,
                     liblnk_file_get_utf8_command_line_arguments);
}

QString lnk_paser_class::get_working_directory(liblnk_file_t* file, liblnk_error_t** error)
{
    return read_text(file, error, liblnk_file_get_utf8_working_directory_size,
                     liblnk_file_get_utf8_working_directory);
}

QString lnk_paser_class::get_relative_path(liblnk_file_t* file, liblnk_error_t** error)
{
    return read_text(file, error, liblnk_file_get_utf8_relative_path_size, liblnk_file_get_utf8_relative_path);
}

QString lnk_paser_class::get_network_path(liblnk_file_t* file, liblnk_error_t** error)
{
    return read_text(file, error, liblnk_file_get_utf8_network_path_size, liblnk_file_get_utf8_network_path);
}

qint64 lnk_paser_class::give_epoch_from_string(QString filetime_text)
{
    // FILETIME counts 100 ns ticks since 1601-01-01; the division truncates
    // toward zero, so times before 1970 stay negative.
    bool ok = false;
    const qint64 ticks = filetime_text.toLongLong(&ok);
    if (!ok || ticks < 1)
        return 0;
    return (ticks - 116444736000000000LL) / 10000000LL;
}

QString lnk_paser_class::get_volume_label(liblnk_file_t* file, liblnk_error_t** error)
{
    return read_text(file, error, liblnk_file_get_utf8_volume_label_size, liblnk_file_get_utf8_volume_label);
}

QString lnk_paser_class::get_serial_str(liblnk_file_t* file, liblnk_error_t** error)
{
    uint32_t serial = 0;
    if (liblnk_file_get_drive_serial_number(file, &serial, error) != 1) {
        clear_error(error);
        serial = 0;
    }
    return QString::number(serial);
}

QString lnk_paser_class::extract_drive_type_fun(liblnk_file_t* file, liblnk_error_t** error)
{
    static const char* const names[] = {"unknown drive", "no root dir", "removable drive", "fixed drive",
                                        "remote drive",  "cdrom drive", "ramdisk drive"};
    uint32_t type = 0;
    if (liblnk_file_get_drive_type(file, &type, error) != 1) {
        clear_error(error);
        return QString();
    }
    return type < 7 ? QString(names[type]) : QString();
}

quint32 lnk_paser_class::get_size(liblnk_file_t* file, liblnk_error_t** error)
{
    uint32_t size = 0;
    if (liblnk_file_get_file_size(file, &size, error) != 1) {
        clear_error(error);
        size = 0;
    }
    return size;
}

namespace {

qint64 epoch_of(lnk_paser_class& reader, liblnk_file_t* file, liblnk_error_t** error, filetime_call call)
{
    uint64_t filetime = 0;
    if (call(file, &filetime, error) != 1) {
        clear_error(error);
        filetime = 0;
    }
    return reader.give_epoch_from_string(QString::number(filetime));
}

}  // namespace

qint64 lnk_paser_class::access_time(liblnk_file_t* file, liblnk_error_t** error)
{
    return epoch_of(*this, file, error, liblnk_file_get_file_access_time);
}

qint64 lnk_paser_class::modification(liblnk_file_t* file, liblnk_error_t** error)
{
    return epoch_of(*this, file, error, liblnk_file_get_file_modification_time);
}

qint64 lnk_paser_class::creation_time(liblnk_file_t* file, liblnk_error_t** error)
{
    return epoch_of(*this, file, error, liblnk_file_get_file_creation_time);
}

QString lnk_paser_class::get_local_path(liblnk_file_t* file, liblnk_error_t** error)
{
    return read_text(file, error, liblnk_file_get_utf8_local_path_size, liblnk_file_get_utf8_local_path);
}

QString lnk_paser_class::get_description_str(liblnk_file_t* file, liblnk_error_t** error)
{
    return read_text(file, error, liblnk_file_get_utf8_description_size, liblnk_file_get_utf8_description);
}

QString lnk_paser_class::get_machine_id(liblnk_file_t* file, liblnk_error_t** error)
{
    return read_text(file, error, liblnk_file_get_utf8_machine_identifier_size,
                     liblnk_file_get_utf8_machine_identifier);
}

QString lnk_paser_class::get_icon_location_path(liblnk_file_t* file, liblnk_error_t** error)
{
    return read_text(file, error, liblnk_file_get_utf8_icon_location_size, liblnk_file_get_utf8_icon_location);
}
