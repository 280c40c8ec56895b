// The iOS samples. A full file-system extraction: the app's data container
// (found by its container metadata beside another app's) holds the media
// library database (model 38) with the files it names, and the preferences;
// the app group holds the Core Data store of an older version. A backup: the
// manifest maps the app's files to stored files; it holds the preferences and
// the Core Data store but, as usual, no media database. Both carry hostile
// entries: paths climbing out, a link out of the source, impossible file ids.

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlQuery>

#include "android_media_db_writer.h"
#include "plist_writer.h"
#include "sample_trees.h"
#include "tree_writer.h"

namespace {

const QString k_containers = "private/var/mobile/Containers/";
const QString k_app = "Data/Application/5C1D7A2E-1F0B-4E8C-9D3A-6B2F8E4A1C70/";
const QString k_group = "Shared/AppGroup/0F6E2B9C-3A1D-4C7E-8B5F-2D9A4E6C1B83/";
// The app names its files in the container it had when it added them.
const QString k_old_app = "file:///private/var/mobile/Containers/Data/Application/AAAAAAAA-0000-0000-0000-0000/";
const QString k_app_domain = "AppDomain-org.videolan.vlc-ios";

bool write_plist(const QString& root, const QString& path, const QVariantMap& values, QString* error)
{
    return tree_writer::write_file(root, path, plist_writer::write(values, plist_writer::format::binary), error);
}

bool write_sqlite(const QString& path, const QStringList& statements, QString* error)
{
    bool ok = true;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "write_ios_sqlite");
        db.setDatabaseName(path);
        ok = db.open();
        QSqlQuery query(db);
        for (const QString& statement : statements) {
            if (ok && !query.exec(statement)) {
                ok = false;
                if (error)
                    *error = "cannot write " + path + ": " + statement;
            }
        }
    }
    QSqlDatabase::removeDatabase("write_ios_sqlite");
    return ok;
}

bool write_preferences(const QString& root, const QString& path, QString* error)
{
    const QVariantList urls = {"https://example.com/live/stream.m3u8", "smb://nas.local/Movies/Holiday%20Film.mkv",
                               "http://radio.example.org/"};
    const QVariantMap titles = {{"0", "Live stream"}, {"1", "Holiday Film"}};
    return write_plist(root, path, {{"recent-urls", urls}, {"recent-url-titles", titles}}, error);
}

// The Core Data store of versions up to 3.1: fractions of positions,
// durations in milliseconds, files named in an older container.
bool write_core_data_store(const QString& path, QString* error)
{
    return QDir().mkpath(QFileInfo(path).path())
           && write_sqlite(path,
                           {"CREATE TABLE ZFILE (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, ZURL VARCHAR, "
                            "ZTITLE VARCHAR, ZTYPE VARCHAR, ZDURATION INTEGER, ZLASTPOSITION FLOAT, ZPLAYCOUNT "
                            "INTEGER, ZUNREAD INTEGER)",
                            "INSERT INTO ZFILE VALUES (1, 5, 1, '" + k_old_app
                                + "Documents/Movie.mp4', 'Old Movie', 'movie', 5025000, 0.5, 2, 0)",
                            "INSERT INTO ZFILE VALUES (2, 5, 1, '" + k_old_app
                                + "Documents/Gone%20Song.mp3', 'Gone Song', 'audio', 61000, 0, 0, 1)"},
                           error);
}

// The same small library as the Android samples, named the iOS way.
bool write_media_database(const QString& root, QString* error)
{
    android_media_db_writer db("write_ios_sample_tree");
    if (!db.create(root + "/" + k_containers + k_app + "Library/MediaLibrary/medialibrary.db", 38, error))
        return false;
    db.begin();
    const qint64 cover = db.add_thumbnail("thumbnails/album.jpg");
    const qint64 frame = db.add_thumbnail(k_old_app + "Library/MediaLibrary/thumbnails/movie.jpg");
    const qint64 artist = db.add_artist("Nina Sol");
    const qint64 album = db.add_album("Night Drive", artist, cover, 1, 3599999);
    const auto media = [&](int type, const QString& name, const QString& mrl, const QVariant& thumbnail) {
        const qint64 id = db.add_media({{"type", type}, {"filename", name}, {"title", name.section('.', 0, 0)},
                                        {"duration", 3599999}, {"play_count", 1}, {"last_played_date", 1700000100},
                                        {"insertion_date", 1690000000}, {"is_favorite", 0}, {"is_present", 1}},
                                       thumbnail);
        db.add_file(id, mrl, 1000, 1690000500, false, false);
        return id;
    };
    const qint64 movie = media(1, "Movie.mp4", k_old_app + "Documents/Movie.mp4", frame);
    db.add_video_track(movie, "h264", 1280, 720, 4000000, "eng", QVariant());
    db.set_position(movie, 0.25, 899999);
    const qint64 song = media(2, "Song.mp3", k_old_app + "Documents/Music/Song.mp3", QVariant());
    db.add_album_track(song, album, 1, 3599999);
    const qint64 stream = media(1, "stream.m3u8", "https://example.com/live/stream.m3u8", QVariant());
    media(1, "escape.mp4", k_old_app + "Documents/escape.mp4", QVariant());
    media(2, "climb.mp3", k_old_app + "Documents/../../../../../../../../../etc/hostname", QVariant());
    const qint64 list = db.add_playlist("Evening", 1695000000);
    db.add_playlist_item(list, song, 0);
    db.add_playlist_item(list, stream, 1);
    db.commit();
    if (db.last_error().isEmpty())
        return true;
    if (error)
        *error = "cannot fill the iOS media database: " + db.last_error();
    return false;
}

}  // namespace

bool write_ios_sample_tree(const QString& root, QString* error)
{
    const QString app = k_containers + k_app;
    const QString group = k_containers + k_group;
    const QString metadata = ".com.apple.mobile_container_manager.metadata.plist";
    const char* const files[] = {"Documents/Movie.mp4", "Documents/Music/Song.mp3",
                                 "Library/MediaLibrary/thumbnails/album.jpg",
                                 "Library/MediaLibrary/thumbnails/movie.jpg"};
    for (const char* file : files) {
        if (!tree_writer::write_file(root, app + file, QByteArray("sample ") + file, error))
            return false;
    }
    // A link out of the source where a media file should be.
    QFile::link("/etc/hostname", root + "/" + app + "Documents/escape.mp4");
    return write_plist(root, app + metadata, {{"MCMMetadataIdentifier", "org.videolan.vlc-ios"}}, error)
           && write_plist(root, k_containers + "Data/Application/OTHER-APP/" + metadata,
                          {{"MCMMetadataIdentifier", "com.example.other"}}, error)
           && write_plist(root, group + metadata, {{"MCMMetadataIdentifier", "group.org.videolan.vlc-ios"}}, error)
           && write_preferences(root, app + "Library/Preferences/org.videolan.vlc-ios.plist", error)
           && write_core_data_store(root + "/" + group + "MediaLibrary.sqlite", error)
           && write_media_database(root, error);
}

bool write_ios_backup_sample_tree(const QString& root, QString* error)
{
    // Stored files lie at <first two characters>/<file id>; the id is the
    // SHA-1 of domain and path.
    QStringList rows;
    const auto store = [&](const QString& domain, const QString& path, const QByteArray& data) {
        const QString id =
            QCryptographicHash::hash((domain + "-" + path).toUtf8(), QCryptographicHash::Sha1).toHex();
        rows << QString("INSERT INTO Files VALUES ('%1', '%2', '%3', 1, NULL)").arg(id, domain, path);
        return tree_writer::write_file(root, id.left(2) + "/" + id, data, error);
    };
    QString preferences = root + "/preferences.plist";
    QString core_data = root + "/store.sqlite";
    if (!write_preferences(root, "preferences.plist", error) || !write_core_data_store(core_data, error))
        return false;
    const bool stored = store(k_app_domain, "Library/Preferences/org.videolan.vlc-ios.plist",
                              tree_writer::read_file(preferences))
                        && store("AppDomainGroup-group.org.videolan.vlc-ios", "MediaLibrary.sqlite",
                                 tree_writer::read_file(core_data))
                        && store(k_app_domain, "Documents/Movie.mp4", "sample movie");
    QFile::remove(preferences);
    QFile::remove(core_data);
    // Rows whose file id would lead out of the backup or names nothing.
    rows << "INSERT INTO Files VALUES ('../../../../etc/hostname', '" + k_app_domain
                + "', 'Documents/Gone Song.mp3', 1, NULL)"
         << "INSERT INTO Files VALUES ('zz" + QString(38, 'z') + "', '" + k_app_domain + "', 'Documents/x', 1, NULL)";
    return stored
           && write_plist(root, "Manifest.plist", {{"IsEncrypted", false}, {"Version", "10.0"}}, error)
           && write_sqlite(root + "/Manifest.db",
                           QStringList{"CREATE TABLE Files (fileID TEXT PRIMARY KEY, domain TEXT, relativePath TEXT, "
                                       "flags INTEGER, file BLOB)",
                                       "CREATE TABLE Properties (key TEXT PRIMARY KEY, value BLOB)"}
                               + rows,
                           error);
}
