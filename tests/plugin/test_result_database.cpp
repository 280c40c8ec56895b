// The result database: its eight tables exactly as the host reads them back,
// idempotent creation, and the rules of clearing tables on request.

#include <QDir>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QtTest>

#include "debug_log_capture.h"
#include "vlc.h"

namespace {

// Every table with its columns in order and their declared types, as the
// host's schema has them: "table: column TYPE, column TYPE, ...".
const char* const k_expected_schema = R"(
media_library: bookmark INTEGER, INT INTEGER PRIMARY KEY, system_user varchar(100), domain_user VARCHAR(100), file_name varchar(100), file_size INTEGER, file_exist varchar(100), suffix varchar(100), file_type varchar(1024), codec varchar(1024), bitrate varchar(1024), samplerate varchar(1024), nb_channels varchar(1024), language varchar(1024), playlist_name varchar(1024), favorite varchar(1024), present varchar(1024), removable varchar(1024), external varchar(1024), play_count varchar(1024), last_played_date INTEGER, real_last_played_date INTEGER, insertion_date INTEGER, release_date INTEGER, last_modification_date INTEGER, width varchar(1000), height varchar(1000), fps_num varchar(1000), fps_den varchar(1000), sar_num varchar(1000), sar_den varchar(1000), location varchar(1000), title varchar(500), artist varchar(200), album varchar(200), track_number varchar(200), description varchar(200), image varchar(500), duration varchar(200), value varchar(500), id varchar(50), fs_name varchar(100), fs_node_count varchar(100), content_type varchar(100), wherefrom varchar(100), latitude varchar(100), longitude varchar(100), altitude varchar(100), torrent_file_list varchar(5000), date_added INTEGER, content_modification_date INTEGER, fs_creation_date INTEGER, fs_content_change_date INTEGER, content_creation_date INTEGER, last_used_date INTEGER, first_date INTEGER, last_date INTEGER, used_dates INTEGER, preview_file_path varchar(1024), export_file_paths varchar(1024), LINKFILENAME VARCHAR(1024), bookmarked_extended_attributes varchar(1000), bookmarked_exif_data varchar(1000), extended_attributes_key_value varchar(200), extended_attributes_value_for_search varchar(200), quarl_tag_value VARCHAR(1024), notes_icon VARCHAR(1024), tags_icon VARCHAR(1024), os_scheme_display VARCHAR(100), source_count_name varchar(500), source_file varchar(500), artifacts_relation_source_file VARCHAR(1024), notes varchar(500)
podcasts: bookmark INTEGER, INT INTEGER PRIMARY KEY, system_user VARCHAR(100), domain_user VARCHAR(100), podcasts VARCHAR(100), quarl_tag_value VARCHAR(1024), notes_icon VARCHAR(1024), tags_icon VARCHAR(1024), os_scheme_display VARCHAR(100), source_count_name varchar(500), source_file VARCHAR(500), artifacts_relation_source_file VARCHAR(1024), notes varchar(500)
recents: bookmark INTEGER, INT INTEGER PRIMARY KEY, system_user VARCHAR(100), domain_user VARCHAR(100), file_name varchar(1024), file_path varchar(1024), file_size INTEGER, file_exist varchar(20), suffix varchar(20), file_type varchar(1024), windows_path varchar(1024), drive_type varchar(500), serial_no varchar(500), volume_label varchar(100), description varchar(1024), machine_id varchar(500), network_path varchar(1024), creation_timestamp INTEGER, modification_timestamp INTEGER, last_access_timestamp INTEGER, preview_file_path varchar(1024), export_file_paths varchar(1024), LINKFILENAME VARCHAR(1024), bookmarked_extended_attributes varchar(1000), bookmarked_exif_data varchar(1000), extended_attributes_key_value varchar(200), extended_attributes_value_for_search varchar(200), quarl_tag_value VARCHAR(1024), notes_icon VARCHAR(1024), tags_icon VARCHAR(1024), os_scheme_display VARCHAR(100), source_count_name varchar(500), source_file varchar(1024), artifacts_relation_source_file VARCHAR(1024), notes varchar(500)
playlists: bookmark INTEGER, INT INTEGER PRIMARY KEY, system_user VARCHAR(100), domain_user VARCHAR(100), playlist_name VARCHAR(500), file_name varchar(1024), file_path varchar(1024), file_size INTEGER, file_exist varchar(100), suffix varchar(20), windows_path varchar(1024), duration varchar(1024), creation_timestamp INTEGER, modification_timestamp INTEGER, last_access_timestamp INTEGER, preview_file_path varchar(1024), export_file_paths varchar(1024), LINKFILENAME VARCHAR(1024), extended_attributes_key_value varchar(200), extended_attributes_value_for_search varchar(200), bookmarked_extended_attributes varchar(1000), bookmarked_exif_data varchar(1000), quarl_tag_value VARCHAR(1024), notes_icon VARCHAR(1024), tags_icon VARCHAR(1024), os_scheme_display VARCHAR(100), source_count_name varchar(500), source_file varchar(1024), artifacts_relation_source_file VARCHAR(1024), notes varchar(500)
album_art: bookmark INTEGER, INT INTEGER PRIMARY KEY, system_user VARCHAR(100), domain_user VARCHAR(100), file_name varchar(1024), art_file_name varchar(1024), file_path varchar(1024), windows_path varchar(1024), duration varchar(1024), no_of_tracks varchar(1024), artist varchar(1024), creation_timestamp INTEGER, modification_timestamp INTEGER, last_access_timestamp INTEGER, preview_file_path varchar(1024), export_file_paths varchar(1024), LINKFILENAME VARCHAR(1024), bookmarked_extended_attributes varchar(1000), bookmarked_exif_data varchar(1000), extended_attributes_key_value varchar(200), extended_attributes_value_for_search varchar(200), quarl_tag_value VARCHAR(1024), notes_icon VARCHAR(1024), tags_icon VARCHAR(1024), os_scheme_display VARCHAR(100), source_count_name varchar(500), source_file varchar(1024), artifacts_relation_source_file VARCHAR(1024), notes varchar(500)
album: bookmark INTEGER, INT INTEGER PRIMARY KEY, system_user VARCHAR(100), domain_user VARCHAR(100), album_name varchar(1024), album_item_info varchar(1024), album_item_count varchar(1024), artist varchar(1024), album_duration varchar(1024), preview_file_path varchar(1024), export_file_paths varchar(1024), LINKFILENAME VARCHAR(1024), bookmarked_extended_attributes varchar(1000), bookmarked_exif_data varchar(1000), extended_attributes_key_value varchar(200), extended_attributes_value_for_search varchar(200), quarl_tag_value VARCHAR(1024), notes_icon VARCHAR(1024), tags_icon VARCHAR(1024), os_scheme_display VARCHAR(100), source_count_name varchar(500), source_file varchar(1024), artifacts_relation_source_file VARCHAR(1024), notes varchar(500)
recent_played: bookmark INTEGER, INT INTEGER PRIMARY KEY, system_user VARCHAR(100), domain_user VARCHAR(100), file_url varchar(500), file_name varchar(100), file_size INTEGER, file_exist varchar(100), file_path varchar(200), file_extension varchar(200), fs_name varchar(100), fs_node_count varchar(100), content_type varchar(100), file_type varchar(100), wherefrom varchar(100), latitude varchar(100), longitude varchar(100), altitude varchar(100), date_added INTEGER, content_modification_date INTEGER, fs_creation_date INTEGER, fs_content_change_date INTEGER, content_creation_date INTEGER, last_used_date INTEGER, first_date INTEGER, last_date INTEGER, all_used_dates INTEGER, preview_file_path varchar(1024), export_file_paths varchar(1024), LINKFILENAME VARCHAR(1024), bookmarked_extended_attributes varchar(1000), bookmarked_exif_data varchar(1000), extended_attributes_key_value varchar(200), extended_attributes_value_for_search varchar(200), quarl_tag_value VARCHAR(1024), notes_icon VARCHAR(1024), tags_icon VARCHAR(1024), os_scheme_display VARCHAR(100), source_count_name varchar(500), source_file varchar(500), artifacts_relation_source_file VARCHAR(1024), notes varchar(500)
exportfilelist: INT INTEGER PRIMARY KEY, record VARCHAR(150), table_name VARCHAR(1000), filepath VARCHAR(100), exp_newpath VARCHAR(100), exp_relativepath VARCHAR(100), exp_size INTEGER, exp_hashmd5 VARCHAR(100), exp_hashsha1 VARCHAR(100), exp_LINKFILENAME varchar(500), exp_time INTEGER
)";

struct expected_column
{
    QString name;
    QString type;
};

QMap<QString, QList<expected_column>> expected_schema()
{
    QMap<QString, QList<expected_column>> tables;
    for (const QString& line : QString(k_expected_schema).split('\n', Qt::SkipEmptyParts)) {
        const int colon = line.indexOf(':');
        QList<expected_column> columns;
        for (const QString& column : line.mid(colon + 1).split(',')) {
            const QString text = column.trimmed();
            const int blank = text.indexOf(' ');
            columns.append({text.left(blank), text.mid(blank + 1)});
        }
        tables.insert(line.left(colon), columns);
    }
    return tables;
}

struct controller_fixture
{
    QTemporaryDir out;
    debug_log_capture log;
    vlc controller;
    QString database;

    explicit controller_fixture(int engine = 0, const QString& host_dir = QString())
    {
        controller.pub_set_engine_type(engine);
        controller.pub_set_essentials();
        controller.pub_set_engine_type(engine);
        controller.pub_set_general_info(log.general());
        controller.pub_set_result_directory(host_dir.isEmpty() ? out.path() : host_dir);
        database = (host_dir.isEmpty() ? out.path() : host_dir) + "/Artifacts_Result/VLC/VLC.sqlite";
    }

    void fill_every_table()
    {
        for (const QString& table : expected_schema().keys()) {
            const QString column = table == "exportfilelist" ? "record" : "system_user";
            QVERIFY(plugin_static_function::execute_db_command_by_dbpath(
                "insert into " + table + "(" + column + ") values('x')", database, "test"));
        }
    }
};

}  // namespace

class test_result_database : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { plugin_static_function::set_essentials(); }

    void tables_match_the_hosts_schema()
    {
        controller_fixture f;
        f.controller.pub_create_db_tables();

        const auto expected = expected_schema();
        QCOMPARE(expected.size(), 8);
        QStringList actual_tables;
        for (const auto& row : test_support::query_rows(
                 f.database, "SELECT name FROM sqlite_master WHERE type='table' ORDER BY rowid"))
            actual_tables << row.first().toString();
        QCOMPARE(actual_tables, (QStringList{"media_library", "podcasts", "recents", "playlists", "album_art",
                                             "album", "recent_played", "exportfilelist"}));

        for (auto table = expected.cbegin(); table != expected.cend(); ++table) {
            const auto rows = test_support::query_rows(f.database, "PRAGMA table_info(" + table.key() + ")");
            QCOMPARE(rows.size(), table.value().size());
            for (int i = 0; i < rows.size(); ++i) {
                const QString where = table.key() + " column " + QString::number(i + 1);
                QVERIFY2(rows.at(i).at(1).toString() == table.value().at(i).name, qPrintable(where));
                // SQLite reports "INTEGER PRIMARY KEY" as type INTEGER with pk=1.
                QString type = table.value().at(i).type;
                const bool key = type.endsWith(" PRIMARY KEY");
                if (key)
                    type.chop(QString(" PRIMARY KEY").size());
                QVERIFY2(rows.at(i).at(2).toString() == type, qPrintable(where + " type " + rows.at(i).at(2).toString()));
                QVERIFY2(rows.at(i).at(5).toInt() == (key ? 1 : 0), qPrintable(where + " key"));
                QVERIFY2(rows.at(i).at(3).toInt() == 0, qPrintable(where + " not null"));
            }
        }
        QCOMPARE(f.log.messages_with("[create_db_tables]"),
                 (QStringList{"[create_db_tables] STARTS", "[create_db_tables] ENDS"}));
    }

    void creating_twice_changes_nothing()
    {
        controller_fixture f;
        f.controller.pub_create_db_tables();
        f.fill_every_table();
        const auto schema = test_support::query_rows(f.database, "SELECT sql FROM sqlite_master ORDER BY rowid");

        f.controller.pub_create_db_tables();
        QCOMPARE(test_support::query_rows(f.database, "SELECT sql FROM sqlite_master ORDER BY rowid"), schema);
        QCOMPARE(test_support::count_rows(f.database, "recents"), 1);
        QVERIFY(f.log.messages_with("FAILED").isEmpty());
    }

    void clear_before_the_database_exists()
    {
        controller_fixture f;
        f.controller.pub_set_essential_for_quarl_desk_extraction({"recents"}, {});
        f.controller.pub_set_clear_db(true);
        QCOMPARE(f.log.messages_with("clear_db_tables"), QStringList{"[clear_db_tables]DB not exists and so returning..."});
        QVERIFY(!QFileInfo::exists(f.database));
    }

    void clear_is_silent_for_engines_outside_0_to_2_data()
    {
        QTest::addColumn<int>("engine");
        QTest::newRow("3") << 3;
        QTest::newRow("-1") << -1;
    }

    void clear_is_silent_for_engines_outside_0_to_2()
    {
        QFETCH(int, engine);
        controller_fixture f(engine);
        f.controller.pub_create_db_tables();
        f.fill_every_table();
        const int lines = f.log.lines().size();
        f.controller.pub_set_essential_for_quarl_desk_extraction({"recents", "podcasts"}, {});
        f.controller.pub_set_clear_db(true);
        QCOMPARE(test_support::count_rows(f.database, "recents"), 1);
        QCOMPARE(test_support::count_rows(f.database, "podcasts"), 1);
        QCOMPARE(f.log.lines().size(), lines);
    }

    void clear_empties_listed_tables_and_survives_bad_names()
    {
        controller_fixture f;
        f.controller.pub_create_db_tables();
        f.fill_every_table();
        f.controller.pub_set_essential_for_quarl_desk_extraction(
            {"recents", "no_such_table", "podcasts' ; drop table album; --", "album_art"}, {"ignored"});
        f.controller.pub_set_clear_db(true);

        QCOMPARE(test_support::count_rows(f.database, "recents"), 0);
        QCOMPARE(test_support::count_rows(f.database, "album_art"), 0);
        // The hostile name neither ran a second statement nor cleared podcasts.
        QCOMPARE(test_support::count_rows(f.database, "album"), 1);
        QCOMPARE(test_support::count_rows(f.database, "podcasts"), 1);
        QCOMPARE(test_support::count_rows(f.database, "media_library"), 1);

        const QStringList messages = f.log.messages();
        const int first = messages.indexOf(" query  --------FAILED------ db file - " + f.database);
        QVERIFY(first >= 0);
        QCOMPARE(messages.mid(first, 3),
                 (QStringList{" query  --------FAILED------ db file - " + f.database,
                              "CALLER FUNCTION -  void vlc::clear_db_tables()",
                              " command -  delete from 'no_such_table'"}));
        QVERIFY(messages.contains(" command -  delete from 'podcasts'' ; drop table album; --'"));
        QCOMPARE(messages.filter("--------FAILED------").size(), 2);
    }

    void unwritable_result_directory_is_logged_not_fatal()
    {
        QTemporaryDir out;
        QFile blocker(out.filePath("not_a_dir"));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        controller_fixture f(0, out.filePath("not_a_dir"));
        f.controller.pub_create_db_tables();
        const QStringList messages = f.log.messages_with("[create_db_tables]");
        QCOMPARE(messages, (QStringList{"[create_db_tables] STARTS",
                                        "[create_db_tables]Destination Db opening ---------FAILED--------- for table creation"}));
        QVERIFY(!QFileInfo::exists(f.database));
        f.controller.pub_set_essential_for_quarl_desk_extraction({"recents"}, {});
        f.controller.pub_set_clear_db(true);
        f.controller.pub_remove_temporary_asthetics();
    }

    void an_empty_result_directory_never_becomes_the_root()
    {
        const bool existed = QFileInfo::exists("/Artifacts_Result");
        debug_log_capture log;
        vlc controller;
        controller.pub_set_essentials();
        controller.pub_set_engine_type(0);
        controller.pub_set_general_info(log.general());
        controller.pub_set_result_directory("  ");
        controller.pub_create_db_tables();
        QCOMPARE(QFileInfo::exists("/Artifacts_Result"), existed);
        QVERIFY(log.messages().contains("[set_destination_location] result directory is empty ---FAILED---"));
        QVERIFY(log.messages().contains(
            "[create_db_tables]Destination Db opening ---------FAILED--------- for table creation"));
    }
};

QTEST_MAIN(test_result_database)
#include "test_result_database.moc"
