#include "plist_writer.h"

#include <QDateTime>

#include <cstdlib>
#include <functional>

#include <plist/plist.h>

namespace {

constexpr qint64 k_seconds_1970_to_2001 = 978307200;

plist_t node_of(const QVariant& value)
{
    if (value.canConvert<plist_uid>() && value.userType() == qMetaTypeId<plist_uid>())
        return plist_new_uid(value.value<plist_uid>().value);
    switch (value.typeId()) {
    case QMetaType::Bool:
        return plist_new_bool(value.toBool() ? 1 : 0);
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        return plist_new_uint(uint64_t(value.toLongLong()));
    case QMetaType::Double:
        return plist_new_real(value.toDouble());
    case QMetaType::QDateTime: {
        const qint64 ms = value.toDateTime().toMSecsSinceEpoch() - k_seconds_1970_to_2001 * 1000;
        const qint64 seconds = ms >= 0 ? ms / 1000 : (ms - 999) / 1000;
        return plist_new_date(int32_t(seconds), int32_t((ms - seconds * 1000) * 1000));
    }
    case QMetaType::QByteArray: {
        const QByteArray data = value.toByteArray();
        return plist_new_data(data.constData(), uint64_t(data.size()));
    }
    case QMetaType::QVariantList:
    case QMetaType::QStringList: {
        plist_t array = plist_new_array();
        for (const QVariant& item : value.toList())
            plist_array_append_item(array, node_of(item));
        return array;
    }
    case QMetaType::QVariantMap: {
        plist_t dict = plist_new_dict();
        const QVariantMap map = value.toMap();
        for (auto it = map.constBegin(); it != map.constEnd(); ++it)
            plist_dict_set_item(dict, it.key().toUtf8().constData(), node_of(it.value()));
        return dict;
    }
    default:
        return plist_new_string(value.toString().toUtf8().constData());
    }
}

QVariant uid(quint64 value)
{
    return QVariant::fromValue(plist_uid{value});
}

}  // namespace

namespace plist_writer {

QByteArray write(const QVariant& value, format form)
{
    plist_t root = node_of(value);
    char* bytes = nullptr;
    uint32_t length = 0;
    if (form == format::binary)
        plist_to_bin(root, &bytes, &length);
    else
        plist_to_xml(root, &bytes, &length);
    const QByteArray out(bytes, int(length));
    std::free(bytes);
    plist_free(root);
    return out;
}

QByteArray keyed_archive(const QStringList& strings, format form)
{
    // Objects: 0 "$null", 1 the root dictionary, 2 its class, then the strings.
    QVariantList objects{"$null"};
    QVariantList items;
    for (int i = 0; i < strings.size(); ++i)
        items << uid(quint64(3 + i));
    objects << QVariantMap{{"$class", uid(2)}, {"NS.objects", items}};
    objects << QVariantMap{{"$classname", "NSArray"}, {"$classes", QVariantList{"NSArray", "NSObject"}}};
    for (const QString& text : strings)
        objects << text;
    const QVariantMap archive{{"$archiver", "NSKeyedArchiver"},
                              {"$version", 100000},
                              {"$top", QVariantMap{{"root", uid(1)}}},
                              {"$objects", objects}};
    return write(archive, form);
}

QByteArray recent_documents_list(const QStringList& names, format form, const QList<QByteArray>& bookmarks)
{
    QVariantList items;
    for (qsizetype i = 0; i < names.size(); ++i)
        items << QVariantMap{{"Name", names.at(i)}, {"Bookmark", bookmarks.value(i, QByteArray("book\0\0\0\0", 8))}};
    const QVariantMap list{
        {"RecentDocuments", QVariantMap{{"CustomListItems", items}, {"MaxAmount", 10}}}};
    return write(list, form);
}

QByteArray archive_of(const QVariant& root, format form)
{
    QVariantList objects{"$null"};
    const auto object_of_class = [&objects](const QString& name, QVariantMap members) {
        members["$class"] = uid(quint64(objects.size()));
        objects << QVariantMap{{"$classname", name}, {"$classes", QVariantList{name, "NSObject"}}};
        objects << members;
        return uid(quint64(objects.size() - 1));
    };
    std::function<QVariant(const QVariant&)> ref = [&](const QVariant& value) -> QVariant {
        switch (value.typeId()) {
        case QMetaType::QString:
        case QMetaType::QByteArray:
            objects << value;
            return uid(quint64(objects.size() - 1));
        case QMetaType::QVariantList: {
            QVariantList refs;
            for (const QVariant& item : value.toList())
                refs << ref(item);
            return object_of_class("NSArray", {{"NS.objects", refs}});
        }
        case QMetaType::QVariantMap: {
            QVariantMap map = value.toMap();
            const QString class_name = map.take("$class").toString();
            QVariantMap members;
            QVariantList keys, refs;
            for (auto it = map.constBegin(); it != map.constEnd(); ++it) {
                members[it.key()] = ref(it.value());
                keys << ref(it.key());
                refs << members[it.key()];
            }
            if (!class_name.isEmpty())
                return object_of_class(class_name, members);
            return object_of_class("NSDictionary", {{"NS.keys", keys}, {"NS.objects", refs}});
        }
        default:
            return value;  // numbers, booleans and references stay inline
        }
    };
    const QVariant top = ref(root);
    return write(QVariantMap{{"$archiver", "NSKeyedArchiver"},
                             {"$version", 100000},
                             {"$top", QVariantMap{{"root", top}}},
                             {"$objects", objects}},
                 form);
}

QByteArray shared_file_list(const QList<QVariantMap>& items)
{
    QVariantList list;
    for (const QVariantMap& item : items)
        list << item;
    const QVariantMap properties{{"com.apple.LSSharedFileList.MaxAmount", 10}};
    return archive_of(QVariantMap{{"items", list}, {"properties", properties}});
}

}  // namespace plist_writer
