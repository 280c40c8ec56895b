// Every media-database model of the Android app that the shared samples have
// a schema for, in both image layouts, end to end through the host program:
// the same library written into each model must come out as the same rows,
// with the columns that model can give.

#include <QDir>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QtTest>

#include "android_media_db_writer.h"
#include "sample_trees.h"
#include "test_support.h"
#include "tree_writer.h"

namespace {

using rows = QList<QVariantList>;
const QStringList k_tables = {"media_library", "album_art", "album", "playlists"};

QList<int> schema_models()
{
    QList<int> models;
    const QDir schemas(QFileInfo(android_media_db_writer::schema_path(15)).absolutePath());
    for (const QString& name : schemas.entryList({"vlc_media_model*.db"}, QDir::Files))
        models << name.mid(15, name.size() - 18).toInt();
    std::sort(models.begin(), models.end());
    return models;
}

// Where a layout shows the files of the generated library.
struct shown_paths
{
    QString storage, private_thumbs, external_thumbs;
};

shown_paths paths_of(android_layout layout)
{
    if (layout == android_layout::backup)
        return {"/shared/0/", "/apps/org.videolan.vlc/r/app_vlc/thumbs/", "/apps/org.videolan.vlc/ef/thumbs/"};
    const QString storage = layout == android_layout::file_system_data_media ? "/data/media/0/" : "/media/0/";
    return {storage, "/data/data/org.videolan.vlc/app_vlc/thumbs/",
            storage + "Android/data/org.videolan.vlc/files/thumbs/"};
}

// A result's rows with every value as text, NULL as an empty one.
rows text_rows(const QString& database, const QString& statement)
{
    rows found = test_support::query_rows(database, statement);
    for (QVariantList& row : found) {
        for (QVariant& value : row)
            value = value.toString();
    }
    return found;
}

// Runs the host on a tree; the path of its result database.
QString run_host_on(const QString& root, const QString& out)
{
    const auto run = test_support::run_host({"--source", root, "--out", out});
    if (run.exit_code != 0 || !run.out.contains("(androidOS)"))
        qWarning("%s%s", qPrintable(run.out), qPrintable(run.err));
    return out + "/Artifacts_Result/VLC/VLC.sqlite";
}

// Rebuilds a table of the media database with its columns in reverse order
// and one added at the end, as an upgraded install carries other CREATE text.
void rebuild_reversed(const QString& database, const QStringList& tables)
{
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "rebuild_reversed");
        db.setDatabaseName(database);
        QVERIFY(db.open());
        QSqlQuery query(db);
        for (const QString& table : tables) {
            QStringList columns;
            QStringList definitions;
            QVERIFY(query.exec("SELECT name, type FROM pragma_table_info('" + table + "')"));
            while (query.next()) {
                columns.prepend(query.value(0).toString());
                definitions.prepend(query.value(0).toString() + " " + query.value(1).toString());
            }
            // Declared types only: a collation the app registers at run time
            // cannot be declared on this connection.
            const QString list = columns.join(',');
            for (const QString& statement :
                 {"CREATE TABLE rebuilt(" + definitions.join(',') + ")",
                  "INSERT INTO rebuilt(" + list + ") SELECT " + list + " FROM " + table, "DROP TABLE " + table,
                  "ALTER TABLE rebuilt RENAME TO " + table, "ALTER TABLE " + table + " ADD COLUMN added_later TEXT"})
                QVERIFY2(query.exec(statement), qPrintable(statement));
        }
    }
    QSqlDatabase::removeDatabase("rebuild_reversed");
}

}  // namespace

class test_android_models : public QObject
{
    Q_OBJECT

    QTemporaryDir scratch;

private slots:
    void every_model_gives_the_same_library_data()
    {
        QTest::addColumn<int>("model");
        QTest::addColumn<android_layout>("layout");
        const QList<int> models = schema_models();
        QVERIFY2(models.contains(8) && models.contains(38), "the shared schema samples are missing");
        for (int model : models) {
            QTest::addRow("model %d backup", model) << model << android_layout::backup;
            QTest::addRow("model %d data/media", model) << model << android_layout::file_system_data_media;
        }
        QTest::addRow("model 38 media") << 38 << android_layout::file_system_media;
    }

    void every_model_gives_the_same_library()
    {
        QFETCH(int, model);
        QFETCH(android_layout, layout);
        const QString tag = QString(QTest::currentDataTag()).replace(' ', '_').replace('/', '_');
        const QString root = scratch.filePath(tag);
        QString error;
        QVERIFY2(write_android_model_tree(root, model, layout, &error), qPrintable(error));
        const QString result = run_host_on(root, scratch.filePath(tag + "_out"));
        const shown_paths p = paths_of(layout);
        const QString intro = p.storage + "Music/Night Drive/01 Intro.mp3";
        const QString outro = p.storage + "Music/Night Drive/02 Outro.flac";
        const QString clip = p.storage + "Movies/clip.mp4";
        const QString cover = p.external_thumbs + "Night Drive.jpg";

        // What differs by model: the second play date (14 to 32), the
        // playback position (27 on), a frame rate instead of a fraction (up to 13).
        const QVariant real_played = model >= 14 && model <= 32 ? QVariant("1700000200") : QVariant("");
        const bool positions = model >= 27;
        const QString fps = model <= 13 ? "25" : "30000";
        const QString sep = ";++::++;";
        QCOMPARE(text_rows(
                     result, "select title,file_type,location,file_exist,album,artist,playlist_name,image,codec,"
                             "description,fps_num,last_played_date,real_last_played_date from media_library "
                             "order by title"),
                 (rows{{"Clip", "Video", clip, "YES", "", "", "Favourites", p.private_thumbs + "clip.jpg", "h264",
                        positions ? "Position: 25% (00:20:56)" : "", fps, "1700000100", real_played},
                       {"Intro", "Audio", intro, "YES", "Night Drive", "Nina Sol", "Road Trip" + sep + "Favourites",
                        cover, "mp3", positions ? "Main" + sep + "Position: 50% (00:29:59)" : "Main", "",
                        "1700000100", real_played},
                       {"Outro", "Audio", outro, "YES", "Night Drive", "Nina Sol", "Road Trip", "", "flac", "", "",
                        "1700000100", real_played},
                       {"Unknown type", "Audio", "", "", "Unknown Album", "Kid Ascii", "", "", "", "", "",
                        "1700000100", real_played},
                       {"Voice", "Audio", p.storage + "Recordings/voice.amr", "YES", "", "", "", "", "", "", "",
                        "1700000100", real_played}}));
        QCOMPARE(text_rows(result, "select art_file_name,file_name,file_path,artist,no_of_tracks "
                                                  "from album_art order by art_file_name"),
                 (rows{{"Empty Album", "", "", "", "0"},
                       {"Night Drive", "Night Drive.jpg", cover, "Nina Sol", "2"},
                       {"Unknown Album", "", "", "Kid Ascii", "1"}}));
        QCOMPARE(text_rows(
                     result,
                     "select album_name,album_item_count,artist,export_file_paths from album order by album_name"),
                 (rows{{"Empty Album", "0", "", ""},
                       {"Night Drive", "2", "Nina Sol", intro + sep + outro},
                       {"Unknown Album", "1", "Kid Ascii", ""}}));
        QCOMPARE(text_rows(result, "select playlist_name,file_name,file_path,file_exist from playlists "
                                                  "order by playlist_name,file_name"),
                 (rows{{"Favourites", "01 Intro.mp3", intro, "YES"},
                       {"Favourites", "clip.mp4", clip, "YES"},
                       {"Road Trip", "01 Intro.mp3", intro, "YES"},
                       {"Road Trip", "02 Outro.flac", outro, "YES"}}));
    }

    void file_system_paths_stay_inside_the_source()
    {
        const QString root = scratch.filePath("climbing");
        QString error;
        QVERIFY2(write_android_model_tree(root, 38, android_layout::file_system_data_media, &error),
                 qPrintable(error));
        QVERIFY(tree_writer::write_file(scratch.filePath("outside.mp4"), "not evidence"));
        {
            QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "climbing");
            db.setDatabaseName(root + "/data/data/org.videolan.vlc/app_db/vlc_media.db");
            QVERIFY(db.open());
            QSqlQuery query(db);
            for (const QString& statement :
                 {QString("INSERT INTO Media(id_media,type,title,import_type) VALUES(90,1,'Climbing',0),"
                          "(91,4,'Radio',0)"),
                  QString("INSERT INTO File(media_id,mrl,is_removable,is_external,is_network) VALUES"
                          "(90,'file:///storage/emulated/0/../../../../../outside.mp4',0,0,0),"
                          "(91,'http://radio.example/0/live.mp3',0,0,1)")})
                QVERIFY2(query.exec(statement), qPrintable(statement));
        }
        QSqlDatabase::removeDatabase("climbing");
        const QString result = run_host_on(root, scratch.filePath("climbing_out"));
        QCOMPARE(text_rows(result, "select title,file_exist,suffix from media_library where title in "
                                   "('Climbing','Radio') order by title"),
                 (rows{{"Climbing", "NO", "mp4"}, {"Radio", "NO", ""}}));
        QCOMPARE(text_rows(result, "select location from media_library where title='Radio'"), (rows{{""}}));
    }

    void upgraded_create_text_is_read_by_column_name_data()
    {
        QTest::addColumn<int>("model");
        for (int model : {13, 15, 30, 38})
            QTest::addRow("model %d", model) << model;
    }

    void upgraded_create_text_is_read_by_column_name()
    {
        QFETCH(int, model);
        const QString root = scratch.filePath(QString("upgraded_%1").arg(model));
        QString error;
        QVERIFY2(write_android_model_tree(root, model, android_layout::backup, &error), qPrintable(error));
        const QString fresh = run_host_on(root, root + "_fresh");
        rebuild_reversed(root + "/apps/org.videolan.vlc/r/app_db/vlc_media.db",
                         {"Media", "Album", "File", "Playlist", "AudioTrack"});
        const QString upgraded = run_host_on(root, root + "_upgraded");
        QVERIFY(test_support::count_rows(fresh, "media_library") == 5);
        for (const QString& table : k_tables)
            QCOMPARE(test_support::dump_table(upgraded, table), test_support::dump_table(fresh, table));
    }
};

QTEST_GUILESS_MAIN(test_android_models)
#include "test_android_models.moc"
