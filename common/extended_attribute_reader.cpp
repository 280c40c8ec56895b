#include "extended_attribute_reader.h"

#include <sys/types.h>
#include <sys/xattr.h>

#include <vector>

namespace {

// Far more than any file carries; the ceiling keeps a hostile volume from
// making one lookup expensive.
constexpr int k_max_attributes = 256;
constexpr ssize_t k_max_value_bytes = 256 * 1024;
constexpr ssize_t k_max_names_bytes = 64 * 1024;

ssize_t list_names(const QByteArray& path, char* buffer, size_t size)
{
#ifdef __APPLE__
    return listxattr(path.constData(), buffer, size, 0);
#else
    return listxattr(path.constData(), buffer, size);
#endif
}

ssize_t get_value(const QByteArray& path, const char* name, char* buffer, size_t size)
{
#ifdef __APPLE__
    return getxattr(path.constData(), name, buffer, size, 0, 0);
#else
    return getxattr(path.constData(), name, buffer, size);
#endif
}

QByteArray value_of(const QByteArray& path, const char* name)
{
    const ssize_t size = get_value(path, name, nullptr, 0);
    if (size <= 0 || size > k_max_value_bytes)
        return QByteArray();
    QByteArray value(size, Qt::Uninitialized);
    const ssize_t read = get_value(path, name, value.data(), size_t(size));
    if (read < 0)
        return QByteArray();
    value.truncate(read);
    return value;
}

}  // namespace

namespace extended_attribute_reader {

QString normalised_name(const QString& raw_name)
{
    QString name = raw_name;
    if (name.startsWith("user."))
        name = name.mid(5);
    for (const char* prefix : {"com.apple.metadata:", "metadata:"}) {
        if (name.startsWith(QLatin1String(prefix)))
            return name.mid(int(qstrlen(prefix)));
    }
    return name;
}

QHash<QString, QByteArray> read_all(const QString& path)
{
    QHash<QString, QByteArray> attributes;
    const QByteArray native = path.toUtf8();
    const ssize_t size = list_names(native, nullptr, 0);
    if (size <= 0 || size > k_max_names_bytes)
        return attributes;
    std::vector<char> names(size_t(size) + 1, '\0');
    const ssize_t listed = list_names(native, names.data(), size_t(size));
    if (listed <= 0)
        return attributes;
    for (ssize_t at = 0; at < listed && attributes.size() < k_max_attributes;) {
        const char* name = names.data() + at;
        const size_t length = qstrlen(name);
        if (length > 0) {
            const QByteArray value = value_of(native, name);
            if (!value.isEmpty())
                attributes.insert(normalised_name(QString::fromUtf8(name, qsizetype(length))), value);
        }
        at += ssize_t(length) + 1;
    }
    return attributes;
}

}  // namespace extended_attribute_reader
