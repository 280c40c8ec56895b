// The macOS sample: two users whose player files fill all four macOS tables.
// alice has the older recent-documents list (and a newer archive that the
// older list hides), a library with escaped, unescaped, missing and hostile
// locations, played media of several kinds and podcast subscriptions; bob has
// the archive of 10.11 and 10.12 only. carol's older list carries bookmarks
// (a local and a network document) beside a 10.13 list with a disk-image
// volume, a looping bookmark, an item with a name only and a path leading out
// of the source; dave has only the list of macOS 26, on an external volume.

#include <QDateTime>
#include <QTimeZone>
#include <QVariant>
#include <QtEndian>

#include "bookmark_writer.h"
#include "plist_writer.h"
#include "sample_trees.h"
#include "tree_writer.h"
#include "xspf_writer.h"

namespace {

const QString k_library = "Library/Application Support/org.videolan.vlc/ml.xspf";
const QString k_vlcrc = "Library/Preferences/org.videolan.vlc/vlcrc";
const QString k_recents_plist = "Library/Preferences/org.videolan.vlc.LSSharedFileList.plist";
const QString k_recents_sfl = "Library/Application Support/com.apple.sharedfilelist/"
                              "com.apple.LSSharedFileList.ApplicationRecentDocuments/org.videolan.vlc.sfl";
const QString k_preferences = "Library/Preferences/org.videolan.vlc.plist";

bool write_library(const QString& path, const QList<xspf_entry>& entries)
{
    xspf_writer writer;
    if (!writer.open(path))
        return false;
    for (const xspf_entry& entry : entries)
        writer.add(entry);
    return writer.close();
}

QList<xspf_entry> alice_library()
{
    xspf_entry holiday;
    holiday.location = "file:///Users/alice/Movies/Holiday%20Trip%20%E2%80%93%20Day%201.mp4";
    holiday.titles = {"Holiday Trip", "A second title the player never shows"};
    holiday.creator = "Alice";
    holiday.album = "Summer";
    holiday.track_num = "1";
    holiday.annotation = "Beach & boats";
    holiday.image = "file:///Users/alice/Library/Caches/org.videolan.vlc/art/artistalbum/Alice/Summer/art.jpg";
    holiday.duration = "5025000";
    holiday.id = 0;

    xspf_entry song;  // written without the file scheme, as older libraries hold some
    song.location = "/Users/alice/Music/song%20one.mp3";
    song.titles = {"Song One"};
    song.duration = "65000";
    song.id = 1;

    xspf_entry missing;
    missing.location = "file:///Users/alice/Movies/deleted%20clip.mkv";
    missing.duration = "0";
    missing.id = 2;

    xspf_entry outside;  // leads out of the source: must count as absent
    outside.location = "file:///Users/alice/../../../../etc/hostname";
    outside.id = 3;
    return {holiday, song, missing, outside};
}

QList<xspf_entry> bob_library()
{
    xspf_entry clip;
    clip.location = "file:///Users/bob/Movies/clip.mov";
    clip.titles = {"Clip"};
    clip.duration = "359999000";  // 99:59:59
    clip.id = 0;
    return {clip};
}

QByteArray alice_preferences()
{
    const QVariantList played{"file:///Users/alice/Movies/Holiday%20Trip%20%E2%80%93%20Day%201.mp4",
                              42,
                              "file:///Users/alice/Movies/gone.avi",
                              QVariantMap{{"url", "file:///Users/alice/Music/song%20one.mp3"}},
                              "http://radio.example.org/stream.mp3",
                              "file:///Users/alice/Music/song%20one.mp3"};
    const QVariantMap preferences{{"recentlyPlayedMediaList", played},
                                  {"recentlyPlayedMedia", QVariantMap{}},
                                  {"language", "auto"},
                                  {"SUEnableAutomaticChecks", false}};
    return plist_writer::write(preferences, plist_writer::format::binary);
}

QByteArray bob_preferences()
{
    const QVariantMap preferences{{"recentlyPlayedMediaList", QVariantList{"file:///Users/bob/Movies/clip.mov"}},
                                  {"VLCFirstRun", QDateTime(QDate(2024, 10, 25), QTime(9, 30), QTimeZone::utc())}};
    return plist_writer::write(preferences, plist_writer::format::xml);
}

QByteArray alice_vlcrc()
{
    return "\xEF\xBB\xBF###\n### vlc 3.0.20\n###\n\n[podcast] # Podcasts\n\n"
           "# Podcast URLs list (string)\n"
           "podcast-urls=http://feeds.example.org/news.xml|https://podcasts.example.com/tech%20talk.rss|"
           "http://audio.example.net/weekly\n\n[core] # core program\n#podcast-urls=http://commented.example/\n";
}

bool write_media(const QString& root, const QStringList& files, QString* error)
{
    for (const QString& file : files) {
        if (!tree_writer::write_file(root, file, QByteArray("media bytes of ") + file.toUtf8(), error))
            return false;
    }
    return true;
}

bool write_bookmarked_lists(const QString& carol, const QString& dave, QString* error)
{
    const QDateTime may(QDate(2023, 5, 10), QTime(4, 45, 53), QTimeZone::utc());
    QByteArray looping = bookmark_writer::build("Users/carol/Music/loop.mp3", may, "carol");
    const qint64 table = bookmark_writer::first_table_at(looping);
    qToLittleEndian(quint32(table - 48), looping.data() + table + 12);  // the next table is itself
    const QByteArray plist = plist_writer::recent_documents_list(
        {"Interview.mp4", "Concert.m4v"}, plist_writer::format::binary,
        {bookmark_writer::build("Users/carol/Movies/Interview.mp4", may, "carol"),
         bookmark_writer::build("Volumes/media/Videos/Concert.m4v", may.addYears(-9), "carol",
                                "afp://nas._afpovertcp._tcp.local/media", "media", 0)});
    // A volume attached from a disk image (local, ejectable, removable, image), as archived data.
    const QByteArray image = bookmark_writer::build("Volumes/Untitled/intro.mp4", may.addDays(3), "carol",
                                                    "file:///Volumes/Untitled/", "Untitled", 0x261,
                                                    "Users/carol/Downloads/Untitled.dmg");
    const QByteArray sfl2 = plist_writer::shared_file_list(
        {{{"Bookmark", bookmark_writer::build("Users/carol/Music/tune.mp3", may.addDays(1), "carol")}},
         {{"Bookmark", QVariantMap{{"$class", "NSMutableData"}, {"NS.data", image}}}},
         {{"Bookmark", looping}},
         {{"Name", "Streamed show.mkv"}},
         {{"Bookmark", bookmark_writer::build("Users/carol/../../../etc/hostname", may, "carol")}}});
    // An external volume (local, ejectable, external).
    const QByteArray sfl4 = plist_writer::shared_file_list({{{"Bookmark", bookmark_writer::build(
        "Volumes/Backup/Films/trip.mov", may.addMonths(2), "dave", "file:///Volumes/Backup/", "Backup", 0x121)}}});
    return tree_writer::write_file(carol, k_recents_plist, plist, error)
           && tree_writer::write_file(carol, k_recents_sfl + "2", sfl2, error)
           && tree_writer::write_file(dave, k_recents_sfl + "4", sfl4, error)
           && write_media(carol, {"Movies/Interview.mp4", "Music/tune.mp3"}, error);
}

}  // namespace

bool write_macos_sample_tree(const QString& root, QString* error)
{
    const QString alice = root + "/Users/alice/";
    const QString bob = root + "/Users/bob/";
    const QStringList archive_strings{"file:///Users/bob/Movies/clip.mov",
                                      "file://localhost/Users/bob/Music/Tom%20%26%20Jerry.m4a",
                                      "com.apple.LSSharedFileList.MaxAmount",
                                      "com.apple.LSSharedFileList.OverrideIcon.OSType",
                                      "srvr",
                                      "NSURL",
                                      "https://example.org/watch"};
    const bool ok =
        write_library(alice + k_library, alice_library())
        && tree_writer::write_file(alice, k_vlcrc, alice_vlcrc(), error)
        && tree_writer::write_file(alice, k_recents_plist,
                                   plist_writer::recent_documents_list({"Holiday Trip – Day 1.mp4", "song one.mp3"},
                                                                       plist_writer::format::xml),
                                   error)
        && tree_writer::write_file(alice, k_recents_sfl,
                                   plist_writer::keyed_archive({"file:///Users/alice/hidden-by-older-list.mp4"}),
                                   error)
        && tree_writer::write_file(alice, k_preferences, alice_preferences(), error)
        && write_media(alice, {"Movies/Holiday Trip – Day 1.mp4", "Music/song one.mp3"}, error)
        && write_library(bob + k_library, bob_library())
        && tree_writer::write_file(bob, k_vlcrc, "[core]\nintf=macosx\n", error)
        && tree_writer::write_file(bob, k_recents_sfl, plist_writer::keyed_archive(archive_strings), error)
        && tree_writer::write_file(bob, k_preferences, bob_preferences(), error)
        && write_media(bob, {"Movies/clip.mov", "Music/Tom & Jerry.m4a"}, error)
        && write_bookmarked_lists(root + "/Users/carol/", root + "/Users/dave/", error);
    if (!ok && error && error->isEmpty())
        *error = "cannot write the macOS sample below " + root;
    return ok;
}
