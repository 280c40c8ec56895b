// Metadata read from the mounted volume itself, for systems without the
// macOS metadata index: file-system facts, the MIME database, and the
// metadata attributes that the volume exposes as extended attributes.

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QHash>
#include <QMimeDatabase>

#include "extended_attribute_reader.h"
#include "file_metadata_reader.h"
#include "file_times.h"
#include "plist_document.h"
#include "plugin_static_function.h"

namespace {

// A metadata attribute holds a binary property list; anything else is kept
// as the text it holds.
QString attribute_text(const QByteArray& value)
{
    if (value.startsWith("bplist")) {
        const plist_owner node = plist_document::from_bytes(value);
        return node ? plugin_static_function::plist_value_as_text(node.get()) : QString();
    }
    QByteArray text = value;
    while (text.endsWith('\0'))
        text.chop(1);
    return QString::fromUtf8(text).trimmed();
}

// Counted while walking: a listing would hold every name of a folder that
// may have a million entries.
qint64 entry_count(const QString& folder)
{
    qint64 count = 0;
    QDirIterator entries(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    while (entries.hasNext()) {
        entries.next();
        ++count;
    }
    return count;
}

class portable_metadata_reader : public file_metadata_reader
{
public:
    struct_GLOBAL_ARTIFACT_cfstring_attributes fixed_attributes(const QFileInfo& info) override
    {
        struct_GLOBAL_ARTIFACT_cfstring_attributes record;
        const QString path = info.filePath();
        record.fs_name = info.fileName();
        const file_times::times times = file_times::of(path);
        record.fs_creation_date = times.birth;
        record.fs_content_change_date = times.modification;
        if (info.isDir())
            record.fs_node_count = QString::number(entry_count(path));
        const mime_texts& mime = mime_of(info);
        record.content_type = mime.name;
        record.kind = mime.comment;

        const QHash<QString, QByteArray> attributes = extended_attribute_reader::read_all(path);
        if (attributes.isEmpty())
            return record;
        const auto text = [&attributes](const char* key) { return attribute_text(attributes.value(key)); };
        record.content_creation_date = text("kMDItemContentCreationDate");
        record.content_modification_date = text("kMDItemContentModificationDate");
        record.date_added = text("kMDItemDateAdded");
        record.wherefrom = text("kMDItemWhereFroms");
        record.altitude = text("kMDItemAltitude");
        record.torrent_file_list = text("org_bittorrent_torrent_filenames");
        record.latitude = text("kMDItemLatitude");
        record.longitude = text("kMDItemLongitude");
        return record;
    }

    QStringList latitude_longitude(const QString& path) override
    {
        const QHash<QString, QByteArray> attributes = extended_attribute_reader::read_all(path);
        return {attribute_text(attributes.value("kMDItemLatitude")),
                attribute_text(attributes.value("kMDItemLongitude"))};
    }

    QString attribute_value(const QString& path, const QString& key) override
    {
        const QHash<QString, QByteArray> attributes = extended_attribute_reader::read_all(path);
        return attribute_text(attributes.value(extended_attribute_reader::normalised_name(key)));
    }

private:
    // Matched by name only, never by content: the content is evidence that
    // need not be read, and a library holds many files of few kinds.
    struct mime_texts
    {
        QString name;
        QString comment;
    };

    const mime_texts& mime_of(const QFileInfo& info)
    {
        const QString key = info.isDir() ? QString("/") : info.completeSuffix().toLower();
        auto known = m_by_suffix.constFind(key);
        if (known == m_by_suffix.constEnd()) {
            const QMimeType type = info.isDir() ? m_database.mimeTypeForName("inode/directory")
                                                : m_database.mimeTypeForFile(info.fileName(),
                                                                             QMimeDatabase::MatchExtension);
            known = m_by_suffix.insert(key, mime_texts{type.name(), type.comment()});
        }
        return *known;
    }

    QMimeDatabase m_database;
    QHash<QString, mime_texts> m_by_suffix;
};

}  // namespace

std::unique_ptr<file_metadata_reader> file_metadata_reader::create()
{
    return std::make_unique<portable_metadata_reader>();
}
