#pragma once

// The manifest of an iOS backup folder (Manifest.db, table Files): which
// stored file holds a file of an app's domain. A stored file lies at
// <first two characters of its file id>/<file id> below the backup folder
// (directly below it in backups of old systems). Only the rows of the domains
// asked for are kept, and only those whose file id can name a stored file.

#include <QHash>
#include <QString>
#include <QStringList>

class plugin_helper_functions;

class ios_backup_manifest
{
public:
    enum class state { absent, encrypted, unreadable, read };

    // Reads the manifest of the backup at backup_root (ending in "/") through
    // a working copy; every failure is logged under the signature.
    static ios_backup_manifest read(const QString& backup_root, const QStringList& domains,
                                    plugin_helper_functions* helper, const QString& signature);
    // Whether the folder looks like a backup at all (its manifest is there).
    static bool is_backup(const QString& root);

    state status() const { return m_state; }
    // The stored file of a domain's relative path, when the backup holds it
    // inside its folder; else empty.
    QString stored_file(const QString& domain, const QString& relative_path, const QString& signature) const;

    // No more rows of the app's domains are kept: a real app has a few
    // thousand files.
    static constexpr int k_max_files = 200000;

private:
    static bool is_encrypted(const QString& backup_root);
    void read_rows(const QString& copy, const QStringList& domains, const QString& signature);

    state m_state = state::absent;
    QString m_root;
    QHash<QString, QString> m_file_ids;  // domain + "/" + relative path -> file id
};
