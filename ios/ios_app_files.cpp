#include "ios_app_files.h"

#include "ios_backup_manifest.h"

ios_app_files ios_app_files::container(const QString& source_root, const QString& folder)
{
    ios_app_files files;
    files.m_source_root = source_root;
    files.m_folder = folder;
    return files;
}

ios_app_files ios_app_files::backup_domain(const QString& source_root,
                                           std::shared_ptr<const ios_backup_manifest> manifest, const QString& domain)
{
    ios_app_files files;
    files.m_source_root = source_root;
    files.m_manifest = std::move(manifest);
    files.m_domain = domain;
    return files;
}

QString ios_app_files::path_of(const QString& relative, const QString& signature) const
{
    if (relative.isEmpty() || !is_valid())
        return QString();
    if (!m_manifest)
        return m_folder + relative;
    const QString stored = m_manifest->stored_file(m_domain, relative, signature);
    return stored.isEmpty() ? m_source_root + m_domain + "/" + relative : stored;
}
