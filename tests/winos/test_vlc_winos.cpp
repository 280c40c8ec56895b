// The Windows extractor in-process: per-user discovery, the driver's fixed
// order and edition gate, a cancel inside the recents insert loop, and the
// capped reads of oversized preference files and playlists.

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

#include "compound_file_writer.h"
#include "debug_log_capture.h"
#include "plugin_helper_functions.h"
#include "result_database_schema.h"
#include "shell_link_writer.h"
#include "sqlite_connection_scope.h"
#include "test_support.h"
#include "tree_writer.h"
#include "vlc_winos.h"

namespace {

const QString k_recent = "/AppData/Roaming/Microsoft/Windows/Recent/AutomaticDestinations/";
const QString k_jump_list = "9fda41b86ddcf1db.automaticDestinations-ms";

QByteArray jump_list_of(const QStringList& windows_paths)
{
    QList<QByteArray> links;
    for (const QString& path : windows_paths)
        links << shell_link_writer::build(shell_link_writer::media_link(path, 1650000000, 10));
    return compound_file_writer::jump_list(links);
}

// Starts its run more than a second after the run timer, so the very first
// inserted row reports progress (and the test's slot can cancel right there).
class late_winos : public vlc_winos
{
protected:
    void extract_plugin_artifacts() override
    {
        QTest::qSleep(1100);
        vlc_winos::extract_plugin_artifacts();
    }
};

}  // namespace

class test_vlc_winos : public QObject
{
    Q_OBJECT

    QTemporaryDir root;
    QTemporaryDir out;
    plugin_helper_functions helper;
    debug_log_capture log;

    // The source is a folder of its own, so a test can put files beside it
    // that ".." paths in the evidence would reach.
    QString root_path() const { return root.path() + "/src/"; }
    QString database() const { return out.path() + "/VLC.sqlite"; }

    void configure(vlc_winos& winos, const QList<QString>& tables, int engine,
                   const QList<struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_system_account>& accounts)
    {
        struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info info;
        info.source_path_1 = root_path();
        info.os_scheme_display = "Windows";
        info.system_account_QList = accounts;
        plugin_static_function::set_source_info(info);
        winos.winos_set_plugin_helper_obj(&helper);
        winos.winos_set_destination_location(out.path() + "/", out.path() + "/tmp/", database());
        winos.winos_set_source_info(info);
        winos.winos_set_engine_type(engine);
        winos.winos_set_essential_for_quarl_desk_extraction(tables);
        winos.winos_set_essentials();
    }

    void write(const QString& relative, const QByteArray& data)
    {
        QString error;
        QVERIFY2(tree_writer::write_file(root_path(), relative, data, &error), qPrintable(error));
    }

    // An empty file that claims gigabytes: sparse, so cheap to make.
    void write_huge(const QString& relative, const QByteArray& head)
    {
        write(relative, head);
        QFile file(root_path() + relative);
        QVERIFY(file.resize(3LL * 1024 * 1024 * 1024));
    }

private slots:
    void initTestCase()
    {
        log.start(0);
        sqlite_connection_scope scope("test_vlc_winos", database());
        QVERIFY(scope.open());
        for (const auto& table : result_database_schema::tables())
            QVERIFY(plugin_static_function::execute_db_command_by_dbreference(
                result_database_schema::create_statement(table), scope.db(), "test"));
    }

    void init()
    {
        log.clear();
        for (const auto& table : result_database_schema::tables())
            plugin_static_function::execute_db_command_by_dbpath(QString("delete from ") + table.name, database(),
                                                                 "test");
    }

    void discovery_finds_each_users_files()
    {
        write("Users/ann/AppData/Roaming/vlc/vlcrc", "");
        write("Users/bob" + k_recent + k_jump_list, "");
        write("Users/bob/AppData/Roaming/vlc/art/a/b/c.png", "");
        vlc_winos winos;
        // Same name twice, an empty second name, an empty first name.
        configure(winos, {}, 0, {{"ann", "ANN"}, {"ann", ""}, {"", "bob"}});
        QCOMPARE(winos.users(), (QStringList{"ann", "ANN", "bob"}));
        winos.winos_find_artifacts_source();
        QCOMPARE(winos.preference_files(), QStringList{root_path() + "Users/ann/AppData/Roaming/vlc/vlcrc"});
        QCOMPARE(winos.art_folders(), QStringList{root_path() + "Users/bob/AppData/Roaming/vlc/art"});
        QCOMPARE(winos.jump_list_folders(), QStringList{root_path() + "Users/bob" + k_recent.chopped(1)});
        const QStringList missing = log.messages_with("[find_source_file]----  FILE NOT EXISTS");
        QCOMPARE(missing.size(), 3 + 4 + 2);  // with each user's ml/ml.db
        QVERIFY(missing.contains("[find_source_file]----  FILE NOT EXISTS" + root_path()
                                 + "Users/ann/AppData/Roaming/vlc/art"));

        // A second source record adds its accounts; discovery starts afresh.
        struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info more;
        more.source_path_1 = root_path();
        more.system_account_QList = {{"cy", "ann"}};
        winos.winos_set_source_info(more);
        QCOMPARE(winos.users(), (QStringList{"ann", "ANN", "bob", "cy"}));
        winos.winos_find_artifacts_source();
        QCOMPARE(winos.preference_files().size(), 1);
    }

    void tables_run_in_fixed_order_and_count_tabs()
    {
        write("Users/ann/AppData/Roaming/vlc/vlcrc", "podcast-urls=http://a\n");
        write("Users/ann" + k_recent + k_jump_list, jump_list_of({"C:\\a.mp3"}));
        vlc_winos winos;
        configure(winos, {"podcasts", "media_library", "recents"}, 0, {{"ann", ""}});
        QSignalSpy tabs(&winos, &vlc_winos::signal_total_tabs_processed_winos);
        winos.winos_find_artifacts_source();
        winos.winos_extract_artifacts();
        QCOMPARE(tabs.count(), 3);  // media_library is read from the player 4's database
        QCOMPARE(tabs.at(0).first().toInt(), 1);
        QCOMPARE(tabs.at(1).first().toInt(), 2);
        const QStringList messages = log.messages();
        QVERIFY(messages.indexOf("[extract_recents]---STARTS---") < messages.indexOf("[extract_podcasts_vlc]---STARTS---"));
        QCOMPARE(test_support::count_rows(database(), "recents"), 1);
        QCOMPARE(test_support::count_rows(database(), "podcasts"), 1);
    }

    void editions_above_2_run_no_table()
    {
        write("Users/ann/AppData/Roaming/vlc/vlcrc", "podcast-urls=http://a\n");
        vlc_winos winos;
        configure(winos, {"recents", "playlists", "album_art", "podcasts"}, 3, {{"ann", ""}});
        QSignalSpy records(&winos, &vlc_winos::signal_extracted_records_of_plugin_winos);
        winos.winos_find_artifacts_source();
        winos.winos_extract_artifacts();
        QCOMPARE(records.count(), 1);
        QVERIFY(log.messages_with("---STARTS---").filter("extract_plugins_artifacts").size() == 1);
        QCOMPARE(log.messages_with("---STARTS---").size(), 2);  // discovery and driver only
        QCOMPARE(test_support::count_rows(database(), "podcasts"), 0);
    }

    void cancel_in_the_insert_loop_keeps_rows_and_removes_scratch()
    {
        QStringList paths;
        for (int i = 0; i < 40; ++i)
            paths << "C:\\Music\\" + QString::number(i) + ".mp3";
        write("Users/ann" + k_recent + k_jump_list, jump_list_of(paths));
        late_winos winos;
        configure(winos, {"recents"}, 0, {{"ann", ""}});
        connect(&winos, &vlc_winos::signal_extracted_records_of_plugin_winos, &winos,
                [&winos] { winos.winos_cancel_extraction(); });
        winos.winos_find_artifacts_source();
        winos.winos_extract_artifacts();
        QCOMPARE(test_support::count_rows(database(), "recents"), 1);
        QVERIFY(!QFileInfo::exists(out.path() + "/Files"));
        QVERIFY(log.messages_with("[extract_recents]---ENDS---").isEmpty());
    }

    void paths_leading_outside_the_source_are_absent_and_never_read()
    {
        // Beside the source: reachable only by climbing out of it.
        QString error;
        QVERIFY(tree_writer::write_file(root.path(), "outside.mp3", "x", &error));
        QVERIFY(tree_writer::write_file(root.path(), "outside.m3u",
                                        "#EXTINF:5,Five\r\nC:\\src\\Users\\ann\\a.mp3\r\n#\r\n", &error));
        write("Users/ann" + k_recent + k_jump_list,
              jump_list_of({"C:\\..\\outside.mp3", "C:\\Users\\..\\..\\outside.m3u"}));
        vlc_winos winos;
        configure(winos, {"recents", "playlists"}, 0, {{"ann", ""}});
        winos.winos_find_artifacts_source();
        winos.winos_extract_artifacts();
        const auto rows = test_support::query_rows(database(), "select file_exist, file_size from recents");
        QCOMPARE(rows.size(), 2);
        for (const auto& row : rows)
            QCOMPARE(row.at(0).toString(), QString("NO"));
        QCOMPARE(test_support::count_rows(database(), "playlists"), 0);
        // Each refused path is logged once, the playlist included.
        QCOMPARE(log.messages_with("path outside the source root").size(), 2);
    }

    void links_out_of_the_source_and_pipes_are_never_opened()
    {
        // The player's files of "eve" are links to files beside the source;
        // "fay" has a named pipe where a jump list and the preferences belong.
        QString error;
        QVERIFY(tree_writer::write_file(root.path(), "outside/vlcrc", "podcast-urls=http://leak\n", &error));
        QVERIFY(tree_writer::write_file(root.path(), "outside/art/x/y/leak.png", "", &error));
        QVERIFY(tree_writer::write_file(root.path(), "outside/" + k_jump_list, jump_list_of({"C:\\leak.mp3"}),
                                        &error));
        QVERIFY(tree_writer::make_dir(root_path(), "Users/eve/AppData/Roaming/vlc", &error));
        QVERIFY(tree_writer::make_dir(root_path(), "Users/eve" + k_recent, &error));
        QVERIFY(QFile::link(root.path() + "/outside/vlcrc", root_path() + "Users/eve/AppData/Roaming/vlc/vlcrc"));
        QVERIFY(QFile::link(root.path() + "/outside/art", root_path() + "Users/eve/AppData/Roaming/vlc/art"));
        QVERIFY(QFile::link(root.path() + "/outside/" + k_jump_list, root_path() + "Users/eve" + k_recent + k_jump_list));
        QVERIFY(tree_writer::make_dir(root_path(), "Users/fay/AppData/Roaming/vlc", &error));
        QVERIFY(tree_writer::make_dir(root_path(), "Users/fay" + k_recent, &error));
        QCOMPARE(mkfifo(qPrintable(root_path() + "Users/fay/AppData/Roaming/vlc/vlcrc"), 0600), 0);
        QCOMPARE(mkfifo(qPrintable(root_path() + "Users/fay" + k_recent + k_jump_list), 0600), 0);

        vlc_winos winos;
        configure(winos, {"recents", "album_art", "podcasts"}, 0, {{"eve", ""}, {"fay", ""}});
        winos.winos_find_artifacts_source();
        QCOMPARE(winos.art_folders(), QStringList());
        QCOMPARE(winos.preference_files(), QStringList{root_path() + "Users/fay/AppData/Roaming/vlc/vlcrc"});
        winos.winos_extract_artifacts();
        QCOMPARE(test_support::count_rows(database(), "recents"), 0);
        QCOMPARE(test_support::count_rows(database(), "album_art"), 0);
        QCOMPARE(test_support::count_rows(database(), "podcasts"), 0);
        QCOMPARE(log.messages_with("[ERROR:]not a regular file").size(), 1);
        QCOMPARE(log.messages_with("[extract_podcasts_vlc]---ENDS---").size(), 1);
    }

    void cancel_stops_album_art_and_podcasts_without_their_end_lines()
    {
        write("Users/gus/AppData/Roaming/vlc/vlcrc", "podcast-urls=http://a|http://b|http://c\n");
        write("Users/gus/AppData/Roaming/vlc/art/a/b/1.png", "");
        write("Users/gus/AppData/Roaming/vlc/art/a/c/2.png", "");
        for (const QString& table : {QString("album_art"), QString("podcasts")}) {
            late_winos winos;
            configure(winos, {table}, 0, {{"gus", ""}});
            connect(&winos, &vlc_winos::signal_extracted_records_of_plugin_winos, &winos,
                    [&winos] { winos.winos_cancel_extraction(); });
            winos.winos_find_artifacts_source();
            winos.winos_extract_artifacts();
            QCOMPARE(test_support::count_rows(database(), table), 1);
        }
        QVERIFY(log.messages_with("---ENDS---").filter("album_arts_artifacts").isEmpty());
        QVERIFY(log.messages_with("---ENDS---").filter("extract_podcasts_vlc").isEmpty());
    }

    void streams_left_by_an_unfinished_run_give_no_rows()
    {
        // A run that was killed left the streams of another evidence behind.
        QVERIFY(tree_writer::write_file(out.path() + "/Files/hal_" + k_jump_list + "/7/file",
                                        shell_link_writer::build(shell_link_writer::media_link("C:\\old.mp3", 1, 1))));
        write("Users/hal" + k_recent + k_jump_list, jump_list_of({"C:\\new.mp3"}));
        vlc_winos winos;
        configure(winos, {"recents"}, 0, {{"hal", ""}});
        winos.winos_find_artifacts_source();
        winos.winos_extract_artifacts();
        const auto rows = test_support::query_rows(database(), "select windows_path from recents");
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows.first().first().toString(), QString("C:\\new.mp3"));
    }

    void a_playlist_named_again_and_again_fills_no_more_than_the_entry_limit()
    {
        QByteArray m3u;
        for (int i = 0; i < 150000; ++i)
            m3u += "#EXTINF:1,t\r\nD:\\x.mp3\r\n";
        write("Users/ivy/big.m3u", m3u);
        write("Users/ivy" + k_recent + k_jump_list, jump_list_of(QStringList(2, "C:\\Users\\ivy\\big.m3u")));
        vlc_winos winos;
        configure(winos, {"recents", "playlists"}, 0, {{"ivy", ""}});
        winos.winos_find_artifacts_source();
        winos.winos_extract_artifacts();
        QCOMPARE(test_support::count_rows(database(), "playlists"), 200000);
        QCOMPARE(log.messages_with("playlist entries beyond the limit are not read").size(), 1);
    }

    void oversized_files_are_read_only_up_to_the_cap()
    {
        write_huge("Users/ann/AppData/Roaming/vlc/vlcrc", "podcast-urls=http://a|http://b\n");
        write_huge("Users/ann/Music/big.m3u", "#EXTINF:5,Five\r\nC:\\Users\\ann\\Music\\five.mp3\r\n#\r\n");
        write("Users/ann" + k_recent + k_jump_list, jump_list_of({"C:\\Users\\ann\\Music\\big.m3u"}));
        vlc_winos winos;
        configure(winos, {"recents", "playlists", "podcasts"}, 0, {{"ann", ""}});
        winos.winos_find_artifacts_source();
        winos.winos_extract_artifacts();
        QCOMPARE(test_support::count_rows(database(), "podcasts"), 2);
        QCOMPARE(test_support::count_rows(database(), "playlists"), 1);
        QCOMPARE(log.messages_with("larger than the read limit").size(), 2);
    }
};

QTEST_MAIN(test_vlc_winos)
#include "test_vlc_winos.moc"
