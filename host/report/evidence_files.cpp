#include "evidence_files.h"

#include <QCryptographicHash>
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

}  // namespace

const QList<location>& locations()
{
    static const QList<location> places = {
        {"macOS", "Users/<user>/Library/Application Support/org.videolan.vlc/ml.xspf", "media library"},
        {"macOS", "Users/<user>/Library/Preferences/org.videolan.vlc/vlcrc", "preferences (podcasts)"},
        {"macOS", "Users/<user>/Library/Preferences/org.videolan.vlc.LSSharedFileList.plist", "recent documents"},
        {"macOS",
         "Users/<user>/Library/Application Support/com.apple.sharedfilelist/"
         "com.apple.LSSharedFileList.ApplicationRecentDocuments/org.videolan.vlc.sfl",
         "recent documents"},
        {"macOS", "Users/<user>/Library/Preferences/org.videolan.vlc.plist", "recently played"},
        {"winOS", "Users/<user>/AppData/Roaming/vlc/vlcrc", "preferences (podcasts)"},
        {"winOS", "Users/<user>/AppData/Roaming/vlc/art", "cover-art cache"},
        {"winOS",
         "Users/<user>/AppData/Roaming/Microsoft/Windows/Recent/AutomaticDestinations/"
         "9fda41b86ddcf1db.automaticDestinations-ms",
         "jump list 9fda41b86ddcf1db"},
        {"winOS",
         "Users/<user>/AppData/Roaming/Microsoft/Windows/Recent/AutomaticDestinations/"
         "faef7def55a1d4b.automaticDestinations-ms",
         "jump list faef7def55a1d4b"},
        {"androidOS", "apps/org.videolan.vlc/r/app_db/vlc_media.db", "media database"},
        {"androidOS", "data/data/org.videolan.vlc/app_db/vlc_media.db", "media database"},
    };
    return places;
}

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
