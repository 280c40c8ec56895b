#include "source_layout.h"

#include <QDir>
#include <QFileInfo>

namespace source_layout {

namespace {

bool has_dir(const QDir& root, const QString& relative)
{
    return QFileInfo(root.filePath(relative)).isDir();
}

bool has_file(const QDir& root, const QString& relative)
{
    return QFileInfo(root.filePath(relative)).isFile();
}

// True when some folder under Users/ holds the given relative path.
bool any_user_has(const QDir& root, const QString& relative)
{
    const QDir users(root.filePath("Users"));
    if (!users.exists())
        return false;
    for (const QString& name : users.entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden)) {
        if (QFileInfo(users.filePath(name + "/" + relative)).isDir())
            return true;
    }
    return false;
}

}  // namespace

bool looks_like(const QString& source_root, const QString& os_scheme)
{
    const QDir root(source_root);
    if (os_scheme == "androidOS")
        return has_dir(root, "apps/org.videolan.vlc") || has_dir(root, "data/data/org.videolan.vlc")
               || (has_dir(root, "apps") && has_dir(root, "shared"));
    // An iOS backup folder has its manifest at the top; a full file-system
    // extraction has the apps' containers (with or without "private/").
    if (os_scheme == "iOS_UID")
        return has_file(root, "Manifest.db") || has_file(root, "Manifest.plist")
               || has_dir(root, "private/var/mobile/Containers") || has_dir(root, "var/mobile/Containers")
               || has_file(root, ".com.apple.mobile_container_manager.metadata.plist");
    if (os_scheme == "winOS")
        return any_user_has(root, "AppData") || has_dir(root, "Windows/System32");
    if (os_scheme == "macOS")
        return any_user_has(root, "Library") || has_dir(root, "System/Library");
    return true;
}

QString detect_os_scheme(const QString& source_root)
{
    for (const char* scheme : {"androidOS", "iOS_UID", "winOS", "macOS"}) {
        if (looks_like(source_root, scheme))
            return scheme;
    }
    return QString();
}

QStringList tables_read(const QString& os_scheme)
{
    // The desktop player 4's media-library database adds its four tables on
    // macOS and Windows.
    if (os_scheme == "macOS")
        return {"media_library", "podcasts", "recents", "recent_played", "playlists", "album_art", "album"};
    if (os_scheme == "winOS")
        return {"recents", "playlists", "album_art", "podcasts", "media_library", "album"};
    if (os_scheme == "androidOS")
        return {"media_library", "album_art", "album", "playlists"};
    if (os_scheme == "iOS_UID")
        return {"media_library", "album_art", "album", "playlists", "recents"};
    return {};
}

QStringList default_users(const QString& source_root, const QString& os_scheme)
{
    if (os_scheme != "macOS" && os_scheme != "winOS")
        return {};
    // Every profile folder is scanned, the guest's and the system's own
    // included: a trace in any of them is evidence. Only the folder every
    // account shares and hidden folders are left out.
    const QDir users(QDir(source_root).filePath("Users"));
    QStringList names;
    for (const QString& name : users.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        if (name != "Shared" && !name.startsWith('.'))
            names << name;
    }
    return names;
}

bool has_account_folder(const QString& source_root, const QString& user)
{
    return has_dir(QDir(source_root), "Users/" + user);
}

}  // namespace source_layout
