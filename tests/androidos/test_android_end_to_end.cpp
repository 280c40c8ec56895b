// The Android extractor end to end: the host program loads the real plug-in
// and runs it on the generated Android sample tree (a model-15 media database
// whose last rows live only in its -wal file).

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include "sample_trees.h"
#include "test_support.h"
#include "tree_writer.h"

namespace {

const QString k_database = "apps/org.videolan.vlc/r/app_db/vlc_media.db";

}  // namespace

class test_android_end_to_end : public QObject
{
    Q_OBJECT

    QTemporaryDir scratch;
    QString root;
    QString result_db;
    QMap<QString, QByteArray> before;
    test_support::process_result run;

    QVariantList row(const QString& statement) { return test_support::query_rows(result_db, statement).value(0); }

private slots:
    void initTestCase()
    {
        root = scratch.filePath("evidence");
        QString error;
        QVERIFY2(write_android_sample_tree(root, &error), qPrintable(error));
        // Where an mrl that climbs out of the image would land: it must never count as present.
        QVERIFY(tree_writer::write_file(scratch.filePath("outside.mp4"), "not evidence"));
        before = test_support::snapshot_tree(root);
        run = test_support::run_host({"--source", root, "--out", scratch.filePath("out")});
        result_db = scratch.filePath("out/Artifacts_Result/VLC/VLC.sqlite");
    }

    void the_run_reports_the_four_tables()
    {
        QCOMPARE(run.exit_code, 0);
        QVERIFY2(run.err.isEmpty(), qPrintable(run.err));
        QVERIFY(run.out.contains("(androidOS)"));
        QVERIFY2(run.out.contains("tables done: 4"), qPrintable(run.out));
    }

    void every_table_matches_its_golden_dump_data()
    {
        QTest::addColumn<QString>("table");
        for (const char* table : {"media_library", "album_art", "album", "playlists"})
            QTest::newRow(table) << QString(table);
    }

    void every_table_matches_its_golden_dump()
    {
        QFETCH(QString, table);
        const QString difference =
            test_support::compare_with_golden("android_" + table + ".txt", test_support::dump_table(result_db, table));
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

    void media_rows_carry_converted_and_raw_values()
    {
        QCOMPARE(row("select duration,playlist_name,favorite,present,removable,external,album,artist,codec,"
                     "last_played_date,export_file_paths from media_library where title='Intro'"),
                 (QVariantList{"59:59 Min", "Road Trip;++::++;Favourites", "YES", "YES", "NO", "NO", "Night Drive",
                               "Nina Sol", "mp3", 1700000100,
                               "/shared/0/Music/Night Drive/01 Intro.mp3;++::++;/apps/org.videolan.vlc/ef/thumbs/"
                               "Night Drive.jpg"}));
        // A playlist id without a Playlist row adds nothing, not an empty entry.
        QCOMPARE(row("select duration,playlist_name,favorite,present,removable,external from media_library "
                     "where title='Outro'"),
                 (QVariantList{"01:00:00 Hrs", "Road Trip", "NO", "NO", "YES", "YES"}));
        // A video: codec and language from its video track, no description.
        QCOMPARE(row("select file_type,codec,bitrate,samplerate,language,description,width,fps_num,image from "
                     "media_library where title='Clip'"),
                 (QVariantList{"Video", "h264", 8000000, 48000, "und", "", 1920, 30000,
                               "/apps/org.videolan.vlc/r/app_vlc/thumbs/clip, take (1).jpg"}));
        // No File row: empty file columns; the thumbnail found in both places comes from ef/.
        QCOMPARE(row("select file_type,location,file_exist,album,export_file_paths from media_library "
                     "where file_name='unknown.bin'"),
                 (QVariantList{"Audio", "", "", "Unknown Album", ";++::++;/apps/org.videolan.vlc/ef/thumbs/both.jpg"}));
        QCOMPARE(row("select duration,favorite from media_library where file_name='voice.amr'"),
                 (QVariantList{"00:00 Min", "YES"}));
    }

    void rows_only_in_the_write_ahead_log_are_read()
    {
        QCOMPARE(row("select location,file_exist from media_library where file_name='late.ogg'"),
                 (QVariantList{"/shared/0/Download/late.ogg", "YES"}));
        QCOMPARE(row("select count(*) from playlists where playlist_name='Late List'"), (QVariantList{1}));
        // The fixture really keeps them in the log only: the main file alone lacks them.
        QTemporaryDir alone;
        QVERIFY(QFile::copy(QDir(root).filePath(k_database), alone.filePath("main_only.db")));
        QCOMPARE(test_support::query_rows(alone.filePath("main_only.db"),
                                          "select count(*) from Media where filename='late.ogg'")
                     .value(0),
                 (QVariantList{0}));
    }

    void paths_that_climb_out_of_the_image_count_as_absent()
    {
        QCOMPARE(row("select location,file_exist,image from media_library where title='Escape'"),
                 (QVariantList{"/shared/0/../../../outside.mp4", "NO", ""}));
    }

    void albums_and_playlists_hold_their_tracks()
    {
        QCOMPARE(row("select art_file_name,file_name,no_of_tracks,artist from album_art where art_file_name="
                     "'Unknown Album'"),
                 (QVariantList{"Unknown Album", "", 1, "Kid Ascii"}));
        QCOMPARE(row("select album_item_count,preview_file_path,export_file_paths from album where album_name="
                     "'Night Drive'"),
                 (QVariantList{2, "/shared/0/Music/Night Drive/01 Intro.mp3",
                               "/shared/0/Music/Night Drive/01 Intro.mp3;++::++;/shared/0/Music/Night Drive/"
                               "02 Outro.flac"}));
        QCOMPARE(row("select album_item_info,export_file_paths from album where album_name='Empty Album'"),
                 (QVariantList{"", ""}));
        QCOMPARE(row("select group_concat(playlist_name) from playlists where file_name='01 Intro.mp3'"),
                 (QVariantList{"Road Trip,Favourites"}));
        QCOMPARE(row("select count(*) from playlists where playlist_name='Empty'"), (QVariantList{0}));
    }

    void the_evidence_is_unchanged_and_no_working_copy_remains()
    {
        QCOMPARE(test_support::snapshot_tree(root), before);
        QVERIFY(!QFileInfo::exists(scratch.filePath("out/Artifacts_Result/VLC/tmp")));
    }
};

QTEST_MAIN(test_android_end_to_end)
#include "test_android_end_to_end.moc"
