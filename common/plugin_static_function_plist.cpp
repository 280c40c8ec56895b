// Property-list readers: one key of a dictionary node turned into the text a
// result column holds. The lists are loaded with libplist (plist_document);
// these readers never fail, a missing key or a value of another type gives
// the empty text. Also the usage dates of a file.

#include <QtMath>

#include <cmath>
#include <cstdlib>
#include <cstring>

#include "apple_dates.h"
#include "extended_attribute_reader.h"
#include "plist_document.h"
#include "plugin_static_function.h"

#include <QTimeZone>

#ifdef __APPLE__
#include <CoreServices/CoreServices.h>
#endif

namespace {

const QString k_label_separator = ":+:";
const QString k_list_separator = ";++::++;";

plist_t lookup(const QString& key, plist_t dictionary, const QString& reader, const QString& signature)
{
    plist_t value = plist_document::dict_item(dictionary, key);
    if (!value)
        plugin_static_function::app_debug("[" + reader + "]-----FAILED----- to get value: " + key, signature);
    return value;
}

bool is_number(plist_t node)
{
    const plist_type type = node ? plist_get_node_type(node) : PLIST_NONE;
    return type == PLIST_UINT || type == PLIST_REAL || type == PLIST_BOOLEAN;
}

// A number node truncated toward zero; false when it has no 64-bit value.
bool truncated_number(plist_t node, qint64* value)
{
    switch (plist_get_node_type(node)) {
    case PLIST_UINT: {
        uint64_t raw = 0;
        plist_get_uint_val(node, &raw);
        *value = qint64(raw);  // the binary form keeps negative integers in two's complement
        return true;
    }
    case PLIST_BOOLEAN: {
        uint8_t raw = 0;
        plist_get_bool_val(node, &raw);
        *value = raw ? 1 : 0;
        return true;
    }
    case PLIST_REAL: {
        double raw = 0;
        plist_get_real_val(node, &raw);
        if (!std::isfinite(raw) || std::fabs(raw) >= 9.2e18)
            return false;
        *value = qint64(std::trunc(raw));
        return true;
    }
    default:
        return false;
    }
}

QString labelled(const QString& label, const QString& value)
{
    return value.isEmpty() ? QString() : label + k_label_separator + value;
}

QString yes_no(qint64 value)
{
    if (value == 0)
        return "NO";
    return value == 1 ? "YES" : QString();
}

QString scalar_text(plist_t node)
{
    qint64 number = 0;
    switch (plist_get_node_type(node)) {
    case PLIST_STRING:
        return plist_document::string_of(node).trimmed();
    case PLIST_BOOLEAN:
        truncated_number(node, &number);
        return yes_no(number);
    case PLIST_UINT:
        truncated_number(node, &number);
        return QString::number(number);
    case PLIST_REAL: {
        double raw = 0;
        plist_get_real_val(node, &raw);
        return std::isfinite(raw) ? QString::number(raw, 'g', 6) : QString();
    }
    case PLIST_DATE:
        return QString::number(plugin_static_function::convert_nsdate_to_epoch(node));
    default:
        return QString();
    }
}

struct_GLOBAL_ARTIFACT_used_dates used_dates_from(const QString& last, const QStringList& all)
{
    struct_GLOBAL_ARTIFACT_used_dates dates;
    dates.last_used_date = last;
    dates.used_dates = all;
    if (!all.isEmpty()) {
        dates.first_date = all.first();
        dates.last_date = all.last();
    }
    return dates;
}

// Seconds since 2001 as the date node stores them. libplist hands a date
// out as seconds cut toward zero and an unsigned fraction, which loses the
// sign of a moment in the last second before 2001; the node's binary form
// keeps the stored number (a date object, marker 0x33, then a big-endian
// double, right after the 8-byte header).
double date_seconds_since_2001(plist_t date)
{
    int32_t seconds = 0;
    int32_t microseconds = 0;
    plist_get_date_val(date, &seconds, &microseconds);
    double stored = seconds + (seconds < 0 ? -microseconds : microseconds) / 1e6;
    char* bytes = nullptr;
    uint32_t length = 0;
    plist_to_bin(date, &bytes, &length);
    if (bytes && length >= 17 && quint8(bytes[8]) == 0x33) {
        quint64 bits = 0;
        for (int i = 9; i < 17; ++i)
            bits = (bits << 8) | quint8(bytes[i]);
        std::memcpy(&stored, &bits, sizeof stored);
    }
    std::free(bytes);
    // libplist's own reading holds 32 bits of seconds; so do we.
    return std::isfinite(stored) ? qBound(-2147483648.0, stored, 2147483647.0) : 0.0;
}

#ifndef __APPLE__

// Seconds of the "com.apple.lastuseddate#PS" attribute: a timespec, little-endian.
QString seconds_of_timespec(const QByteArray& value)
{
    if (value.size() < 8)
        return QString();
    qint64 seconds = 0;
    for (int i = 7; i >= 0; --i)
        seconds = (seconds << 8) | uchar(value.at(i));
    return QString::number(seconds);
}

QString metadata_text(const QByteArray& value)
{
    const plist_owner node = plist_document::from_bytes(value);
    return node ? plugin_static_function::plist_value_as_text(node.get()) : QString();
}

#endif

}  // namespace

QString plugin_static_function::get_nsstring_values(QString key, plist_t dictionary)
{
    const plist_t value = lookup(key, dictionary, "get_nsstring_values",
                                 "static QString plugin_static_function::get_nsstring_values(void *, void *)");
    return plist_document::string_of(value).trimmed();
}

QString plugin_static_function::get_nsnumber_values(QString key, plist_t dictionary)
{
    const plist_t value = lookup(key, dictionary, "get_nsnumber_values",
                                 "static QString plugin_static_function::get_nsnumber_values(void *, void *)");
    qint64 number = 0;
    if (!is_number(value) || !truncated_number(value, &number))
        return QString();
    return QString::number(number);
}

QString plugin_static_function::get_nsnumber_values_yes_no(QString key, plist_t dictionary)
{
    // Only a true boolean answers: an integer 1 is a count, not a switch.
    const plist_t value = lookup(key, dictionary, "get_nsnumber_values_yes_no",
                                 "static QString plugin_static_function::get_nsnumber_values_yes_no(void *, void *)");
    if (!value || plist_get_node_type(value) != PLIST_BOOLEAN)
        return QString();
    qint64 number = 0;
    truncated_number(value, &number);
    return yes_no(number);
}

QString plugin_static_function::get_nsnumber_key_and_value_yes_no(QString key, plist_t dictionary, QString label)
{
    const plist_t value = plist_document::dict_item(dictionary, key);
    qint64 number = 0;
    if (!is_number(value) || !truncated_number(value, &number))
        return QString();
    return labelled(label, yes_no(number));
}

QString plugin_static_function::get_nsstring_key_and_values(QString key, plist_t dictionary, QString label)
{
    return labelled(label, get_nsstring_values(key, dictionary));
}

QString plugin_static_function::get_nsnumber_key_and_values(QString key, plist_t dictionary, QString label)
{
    return labelled(label, get_nsnumber_values(key, dictionary));
}

QString plugin_static_function::get_nsarray_key_and_values(QString key, plist_t dictionary, QString label)
{
    const plist_t value = plist_document::dict_item(dictionary, key);
    return plist_document::is_array(value) ? labelled(label, plist_value_as_text(value)) : QString();
}

qint64 plugin_static_function::convert_nsdate_to_epoch(plist_t date)
{
    if (!date || plist_get_node_type(date) != PLIST_DATE)
        return 0;
    // Whole seconds only, the second that holds the moment, as the date
    // texts give it: the fraction is dropped toward the past.
    return qint64(std::floor(date_seconds_since_2001(date))) + apple_dates::k_seconds_1970_to_2001;
}

QString plugin_static_function::plist_value_as_text(plist_t node)
{
    if (!node)
        return QString();
    if (plist_get_node_type(node) != PLIST_ARRAY)
        return scalar_text(node);
    QStringList items;
    const uint32_t count = plist_array_get_size(node);
    for (uint32_t i = 0; i < count; ++i) {
        const QString item = scalar_text(plist_array_get_item(node, i));
        if (!item.isEmpty())
            items << item;
    }
    return items.join(k_list_separator);
}

QString plugin_static_function::convert_date_description_to_epoch(QString description)
{
    QDateTime moment = get_datetime_from_string_with_iso_date(description);
    if (!moment.isValid())
        return QString();
    moment.setTimeZone(QTimeZone::utc());
    return QString::number(moment.toMSecsSinceEpoch() / 1000);
}

#ifdef __APPLE__

QString plugin_static_function::get_cf_description(const void* object)
{
    if (!object)
        return QString();
    CFStringRef text = CFCopyDescription(static_cast<CFTypeRef>(object));
    const QString description = convert_cfstring_to_qstring(text);
    if (text)
        CFRelease(text);
    return description;
}

QString plugin_static_function::convert_cfstring_to_qstring(const __CFString* text)
{
    return text ? QString::fromCFString(text).trimmed() : QString();
}

struct_GLOBAL_ARTIFACT_used_dates plugin_static_function::extract_used_date(QString path)
{
    CFStringRef cf_path = path.toCFString();
    MDItemRef item = cf_path ? MDItemCreate(kCFAllocatorDefault, cf_path) : nullptr;
    if (cf_path)
        CFRelease(cf_path);
    if (!item)
        return {};

    QString last;
    CFTypeRef last_used = MDItemCopyAttribute(item, kMDItemLastUsedDate);
    if (last_used) {
        last = convert_date_description_to_epoch(get_cf_description(last_used));
        CFRelease(last_used);
    }
    QStringList all;
    CFTypeRef used = MDItemCopyAttribute(item, CFSTR("kMDItemUsedDates"));
    if (used) {
        QString text = get_cf_description(used);
        text.remove('(').remove(')').remove('"');
        for (const QString& piece : text.split(',', Qt::SkipEmptyParts)) {
            const QString seconds = convert_date_description_to_epoch(piece.simplified());
            if (!seconds.isEmpty())
                all << seconds;
        }
        CFRelease(used);
    }
    CFRelease(item);
    return used_dates_from(last, all);
}

#else

struct_GLOBAL_ARTIFACT_used_dates plugin_static_function::extract_used_date(QString path)
{
    // Without the system's metadata index, the usage dates are what the
    // volume keeps as extended attributes: the metadata copies when they
    // were exported with the file, else the last-use stamp the system sets.
    const QHash<QString, QByteArray> attributes = extended_attribute_reader::read_all(path);
    QString last = metadata_text(attributes.value("kMDItemLastUsedDate"));
    if (last.isEmpty())
        last = seconds_of_timespec(attributes.value("com.apple.lastuseddate#PS"));
    const QString all = metadata_text(attributes.value("kMDItemUsedDates"));
    return used_dates_from(last, all.isEmpty() ? QStringList() : all.split(k_list_separator));
}

#endif
