#pragma once

// The file metadata the macOS rows carry for each media file. On macOS the
// system's metadata index and image properties answer; everywhere else the
// mounted volume itself answers what it can (file-system times, MIME type,
// metadata kept as extended attributes) and the rest stays empty. Every path
// handed in has passed the source-path guard and exists.

#include <QFileInfo>
#include <QString>
#include <QStringList>

#include <memory>

// One text per fixed attribute; dates as decimal seconds since 1970 (UTC),
// lists joined by ";++::++;".
struct struct_GLOBAL_ARTIFACT_cfstring_attributes
{
    QString content_creation_date;
    QString content_modification_date;
    QString content_type;
    QString date_added;
    QString fs_content_change_date;
    QString fs_creation_date;
    QString fs_name;
    QString fs_node_count;
    QString kind;
    QString wherefrom;
    QString altitude;
    QString torrent_file_list;
    QString latitude;
    QString longitude;
};

class file_metadata_reader
{
public:
    virtual ~file_metadata_reader() = default;

    // The file's information is passed as already read, so what it holds is
    // not asked of the file system again.
    virtual struct_GLOBAL_ARTIFACT_cfstring_attributes fixed_attributes(const QFileInfo& file) = 0;
    // {latitude, longitude}, each empty when the file has no position.
    virtual QStringList latitude_longitude(const QString& path) = 0;
    // The cleaned value of one examiner-selected attribute; empty when absent.
    virtual QString attribute_value(const QString& path, const QString& key) = 0;

    // The implementation of the system the plug-in was built for.
    static std::unique_ptr<file_metadata_reader> create();
};
