// Metadata from the macOS metadata index (MDItem) and, for the position of
// photos, from the image's own properties (ImageIO). Built only on macOS.

#include <CoreServices/CoreServices.h>
#include <ImageIO/ImageIO.h>

#include <QRegularExpression>
#include <QUrl>

#include "file_metadata_reader.h"
#include "plugin_static_function.h"

namespace {

// Releases a CoreFoundation object on every way out of a scope.
struct cf_holder
{
    CFTypeRef ref = nullptr;
    explicit cf_holder(CFTypeRef value) : ref(value) {}
    ~cf_holder()
    {
        if (ref)
            CFRelease(ref);
    }
    cf_holder(const cf_holder&) = delete;
    cf_holder& operator=(const cf_holder&) = delete;
};

// A list's description is "(\n    \"a\",\n    \"b\"\n)": only the elements stay.
// Only the list's own parentheses go; those inside an element (a download
// named "clip (1).mp4") are part of the evidence.
QString cleaned_list(QString text)
{
    text.replace("\\U2019s", "'s");
    text = text.trimmed();
    if (text.startsWith('(') && text.endsWith(')'))
        text = text.mid(1, text.size() - 2);
    QStringList items;
    for (const QString& piece : text.split(",\n")) {
        QString item = piece.trimmed();
        if (item.startsWith('"') && item.endsWith('"') && item.size() >= 2)
            item = item.mid(1, item.size() - 2);
        if (!item.isEmpty())
            items << item;
    }
    return items.join(";++::++;");
}

// "<CFNumber 0x... [0x...]>{value = +12.5, type = kCFNumberFloat64Type}"
// and the like: the value alone.
QString unwrapped(const QString& text)
{
    for (const char* wrapper : {"<CFNumber ", "<CFBoolean ", "<CFString "}) {
        if (!text.startsWith(QLatin1String(wrapper)))
            continue;
        const int value_at = text.indexOf("value = ");
        if (value_at < 0)
            return text;
        const int end = text.indexOf(QRegularExpression("[,}]"), value_at);
        return text.mid(value_at + 8, end < 0 ? -1 : end - value_at - 8).trimmed();
    }
    return text;
}

class item_attributes
{
public:
    explicit item_attributes(const QString& path)
    {
        const cf_holder cf_path(path.toCFString());
        if (cf_path.ref)
            m_item = MDItemCreate(kCFAllocatorDefault, static_cast<CFStringRef>(cf_path.ref));
    }
    ~item_attributes()
    {
        if (m_item)
            CFRelease(m_item);
    }
    item_attributes(const item_attributes&) = delete;
    item_attributes& operator=(const item_attributes&) = delete;

    QString text(const QString& name) const
    {
        if (!m_item)
            return QString();
        const cf_holder cf_name(name.toCFString());
        const cf_holder value(MDItemCopyAttribute(m_item, static_cast<CFStringRef>(cf_name.ref)));
        return plugin_static_function::get_cf_description(value.ref);
    }

private:
    MDItemRef m_item = nullptr;
};

double number_in(CFDictionaryRef dictionary, CFStringRef key, bool* found)
{
    double value = 0;
    const auto number = static_cast<CFNumberRef>(CFDictionaryGetValue(dictionary, key));
    *found = number && CFGetTypeID(number) == CFNumberGetTypeID()
        && CFNumberGetValue(number, kCFNumberDoubleType, &value);
    return value;
}

QString string_in(CFDictionaryRef dictionary, CFStringRef key)
{
    const auto text = static_cast<CFStringRef>(CFDictionaryGetValue(dictionary, key));
    return (text && CFGetTypeID(text) == CFStringGetTypeID()) ? QString::fromCFString(text) : QString();
}

class spotlight_metadata_reader : public file_metadata_reader
{
public:
    struct_GLOBAL_ARTIFACT_cfstring_attributes fixed_attributes(const QFileInfo& file) override
    {
        const QString path = file.filePath();
        const item_attributes item(path);
        struct_GLOBAL_ARTIFACT_cfstring_attributes record;
        record.content_creation_date = plugin_static_function::convert_date_description_to_epoch(item.text("kMDItemContentCreationDate"));
        record.content_modification_date = plugin_static_function::convert_date_description_to_epoch(item.text("kMDItemContentModificationDate"));
        record.content_type = item.text("kMDItemContentType");
        record.date_added = plugin_static_function::convert_date_description_to_epoch(item.text("kMDItemDateAdded"));
        record.fs_content_change_date = plugin_static_function::convert_date_description_to_epoch(item.text("kMDItemFSContentChangeDate"));
        record.fs_creation_date = plugin_static_function::convert_date_description_to_epoch(item.text("kMDItemFSCreationDate"));
        record.fs_name = item.text("kMDItemFSName");
        record.fs_node_count = unwrapped(item.text("kMDItemFSNodeCount"));
        record.kind = item.text("kMDItemKind");
        record.wherefrom = cleaned_list(item.text("kMDItemWhereFroms"));
        record.altitude = unwrapped(item.text("kMDItemAltitude"));
        record.torrent_file_list = cleaned_list(item.text("org_bittorrent_torrent_filenames"));
        const QStringList position = latitude_longitude(path);
        record.latitude = position.value(0);
        record.longitude = position.value(1);
        return record;
    }

    QStringList latitude_longitude(const QString& path) override
    {
        QStringList position{QString(), QString()};
        // The image reader opens the file: a named pipe would block it.
        if (!QFileInfo(path).isFile())
            return position;
        const cf_holder url(QUrl::fromLocalFile(path).toCFURL());
        const cf_holder source(url.ref ? CGImageSourceCreateWithURL(static_cast<CFURLRef>(url.ref), nullptr)
                                       : nullptr);
        if (!source.ref)
            return position;
        const cf_holder properties(
            CGImageSourceCopyPropertiesAtIndex(static_cast<CGImageSourceRef>(const_cast<void*>(source.ref)), 0, nullptr));
        if (!properties.ref)
            return position;
        const auto gps = static_cast<CFDictionaryRef>(
            CFDictionaryGetValue(static_cast<CFDictionaryRef>(properties.ref), kCGImagePropertyGPSDictionary));
        if (!gps || CFGetTypeID(gps) != CFDictionaryGetTypeID())
            return position;
        bool found = false;
        const double latitude = number_in(gps, kCGImagePropertyGPSLatitude, &found);
        if (found) {
            const bool south = string_in(gps, kCGImagePropertyGPSLatitudeRef).contains('S', Qt::CaseInsensitive);
            position[0] = (south ? "-" : "") + QString::number(latitude, 'g', 6);
        }
        const double longitude = number_in(gps, kCGImagePropertyGPSLongitude, &found);
        if (found) {
            const bool west = string_in(gps, kCGImagePropertyGPSLongitudeRef).contains('W', Qt::CaseInsensitive);
            position[1] = (west ? "-" : "") + QString::number(longitude, 'g', 6);
        }
        return position;
    }

    QString attribute_value(const QString& path, const QString& key) override
    {
        const item_attributes item(path);
        const QString text = item.text(key);
        return key == "kMDItemWhereFroms" ? cleaned_list(text) : unwrapped(text);
    }
};

}  // namespace

std::unique_ptr<file_metadata_reader> file_metadata_reader::create()
{
    return std::make_unique<spotlight_metadata_reader>();
}
