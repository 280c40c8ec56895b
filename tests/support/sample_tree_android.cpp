// The Android samples: one small library (media, albums, playlists,
// thumbnails, playback positions) written into the media database of any
// model the shared samples have a schema for, in either image layout, so that
// the tables read from every model can be compared. The demo's first sample
// (model 15, an unpacked backup) adds damaged and hostile rows and keeps its
// last rows only in the -wal file, as on a phone imaged while the app was
// running; its second is the current model in a full file-system extraction.

#include <QTemporaryDir>

#include "android_media_db_writer.h"
#include "sample_trees.h"
#include "tree_writer.h"

namespace {

const QString k_storage = "file:///storage/emulated/0/";
const QString k_external = k_storage + "Android/data/org.videolan.vlc/files/";
const QString k_private = "file:///data/user/0/org.videolan.vlc/app_vlc/thumbs/";

struct android_places
{
    QString database, storage, private_thumbs, external_files;  // storage holds "0/"
};

android_places places_of(android_layout layout)
{
    if (layout == android_layout::backup)
        return {"apps/org.videolan.vlc/r/app_db/vlc_media.db", "shared/", "apps/org.videolan.vlc/r/app_vlc/thumbs/",
                "apps/org.videolan.vlc/ef/"};
    const QString storage = layout == android_layout::file_system_data_media ? "data/media/" : "media/";
    return {"data/data/org.videolan.vlc/app_db/vlc_media.db", storage, "data/data/org.videolan.vlc/app_vlc/thumbs/",
            storage + "0/Android/data/org.videolan.vlc/files/"};
}

QVariantMap media(int type, const QVariant& name, const QVariant& title, qint64 duration, const QVariantMap& changes = {})
{
    QVariantMap columns = {{"type", type}, {"subtype", 0}, {"filename", name}, {"title", title},
                           {"duration", duration}, {"play_count", 3}, {"last_played_date", 1700000100},
                           {"real_last_played_date", 1700000200}, {"insertion_date", 1690000000},
                           {"release_date", 1546300800}, {"is_favorite", 1}, {"is_present", 1}, {"device_id", 1},
                           {"import_type", 0}};
    for (auto it = changes.begin(); it != changes.end(); ++it)
        columns.insert(it.key(), it.value());
    return columns;
}

// The library every model holds; the ids of its songs and its first playlist.
struct library_ids
{
    qint64 intro, outro, clip, road;
};

library_ids write_library(android_media_db_writer& db, bool sdcard_names)
{
    const qint64 cover = db.add_thumbnail(k_external + "thumbs/Night%20Drive.jpg");
    const qint64 frame = db.add_thumbnail(k_private + "clip%2C%20take%20%281%29.jpg");
    const qint64 both = db.add_thumbnail(k_private + "both.jpg");  // in ef/ and app_vlc/: ef/ wins
    const qint64 missing = db.add_thumbnail(k_external + "thumbs/gone.jpg");
    const qint64 medialib = db.add_thumbnail(k_external + "medialib/voice.jpg");  // found from model 17 on

    const qint64 nina = db.add_artist("Nina Sol");
    const qint64 kid = db.add_artist("Kid Ascii");
    const qint64 night = db.add_album("Night Drive", nina, cover, 2, 5025000);
    const qint64 untitled = db.add_album(QVariant(), kid, missing, 1, 83000);
    db.add_album("Empty Album", QVariant(), QVariant(), 0, 0);

    library_ids ids;
    ids.intro = db.add_media(media(2, "01 Intro.mp3", "Intro", 3599999), cover);
    db.add_file(ids.intro, k_storage + "Music/Night%20Drive/01%20Intro.mp3", 4000000, 1690000500, false, false);
    db.add_audio_track(ids.intro, "mp3", 320000, 44100, 2, "eng", "Main");
    db.add_audio_track(ids.intro, "aac", 128000, 48000, 6, "fra", "Commentary");
    db.add_album_track(ids.intro, night, 1, 3599999);
    db.set_position(ids.intro, 0.5, 1799999);
    ids.outro = db.add_media(media(2, "02 Outro.flac", "Outro", 3600000, {{"is_favorite", 0}, {"is_present", 0}}),
                             QVariant());
    db.add_file(ids.outro, k_storage + "Music/Night%20Drive/02%20Outro.flac", 30000000, 1690000600, true, true);
    db.add_audio_track(ids.outro, "flac", 900000, 96000, 2, QVariant(), QVariant());
    db.add_album_track(ids.outro, night, 2, 3600000);
    ids.clip = db.add_media(media(1, "clip.mp4", "Clip", 5025000), frame);
    db.add_file(ids.clip, k_storage + "Movies/clip.mp4", 52000000, 1690000700, false, false);
    db.add_audio_track(ids.clip, "aac", 192000, 48000, 2, "eng", "Stereo");
    db.add_video_track(ids.clip, "h264", 1920, 1080, 8000000, "und", "Main video");
    db.set_position(ids.clip, 0.25, 1256250);
    const qint64 unknown = db.add_media(media(0, "unknown.bin", "Unknown type", 1000), both);  // no file
    db.add_album_track(unknown, untitled, 1, 1000);
    const qint64 voice = db.add_media(media(4, "voice.amr", "Voice", 12000), medialib);
    db.add_file(voice, sdcard_names ? "/sdcard/Recordings/voice.amr" : k_storage + "Recordings/voice.amr", 12000,
                1690000800, false, false);

    ids.road = db.add_playlist("Road Trip", 1695000000);
    db.add_playlist_item(ids.road, ids.intro, 0);
    db.add_playlist_item(ids.road, ids.outro, 1);
    const qint64 favourites = db.add_playlist("Favourites", 1696000000);
    db.add_playlist_item(favourites, ids.intro, 0);
    db.add_playlist_item(favourites, ids.clip, 1);
    db.add_playlist("Empty", 1697000000);
    return ids;
}

// The files the library names, in the layout's places.
bool write_library_files(const QString& root, const android_places& p, QString* error)
{
    const QString music = p.storage + "0/Music/Night Drive/";
    for (const QString& file : {music + "01 Intro.mp3", music + "02 Outro.flac", p.storage + "0/Movies/clip.mp4",
                                p.storage + "0/Recordings/voice.amr", p.external_files + "thumbs/Night Drive.jpg",
                                p.external_files + "thumbs/both.jpg", p.external_files + "medialib/voice.jpg",
                                p.private_thumbs + "clip, take (1).jpg", p.private_thumbs + "both.jpg"}) {
        if (!tree_writer::write_file(root, file, "sample " + file.toUtf8(), error))
            return false;
    }
    return true;
}

bool failed(const android_media_db_writer& db, QString* error)
{
    if (db.last_error().isEmpty())
        return false;
    if (error)
        *error = "cannot fill the media database: " + db.last_error();
    return true;
}

}  // namespace

bool write_android_sample_tree(const QString& root, QString* error)
{
    const android_places places = places_of(android_layout::backup);
    QTemporaryDir scratch;
    android_media_db_writer db("write_android_sample_tree");
    if (!write_library_files(root, places, error) || !db.create(scratch.filePath("vlc_media.db"), 15, error))
        return false;
    QFile::remove(root + "/shared/0/Music/Night Drive/02 Outro.flac");  // a song whose file is gone
    if (!db.use_wal()) {
        if (error)
            *error = "cannot switch the sample media database to WAL";
        return false;
    }
    const library_ids ids = write_library(db, false);
    // A media with every nullable column NULL; an mrl and a thumbnail that
    // climb out of the image; a playlist member of a playlist that is gone.
    db.add_media(media(0, QVariant(), QVariant(), 0,
                       {{"type", QVariant()}, {"duration", QVariant()}, {"play_count", QVariant()},
                        {"last_played_date", QVariant()}, {"real_last_played_date", QVariant()},
                        {"insertion_date", QVariant()}, {"release_date", QVariant()}, {"device_id", QVariant()}}),
                 QVariant());
    const qint64 climbing = db.add_thumbnail("file:///x/app_vlc/../../../../../../../../etc/hostname");
    const qint64 escape = db.add_media(media(1, "outside.mp4", "Escape", 0), climbing);
    db.add_file(escape, k_storage + "../../../outside.mp4", 1, 1690000900, false, false);
    db.add_playlist_item(99, ids.outro, 0);
    db.checkpoint();
    // Written after the checkpoint: only the -wal file holds these.
    const qint64 late = db.add_media(media(2, "late.ogg", "Late", 61000), QVariant());
    db.add_file(late, k_storage + "Download/late.ogg", 800000, 1700000000, false, false);
    db.add_audio_track(late, "vorbis", 160000, 44100, 2, "eng", QVariant());
    db.add_playlist_item(db.add_playlist("Late List", 1700000300), late, 0);
    // Copied while the connection is open: closing would fold the log into the file.
    return !failed(db, error) && tree_writer::write_file(root, "shared/0/Download/late.ogg", "late", error)
           && db.snapshot_to(root + "/" + places.database, error);
}

bool write_android_model_tree(const QString& root, int model, android_layout layout, QString* error)
{
    const android_places places = places_of(layout);
    android_media_db_writer db(QString("write_android_model_tree_%1").arg(model));
    if (!write_library_files(root, places, error) || !db.create(root + "/" + places.database, model, error))
        return false;
    db.begin();
    // A backup names shared storage as the app does; a full extraction also
    // has an mrl in the short /sdcard form.
    write_library(db, layout != android_layout::backup);
    db.commit();
    return !failed(db, error);
}

bool write_android_current_sample_tree(const QString& root, QString* error)
{
    return write_android_model_tree(root, 38, android_layout::file_system_media, error);
}
