// The Windows sample: two users (and a guest) whose jump lists, playlists,
// cover-art cache and preference files exercise every Windows table,
// including the cases an examiner meets in practice (links to other drives
// and shares, a link that climbs out of the volume, playlists the player did
// not write itself).

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
    const QList<tree_writer::entry> files = {
        {carol + k_recent + "9fda41b86ddcf1db.automaticDestinations-ms", compound_file_writer::jump_list(carol_links)},
        {carol + "/Music/song one.mp3", QByteArray(4096, 'a')},
        {carol + "/Music/café.mp3", QByteArray(2048, 'c')},
        {carol + "/Music/caf%C3%A9 bar.mp3", QByteArray(100, 'e')},
        {carol + "/My Music/a.mp3", QByteArray(512, 'm')},
        {carol + "/Videos/clip.mkv", QByteArray(8192, 'v')},
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
                                          link_to("C:\\Users\\dave\\Videos\\gone.avi", 9)})},
        // Jump-list names are matched exactly: this one is another program's.
        {dave + k_recent + "9FDA41B86DDCF1DB.automaticDestinations-ms",
         compound_file_writer::jump_list({link_to("C:\\Users\\dave\\Videos\\holiday.mp4", 10)})},
        {dave + "/Videos/holiday.mp4", QByteArray(3000, 'h')},
        {dave + "/AppData/Roaming/vlc/vlcrc", "[podcast]\npodcast-urls=http://c.example/x"},
        // The guest account is one like any other.
        {"Users/Guest/AppData/Roaming/vlc/vlcrc", "[podcast]\npodcast-urls=http://guest.example/feed\n"},
    };
    return tree_writer::write_entries(root, files, error) && write_party(root + "/" + carol + "/Music/party.xspf");
}
