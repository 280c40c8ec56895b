#include "evidence_files.h"

#include <cctype>

#include <QCryptographicHash>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QSet>
#include <QUrl>

#include "log_findings.h"
#include "report_values.h"
#include "source_path_placement.h"

namespace evidence_files {

namespace {

using source_path_placement::placement;

constexpr qint64 k_max_picture_bytes = 16 * 1024 * 1024;
constexpr qint64 k_hash_chunk = 1024 * 1024;

// Folders that hold several places, spelled once (literals, so that each
// place stays one string).
#define MACOS_RECENT_LISTS                                                                                  \
    "Users/<user>/Library/Application Support/com.apple.sharedfilelist/"                                     \
    "com.apple.LSSharedFileList.ApplicationRecentDocuments/"
#define WINDOWS_JUMP_LISTS "Users/<user>/AppData/Roaming/Microsoft/Windows/Recent/AutomaticDestinations/"

QString root_without_slash(const QString& source_root)
{
    QString root = source_root;
    while (root.size() > 1 && root.endsWith('/'))
        root.chop(1);
    return root;
}

QString status_of(const QString& absolute_path, const QString& source_root)
{
    switch (source_path_placement::locate(absolute_path, source_root)) {
    case placement::outside:
        return "left out: outside the source";
    case placement::inside_missing:
        return "not found";
    case placement::inside_present:
        break;
    }
    const QFileInfo info(absolute_path);
    return info.isFile() || info.isDir() ? QString("found") : QString("left out: not a regular file");
}

// The iOS app's files, named by their path in the app's data container or
// its app group's container; each one the plug-in reads.
struct ios_app_file
{
    const char* relative;
    const char* what;
    bool in_group;
};
const ios_app_file k_ios_app_files[] = {
    {"Library/MediaLibrary/medialibrary.db", "media database", false},
    {"Library/MediaLibrary.sqlite", "media library store (app up to 3.1)", false},
    {"MediaLibrary.sqlite", "media library store in the app group (app up to 3.1)", true},
    {"Library/MediaLibrary.sqlite", "media library store in the app group's Library (app up to 3.1)", true},
    {"Library/Preferences/org.videolan.vlc-ios.plist", "preferences (recent network addresses)", false},
};
const char* const k_ios_app = "org.videolan.vlc-ios";
const char* const k_ios_group = "group.org.videolan.vlc-ios";
const char* const k_ios_metadata = ".com.apple.mobile_container_manager.metadata.plist";
constexpr int k_max_containers = 100000;
constexpr qint64 k_max_metadata_bytes = 64 * 1024;

// True when the metadata file names the identifier as a whole word (in XML
// or binary form alike, the identifier's bytes stand as they are).
bool names_identifier(const QString& metadata_path, const QByteArray& identifier)
{
    // Only a regular file is opened: a named pipe would block the read.
    QFile file(metadata_path);
    if (!QFileInfo(metadata_path).isFile() || !file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray bytes = file.read(k_max_metadata_bytes);
    auto is_word = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '.' || c == '-'; };
    for (qsizetype at = bytes.indexOf(identifier); at >= 0; at = bytes.indexOf(identifier, at + 1)) {
        const qsizetype end = at + identifier.size();
        if ((at == 0 || !is_word(bytes.at(at - 1))) && (end == bytes.size() || !is_word(bytes.at(end))))
            return true;
    }
    return false;
}

// Containers below the root ("/private/var/mobile/Containers/Data/Application/<UUID>")
// whose metadata names the identifier; the root itself when it is one.
QStringList containers_of(const QString& source_root, const QString& kind_folder, const QByteArray& identifier)
{
    const QString root = root_without_slash(source_root);
    QStringList found;
    QSet<QString> seen;
    auto consider = [&](const QString& below) {
        const QString metadata = root + below + "/" + k_ios_metadata;
        if (source_path_placement::locate(metadata, source_root) != placement::inside_present
            || !names_identifier(metadata, identifier))
            return;
        // var/ is often a link to private/var/: one container, named once.
        const QString canonical = QFileInfo(root + below).canonicalFilePath();
        if (!seen.contains(canonical)) {
            seen.insert(canonical);
            found << below;
        }
    };
    if (kind_folder == "Data/Application")
        consider(QString());
    for (const char* base : {"/private/var/mobile/Containers/", "/var/mobile/Containers/"}) {
        const QString below = base + kind_folder;
        if (source_path_placement::locate(root + below, source_root) != placement::inside_present)
            continue;
        QDirIterator folders(root + below, QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden);
        for (int i = 0; folders.hasNext() && i < k_max_containers; ++i)
            consider(below + "/" + folders.nextFileInfo().fileName());
    }
    found.sort();
    return found;
}

// The iOS app's files: in each of the app's containers, or in a backup at
// the name it stores a file of the app's domain under (the SHA-1 of the
// domain, "-" and the file's path, in a folder of its first two digits).
QList<looked_for> ios_places(const QString& source_root)
{
    const QString root = root_without_slash(source_root);
    QList<looked_for> places;
    auto add = [&](const QString& what, const QString& below) {
        places.append({QString(), what, below, status_of(root + below, source_root)});
    };
    if (QFileInfo(root + "/Manifest.db").isFile() || QFileInfo(root + "/Manifest.plist").isFile()) {
        add("backup manifest", "/Manifest.db");
        for (const ios_app_file& file : k_ios_app_files) {
            const QString domain = file.in_group ? QString("AppDomainGroup-") + k_ios_group
                                                 : QString("AppDomain-") + k_ios_app;
            const QString id = QString::fromLatin1(
                QCryptographicHash::hash((domain + "-" + file.relative).toUtf8(), QCryptographicHash::Sha1).toHex());
            const QString in_folder = "/" + id.left(2) + "/" + id;
            const QString below = QFileInfo(root + in_folder).exists() || !QFileInfo(root + "/" + id).exists()
                                      ? in_folder
                                      : "/" + id;
            add(QString(file.what) + ": " + domain + "/" + file.relative, below);
        }
        return places;
    }
    for (const bool group : {false, true}) {
        const QStringList containers = containers_of(source_root, group ? "Shared/AppGroup" : "Data/Application",
                                                     group ? k_ios_group : k_ios_app);
        if (containers.isEmpty()) {
            add(group ? QString("the app group's container (%1)").arg(k_ios_group)
                      : QString("the app's data container (%1)").arg(k_ios_app),
                group ? "/private/var/mobile/Containers/Shared/AppGroup/<UUID>"
                      : "/private/var/mobile/Containers/Data/Application/<UUID>");
            continue;
        }
        for (const QString& container : containers) {
            for (const ios_app_file& file : k_ios_app_files) {
                // Every container of the app is read: with several, each place names its own.
                if (file.in_group == group)
                    add(containers.size() > 1 ? QString(file.what) + " in " + container : QString(file.what),
                        container + "/" + file.relative);
            }
        }
    }
    return places;
}

}  // namespace

const QList<location>& locations()
{
    static const QList<location> places = {
        {"macOS", "Users/<user>/Library/Application Support/org.videolan.vlc/ml.xspf", "media library"},
        {"macOS", "Users/<user>/Library/Preferences/org.videolan.vlc/vlcrc", "preferences (podcasts)"},
        {"macOS", MACOS_RECENT_LISTS "org.videolan.vlc.sfl4", "recent documents (macOS 26)"},
        {"macOS", MACOS_RECENT_LISTS "org.videolan.vlc.sfl3", "recent documents (macOS 14, 15)"},
        {"macOS", MACOS_RECENT_LISTS "org.videolan.vlc.sfl2", "recent documents (macOS 10.13 to 13)"},
        {"macOS", "Users/<user>/Library/Preferences/org.videolan.vlc.LSSharedFileList.plist", "recent documents"},
        {"macOS", MACOS_RECENT_LISTS "org.videolan.vlc.sfl", "recent documents"},
        {"macOS", "Users/<user>/Library/Preferences/org.videolan.vlc.plist", "recently played"},
        {"macOS", "Users/<user>/Library/Application Support/org.videolan.vlc/ml/ml.db",
         "media-library database (player 4)"},
        {"winOS", "Users/<user>/AppData/Roaming/vlc/vlcrc", "preferences (podcasts)"},
        {"winOS", "Users/<user>/AppData/Roaming/vlc/art", "cover-art cache"},
        {"winOS", WINDOWS_JUMP_LISTS "9fda41b86ddcf1db.automaticDestinations-ms", "jump list 9fda41b86ddcf1db"},
        {"winOS", WINDOWS_JUMP_LISTS "faef7def55a1d4b.automaticDestinations-ms", "jump list faef7def55a1d4b"},
        {"winOS", WINDOWS_JUMP_LISTS "0faef7def55a1d4b.automaticDestinations-ms", "jump list 0faef7def55a1d4b"},
        {"winOS", WINDOWS_JUMP_LISTS "4acae695c73a28c7.automaticDestinations-ms",
         "jump list 4acae695c73a28c7 (older player)"},
        {"winOS", WINDOWS_JUMP_LISTS "e6ee34ac9913c0a9.automaticDestinations-ms",
         "jump list e6ee34ac9913c0a9 (older player)"},
        {"winOS", WINDOWS_JUMP_LISTS "cbeb786f0132005d.automaticDestinations-ms",
         "jump list cbeb786f0132005d (older player)"},
        {"winOS", "Users/<user>/AppData/Roaming/vlc/vlc-qt-interface.ini", "the player's recent list"},
        {"winOS", "Users/<user>/AppData/Roaming/vlc/ml/ml.db", "media-library database (player 4)"},
        {"androidOS", "apps/org.videolan.vlc/r/app_db/vlc_media.db", "media database"},
        {"androidOS", "data/data/org.videolan.vlc/app_db/vlc_media.db", "media database"},
    };
    return places;
}

#undef MACOS_RECENT_LISTS
#undef WINDOWS_JUMP_LISTS

QList<looked_for> look_for(const QString& source_root, const QString& os_scheme, const QStringList& users)
{
    const QString root = root_without_slash(source_root);
    QList<looked_for> all;
    for (const QString& user : QStringList{QString()} + users) {
        for (const location& place : locations()) {
            const QString pattern = QString::fromUtf8(place.path);
            if (os_scheme != QLatin1String(place.scheme) || pattern.contains("<user>") == user.isEmpty())
                continue;
            const QString below = "/" + QString(pattern).replace("<user>", user);
            all.append({user, QString::fromUtf8(place.what), below, status_of(root + below, source_root)});
        }
    }
    if (os_scheme == "iOS_UID")
        all += ios_places(source_root);
    // Of alternatives, the first found is the one read.
    QSet<QString> found_groups;
    for (looked_for& entry : all) {
        const QString group = entry.user + '\n' + entry.what;
        if (entry.status == "found" && found_groups.contains(group))
            entry.status = "found, not read: the alternative above is read";
        else if (entry.status == "found")
            found_groups.insert(group);
    }
    QList<looked_for> shown;
    for (const looked_for& entry : all) {
        if (entry.status != "not found" || !found_groups.contains(entry.user + '\n' + entry.what))
            shown << entry;
    }
    return shown;
}

QString absolute_in_source(const QString& stored, const QString& source_root)
{
    QString path = stored.trimmed();
    if (path.startsWith("file:", Qt::CaseInsensitive))
        path = QUrl(path).toLocalFile();
    const QString root = root_without_slash(source_root);
    if (path.isEmpty() || root.isEmpty() || !path.startsWith('/'))
        return QString();
    if (root == "/" || path.startsWith(root + "/"))
        return path;
    return root + path;
}

file_facts facts_of(const QString& absolute_path, const QString& source_root)
{
    file_facts facts;
    facts.path = log_findings::below_root(absolute_path, root_without_slash(source_root));
    const QString status = status_of(absolute_path, source_root);
    const QFileInfo info(absolute_path);
    if (status != "found" || !info.isFile()) {
        facts.note = status == "found" ? QString("not a regular file") : status;
        return facts;
    }
    facts.size = info.size();
    facts.modified_utc = report_values::iso_utc(info.lastModified());
    QFile file(absolute_path);
    if (!file.open(QIODevice::ReadOnly)) {
        facts.note = "could not be read: " + file.errorString();
        return facts;
    }
    QCryptographicHash md5(QCryptographicHash::Md5);
    QCryptographicHash sha256(QCryptographicHash::Sha256);
    while (!file.atEnd()) {
        const QByteArray chunk = file.read(k_hash_chunk);
        if (chunk.isEmpty())
            break;
        md5.addData(chunk);
        sha256.addData(chunk);
    }
    if (file.error() != QFileDevice::NoError) {
        facts.note = "could not be read: " + file.errorString();
        return facts;
    }
    facts.md5 = QString::fromLatin1(md5.result().toHex());
    facts.sha256 = QString::fromLatin1(sha256.result().toHex());
    return facts;
}

QList<file_facts> files_read(const QString& source_root, const QList<looked_for>& places,
                             const QStringList& stored_source_files)
{
    const QString root = root_without_slash(source_root);
    QMap<QString, QString> by_path;  // below the root -> absolute, sorted
    auto add = [&](const QString& absolute) {
        if (!absolute.isEmpty())
            by_path.insert(log_findings::below_root(absolute, root), absolute);
    };
    for (const looked_for& place : places) {
        const QString absolute = root + place.path;
        if (place.status != "found" || !QFileInfo(absolute).isFile())
            continue;
        add(absolute);
        // A database's pending pages are read with it.
        for (const char* companion : {"-wal", "-shm"}) {
            if (source_path_placement::locate(absolute + companion, source_root) == placement::inside_present)
                add(absolute + companion);
        }
    }
    for (const QString& stored : stored_source_files)
        add(absolute_in_source(stored, source_root));
    QList<file_facts> facts;
    for (const QString& absolute : by_path)
        facts << facts_of(absolute, source_root);
    return facts;
}

picture read_picture(const QString& absolute_path, const QString& source_root)
{
    picture found;
    if (absolute_path.isEmpty()
        || source_path_placement::locate(absolute_path, source_root) != placement::inside_present)
        return found;
    const QFileInfo info(absolute_path);
    if (!info.isFile() || info.size() > k_max_picture_bytes)
        return found;
    QFile file(absolute_path);
    if (!file.open(QIODevice::ReadOnly))
        return found;
    const QByteArray bytes = file.read(k_max_picture_bytes + 1);
    if (bytes.size() > k_max_picture_bytes)
        return found;
    const struct
    {
        const char* magic;
        int offset;
        const char* kind;
    } kinds[] = {
        {"\xFF\xD8\xFF", 0, "jpg"}, {"\x89PNG\r\n\x1A\n", 0, "png"},
        {"GIF87a", 0, "gif"},       {"GIF89a", 0, "gif"},
        {"BM", 0, "bmp"},           {"WEBP", 8, "webp"},
    };
    for (const auto& k : kinds) {
        if (bytes.mid(k.offset).startsWith(QByteArray(k.magic))) {
            found.kind = QString::fromLatin1(k.kind);
            found.bytes = bytes;
            break;
        }
    }
    return found;
}

}  // namespace evidence_files
