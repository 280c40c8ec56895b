#include "keyed_archive.h"

#include <QDateTime>
#include <QTimeZone>
#include <QUuid>

#include <cmath>

#include "apple_dates.h"
#include "plist_document.h"

namespace {

plist_t array_of(plist_t dict, const char* key)
{
    const plist_t node = plist_dict_get_item(dict, key);
    return plist_document::is_array(node) ? node : nullptr;
}

QVariant date_since_2001(double seconds)
{
    const auto since_1970 = apple_dates::since_1970(seconds);
    if (!since_1970)
        return QVariant();
    return QDateTime::fromMSecsSinceEpoch(qint64(std::llround(*since_1970 * 1000)), QTimeZone::utc());
}

}  // namespace

keyed_archive::keyed_archive(plist_t archive)
{
    if (!plist_document::is_dict(archive))
        return;
    const plist_t top = plist_dict_get_item(archive, "$top");
    const plist_t table = array_of(archive, "$objects");
    if (!plist_document::is_dict(top) || !table)
        return;
    top_dict = top;
    objects = table;
    object_count = plist_array_get_size(table);
    state.assign(object_count, k_unseen);
    decoded.assign(object_count, QVariant());
}

QVariant keyed_archive::top(const QString& key)
{
    if (!is_archive())
        return QVariant();
    const plist_t root = plist_document::dict_item(top_dict, key);
    return root ? value(root, 0) : QVariant();
}

void keyed_archive::note(const QString& what)
{
    if (first_problem.isEmpty())
        first_problem = what;
}

bool keyed_archive::within(quint64 index, int depth)
{
    if (index >= object_count) {
        note(QString("reference %1 beyond the %2 objects").arg(index).arg(object_count));
        return false;
    }
    if (depth > k_max_depth) {
        note(QString("references nested deeper than %1").arg(k_max_depth));
        return false;
    }
    return true;
}

QVariant keyed_archive::object(quint64 index, int depth)
{
    // Object 0 is "$null", the archive's nil.
    if (index == 0 || !within(index, depth))
        return QVariant();
    if (state[index] == k_done)
        return decoded[index];
    if (state[index] == k_on_path) {
        note(QString("object %1 refers to itself").arg(index));
        return QVariant();
    }
    state[index] = k_on_path;
    const QVariant result = value(plist_array_get_item(objects, uint32_t(index)), depth + 1);
    state[index] = k_done;
    decoded[index] = result;
    return result;
}

QVariant keyed_archive::value(plist_t node, int depth)
{
    if (!node)
        return QVariant();
    if (depth > k_max_depth) {
        note(QString("references nested deeper than %1").arg(k_max_depth));
        return QVariant();
    }
    switch (plist_get_node_type(node)) {
    case PLIST_UID: {
        uint64_t index = 0;
        plist_get_uid_val(node, &index);
        return object(index, depth);
    }
    case PLIST_STRING:
        return plist_document::string_of(node);
    case PLIST_BOOLEAN: {
        uint8_t flag = 0;
        plist_get_bool_val(node, &flag);
        return bool(flag);
    }
    case PLIST_UINT: {
        uint64_t number = 0;
        plist_get_uint_val(node, &number);
        return qint64(number);  // negative numbers are stored in two's complement
    }
    case PLIST_REAL: {
        double number = 0;
        plist_get_real_val(node, &number);
        return number;
    }
    case PLIST_DATE: {
        int32_t seconds = 0;
        int32_t micros = 0;
        plist_get_date_val(node, &seconds, &micros);
        return date_since_2001(double(seconds) + double(micros) / 1e6);
    }
    case PLIST_DATA:
        return plist_document::data_of(node);
    case PLIST_ARRAY: {
        QVariantList list;
        const uint32_t count = plist_array_get_size(node);
        for (uint32_t i = 0; i < count; ++i)
            list << value(plist_array_get_item(node, i), depth + 1);
        return list;
    }
    case PLIST_DICT:
        return dictionary(node, depth);
    default:
        return QVariant();
    }
}

QVariant keyed_archive::dictionary(plist_t node, int depth)
{
    const plist_t keys = array_of(node, "NS.keys");
    const plist_t values = array_of(node, "NS.objects");
    if (keys && values) {
        QVariantMap map;
        const uint32_t count = qMin(plist_array_get_size(keys), plist_array_get_size(values));
        for (uint32_t i = 0; i < count; ++i)
            map.insert(value(plist_array_get_item(keys, i), depth + 1).toString(),
                       value(plist_array_get_item(values, i), depth + 1));
        return map;
    }
    if (values)
        return value(values, depth + 1);
    if (const plist_t data = plist_dict_get_item(node, "NS.data"))
        return value(data, depth + 1).toByteArray();
    if (const plist_t text = plist_dict_get_item(node, "NS.string"))
        return value(text, depth + 1).toString();
    if (const plist_t time = plist_dict_get_item(node, "NS.time")) {
        const QVariant seconds = value(time, depth + 1);
        return seconds.canConvert<double>() ? date_since_2001(seconds.toDouble()) : QVariant();
    }
    if (const plist_t uuid = plist_dict_get_item(node, "NS.uuidbytes")) {
        const QByteArray bytes = value(uuid, depth + 1).toByteArray();
        return bytes.size() == 16 ? QVariant(QUuid::fromRfc4122(bytes)) : QVariant();
    }
    // Any other object: its members by name, its class by name.
    QVariantMap members;
    plist_document::for_each_member(node, [&](const char* key, plist_t member) {
        if (qstrcmp(key, "$class") == 0)
            members.insert("$classname", value(member, depth + 1).toMap().value("$classname"));
        else
            members.insert(QString::fromUtf8(key), value(member, depth + 1));
    });
    return members;
}

QStringList keyed_archive::reachable_strings()
{
    QStringList out;
    if (!is_archive())
        return out;
    std::vector<bool> seen(object_count, false);
    collect_strings(top_dict, 0, seen, out);
    return out;
}

void keyed_archive::collect_strings(plist_t node, int depth, std::vector<bool>& seen, QStringList& out)
{
    if (depth > k_max_depth) {
        note(QString("references nested deeper than %1").arg(k_max_depth));
        return;
    }
    switch (plist_get_node_type(node)) {
    case PLIST_UID: {
        uint64_t index = 0;
        plist_get_uid_val(node, &index);
        if (index == 0 || !within(index, depth) || seen[index])
            return;
        seen[index] = true;
        collect_strings(plist_array_get_item(objects, uint32_t(index)), depth + 1, seen, out);
        return;
    }
    case PLIST_STRING:
        out << plist_document::string_of(node);
        return;
    case PLIST_ARRAY: {
        const uint32_t count = plist_array_get_size(node);
        for (uint32_t i = 0; i < count; ++i)
            collect_strings(plist_array_get_item(node, i), depth + 1, seen, out);
        return;
    }
    case PLIST_DICT:
        // The class names an archive keeps are bookkeeping, not content.
        plist_document::for_each_member(node, [&](const char* key, plist_t member) {
            if (qstrcmp(key, "$class") != 0)
                collect_strings(member, depth + 1, seen, out);
        });
        return;
    default:
        return;
    }
}
