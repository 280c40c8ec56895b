// The Windows sample: two users whose jump lists, playlists, cover-art cache
// and preference files exercise every Windows table, including the cases an
// examiner meets in practice (links to other drives and shares, a link that
// climbs out of the volume, playlists the player did not write itself).

#include "compound_file_writer.h"
#include "sample_trees.h"
#include "shell_link_writer.h"
#include "tree_writer.h"

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

const char* const k_xspf =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<playlist xmlns=\"http://xspf.org/ns/0/\" xmlns:vlc=\"http://www.videolan.org/vlc/playlist/ns/0/\" "
    "version=\"1\">\n"
    "\t<title>Playlist</title>\n"
    "\t<trackList>\n"
    "\t\t<track>\n"
    "\t\t\t<location>file:///C:/Users/carol/My%20Music/a.mp3</location>\n"
    "\t\t\t<duration>215999</duration>\n"
    "\t\t\t<extension application=\"http://www.videolan.org/vlc/playlist/0\">\n"
    "\t\t\t\t<vlc:id>0</vlc:id>\n"
    "\t\t\t</extension>\n"
    "\t\t</track>\n"
    "\t\t<track>\n"
    "\t\t\t<location>file:///C:/Users/carol/Music/caf%C3%A9%20bar.mp3</location>\n"
    "\t\t\t<duration>60000</duration>\n"
    "\t\t\t<extension application=\"http://www.videolan.org/vlc/playlist/0\">\n"
    "\t\t\t\t<vlc:id>1</vlc:id>\n"
    "\t\t\t</extension>\n"
    "\t\t</track>\n"
    "\t\t<track>\n"
    "\t\t\t<location>file:///C:/Users/carol/Music/no-id.mp3</location>\n"
    "\t\t\t<duration>1000</duration>\n"
    "\t\t</track>\n"
    "\t\t<track>\n"
    "\t\t\t<location>file:///C:/Users/carol/Music/last.mp3</location>\n"
    "\t\t\t<extension application=\"http://www.videolan.org/vlc/playlist/0\">\n"
    "\t\t\t\t<vlc:id>3</vlc:id>\n"
    "\t\t\t</extension>\n"
    "\t\t</track>\n"
    "\t</trackList>\n"
    "</playlist>\n";

bool write_carol(const QString& root, QString* error)
{
    const QString home = "Users/carol";
    const QList<QByteArray> links = {
        link_to("C:\\Users\\carol\\Music\\song one.mp3", 1),
        link_to("D:\\Movies\\film.mkv", 2),
        network_link(),
        link_to("C:\\Users\\carol\\Music\\mix.m3u", 3),
        link_to("C:\\Users\\carol\\Music\\unix.m3u", 4),
        link_to("C:\\Users\\carol\\Music\\road.m3u8", 5),
        link_to("C:\\Users\\carol\\Music\\party.xspf", 6),
        link_to("C:\\..\\..\\..\\outside.mp3", 7),
    };
    const QString mix = "#EXTM3U\r\n#EXTINF:215,Artist - Song One\r\nC:\\Users\\carol\\Music\\song one.mp3\r\n"
                        "#EXTINF:3725,Long, Title\r\nC:\\Users\\carol\\Videos\\clip.mkv\r\n";
    const QString unix_lines = "#EXTM3U\n#EXTINF:10,Ten\nC:\\Users\\carol\\Music\\song one.mp3\n";
    const QString road = QString::fromUtf8("#EXTM3U\r\n#EXTINF:59,Café\r\nC:\\Users\\carol\\Music\\café.mp3\r\n"
                                           "#EXTINF:1,climbs out\r\nC:\\..\\..\\..\\etc\\passwd\r\n");
    const QString vlcrc = "# Configuration file\n\n[podcast] # Podcasts\n\n# Podcast URLs list (string)\n"
                          "#podcast-urls=\n\npodcast-urls=http://a.example/feed.xml|http://b.example/rss\n\n[core]\n";
    const struct
    {
        QString path;
        QByteArray data;
    } files[] = {
        {home + k_recent + "9fda41b86ddcf1db.automaticDestinations-ms", compound_file_writer::jump_list(links)},
        {home + "/Music/song one.mp3", QByteArray(4096, 'a')},
        {home + "/Music/café.mp3", QByteArray(2048, 'c')},
        {home + "/Music/caf%C3%A9 bar.mp3", QByteArray(100, 'e')},
        {home + "/My Music/a.mp3", QByteArray(512, 'm')},
        {home + "/Videos/clip.mkv", QByteArray(8192, 'v')},
        {home + "/Music/mix.m3u", mix.toUtf8()},
        {home + "/Music/unix.m3u", unix_lines.toUtf8()},
        {home + "/Music/road.m3u8", road.toUtf8()},
        {home + "/Music/party.xspf", QByteArray(k_xspf)},
        {home + "/AppData/Roaming/vlc/vlcrc", vlcrc.toUtf8()},
        {home + "/AppData/Roaming/vlc/art/artistalbum/ab12/art.jpg", QByteArray::fromHex("ffd8ffe000104a464946")},
        // A whole picture (a disc, 16 by 16), which the report shows.
        {home + "/AppData/Roaming/vlc/art/artistalbum/cd34/cover.png",
         QByteArray::fromHex("89504e470d0a1a0a0000000d4948445200000010000000100103000000253d6d2200000006504c5445f0a030"
                             "8030c095ee28220000001a4944415478da63608001f6070cfc1f18e47fa023a020500a0600f3fb0a57c18e"
                             "9de60000000049454e44ae426082")},
        {home + "/AppData/Roaming/vlc/art/artistalbum/ef56/cover.JPG", QByteArray::fromHex("ffd8ffe0")},
        {home + "/AppData/Roaming/vlc/art/artistalbum/gh78/cover.jpeg", QByteArray::fromHex("ffd8ffe0")},
    };
    for (const auto& file : files) {
        if (!tree_writer::write_file(root, file.path, file.data, error))
            return false;
    }
    return true;
}

bool write_dave(const QString& root, QString* error)
{
    const QString home = "Users/dave";
    const QList<QByteArray> links = {link_to("C:\\Users\\dave\\Videos\\holiday.mp4", 8),
                                     link_to("C:\\Users\\dave\\Videos\\gone.avi", 9)};
    const struct
    {
        QString path;
        QByteArray data;
    } files[] = {
        {home + k_recent + "faef7def55a1d4b.automaticDestinations-ms", compound_file_writer::jump_list(links)},
        // Jump-list names are matched exactly: this one is another program's.
        {home + k_recent + "9FDA41B86DDCF1DB.automaticDestinations-ms",
         compound_file_writer::jump_list({link_to("C:\\Users\\dave\\Videos\\holiday.mp4", 10)})},
        {home + "/Videos/holiday.mp4", QByteArray(3000, 'h')},
        {home + "/AppData/Roaming/vlc/vlcrc", QByteArray("[podcast]\npodcast-urls=http://c.example/x")},
    };
    for (const auto& file : files) {
        if (!tree_writer::write_file(root, file.path, file.data, error))
            return false;
    }
    return true;
}

}  // namespace

bool write_windows_sample_tree(const QString& root, QString* error)
{
    return write_carol(root, error) && write_dave(root, error);
}
