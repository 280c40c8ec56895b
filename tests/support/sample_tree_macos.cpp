// The macOS sample: two users whose player files fill all four macOS tables.
// alice has the older recent-documents list (and a newer archive that the
// older list hides), a library with escaped, unescaped, missing and hostile
// locations, played media of several kinds and podcast subscriptions; bob has
// the newer archive only.

#include <QDateTime>
#include <QTimeZone>

#include "plist_writer.h"
#include "sample_trees.h"
#include "tree_writer.h"
#include "xspf_writer.h"

namespace {

const QString k_preferences = "/Library/Preferences/";
const QString k_sfl = "/Library/Application Support/com.apple.sharedfilelist/"
                      "com.apple.LSSharedFileList.ApplicationRecentDocuments/org.videolan.vlc.sfl";

xspf_entry track(const QString& location, const QString& duration, int id, const QStringList& titles = {})
{
    xspf_entry entry;
    entry.location = location;
    entry.duration = duration;
    entry.id = id;
    entry.titles = titles;
    return entry;
}

QByteArray media(const QString& file)
{
    return "media bytes of " + file.section('/', 2).toUtf8();
}

}  // namespace

bool write_macos_sample_tree(const QString& root, QString* error)
{
    xspf_entry holiday = track("file:///Users/alice/Movies/Holiday%20Trip%20%E2%80%93%20Day%201.mp4", "5025000", 0,
                               {"Holiday Trip", "A second title the player never shows"});
    holiday.creator = "Alice";
    holiday.album = "Summer";
    holiday.track_num = "1";
    holiday.annotation = "Beach & boats";
    holiday.image = "file:///Users/alice/Library/Caches/org.videolan.vlc/art/artistalbum/Alice/Summer/art.jpg";
    const QList<xspf_entry> alice_library = {
        holiday,
        // Without the file scheme, as older libraries hold some; an empty
        // duration; a location that leads out of the source.
        track("/Users/alice/Music/song%20one.mp3", "65000", 1, {"Song One"}),
        track("file:///Users/alice/Movies/deleted%20clip.mkv", "", 2),
        track("file:///Users/alice/../../../../etc/hostname", QString(), 3)};
    const QVariantList played{"file:///Users/alice/Movies/Holiday%20Trip%20%E2%80%93%20Day%201.mp4", 42,
                              "file:///Users/alice/Movies/gone.avi",
                              QVariantMap{{"url", "file:///Users/alice/Music/song%20one.mp3"}},
                              "http://radio.example.org/stream.mp3", "file:///Users/alice/Music/song%20one.mp3"};
    const QVariantMap alice_preferences{{"recentlyPlayedMediaList", played}, {"recentlyPlayedMedia", QVariantMap{}},
                                        {"language", "auto"}, {"SUEnableAutomaticChecks", false}};
    const QVariantMap bob_preferences{
        {"recentlyPlayedMediaList", QVariantList{"file:///Users/bob/Movies/clip.mov"}},
        {"VLCFirstRun", QDateTime(QDate(2024, 10, 25), QTime(9, 30), QTimeZone::utc())}};
    const QStringList bob_archive{"file:///Users/bob/Movies/clip.mov",
                                  "file://localhost/Users/bob/Music/Tom%20%26%20Jerry.m4a",
                                  "com.apple.LSSharedFileList.MaxAmount",
                                  "com.apple.LSSharedFileList.OverrideIcon.OSType", "srvr", "NSURL",
                                  "https://example.org/watch"};
    QList<tree_writer::entry> files = {
        {"Users/alice" + k_preferences + "org.videolan.vlc/vlcrc",
         "\xEF\xBB\xBF###\n### vlc 3.0.20\n###\n\n[podcast] # Podcasts\n\n# Podcast URLs list (string)\n"
         "podcast-urls=http://feeds.example.org/news.xml|https://podcasts.example.com/tech%20talk.rss|"
         "http://audio.example.net/weekly\n\n[core] # core program\n#podcast-urls=http://commented.example/\n"},
        {"Users/alice" + k_preferences + "org.videolan.vlc.LSSharedFileList.plist",
         plist_writer::recent_documents_list({"Holiday Trip – Day 1.mp4", "song one.mp3"}, plist_writer::format::xml)},
        {"Users/alice" + k_sfl, plist_writer::keyed_archive({"file:///Users/alice/hidden-by-older-list.mp4"})},
        {"Users/alice" + k_preferences + "org.videolan.vlc.plist",
         plist_writer::write(alice_preferences, plist_writer::format::binary)},
        {"Users/bob" + k_preferences + "org.videolan.vlc/vlcrc", "[core]\nintf=macosx\n"},
        {"Users/bob" + k_sfl, plist_writer::keyed_archive(bob_archive)},
        {"Users/bob" + k_preferences + "org.videolan.vlc.plist", plist_writer::write(bob_preferences, plist_writer::format::xml)},
    };
    for (const char* file : {"Users/alice/Movies/Holiday Trip – Day 1.mp4", "Users/alice/Music/song one.mp3",
                             "Users/bob/Movies/clip.mov", "Users/bob/Music/Tom & Jerry.m4a"})
        files << tree_writer::entry{file, media(file)};
    const QString library = "/Library/Application Support/org.videolan.vlc/ml.xspf";
    return tree_writer::write_entries(root, files, error) && xspf_writer::write(root + "/Users/alice" + library, alice_library)
           && xspf_writer::write(root + "/Users/bob" + library, {track("file:///Users/bob/Movies/clip.mov", "359999000", 0, {"Clip"})});
}
