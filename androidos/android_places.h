#pragma once

// Where an Android image keeps what the media database names: the app's
// private folder, shared storage and the app's external files, in an
// unpacked backup or in a full file-system extraction.

#include "media_library_reader.h"

class android_places : public media_library_places
{
public:
    // Chooses the layout from what the source holds and gives the place of
    // its database (the full extraction's when the backup's is absent).
    QString find_layout(const QString& source_root);
    // The database found, for the thumbnails that lie beside its folder.
    void set_database(const QString& database) { m_database = database; }

    QString media_path(const QString& mrl) const override;
    QString thumbnail_path(const QString& mrl, int model, const QString& signature) const override;

private:
    void use_backup_layout();
    void use_file_system_layout();
    // A path on the phone (shared storage, the app's folders) below the
    // source root of a full file-system extraction.
    QString phone_path_in_source(const QString& phone_path) const;
    // The same in a backup, which holds only the primary user's shared storage.
    QString phone_path_in_backup(QString mrl) const;

    QString m_source_root;
    QString m_database;
    // The app's private folder, the folder holding shared storage's "0/" and
    // the app's external files folder, each relative to the source root.
    QString m_private_folder;
    QString m_shared_storage;
    QString m_external_files;
    bool m_full_file_system = false;
};
