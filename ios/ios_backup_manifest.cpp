#include "ios_backup_manifest.h"

#include <QFileInfo>
#include <QRegularExpression>

#include "media_library_reader.h"
#include "plist_document.h"
#include "plugin_static_function.h"
#include "prepared_statement.h"
#include "source_path_guard.h"
#include "sqlite_connection_scope.h"

#include <plist/plist.h>

namespace {

const QString k_manifest = "Manifest.db";

// A file id is the SHA-1 of the domain and path, in hex: anything else
// could name a path that climbs out of the backup.
bool is_file_id(const QString& id)
{
    static const QRegularExpression sha1("^[0-9a-fA-F]{40}$");
    return sha1.match(id).hasMatch();
}

QString key_of(const QString& domain, const QString& relative_path)
{
    return domain + "/" + relative_path;
}

}  // namespace

bool ios_backup_manifest::is_backup(const QString& root)
{
    return QFileInfo(root + k_manifest).isFile() || QFileInfo(root + "Manifest.plist").isFile();
}

bool ios_backup_manifest::is_encrypted(const QString& backup_root)
{
    const QString path = backup_root + "Manifest.plist";
    if (!source_path_guard::is_inside_root(path, backup_root))
        return false;
    plist_owner manifest = plist_document::load_file(path);
    plist_t flag = plist_document::dict_item(static_cast<plist_t>(manifest.get()), "IsEncrypted");
    uint8_t encrypted = 0;
    if (flag && plist_get_node_type(flag) == PLIST_BOOLEAN)
        plist_get_bool_val(flag, &encrypted);
    return encrypted != 0;
}

ios_backup_manifest ios_backup_manifest::read(const QString& backup_root, const QStringList& domains,
                                              plugin_helper_functions* helper, const QString& signature)
{
    ios_backup_manifest manifest;
    manifest.m_root = backup_root;
    const QString path = backup_root + k_manifest;
    if (!is_backup(backup_root))
        return manifest;
    // An encrypted backup enciphers its manifest and every stored file.
    if (is_encrypted(backup_root)) {
        manifest.m_state = state::encrypted;
        plugin_static_function::app_debug("encrypted iOS backup, its files are not read: " + backup_root, signature);
        return manifest;
    }
    manifest.m_state = state::unreadable;
    if (!source_path_guard::exists_inside(path, backup_root, signature))
        return manifest;
    const QString copy = media_library_reader::checked_working_copy(path, backup_root, helper, signature);
    if (copy.isEmpty() || !QFileInfo(copy).isFile())
        return manifest;
    manifest.read_rows(copy, domains, signature);
    return manifest;
}

void ios_backup_manifest::read_rows(const QString& copy, const QStringList& domains, const QString& signature)
{
    sqlite_connection_scope source(signature + "1", copy);
    if (!source.open_read_only()) {
        plugin_static_function::app_debug("backup manifest opening ------FAILED----- " + source.last_error_text(),
                                          signature);
        return;
    }
    prepared_statement files(source.db(), "SELECT fileID, domain, relativePath FROM Files WHERE domain = ?");
    int impossible = 0;
    for (const QString& domain : domains) {
        if (!files.execute(domain)) {
            plugin_static_function::app_debug("backup manifest query ------FAILED----- " + files.error_text(),
                                              signature);
            return;
        }
        while (files.next()) {
            if (m_file_ids.size() >= k_max_files) {
                plugin_static_function::app_debug(
                    QString("backup manifest names more than %1 files of the app, the rest is skipped")
                        .arg(k_max_files),
                    signature);
                break;
            }
            const QString id = files.text(0);
            if (is_file_id(id))
                m_file_ids.insert(key_of(files.text(1), files.text(2)), id.toLower());
            else
                ++impossible;
        }
        files.finish();
    }
    if (impossible > 0)
        plugin_static_function::app_debug(
            QString("backup manifest rows whose file id names no stored file, skipped: %1").arg(impossible), signature);
    m_state = state::read;
}

QString ios_backup_manifest::stored_file(const QString& domain, const QString& relative_path,
                                         const QString& signature) const
{
    const QString id = m_file_ids.value(key_of(domain, relative_path));
    if (id.isEmpty())
        return QString();
    for (const QString& stored : {m_root + id.left(2) + "/" + id, m_root + id}) {
        if (source_path_guard::exists_inside(stored, m_root, signature))
            return stored;
    }
    return QString();
}
