#include "sample_trees.h"

#include <QDir>
#include <QFileInfo>

#include "android_media_db_writer.h"
#include "tree_writer.h"

QList<sample_tree> sample_trees()
{
    return {
        {"macOS", "macos", {"alice", "bob", "carol", "dave"}, write_macos_sample_tree,
         {"--user", "alice", "--user", "", "--user", "alice", "--user", "bob", "--user", "carol", "--user", "dave",
          "--metadata-keys",
          "kMDItemWhereFroms,com.apple.quarantine,kMDItemFSName"}},
        {"winOS", "windows", {"carol", "dave"}, write_windows_sample_tree},
        {"androidOS", "android", {}, write_android_sample_tree},
        {"androidOS", "android_current", {}, write_android_current_sample_tree},
        {"iOS_UID", "ios", {}, write_ios_sample_tree, {"--user", "x", "--user", "y", "--source-number", "3", "--clear"}},
        {"iOS_UID", "ios_backup", {}, write_ios_backup_sample_tree},
    };
}

bool write_desktop_media_database(const QString& path, const QString& home_mrl, QString* error)
{
    const QString storage = QFileInfo(path).path() + "/mlstorage/thumbnails/";
    android_media_db_writer db("write_desktop_media_database");
    if (!tree_writer::write_file(storage + "1.jpg", "cover") || !db.create(path, 38, error))
        return false;
    db.begin();
    const qint64 album = db.add_album("Desk Album", db.add_artist("Desk Artist"), db.add_thumbnail("1.jpg"), 1, 200000);
    const qint64 song = db.add_media({{"type", 2}, {"filename", "Song.mp3"}, {"title", "Song"}, {"duration", 200000},
                                      {"play_count", 4}, {"is_favorite", 1}, {"is_present", 1}},
                                     QVariant());
    db.add_file(song, home_mrl + "Music/Song.mp3", 5000, 1690000500, false, false);
    db.add_album_track(song, album, 1, 200000);
    const qint64 clip = db.add_media({{"type", 1}, {"filename", "Clip One.mkv"}, {"title", "Clip One"},
                                      {"duration", 90000}, {"is_present", 1}},
                                     QVariant());
    db.add_file(clip, home_mrl + "Videos/Clip%20One.mkv", 9000, 1690000600, false, false);
    db.set_position(clip, 0.5, 45000);
    const qint64 list = db.add_playlist("Desk List", 1696000000);
    db.add_playlist_item(list, song, 0);
    db.add_playlist_item(list, clip, 1);
    db.commit();
    if (!db.last_error().isEmpty() && error)
        *error = "cannot fill the desktop media database: " + db.last_error();
    return db.last_error().isEmpty();
}
