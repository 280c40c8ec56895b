// The Android sample: an unpacked backup whose media database (model 15)
// fills all four Android tables. The database is in write-ahead-log mode and
// its last rows (one song with its file, one playlist) exist only in the -wal
// file, as on a phone imaged while the app was running.

#include <QTemporaryDir>

#include "android_media_db_writer.h"
#include "sample_trees.h"
#include "tree_writer.h"

namespace {

const QString k_database = "apps/org.videolan.vlc/r/app_db/vlc_media.db";
const QString k_storage = "file:///storage/emulated/0/";
const QString k_external_thumbs = "file:///storage/emulated/0/Android/data/org.videolan.vlc/files/thumbs/";
const QString k_private_thumbs = "file:///data/user/0/org.videolan.vlc/app_vlc/thumbs/";

// Files the rows point at; thumbnails lie in the app's external folder (ef/),
// its private folder (r/app_vlc/) or both.
const char* const k_files[] = {
    "shared/0/Music/Night Drive/01 Intro.mp3",
    "shared/0/Movies/clip.mp4",
    "shared/0/Recordings/voice.amr",
    "shared/0/Download/late.ogg",
    "apps/org.videolan.vlc/ef/thumbs/Night Drive.jpg",
    "apps/org.videolan.vlc/ef/thumbs/both.jpg",
    "apps/org.videolan.vlc/r/app_vlc/thumbs/clip, take (1).jpg",
    "apps/org.videolan.vlc/r/app_vlc/thumbs/both.jpg",
};

QVariantMap media(const QVariant& type, const QVariant& filename, const QVariant& title, const QVariant& duration,
                  const QVariant& thumbnail_id)
{
    return {{"type", type},
            {"subtype", 0},
            {"filename", filename},
            {"title", title},
            {"duration", duration},
            {"play_count", 3},
            {"last_played_date", 1700000100},
            {"real_last_played_date", 1700000200},
            {"insertion_date", 1690000000},
            {"release_date", 1546300800},
            {"thumbnail_id", thumbnail_id},
            {"is_favorite", 1},
            {"is_present", 1},
            {"device_id", 1}};
}

qint64 add_media(android_media_db_writer& db, QVariantMap columns, const QVariantMap& changes = {})
{
    for (auto it = changes.begin(); it != changes.end(); ++it)
        columns.insert(it.key(), it.value());
    return db.insert("Media", columns);
}

// Everything before the checkpoint: it lands in the main database file.
void write_settled_rows(android_media_db_writer& db)
{
    const qint64 night_cover = db.add_thumbnail(k_external_thumbs + "Night%20Drive.jpg");
    const qint64 clip_frame = db.add_thumbnail(k_private_thumbs + "clip%2C%20take%20%281%29.jpg");
    const qint64 both_places = db.add_thumbnail(k_private_thumbs + "both.jpg");
    const qint64 missing = db.add_thumbnail(k_external_thumbs + "gone.jpg");
    const qint64 climbing = db.add_thumbnail("file:///x/app_vlc/../../../../../../../../etc/hostname");

    const qint64 nina = db.add_artist("Nina Sol");
    const qint64 kid = db.add_artist("Kid Ascii");
    const qint64 night = db.add_album("Night Drive", nina, night_cover, 2, 5025000);
    const qint64 untitled = db.add_album(QVariant(), kid, missing, 1, 83000);
    db.add_album("Empty Album", QVariant(), QVariant(), 0, 0);

    // Two songs of one album; the first has two audio tracks.
    const qint64 intro = add_media(db, media(2, "01 Intro.mp3", "Intro", 3599999, night_cover));
    db.add_file(intro, k_storage + "Music/Night%20Drive/01%20Intro.mp3", 4000000, 1690000500, false, false);
    db.add_audio_track(intro, "mp3", 320000, 44100, 2, "eng", "Main");
    db.add_audio_track(intro, "aac", 128000, 48000, 6, "fra", "Commentary");
    db.add_album_track(intro, night, 1, 3599999);
    const qint64 outro = add_media(db, media(2, "02 Outro.flac", "Outro", 3600000, QVariant()),
                                   {{"is_favorite", 0}, {"is_present", 0}});
    db.add_file(outro, k_storage + "Music/Night%20Drive/02%20Outro.flac", 30000000, 1690000600, true, true);
    db.add_audio_track(outro, "flac", 900000, 96000, 2, QVariant(), QVariant());
    db.add_album_track(outro, night, 2, 3600000);

    // A video with both kinds of track; a media of unknown type without a file.
    const qint64 clip = add_media(db, media(1, "clip.mp4", "Clip", 5025000, clip_frame));
    db.add_file(clip, k_storage + "Movies/clip.mp4", 52000000, 1690000700, false, false);
    db.add_audio_track(clip, "aac", 192000, 48000, 2, "eng", "Stereo");
    db.add_video_track(clip, "h264", 1920, 1080, 8000000, "und", "Main video");
    const qint64 unknown = add_media(db, media(0, "unknown.bin", "Unknown type", 1000, both_places));
    db.add_album_track(unknown, untitled, 1, 1000);

    // Type 4, text where numbers belong; then a media with every nullable column NULL.
    const qint64 voice = add_media(db, media(4, "voice.amr", QVariant(), "12x", QVariant()), {{"is_favorite", ""}});
    db.add_file(voice, k_storage + "Recordings/voice.amr", 12000, 1690000800, false, false);
    add_media(db, media(QVariant(), QVariant(), QVariant(), QVariant(), QVariant()),
              {{"play_count", QVariant()},
               {"last_played_date", QVariant()},
               {"real_last_played_date", QVariant()},
               {"insertion_date", QVariant()},
               {"release_date", QVariant()},
               {"device_id", QVariant()}});

    // An mrl and a thumbnail that climb out of the image.
    const qint64 escape = add_media(db, media(1, "outside.mp4", "Escape", 0, climbing));
    db.add_file(escape, k_storage + "../../../outside.mp4", 1, 1690000900, false, false);

    const qint64 road = db.add_playlist("Road Trip", 1695000000);
    db.add_playlist_item(road, intro, 0);
    db.add_playlist_item(road, outro, 1);
    db.add_playlist_item(99, outro, 0);  // a playlist that no longer exists
    const qint64 favourites = db.add_playlist("Favourites", 1696000000);
    db.add_playlist_item(favourites, intro, 0);
    db.add_playlist_item(favourites, clip, 1);
    db.add_playlist("Empty", 1697000000);
}

// Written after the checkpoint: only the -wal file holds these.
void write_wal_only_rows(android_media_db_writer& db)
{
    const qint64 late = add_media(db, media(2, "late.ogg", "Late", 61000, QVariant()));
    db.add_file(late, k_storage + "Download/late.ogg", 800000, 1700000000, false, false);
    db.add_audio_track(late, "vorbis", 160000, 44100, 2, "eng", QVariant());
    const qint64 late_list = db.add_playlist("Late List", 1700000300);
    db.add_playlist_item(late_list, late, 0);
}

}  // namespace

bool write_android_sample_tree(const QString& root, QString* error)
{
    for (const char* file : k_files) {
        if (!tree_writer::write_file(root, file, QByteArray("sample ") + file, error))
            return false;
    }
    QTemporaryDir scratch;
    android_media_db_writer db("write_android_sample_tree");
    if (!db.create(scratch.filePath("vlc_media.db"), 15, error))
        return false;
    if (!db.use_wal()) {
        if (error)
            *error = "cannot switch the sample media database to WAL: " + db.last_error();
        return false;
    }
    write_settled_rows(db);
    db.checkpoint();
    write_wal_only_rows(db);
    if (!db.last_error().isEmpty()) {
        if (error)
            *error = "cannot fill the sample media database: " + db.last_error();
        return false;
    }
    // Copied while the connection is open: closing would fold the log into the file.
    return db.snapshot_to(root + "/" + k_database, error);
}

// One small library written into any model's schema, in either layout: the
// same media, albums, playlists, thumbnails and playback positions whatever
// the model, so the tables read from every model can be compared.
namespace {

struct android_tree_places
{
    QString database;
    QString storage;        // holds "0/", the primary user's shared storage
    QString private_thumbs;  // the app's private thumbnail folder
    QString external_thumbs;
};

android_tree_places places_of(android_layout layout)
{
    if (layout == android_layout::backup)
        return {k_database, "shared/", "apps/org.videolan.vlc/r/app_vlc/thumbs/", "apps/org.videolan.vlc/ef/thumbs/"};
    const QString storage = layout == android_layout::file_system_data_media ? "data/media/" : "media/";
    return {"data/data/org.videolan.vlc/app_db/vlc_media.db", storage, "data/data/org.videolan.vlc/app_vlc/thumbs/",
            storage + "0/Android/data/org.videolan.vlc/files/thumbs/"};
}

QVariantMap library_media(int type, const QString& filename, const QString& title, qint64 duration)
{
    return {{"type", type},           {"subtype", 0},
            {"filename", filename},   {"title", title},
            {"duration", duration},   {"play_count", 3},
            {"last_played_date", 1700000100}, {"real_last_played_date", 1700000200},
            {"insertion_date", 1690000000},   {"release_date", 1546300800},
            {"is_favorite", 1},       {"is_present", 1},
            {"device_id", 1},         {"import_type", 0}};
}

void write_model_library(android_media_db_writer& db, bool sdcard_names)
{
    const qint64 night_cover = db.add_thumbnail(k_external_thumbs + "Night%20Drive.jpg");
    const qint64 clip_frame = db.add_thumbnail(k_private_thumbs + "clip.jpg");
    const qint64 missing = db.add_thumbnail(k_external_thumbs + "gone.jpg");

    const qint64 nina = db.add_artist("Nina Sol");
    const qint64 kid = db.add_artist("Kid Ascii");
    const qint64 night = db.add_album("Night Drive", nina, night_cover, 2, 5025000);
    const qint64 untitled = db.add_album(QVariant(), kid, missing, 1, 83000);
    db.add_album("Empty Album", QVariant(), QVariant(), 0, 0);

    const qint64 intro = db.add_media(library_media(2, "01 Intro.mp3", "Intro", 3599999), night_cover);
    db.add_file(intro, k_storage + "Music/Night%20Drive/01%20Intro.mp3", 4000000, 1690000500, false, false);
    db.add_audio_track(intro, "mp3", 320000, 44100, 2, "eng", "Main");
    db.add_audio_track(intro, "aac", 128000, 48000, 6, "fra", "Commentary");
    db.add_album_track(intro, night, 1, 3599999);
    db.set_position(intro, 0.5, 1799999);

    QVariantMap outro_columns = library_media(2, "02 Outro.flac", "Outro", 3600000);
    outro_columns.insert("is_favorite", 0);
    const qint64 outro = db.add_media(outro_columns, QVariant());
    db.add_file(outro, k_storage + "Music/Night%20Drive/02%20Outro.flac", 30000000, 1690000600, true, true);
    db.add_audio_track(outro, "flac", 900000, 96000, 2, QVariant(), QVariant());
    db.add_album_track(outro, night, 2, 3600000);

    const qint64 clip = db.add_media(library_media(1, "clip.mp4", "Clip", 5025000), clip_frame);
    db.add_file(clip, k_storage + "Movies/clip.mp4", 52000000, 1690000700, false, false);
    db.add_audio_track(clip, "aac", 192000, 48000, 2, "eng", "Stereo");
    db.add_video_track(clip, "h264", 1920, 1080, 8000000, "und", "Main video");
    db.set_position(clip, 0.25, 1256250);

    const qint64 unknown = db.add_media(library_media(0, "unknown.bin", "Unknown type", 1000), QVariant());
    db.add_album_track(unknown, untitled, 1, 1000);

    const qint64 stream = db.add_media(library_media(4, "voice.amr", "Voice", 12000), QVariant());
    db.add_file(stream, sdcard_names ? "/sdcard/Recordings/voice.amr" : k_storage + "Recordings/voice.amr", 12000,
                1690000800, false, false);

    const qint64 road = db.add_playlist("Road Trip", 1695000000);
    db.add_playlist_item(road, intro, 0);
    db.add_playlist_item(road, outro, 1);
    const qint64 favourites = db.add_playlist("Favourites", 1696000000);
    db.add_playlist_item(favourites, intro, 0);
    db.add_playlist_item(favourites, clip, 1);
    db.add_playlist("Empty", 1697000000);
}

}  // namespace

bool write_android_model_tree(const QString& root, int model, android_layout layout, QString* error)
{
    const android_tree_places places = places_of(layout);
    const QStringList files = {places.storage + "0/Music/Night Drive/01 Intro.mp3",
                               places.storage + "0/Music/Night Drive/02 Outro.flac",
                               places.storage + "0/Movies/clip.mp4", places.storage + "0/Recordings/voice.amr",
                               places.external_thumbs + "Night Drive.jpg", places.private_thumbs + "clip.jpg"};
    for (const QString& file : files) {
        if (!tree_writer::write_file(root, file, "sample " + file.toUtf8(), error))
            return false;
    }
    android_media_db_writer db(QString("write_android_model_tree_%1").arg(model));
    if (!db.create(root + "/" + places.database, model, error))
        return false;
    db.begin();
    // A backup names shared storage as the app does; the full extraction
    // also has an mrl in the short /sdcard form.
    write_model_library(db, layout != android_layout::backup);
    db.commit();
    if (!db.last_error().isEmpty()) {
        if (error)
            *error = QString("cannot fill the model %1 media database: %2").arg(model).arg(db.last_error());
        return false;
    }
    return true;
}

bool write_android_current_sample_tree(const QString& root, QString* error)
{
    return write_android_model_tree(root, 38, android_layout::file_system_media, error);
}
