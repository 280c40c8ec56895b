#pragma once

// The media-library databases one run reads (one per account on a desktop,
// one per app container on a phone), each with its places and its reader,
// kept for the whole run so that each database is copied and shaped once.

#include <memory>
#include <vector>

#include "media_library_reader.h"

class media_library_set
{
public:
    void add(std::unique_ptr<media_library_places> places, const media_library_context& context,
             const QString& database);
    // One table of every database, in the order they were added; stops at a cancel.
    void run(void (media_library_reader::*table)(), const bool& cancel_requested) const;
    void clear();

private:
    std::vector<std::unique_ptr<media_library_places>> m_places;
    std::vector<std::unique_ptr<media_library_reader>> m_readers;
};

// Where the desktop player 4 names its files: file mrls of the machine
// (file:///C:/Users/... on Windows, file:///Users/... on macOS), found below
// the source root (the drive letter dropped, as the Windows readers do), and
// thumbnails in the storage folder beside its ml.db.
class desktop_media_places : public media_library_places
{
public:
    desktop_media_places(const QString& source_root, const QString& database);

    QString media_path(const QString& mrl) const override;
    QString thumbnail_path(const QString& mrl, int model, const QString& signature) const override;

private:
    QString m_source_root;
    QString m_storage;  // the ml/mlstorage/ folder
};
