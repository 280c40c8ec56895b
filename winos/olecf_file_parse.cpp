#include "olecf_file_parse.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>


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
    olecf_error_owner error;
    libolecf_file_t* raw = nullptr;
    if (libolecf_file_initialize(&raw, &error.error) != 1)
        return QString();
    olecf_file_owner file(raw);

    const QByteArray local_path = file_path.toLocal8Bit();
    if (libolecf_file_open(file.get(), local_path.constData(), libolecf_get_access_flags_read(), &error.error) != 1)
        return QString();
    error.release();

    QString jumplist_name;
    const QStringList parts = file_path.split('/');
    if (parts.size() >= 2)
        jumplist_name = parts.last();
    m_file_size = QFileInfo(file_path).size();
    const QString result = jump_list_folder(export_location, user_name, jumplist_name);
    get_root_item(file.get(), &error.error, jumplist_name, export_location, user_name);
    error.release();
    libolecf_file_close(file.get(), &error.error);
    return result;
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
    // cannot hold more than the file does.
    const qint64 wanted = qMin<qint64>(size, m_file_size);
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
    return data;
}

void olecf_file_parse::write_data_to_file(QByteArray data, QString stream_name, QString jumplist_name,
                                          QString export_location, QString user_name)
{
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
