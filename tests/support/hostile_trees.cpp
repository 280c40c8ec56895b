// The hostile trees: what an examiner meets in damaged or tampered images.
// Each tree is written as "evidence" (the source root) with "outside" beside
// it: a canary file of a known size and time, player files of known content
// and a whole macOS home. The evidence leads there in every way a tree
// allows: absolute and relative links to files and folders, ".." in paths and
// in escaped URLs, a link followed by "..", player files and homes that are
// links. No row may show what lies outside. Beside the traps: named pipes,
// oversized and malformed player files, and the edge cases of each reader.

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>

#include <sys/xattr.h>

#include "compound_file_writer.h"
#include "plist_writer.h"
#include "sample_trees.h"
#include "shell_link_writer.h"
#include "tree_writer.h"
#include "xspf_writer.h"

namespace {

using tree_writer::entry;
using tree_writer::kind;

constexpr qint64 k_canary_size = 271828;
constexpr qint64 k_canary_time = 1234567890;
const QString k_recent = "/AppData/Roaming/Microsoft/Windows/Recent/AutomaticDestinations/";
const QString k_jump_list = "9fda41b86ddcf1db.automaticDestinations-ms";
const QString k_mac_library = "/Library/Application Support/org.videolan.vlc/ml.xspf";
const QString k_mac_vlcrc = "/Library/Preferences/org.videolan.vlc/vlcrc";
const QString k_mac_recents = "/Library/Preferences/org.videolan.vlc.LSSharedFileList.plist";
const QString k_mac_sfl = "/Library/Application Support/com.apple.sharedfilelist/"
                          "com.apple.LSSharedFileList.ApplicationRecentDocuments/org.videolan.vlc.sfl";

bool write_library(const QString& path, const QStringList& locations)
{
    QList<xspf_entry> tracks;
    for (int i = 0; i < locations.size(); ++i)
        tracks << xspf_entry{locations.at(i), {}, {}, {}, {}, {}, {}, {}, i};
    return xspf_writer::write(path, tracks);
}

QByteArray jump_list(const QStringList& windows_paths)
{
    QList<QByteArray> links;
    for (const QString& path : windows_paths)
        links << shell_link_writer::build(shell_link_writer::media_link(path, 1700000000, 100));
    return compound_file_writer::jump_list(links);
}

bool write_outside(const QString& base, QString* error)
{
    const QString outside = base + "/outside";
    const QList<entry> files = {
        {"canary.mp3", QByteArray(k_canary_size, 'c')},
        {"canary.jpg", QByteArray(k_canary_size, 'j')},
        {"canary.m3u", "#EXTINF:1,canary\r\nC:\\canary_entry.mp3\r\n#\r\n"},
        {"vlcrc", "podcast-urls=http://canary-podcast.example/\n"},
        {"jump.ms", jump_list({"C:\\canary_jump.mp3"})},
        {"art/a/b/canary_art.png", QByteArray::fromHex("89504e47")},
        {"home" + k_mac_vlcrc, "podcast-urls=http://canary-podcast.example/\n"},
    };
    if (!tree_writer::write_entries(outside, files, error)
        || !write_library(outside + "/home" + k_mac_library, {"file:///canary_library.mp3"}))
        return false;
    for (const char* name : {"/canary.mp3", "/canary.jpg"}) {
        QFile file(outside + name);
        if (!file.open(QIODevice::ReadWrite)
            || !file.setFileTime(QDateTime::fromSecsSinceEpoch(k_canary_time), QFileDevice::FileModificationTime))
            return false;
    }
    return true;
}

// Links below a media folder three levels under the root, to the canary and
// to the outside folder, absolute and relative.
QList<entry> media_links(const QString& base, const QString& folder)
{
    return {{folder + "/abs_link.mp3", (base + "/outside/canary.mp3").toUtf8(), kind::link},
            {folder + "/rel_link.mp3", "../../../../outside/canary.mp3", kind::link},
            {folder + "/outdir", (base + "/outside").toUtf8(), kind::link},
            {folder + "/reldir", "../../../../outside", kind::link}};
}

// The ways to name the canary from that folder, as the player writes paths.
QStringList trap_paths(const QString& folder, const QString& separator)
{
    QStringList paths = {folder + "/../../../../outside/canary.mp3", folder + "/abs_link.mp3",
                         folder + "/rel_link.mp3", folder + "/outdir/canary.mp3", folder + "/reldir/canary.mp3",
                         folder + "/outdir/../outside/canary.mp3", folder + "/outdir"};
    for (QString& path : paths)
        path.replace("/", separator);
    return paths;
}

bool write_macos_traps(const QString& root, const QString& base, QString* error)
{
    QStringList urls;
    for (const QString& path : trap_paths("/Users/mallory/Music", "/"))
        urls << "file://" + path;
    urls << "file:///Users/mallory/Music/%2E%2E/%2E%2E/%2E%2E/%2E%2E/outside/canary.mp3";
    QVariantList played;
    for (const QString& url : urls)
        played << url;
    const QString home = "Users/mallory";
    const QList<entry> entries = media_links(base, home + "/Music") + QList<entry>{
        {home + "/Library/Preferences/org.videolan.vlc.plist",
         plist_writer::write(QVariantMap{{"recentlyPlayedMediaList", played}}, plist_writer::format::binary)},
        {home + k_mac_sfl, plist_writer::keyed_archive(urls)},
        {home + k_mac_vlcrc, (base + "/outside/vlcrc").toUtf8(), kind::link},
        {"Users/eve", (base + "/outside/home").toUtf8(), kind::link},
    };
    return tree_writer::write_entries(root, entries, error) && write_library(root + "/" + home + k_mac_library, urls);
}

// A library damaged in the middle of its third track, one that is no XML at
// all, one with an entry beyond the reader's limit, pipes where files belong;
// the shared and a hidden folder, which hold no account.
bool write_macos_damaged_files(const QString& root, QString* error)
{
    const QString trent = root + "/Users/trent" + k_mac_library;
    if (!write_library(trent, {"file:///a.mp4", "file:///b.mp4", "file:///c.mp4"}))
        return false;
    QByteArray text = tree_writer::read_file(trent);
    text.truncate(text.indexOf("<location>file:///c.mp4"));
    const QString huge = "file:///Users/peggy/" + QString(5 * 1024 * 1024, 'x');
    return tree_writer::write_file(trent, text + "<title>broken</tit")
           && write_library(root + "/Users/peggy" + k_mac_library, {"file:///Users/peggy/a.mp3", huge, "file:///c.mp3"})
           && tree_writer::write_entries(root, {{"Users/Shared" + k_mac_vlcrc, "podcast-urls=http://shared.example/\n"},
                                                {"Users/.hidden" + k_mac_vlcrc, "podcast-urls=http://hidden.example/\n"},
                                                {"Users/victor" + k_mac_library, "this is not XML at all"},
                                                {"Users/victor" + k_mac_vlcrc, {}, kind::pipe},
                                                {"Users/walter" + k_mac_library, {}, kind::pipe},
                                                {"Users/walter" + k_mac_recents, {}, kind::pipe}},
                                         error);
}

// Metadata the volume keeps as extended attributes; the older recent list in
// its binary form; every property list of the shared samples in the places
// the player's own lists take.
bool write_macos_attributes_and_samples(const QString& root, QString* error)
{
    const QString media = root + "/Users/olivia/Movies/tagged.mp4";
    const QByteArray where_from = plist_writer::write(
        QVariantList{"https://downloads.example.org/tagged.mp4", "https://example.org/"}, plist_writer::format::binary);
    const QByteArray last_used = QByteArray::fromHex("00f1536500000000") + QByteArray(8, '\0');
    const auto set = [&media](const char* name, const QByteArray& value) {
        return ::setxattr(QFile::encodeName(media).constData(), name, value.constData(), size_t(value.size()), 0) == 0;
    };
    if (!tree_writer::write_file(media, "tagged media") || !set("user.com.apple.metadata:kMDItemWhereFroms", where_from)
        || !set("user.com.apple.quarantine", "0083;5f1e2a3b;Safari;") || !set("user.com.apple.lastuseddate#PS", last_used)) {
        *error = "the file system keeps no user extended attributes";
        return false;
    }
    QList<entry> entries = {{"Users/olivia" + k_mac_recents,
                             plist_writer::recent_documents_list({"tagged.mp4", "gone.mp4"}, plist_writer::format::binary)}};
    QStringList samples;
    for (QDirIterator it(tree_writer::shared_fixtures_dir() + "/macos/plist", QDir::Files, QDirIterator::Subdirectories);
         it.hasNext();) {
        const QString path = it.next();
        if (!path.endsWith(".md"))
            samples << path;
    }
    samples.sort();
    for (int i = 0; i < samples.size(); ++i) {
        const QString home = QString("Users/sample%1").arg(i, 2, 10, QChar('0'));
        const QByteArray data = tree_writer::read_file(samples.at(i));
        if (samples.at(i).contains(".sfl"))
            entries << entry{home + k_mac_sfl, data};
        else
            entries << entry{home + k_mac_recents, data} << entry{home + "/Library/Preferences/org.videolan.vlc.plist", data};
    }
    const QByteArray archive = plist_writer::keyed_archive({"file:///Users/olivia/a.mp4"});
    entries << entry{"Users/olivia" + k_mac_sfl, archive.left(archive.size() / 2)};
    return write_library(root + "/Users/olivia" + k_mac_library,
                         {"file:///Users/olivia/Movies/tagged.mp4", "file:///Users/olivia/Movies/gone.mp4"})
           && tree_writer::write_entries(root, entries, error);
}

bool write_macos_hostile_tree(const QString& base, QString* error)
{
    const QString root = base + "/evidence";
    return write_outside(base, error) && write_macos_traps(root, base, error)
           && write_macos_damaged_files(root, error) && write_macos_attributes_and_samples(root, error);
}

const char* const k_player_xspf =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<playlist xmlns=\"http://xspf.org/ns/0/\" "
    "xmlns:vlc=\"http://www.videolan.org/vlc/playlist/ns/0/\" version=\"1\">\n\t<trackList>\n\t\t<track>\n"
    "\t\t\t<location>file:///C:/Users/mallory/Music/first.mp3</location>\n\t\t\t<duration>5000</duration>\n"
    "\t\t\t<extension application=\"http://www.videolan.org/vlc/playlist/0\">\n\t\t\t\t<vlc:id>0</vlc:id>\n"
    "\t\t\t</extension>\n\t\t</track>\n\t</trackList>\n</playlist>\n";

bool write_windows_hostile_tree(const QString& base, QString* error)
{
    const QString root = base + "/evidence";
    const QString home = "Users/mallory";
    QStringList targets = trap_paths("C:/Users/mallory/Music", "\\");
    targets << "C:\\..\\outside\\canary.mp3";
    const QString music = "C:\\Users\\mallory\\Music\\";
    const QStringList playlists = {music + "trap.m3u", music + "out.m3u", music + "outdir\\canary.m3u",
                                   "C:\\..\\outside\\canary.m3u", music + "trap.xspf", music + "player.xspf",
                                   music + "compact.xspf", music + "big.m3u"};
    QString m3u;
    QString xspf = "<?xml version=\"1.0\"?><playlist xmlns=\"http://xspf.org/ns/0/\"><trackList>";
    for (int i = 0; i < targets.size(); ++i) {
        m3u += QString("#EXTINF:%1,trap\r\n%2\r\n").arg(i).arg(targets.at(i));
        xspf += "\n<track>\n<location>file:///" + QString(targets.at(i)).replace('\\', '/').toHtmlEscaped()
                + "</location>\n<extension><id>" + QString::number(i) + "</id>\n</extension>\n</track>";
    }
    // The same track with no whitespace between its tags: the tokens read
    // are closing tags, so it has no path and no duration of its own.
    const QByteArray compact = "<playlist><trackList><track><location>file:///C:/Users/mallory/Music/second.mp3"
                               "</location><duration>7000</duration><extension><id>0</id></extension></track>"
                               "</trackList></playlist>";
    const QList<entry> entries = media_links(base, home + "/Music") + QList<entry>{
        {home + k_recent + k_jump_list, jump_list(targets + playlists)},
        {home + k_recent + "faef7def55a1d4b.automaticDestinations-ms", (base + "/outside/jump.ms").toUtf8(), kind::link},
        {home + "/Music/trap.m3u", m3u.toUtf8()},
        {home + "/Music/trap.xspf", (xspf + "\n</trackList></playlist>").toUtf8()},
        {home + "/Music/out.m3u", (base + "/outside/canary.m3u").toUtf8(), kind::link},
        {home + "/Music/player.xspf", k_player_xspf},
        {home + "/Music/compact.xspf", compact},
        {home + "/Music/big.m3u", "#EXTINF:5,Five\r\nC:\\Users\\mallory\\Music\\five.mp3\r\n#\r\n", kind::oversized},
        {home + "/AppData/Roaming/vlc/vlcrc", (base + "/outside/vlcrc").toUtf8(), kind::link},
        {home + "/AppData/Roaming/vlc/art/a/b/canary_art.png", (base + "/outside/art/a/b/canary_art.png").toUtf8(),
         kind::link},
        {home + "/AppData/Roaming/vlc/art/outdir", (base + "/outside/art").toUtf8(), kind::link},
        {home + "/AppData/Roaming/vlc/art/ab/cd/cover.jpg", QByteArray::fromHex("ffd8ffe0")},
        {home + "/AppData/Roaming/vlc/art/ef/gh/linked.jpg", "../../ab/cd/cover.jpg", kind::link},
        {"Users/trudy/AppData/Roaming/vlc/art", (base + "/outside/art").toUtf8(), kind::link},
        {"Users/Public/AppData/Roaming/vlc/vlcrc", "podcast-urls=http://public.example/\n"},
        {"Users/fay/AppData/Roaming/vlc/vlcrc", {}, kind::pipe},
        {"Users/fay" + k_recent + k_jump_list, {}, kind::pipe},
        {"Users/gus/AppData/Roaming/vlc/vlcrc", {}, kind::folder},
        {"Users/ivy/AppData/Roaming/vlc/vlcrc", "podcast-urls=http://a.example|http://b.example\n", kind::oversized},
    };
    return write_outside(base, error) && tree_writer::write_entries(root, entries, error);
}

}  // namespace

QList<sample_tree> hostile_trees()
{
    return {
        {"macOS", "macos_hostile", {}, write_macos_hostile_tree, {"--metadata-keys", "com.apple.quarantine"}, "evidence"},
        {"winOS", "windows_hostile", {}, write_windows_hostile_tree, {}, "evidence"},
    };
}
