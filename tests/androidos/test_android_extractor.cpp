// The Android extractor inside the real controller: the order of its tables
// and signals, its working copies, cancellation, and damaged or hostile
// media databases.

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

#include "controller_setup.h"
#include "debug_log_capture.h"
#include "sample_trees.h"
#include "sparse_file_copy.h"
#include "test_support.h"
#include "tree_writer.h"
#include "vlc.h"
#include "vlc_androidos.h"

namespace {

const QString k_database = "apps/org.videolan.vlc/r/app_db/vlc_media.db";
const QStringList k_tables = {"media_library", "album_art", "album", "playlists"};

// A controller run on an Android tree, the way a host drives it, stopped
// before the temporary folder is removed.
struct android_run
{
    QTemporaryDir out;
    debug_log_capture log;
    vlc controller;
    QSignalSpy tabs{&controller, &vlc::signal_tab_processed_of_plugin_overall};

    void prepare(const QString& root, const QList<QString>& tables = k_tables)
    {
        controller_setup setup;
        setup.source.source_path_1 = root + "/";
        setup.source.os_scheme_display = "Android";
        setup.source.os_scheme_internal = "androidOS";
        setup.general = log.general();
        setup.tables = tables;
        setup.result_dir = out.path();
        prepare_controller(controller, setup);
    }
    void extract()
    {
        controller.pub_find_source_file();
        controller.pub_extract_artifacts();
    }
    void run_on(const QString& root, const QList<QString>& tables)
    {
        prepare(root, tables);
        extract();
    }
    QString result_db() const { return out.filePath("Artifacts_Result/VLC/VLC.sqlite"); }
    QList<QVariantList> select(const QString& statement) const
    {
        return test_support::query_rows(result_db(), statement);
    }
    QString tmp_dir() const { return out.filePath("Artifacts_Result/VLC/tmp"); }
    qint64 rows(const QString& table) const { return test_support::count_rows(result_db(), table); }
    QList<int> tab_values() const
    {
        QList<int> values;
        for (const auto& call : tabs)
            values << call.first().toInt();
        return values;
    }
};

// Runs statements on a tree's media database (outside any run).
void alter_database(const QString& root, const QStringList& statements)
{
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "alter_database");
        db.setDatabaseName(QDir(root).filePath(k_database));
        QVERIFY(db.open());
        QSqlQuery query(db);
        for (const QString& statement : statements)
            QVERIFY2(query.exec(statement), qPrintable(statement));
    }
    QSqlDatabase::removeDatabase("alter_database");
}

// Puts a view in place of a table whose `column` fails to read (an integer
// overflow) for the second playlist ("Favourites"); `key` is kept as it is.
void fail_reads_for_second_playlist(const QString& root, const QString& table, const QString& key,
                                    const QString& column)
{
    alter_database(root, {QString("ALTER TABLE %1 RENAME TO original_%1").arg(table),
                          QString("CREATE VIEW %1 AS SELECT CASE WHEN %2 = 2 THEN abs(-9223372036854775808) ELSE %3 "
                                  "END AS %3, %2 FROM original_%1")
                              .arg(table, key, column)});
}

int root_page(const QString& root, const QString& table)
{
    const QList<QVariantList> rows = test_support::query_rows(
        QDir(root).filePath(k_database), "select rootpage from sqlite_master where name='" + table + "'");
    return rows.isEmpty() ? 0 : rows.first().first().toInt();
}

// A damaged file whose scan of Album goes round in circles unless the reader
// stops it: the last album's row number becomes 0, out of order, and
// AlbumTrack's page is no b-tree page any more, so each album's track lookup
// fails, after which SQLite seeks the scan back to row number 0 and finds the
// albums again from the start (as one long fuzzing run found).
void put_albums_out_of_order(const QString& root)
{
    alter_database(root, {"PRAGMA journal_mode=DELETE"});
    const QString path = QDir(root).filePath(k_database);
    constexpr int k_page = 4096;  // the generator's page size
    const int album = root_page(root, "Album");
    const int tracks = root_page(root, "AlbumTrack");
    QByteArray file = tree_writer::read_file(path);
    QVERIFY(album > 1 && tracks > 1 && file.size() >= qMax(album, tracks) * k_page);
    const qsizetype page = qsizetype(album - 1) * k_page;
    QCOMPARE(int(file[page]), 0x0D);  // a leaf holding all three albums
    const int cells = qFromBigEndian<quint16>(file.constData() + page + 3);
    const int last_cell = qFromBigEndian<quint16>(file.constData() + page + 8 + 2 * (cells - 1));
    // One byte of payload size, then the row number, also one byte.
    QVERIFY(quint8(file[page + last_cell]) < 0x80 && quint8(file[page + last_cell + 1]) < 0x80);
    file[page + last_cell + 1] = 0;
    file[qsizetype(tracks - 1) * k_page] = 0;
    QVERIFY(tree_writer::write_file(path, file));
}

void replace_database(const QString& root, const QByteArray& content)
{
    const QString path = QDir(root).filePath(k_database);
    QFile::remove(path + "-wal");
    QFile::remove(path + "-shm");
    QVERIFY(tree_writer::write_file(path, content));
}

// Cancels the running controller once the media-library loop has looked up
// its third item's audio track.
vlc* g_cancel_target = nullptr;
int g_audio_lookups = 0;
void cancel_on_third_item(QtMsgType, const QMessageLogContext&, const QString& message)
{
    if (message.contains("get_audio_track_details") && message.endsWith("Starts") && ++g_audio_lookups == 3
        && g_cancel_target)
        g_cancel_target->pub_cancel_extraction();
}

}  // namespace

class test_android_extractor : public QObject
{
    Q_OBJECT

    QTemporaryDir trees;

    QString sample_tree(const QString& name)
    {
        const QString root = trees.filePath(name);
        QString error;
        if (!write_android_sample_tree(root, &error))
            qWarning("%s", qPrintable(error));
        return root;
    }

private slots:
    void tables_run_in_fixed_order_from_a_working_copy()
    {
        const QString root = sample_tree("order");
        android_run run;
        run.prepare(root, {"playlists", "album", "album_art", "media_library"});
        run.extract();
        QCOMPARE(run.tab_values(), (QList<int>{1, 2, 3, 4}));
        QStringList started;
        const QStringList functions = run.log.functions();
        const QStringList messages = run.log.messages();
        for (int i = 0; i < messages.size(); ++i) {
            if (messages.at(i) == "START")
                started << functions.at(i);
        }
        QCOMPARE(started, (QStringList{"vlc_androidos::extract_media_library", "vlc_androidos::extract_album_art",
                                       "vlc_androidos::extract_album", "vlc_androidos::extract_playlist"}));
        QCOMPARE(run.log.messages().count("ENDS"), 4);

        // One copy for the whole run, with the write-ahead log beside it.
        const QStringList copies = QDir(run.tmp_dir()).entryList(QDir::Files, QDir::Name);
        QVERIFY2(copies.contains("vlc_media.db") && copies.contains("vlc_media.db-wal"), qPrintable(copies.join(", ")));
        QVERIFY2(copies.filter("1_vlc_media.db").isEmpty(), qPrintable(copies.join(", ")));
        run.controller.pub_remove_temporary_asthetics();
        QVERIFY(!QFileInfo::exists(run.tmp_dir()));
    }

    void a_missing_database_still_counts_each_selected_table()
    {
        const QString root = trees.filePath("empty");
        QVERIFY(QDir().mkpath(root + "/apps/org.videolan.vlc/r"));
        android_run run;
        run.prepare(root, {"Media_Library", "playlists", "album"});
        run.extract();
        QCOMPARE(run.tab_values(), (QList<int>{1, 2}));  // the wrongly cased name selects nothing
        for (const QString& table : k_tables)
            QCOMPARE(run.rows(table), 0);
    }

    void cancel_during_the_media_library_keeps_earlier_rows()
    {
        const QString root = sample_tree("cancel");
        android_run run;
        run.prepare(root);
        plugin_static_function::debug_print_on_terminal_bool = true;
        g_cancel_target = &run.controller;
        g_audio_lookups = 0;
        const QtMessageHandler previous = qInstallMessageHandler(cancel_on_third_item);
        run.extract();
        qInstallMessageHandler(previous);
        g_cancel_target = nullptr;
        plugin_static_function::debug_print_on_terminal_bool = false;

        QCOMPARE(run.rows("media_library"), 3);
        QCOMPARE(run.rows("playlists"), 0);
        QCOMPARE(run.log.messages().count("ENDS"), 0);
    }

    void a_failing_playlist_member_statement_ends_the_table()
    {
        const QString root = sample_tree("members");
        fail_reads_for_second_playlist(root, "PlaylistMediaRelation", "playlist_id", "media_id");
        android_run run;
        run.run_on(root, {"playlists"});
        QCOMPARE(run.select("select distinct playlist_name from playlists"), (QList<QVariantList>{{"Road Trip"}}));
        QCOMPARE(run.rows("playlists"), 2);
        QCOMPARE(run.log.messages_with("query_select_media_id --------FAILED---------- ").size(), 1);
        QCOMPARE(run.tab_values(), QList<int>{1});
    }

    void real_numbers_read_as_the_driver_writes_them()
    {
        const QString root = sample_tree("reals");
        // Too large for the integer column to keep as an integer: stored as a real.
        alter_database(root, {"UPDATE Media SET play_count=1e20 WHERE title='Intro'"});
        android_run run;
        run.run_on(root, {"media_library"});
        QCOMPARE(run.select("select play_count from media_library where title='Intro'"),
                 (QList<QVariantList>{{"1e+20"}}));
    }

    void a_failing_playlist_name_lookup_gives_no_names()
    {
        const QString root = sample_tree("names");
        fail_reads_for_second_playlist(root, "Playlist", "id_playlist", "name");
        android_run run;
        run.run_on(root, {"media_library"});
        QCOMPARE(run.select("select title,playlist_name from media_library where title in ('Intro','Outro') "
                            "order by title"),
                 (QList<QVariantList>{{"Intro", ""}, {"Outro", "Road Trip"}}));
    }

    void a_database_linked_from_outside_the_source_is_not_read_data()
    {
        QTest::addColumn<QStringList>("moved");  // what is moved outside and linked back
        QTest::newRow("database") << QStringList{"", "-wal", "-shm"};
        QTest::newRow("write-ahead log") << QStringList{"-wal"};
    }

    void a_database_linked_from_outside_the_source_is_not_read()
    {
        QFETCH(QStringList, moved);
        const QString root = sample_tree(QString("linked_%1").arg(moved.size()));
        const QString path = QDir(root).filePath(k_database);
        const QString outside = trees.filePath(QString("outside_%1_vlc_media.db").arg(moved.size()));
        for (const QString& suffix : moved)
            QVERIFY(QFile::rename(path + suffix, outside + suffix));
        QVERIFY(QFile::link(outside + moved.first(), path + moved.first()));
        // Twice in one process: each run reports the refusal in its own log.
        for (int attempt = 0; attempt < 2; ++attempt) {
            android_run run;
            run.prepare(root);
            run.extract();
            QCOMPARE(run.tab_values(), (QList<int>{1, 2, 3, 4}));
            for (const QString& table : k_tables)
                QCOMPARE(run.rows(table), 0);
            QCOMPARE(run.log.messages_with("path outside the source root ---FAILED---").size(), 1);
        }
    }

    void a_lookup_that_never_ends_is_stopped()
    {
        const QString root = sample_tree("endless");
        // A forged database: the audio tracks are a view that counts without end.
        alter_database(root, {"DROP TABLE AudioTrack",
                              "CREATE VIEW AudioTrack AS WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL SELECT x + 1 "
                              "FROM n) SELECT x AS id_track, '' AS codec, 0 AS bitrate, 0 AS samplerate, "
                              "0 AS nb_channels, '' AS language, '' AS description, x AS media_id FROM n "
                              "WHERE random() = 0.5"});
        android_run run;
        run.run_on(root, {"media_library", "album"});
        QCOMPARE(run.rows("media_library"), 8);
        QCOMPARE(run.rows("album"), 3);
        QVERIFY(!run.log.messages_with("interrupted").isEmpty());
    }

    void what_a_model_lacks_is_logged_once_a_run_data()
    {
        QTest::addColumn<int>("model");
        QTest::addColumn<QString>("damage");
        QTest::addColumn<QStringList>("missing");
        QTest::newRow("model 8") << 8 << QString()
                                 << QStringList{"Media.real_last_played_date", "VideoTrack.bitrate",
                                                "VideoTrack.sar_num", "VideoTrack.sar_den"};
        QTest::newRow("model 15") << 15 << QString() << QStringList();
        QTest::newRow("model 38") << 38 << QString() << QStringList{"Media.real_last_played_date"};
        QTest::newRow("model 38 without AudioTrack")
            << 38 << "DROP TABLE AudioTrack" << QStringList{"Media.real_last_played_date", "AudioTrack"};
    }

    void what_a_model_lacks_is_logged_once_a_run()
    {
        QFETCH(int, model);
        QFETCH(QString, damage);
        QFETCH(QStringList, missing);
        const QString root = trees.filePath(QString(QTest::currentDataTag()).replace(' ', '_'));
        QString error;
        QVERIFY2(write_android_model_tree(root, model, android_layout::backup, &error), qPrintable(error));
        if (!damage.isEmpty())
            alter_database(root, {damage});
        android_run run;
        run.prepare(root);
        run.extract();
        QStringList logged;
        for (const QString& message : run.log.messages_with("not in this media database"))
            logged << message.section(": ", -1);
        QCOMPARE(logged, missing);
        QCOMPARE(run.log.messages_with("media database model").size(), 1);
        // Rows are still written, with the columns the database cannot give left empty.
        QCOMPARE(run.rows("media_library"), 5);
        QCOMPARE(run.select("select codec from media_library where title='Intro'"),
                 (QList<QVariantList>{{damage.isEmpty() ? "mp3" : ""}}));
    }

    void damaged_databases_are_logged_and_skipped_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::addColumn<QString>("logged");
        QTest::addColumn<QList<qint64>>("rows");  // media_library, album_art, album, playlists
        QTest::newRow("not sqlite") << "text" << "no working copy of the database, it is not an SQLite database"
                                    << QList<qint64>{0, 0, 0, 0};
        QTest::newRow("enciphered") << "random" << "no working copy of the database, it is not an SQLite database"
                                    << QList<qint64>{0, 0, 0, 0};
        // A database that claims 2 GiB, nearly all holes: copied once, holes kept.
        QTest::newRow("sparse") << "sparse" << "" << QList<qint64>{8, 3, 3, 5};
        QTest::newRow("truncated") << "truncated" << "" << QList<qint64>{-1, -1, -1, -1};
        QTest::newRow("no Media table") << "DROP TABLE Media" << "query_select --------FAILED---------- "
                                        << QList<qint64>{0, 3, 3, 5};
        QTest::newRow("no File.size") << "ALTER TABLE File DROP COLUMN size"
                                      << "query_select_file --------FAILED---------- " << QList<qint64>{0, 3, 3, 5};
        QTest::newRow("albums out of order") << "out of order"
                                             << "damaged database, the table gives more rows than it holds"
                                             << QList<qint64>{8, 3, 3, 5};
        QTest::newRow("text for numbers")
            << "UPDATE Media SET duration='long', type='video', play_count='many'; UPDATE Album SET duration=x'00ff'"
            << "" << QList<qint64>{8, 3, 3, 5};
    }

    void damaged_databases_are_logged_and_skipped()
    {
        QFETCH(QString, damage);
        QFETCH(QString, logged);
        QFETCH(QList<qint64>, rows);
        const QString root = sample_tree(QString(QTest::currentDataTag()).replace(' ', '_'));
        const QString path = QDir(root).filePath(k_database);
        if (damage == "text") {
            replace_database(root, "this is a playlist, not a database\n");
        } else if (damage == "random") {
            QByteArray noise(64 * 1024, '\0');
            for (int i = 0; i < noise.size(); ++i)
                noise[i] = char((i * 7919 + 13) % 251);
            replace_database(root, noise);
        } else if (damage == "truncated") {
            alter_database(root, {"PRAGMA journal_mode=DELETE"});
            replace_database(root, tree_writer::read_file(path).left(3 * 4096 + 100));
        } else if (damage == "sparse") {
            QFile database(path);
            QVERIFY(database.open(QIODevice::ReadWrite) && database.resize(2LL << 30));
        } else if (damage == "out of order") {
            put_albums_out_of_order(root);
        } else {
            alter_database(root, damage.split("; "));
        }
        android_run run;
        run.prepare(root);
        run.extract();
        QCOMPARE(run.tab_values(), (QList<int>{1, 2, 3, 4}));
        for (int i = 0; i < k_tables.size(); ++i) {
            if (rows.at(i) >= 0)
                QCOMPARE(run.rows(k_tables.at(i)), rows.at(i));
        }
        if (!logged.isEmpty())
            QVERIFY(!run.log.messages_with(logged).isEmpty());
        if (damage == "sparse")
            QVERIFY(sparse_file_copy::allocated_size(run.tmp_dir() + "/vlc_media.db") < (64 << 20));
        if (damage.startsWith("UPDATE"))
            QCOMPARE(test_support::query_rows(run.result_db(), "select distinct duration from media_library "
                                                               "where file_type='Audio' and play_count='many'"),
                     (QList<QVariantList>{{"00:00 Min"}}));
    }
};

QTEST_MAIN(test_android_extractor)
#include "test_android_extractor.moc"
