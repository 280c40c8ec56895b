// The Windows sample: two users (and a guest) whose jump lists, playlists,
// cover-art cache and preference files exercise every Windows table,
// including the cases an examiner meets in practice (links to other drives
// and shares, a link that climbs out of the volume, playlists the player did
// not write itself), the DestList of every jump-list version (one damaged),
// and the player's own recent list as new and old versions wrote it.

#include <cctype>

#include "compound_file_writer.h"
#include "sample_trees.h"
#include "shell_link_writer.h"
#include "tree_writer.h"
#include "xspf_writer.h"

namespace {

const QString k_recent = "/AppData/Roaming/Microsoft/Windows/Recent/AutomaticDestinations/";
const qint64 k_base_time = 1700000000;  // 2023-11-14 22:13:20 UTC

QByteArray link_to(const QString& windows_path, int index)
{
    return shell_link_writer::build(
        shell_link_writer::media_link(windows_path, k_base_time + index * 3600, 1000u * (index + 1)));
}

// The DestList of a jump list: entries for the given streams, most recent
// first, an hour apart, each opened one more time than the one before it.
QByteArray opened(quint32 version, const QList<quint64>& streams, const QString& computer = "desktop-case01")
{
    QList<compound_file_writer::dest_entry> entries;
    for (const quint64 stream : streams) {
        const qint64 when = k_base_time + 86400 - 3600 * entries.size();
        entries.append({stream, shell_link_writer::filetime_from_unix(when), quint32(entries.size() + 1),
                         stream == 4, computer, version >= 6 ? QByteArray(24, 'p') : QByteArray()});
    }
    return compound_file_writer::dest_list(version, entries);
}

// A value of the player's interface settings as Qt 4 and 5 wrote it: quoted
// when it holds "," ";" "=" or edge blanks, every character from 0x7F on (and
// a hex digit right after one) as \x and the hex of its UTF-16 unit.
QString ini_value(const QString& value)
{
    bool quoted = value.startsWith(' ') || value.endsWith(' '), after_hex = false;
    QString out;
    for (const QChar c : value) {
        const ushort u = c.unicode();
        quoted = quoted || u == ',' || u == ';' || u == '=';
        after_hex = u < 0x20 || u >= 0x7F || (after_hex && isxdigit(u));
        out += after_hex ? "\\x" + QString::number(u, 16) : (c == '\\' || c == '"') ? QString('\\') + c : QString(c);
    }
    return quoted ? '"' + out + '"' : out;
}

// Lists joined with ", ", a one-item list as a plain value, an empty one as @Invalid().
QByteArray interface_settings(const QStringList& recent, const QStringList& times, const QStringList& typed)
{
    const auto list = [](QStringList items) {
        for (QString& item : items)
            item = ini_value(item);
        return items.isEmpty() ? QString("@Invalid()") : items.join(", ");
    };
    const QString positions = times.isEmpty() ? QString() : "times=" + list(times) + "\n";
    return ("[General]\nqt-version=5.15.2\n\n[RecentsMRL]\nlist=" + list(recent) + "\n" + positions
            + "\n[OpenDialog]\nnetMRL=" + list(typed) + "\n")
        .toLatin1();
}

QByteArray network_link()
{
    shell_link_writer::link_fields f;
    f.creation_filetime = shell_link_writer::filetime_from_unix(k_base_time);
    f.network_share = "\\\\nas\\media";
    f.description = "share on the NAS";
    f.machine_id = "desktop-case01";
    return shell_link_writer::build(f);
}

// A playlist of the player's own: a track without an id is never taken, one
// without a duration keeps the duration of the track before it.
bool write_party(const QString& path)
{
    const struct
    {
        const char* location;
        const char* duration;
        int id;
    } tracks[] = {{"file:///C:/Users/carol/My%20Music/a.mp3", "215999", 0},
                  {"file:///C:/Users/carol/Music/caf%C3%A9%20bar.mp3", "60000", 1},
                  {"file:///C:/Users/carol/Music/no-id.mp3", "1000", -1},
                  {"file:///C:/Users/carol/Music/last.mp3", nullptr, 3}};
    QList<xspf_entry> entries;
    for (const auto& t : tracks)
        entries << xspf_entry{t.location, {}, {}, {}, {}, {}, {}, t.duration ? QString(t.duration) : QString(), t.id};
    return xspf_writer::write(path, entries, "Playlist");
}

}  // namespace

bool write_windows_sample_tree(const QString& root, QString* error)
{
    const QString carol = "Users/carol";
    const QString dave = "Users/dave";
    const QList<QByteArray> carol_links = {
        link_to("C:\\Users\\carol\\Music\\song one.mp3", 1), link_to("D:\\Movies\\film.mkv", 2), network_link(),
        link_to("C:\\Users\\carol\\Music\\mix.m3u", 3),      link_to("C:\\Users\\carol\\Music\\unix.m3u", 4),
        link_to("C:\\Users\\carol\\Music\\road.m3u8", 5),    link_to("C:\\Users\\carol\\Music\\party.xspf", 6),
        link_to("C:\\..\\..\\..\\outside.mp3", 7)};
    // A link without the tracker block: its computer comes from the DestList.
    shell_link_writer::link_fields untracked = shell_link_writer::media_link("C:\\Users\\dave\\clip.ogg", k_base_time, 5);
    untracked.machine_id.clear();
    const QList<tree_writer::entry> files = {
        {carol + k_recent + "9fda41b86ddcf1db.automaticDestinations-ms",
         compound_file_writer::jump_list(carol_links, opened(4, {4, 1, 8, 2, 3, 5, 6, 7}))},
        {carol + "/AppData/Roaming/vlc/vlc-qt-interface.ini",
         interface_settings(
             {"file:///C:/Users/carol/Music/song%20one.mp3", "file:///C:/Users/carol/Videos/clip,%20final.mkv",
              "C:\\Users\\carol\\Music\\café.mp3", "file:///D:/Movies/film.mkv",
              "http://radio.example/live?x=1;y=2", "file:///C:/Users/carol/My%20Music/a.mp3",
              "C:\\Users\\carol\\Music\\Décembre.mp3"},
             {"754000", "0", "-1", "3725000", "0", "1000", "61000"}, {"rtsp://cam.example/stream", "mms://old.example/x"})},
        {carol + "/Music/song one.mp3", QByteArray(4096, 'a')},
        {carol + "/Music/café.mp3", QByteArray(2048, 'c')},
        {carol + "/Music/caf%C3%A9 bar.mp3", QByteArray(100, 'e')},
        {carol + "/My Music/a.mp3", QByteArray(512, 'm')},
        {carol + "/Videos/clip.mkv", QByteArray(8192, 'v')},
        {carol + "/Music/Song.mp3", "song"},
        {carol + "/Music/mix.m3u", "#EXTM3U\r\n#EXTINF:215,Artist - Song One\r\nC:\\Users\\carol\\Music\\song one.mp3\r\n"
                                   "#EXTINF:3725,Long, Title\r\nC:\\Users\\carol\\Videos\\clip.mkv\r\n"},
        {carol + "/Music/unix.m3u", "#EXTM3U\n#EXTINF:10,Ten\nC:\\Users\\carol\\Music\\song one.mp3\n"},
        {carol + "/Music/road.m3u8", "#EXTM3U\r\n#EXTINF:59,Café\r\nC:\\Users\\carol\\Music\\café.mp3\r\n"
                                     "#EXTINF:1,climbs out\r\nC:\\..\\..\\..\\etc\\passwd\r\n"},
        {carol + "/AppData/Roaming/vlc/vlcrc", "# Configuration file\n\n[podcast] # Podcasts\n\n# Podcast URLs list "
                                               "(string)\n#podcast-urls=\n\npodcast-urls=http://a.example/feed.xml|"
                                               "http://b.example/rss\n\n[core]\n"},
        {carol + "/AppData/Roaming/vlc/art/artistalbum/ab12/art.jpg", QByteArray::fromHex("ffd8ffe000104a464946")},
        // A whole picture (a disc, 16 by 16), which the report shows.
        {carol + "/AppData/Roaming/vlc/art/artistalbum/cd34/cover.png",
         QByteArray::fromHex("89504e470d0a1a0a0000000d4948445200000010000000100103000000253d6d2200000006504c5445f0a030"
                             "8030c095ee28220000001a4944415478da63608001f6070cfc1f18e47fa023a020500a0600f3fb0a57c18e"
                             "9de60000000049454e44ae426082")},
        {carol + "/AppData/Roaming/vlc/art/artistalbum/ef56/cover.JPG", QByteArray::fromHex("ffd8ffe0")},
        {carol + "/AppData/Roaming/vlc/art/artistalbum/gh78/cover.jpeg", QByteArray::fromHex("ffd8ffe0")},
        {dave + k_recent + "faef7def55a1d4b.automaticDestinations-ms",
         compound_file_writer::jump_list({link_to("C:\\Users\\dave\\Videos\\holiday.mp4", 8),
                                          link_to("C:\\Users\\dave\\Videos\\gone.avi", 9)},
                                         opened(1, {2, 1}))},
        // Older versions of the player, on Windows 11 and with a damaged DestList.
        {dave + k_recent + "4acae695c73a28c7.automaticDestinations-ms",
         compound_file_writer::jump_list({shell_link_writer::build(untracked)}, opened(6, {1}, "laptop-dave"))},
        {dave + k_recent + "e6ee34ac9913c0a9.automaticDestinations-ms",
         compound_file_writer::jump_list({link_to("C:\\Users\\dave\\Videos\\gone.avi", 11)},
                                         opened(3, {1}).chopped(10))},
        // An old version's list: one plain path, no positions.
        {dave + "/AppData/Roaming/vlc/vlc-qt-interface.ini",
         interface_settings({"C:\\Users\\dave\\Videos\\holiday.mp4"}, {}, {})},
        // Jump-list names are matched exactly: this one is another program's.
        {dave + k_recent + "9FDA41B86DDCF1DB.automaticDestinations-ms",
         compound_file_writer::jump_list({link_to("C:\\Users\\dave\\Videos\\holiday.mp4", 10)})},
        {dave + "/Videos/holiday.mp4", QByteArray(3000, 'h')},
        {dave + "/AppData/Roaming/vlc/vlcrc", "[podcast]\npodcast-urls=http://c.example/x"},
        // The guest account is one like any other.
        {"Users/Guest/AppData/Roaming/vlc/vlcrc", "[podcast]\npodcast-urls=http://guest.example/feed\n"},
    };
    return tree_writer::write_entries(root, files, error) && write_party(root + "/" + carol + "/Music/party.xspf")
           && write_desktop_media_database(root + "/" + carol + "/AppData/Roaming/vlc/ml/ml.db", "file:///C:/Users/carol/",
                                           error);
}
