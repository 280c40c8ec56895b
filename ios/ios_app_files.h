#pragma once

// Where one folder of the app is on the source: a container of a full
// file-system extraction (the app's data container or its app-group
// container), or the app's domain in a backup.

#include <QString>

#include <memory>

class ios_backup_manifest;

class ios_app_files
{
public:
    ios_app_files() = default;
    // A container folder (ending in "/") on the source.
    static ios_app_files container(const QString& source_root, const QString& folder);
    // A domain ("AppDomain-...") of the backup whose manifest is given.
    static ios_app_files backup_domain(const QString& source_root, std::shared_ptr<const ios_backup_manifest> manifest,
                                       const QString& domain);

    bool is_valid() const { return !m_source_root.isEmpty(); }
    // The file named relative to the folder ("Documents/a.mp4"): in a
    // container the path below it; in a backup the stored file, or, when the
    // backup does not hold the file, the domain and path below the source
    // root, where no file is. Empty for an empty name.
    QString path_of(const QString& relative, const QString& signature) const;

private:
    QString m_source_root;
    QString m_folder;  // container, or empty for a backup
    std::shared_ptr<const ios_backup_manifest> m_manifest;
    QString m_domain;
};
