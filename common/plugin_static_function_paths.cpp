// Path helpers: free names in the working-copy folder, relative source paths
// for result rows, account names from paths, and directory utilities.

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

#include "plugin_static_function.h"

namespace {

const QString k_home_directory_source = "macOS_Home_Directory";
const QString sig_copy_directory = "static void plugin_static_function::copy_directory(QString, QString)";

QString with_leading_slash(QString path)
{
    if (!path.startsWith('/') && !path.trimmed().isEmpty())
        path.prepend('/');
    return path;
}

QString strip_home_prefix(QString path, const QString& prefix, const QString& source_type)
{
    if (source_type == k_home_directory_source && !prefix.isEmpty()) {
        const int at = path.indexOf(prefix);
        if (at >= 0)
            path = path.mid(at + prefix.size());
    }
    return with_leading_slash(path);
}

}  // namespace

QString plugin_static_function::get_available_file(QString file_path, QString directory, QString)
{
    QDir().mkpath(directory);
    const QString file_name = QFileInfo(file_path).fileName();
    QString candidate = file_name;
    int counter = 1;
    while (!bool_cancel_extraction) {
        if (!is_file_exist_in_dir(directory, candidate))
            return candidate;
        candidate = QString::number(counter) + "_" + file_name;
        ++counter;
    }
    return QString();
}

bool plugin_static_function::is_file_exist_in_dir(QString directory, QString file_name)
{
    // The name is looked up directly rather than by listing the folder: the
    // answer is the same and does not grow with the number of earlier copies.
    // Both spellings are looked up: a name from the evidence may carry
    // blanks, and its own spelling is the one a copy would be written to.
    const QString wanted = file_name.trimmed();
    if (wanted.isEmpty() || bool_cancel_extraction || wanted.contains('/'))
        return false;
    for (const QString& name : {wanted, file_name}) {
        const QFileInfo entry(QDir(directory).filePath(name));
        if (entry.exists() || entry.isSymLink())
            return true;
    }
    return false;
}

QStringList plugin_static_function::get_final_artifact_source_file(QString path, QString prefix,
                                                                   QString source_type)
{
    const QString second = (source_type == k_home_directory_source) ? path : QString();
    return QStringList{strip_home_prefix(path, prefix, source_type), second};
}

QString plugin_static_function::get_relative_file_path(QString path, QString prefix, QString source_type)
{
    return strip_home_prefix(path, prefix, source_type);
}

QString plugin_static_function::get_complete_file_path(QString path, QString user, QString source_type)
{
    if (source_type == k_home_directory_source && path.startsWith("/Users/")) {
        const QString rest = path.mid(QString("/Users/").size());
        const int slash = rest.indexOf('/');
        const QString after_user = slash >= 0 ? rest.mid(slash) : QString();
        path = "/Users/" + user + after_user;
    }
    return with_leading_slash(path);
}

namespace {

// The home folder is the part after the users' root ("Users" on macOS and
// Windows); without such a root it is the second part of the path.
QString home_folder_name(const QString& path, const QString& prefix)
{
    const QStringList parts = path.mid(prefix.size()).split('/');
    if (parts.size() < 2)
        return QString();
    int home = 1;
    for (int i = 0; i + 1 < parts.size(); ++i) {
        if (parts.at(i) == "Users") {
            home = i + 1;
            break;
        }
    }
    return parts.at(home);
}

}  // namespace

struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_system_account
plugin_static_function::extract_account_from_sourcefile(QString path, QString prefix)
{
    if (system_account_QList.isEmpty())
        return {};

    const QString home_name = home_folder_name(path, prefix);
    if (home_name.isEmpty())
        return {};
    for (const auto& account : system_account_QList) {
        if (account.system_user == home_name)
            return account;
    }
    for (const auto& account : system_account_QList) {
        if (account.domain_user == home_name)
            return account;
    }
    return {};
}

QString plugin_static_function::extract_user_name_from_sourcefile(QString path, QString prefix)
{
    // The name returned is the one the home folder carries on disk, which is
    // the account name that matched it.
    const auto account = extract_account_from_sourcefile(path, prefix);
    if (account.system_user.isEmpty() && account.domain_user.isEmpty())
        return QString();
    return home_folder_name(path, prefix);
}

void plugin_static_function::copy_directory(QString source, QString destination)
{
    const QDir source_dir(source);
    if (!source_dir.exists()) {
        app_debug("[copy_directory] source diectory does not exist ----FAILED---- :" + source, sig_copy_directory);
        return;
    }
    QDir().mkpath(destination);

    // Files only, one level: the callers copy flat folders of small files.
    // Links are left out: one in an evidence folder may point anywhere on the
    // examiner's machine.
    // Walked, not listed: a folder's listing would hold all its entries at once.
    QDirIterator entries(source, QDir::Files | QDir::Hidden | QDir::System | QDir::NoSymLinks);
    while (entries.hasNext()) {
        if (bool_cancel_extraction)
            return;
        entries.next();
        const QFileInfo entry = entries.fileInfo();
        if (!entry.isFile())
            continue;  // a named pipe would block the open below for ever
        QFile in(entry.absoluteFilePath());
        if (!in.open(QIODevice::ReadOnly)) {
            app_debug("[copy_directory] source file open ----FAILED---- :" + in.fileName() + " " + in.errorString(),
                      sig_copy_directory);
            continue;
        }
        QFile out(QDir(destination).filePath(entry.fileName()));
        if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            app_debug("[copy_directory] destination file open ----FAILED---- :" + out.fileName() + " "
                          + out.errorString(),
                      sig_copy_directory);
            continue;
        }
        // Streamed in blocks so that a large file never sits in memory whole.
        while (!in.atEnd()) {
            const QByteArray block = in.read(1 << 20);
            if (block.isEmpty() || out.write(block) != block.size()) {
                app_debug("[copy_directory] Error:" + out.errorString(), sig_copy_directory);
                break;
            }
        }
        out.flush();
        out.close();
        in.close();
    }
}

void plugin_static_function::remove_directory(QString path)
{
    QDir dir(path);
    if (path.trimmed().isEmpty() || !dir.exists())
        return;
    // A link to a folder is removed as a link: what it points to is not ours.
    if (QFileInfo(QDir::cleanPath(path)).isSymLink()) {
        QFile::remove(QDir::cleanPath(path));
        return;
    }

    // Walked unsorted: the order does not change what is removed, and scratch
    // trees of tens of thousands of entries made the sorted listing costly.
    QDirIterator entries(dir.absolutePath(),
                         QDir::Files | QDir::AllDirs | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    while (entries.hasNext()) {
        const QString entry = entries.next();
        const QFileInfo info = entries.fileInfo();
        // A link is removed as a link; never follow it out of the folder.
        if (info.isDir() && !info.isSymLink())
            remove_directory(entry);
        else
            QFile::remove(entry);
    }
    dir.rmdir(dir.absolutePath());
}

QList<QString> plugin_static_function::get_unmatched_varible_list_of_parentlist(QList<QString> parent,
                                                                                QList<QString> other)
{
    QList<QString> kept;
    for (const QString& entry : parent) {
        if (bool_cancel_extraction)
            break;
        if (!other.contains(entry))
            kept << entry;
    }
    return kept;
}
