// The controller as a host drives it in process: the symbols of the loaded
// library, the result database and its faults, and a cancel in the middle of
// every scheme's tables, which keeps the rows already written.

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QtTest>

#include "controller_setup.h"
#include "debug_log_capture.h"
#include "sample_trees.h"
#include "tree_writer.h"
#include "vlc.h"

namespace {

// A controller set up by a host on a source, with its log and result folder.
struct session
{
    QTemporaryDir source;
    QTemporaryDir out;
    debug_log_capture log;
    vlc controller;

    explicit session(const QString& scheme, const QList<QString>& tables = {"recents"}, const QString& result_dir = {},
                     const QStringList& users = {})
    {
        controller_setup setup;
        setup.source.source_path_1 = source.path() + "/";
        setup.source.os_scheme_display = setup.source.os_scheme_internal = scheme;
        for (const QString& user : users)
            setup.source.system_account_QList << struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_system_account{user, {}};
        setup.general = log.general();
        setup.tables = tables;
        setup.result_dir = result_dir.isNull() ? out.path() : result_dir;
        prepare_controller(controller, setup);
    }
    QString database() const { return out.filePath("Artifacts_Result/VLC/VLC.sqlite"); }
    void extract()
    {
        controller.pub_find_source_file();
        controller.pub_extract_artifacts();
    }
};

// Cancels the running controller when the log shows a text for the nth time.
vlc* g_target = nullptr;
QString g_trigger;
int g_left = 0;
void cancel_on_trigger(QtMsgType, const QMessageLogContext&, const QString& message)
{
    if (g_target && message.contains(g_trigger) && --g_left == 0)
        g_target->pub_cancel_extraction();
}

}  // namespace

class test_plugin : public QObject
{
    Q_OBJECT

private slots:
    // Only the entry point is exported; the controller's own symbols stay
    // hidden (the host's declaration of the operations is checked by every
    // host run of the golden dumps).
    void only_the_entry_point_is_exported()
    {
        QLibrary library(test_support::plugin_library_path());
        QVERIFY2(library.load() && library.resolve("create_object"), qPrintable(library.errorString()));
        for (const char* hidden : {"_ZN3vlcC1EP7QWidget", "_ZN22plugin_static_function9app_debugE7QStringS0_"})
            QVERIFY2(!library.resolve(hidden), hidden);
    }

    // The eight tables exactly as the host reads them back, made once; only
    // the selected tables are emptied on request, in editions 0 to 2, and a
    // table name is never run as SQL.
    void the_result_database()
    {
        session s("winOS", {"recents", "no_such_table", "podcasts' ; drop table album; --", "album_art"});
        QString schema;
        for (const QVariantList& row : test_support::query_rows(s.database(), "SELECT sql FROM sqlite_master ORDER BY rowid"))
            schema += row.value(0).toString() + "\n";
        const QString difference = test_support::compare_with_golden("result_schema.txt", schema);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
        QVERIFY(QFile::remove(s.database()));
        s.controller.pub_set_clear_db(true);
        s.controller.pub_create_db_tables();
        s.controller.pub_create_db_tables();
        for (const char* table : {"recents", "album_art", "album", "podcasts"})
            plugin_static_function::execute_db_command_by_dbpath(QString("insert into %1(system_user) values('x')").arg(table),
                                                                 s.database(), "t");
        s.controller.pub_set_clear_db(true);
        s.controller.pub_set_engine_type(3);
        s.controller.pub_set_clear_db(true);
        QString rows;
        for (const char* table : {"recents", "album_art", "album", "podcasts"})
            rows += QString("%1=%2 ").arg(table).arg(test_support::count_rows(s.database(), table));
        QCOMPARE(rows, QString("recents=0 album_art=0 album=1 podcasts=1 "));
        const QStringList log = s.log.messages();
        QVERIFY(log.contains("[clear_db_tables]DB not exists and so returning..."));
        QVERIFY(log.contains(" command -  delete from 'podcasts'' ; drop table album; --'"));
        QCOMPARE(log.filter("FAILED").size(), 2);
    }

    // Faults on the output side end the run cleanly, with log lines: a result
    // folder that cannot be made, or an empty one (never the root); a database
    // deleted between the host's calls is not made again (an empty one would
    // look like a run that found nothing); one another program holds locked.
    // Schemes it does not know run nothing; a cancel before the run, no table.
    void faults_and_refusals()
    {
        QTemporaryDir out;
        QVERIFY(tree_writer::write_file(out.filePath("file"), "x"));
        const bool root_had_results = QFileInfo::exists("/Artifacts_Result");
        for (const QString& folder : {out.filePath("file/sub"), QString("  ")}) {
            session s("winOS", {"podcasts", "recents"}, folder);
            QSignalSpy tabs(&s.controller, &vlc::signal_tab_processed_of_plugin_overall);
            s.extract();
            s.controller.pub_remove_temporary_asthetics();
            QVERIFY(!tabs.isEmpty() && !s.log.messages_with("for table creation").isEmpty());
        }
        QVERIFY(!QFileInfo::exists(out.filePath("file/sub")) && QFileInfo::exists("/Artifacts_Result") == root_had_results);
        for (const bool locked : {false, true}) {
            session s("winOS", {"podcasts"}, {}, {"carol"});
            QVERIFY(write_windows_sample_tree(s.source.path(), nullptr) && (locked || QFile::remove(s.database())));
            QSqlDatabase lock = QSqlDatabase::addDatabase("QSQLITE", "lock");
            lock.setDatabaseName(s.database());
            QSqlQuery query(locked && lock.open() ? lock : QSqlDatabase());
            QVERIFY(!locked || (query.exec("PRAGMA locking_mode=EXCLUSIVE") && query.exec("BEGIN EXCLUSIVE")
                                && query.exec("CREATE TABLE IF NOT EXISTS lock_holder(x)")));
            s.extract();
            QVERIFY(QFileInfo::exists(s.database()) == locked);
            QVERIFY(!s.log.messages_with(locked ? "database is locked" : "the database does not exist").isEmpty());
            query = QSqlQuery();
            lock = QSqlDatabase();
            QSqlDatabase::removeDatabase("lock");
        }
        session unknown("macos");
        unknown.extract();
        QCOMPARE(unknown.log.messages_with("FAILED").size(), 2);
        session cancelled("androidOS");
        cancelled.controller.pub_cancel_extraction();
        cancelled.extract();
        QCOMPARE(cancelled.log.messages_with("[pub_extract_artifacts]"), QStringList{"[pub_extract_artifacts] - START"});
    }

    // The host cancels when the log shows a text for the nth time: the rows
    // written before stay, no later table runs, the reader does not log its end.
    void a_cancel_in_the_middle_keeps_the_rows_written()
    {
        const struct
        {
            const char* scheme;
            bool (*write)(const QString&, QString*);
            QList<QString> tables;
            QStringList users;
            const char* trigger;
            int nth;
            const char* rows;  // table=count, ...
            const char* end_line;  // of the reader cancelled
        } cases[] = {
            {"androidOS", write_android_sample_tree, {"media_library", "playlists"}, {}, "get_audio_track_details", 5,
             "media_library=3, playlists=0", "ENDS"},
            {"macOS", write_macos_sample_tree, {"recents", "recent_played"}, {"alice", "bob"},
             "[xcode_extract_recents_items_11_12] - END", 1, "recents=4, recent_played=0", "[extract_plugin_artifacts] ends"},
            {"macOS", write_macos_sample_tree, {"recent_played"}, {"alice", "bob"},
             "[xcode_extract_recent_played_11_12] - END", 1, "recent_played=4", "[extract_plugin_artifacts] ends"},
            {"winOS", write_windows_sample_tree, {"recents", "playlists"}, {"carol", "dave"},
             "path outside the source root", 1, "recents=8, playlists=0", "[extract_recents]---ENDS---"},
        };
        for (const auto& c : cases) {
            session s(c.scheme, c.tables, {}, c.users);
            QVERIFY(c.write(s.source.path(), nullptr));
            g_target = &s.controller;
            g_trigger = c.trigger;
            g_left = c.nth;
            plugin_static_function::debug_print_on_terminal_bool = true;
            const QtMessageHandler previous = qInstallMessageHandler(cancel_on_trigger);
            s.extract();
            qInstallMessageHandler(previous);
            g_target = nullptr;
            QStringList rows;
            for (const QString& table : c.tables)
                rows << table + "=" + QString::number(test_support::count_rows(s.database(), table));
            QCOMPARE(rows.join(", "), QString(c.rows));
            QVERIFY2(!s.log.messages().contains(c.end_line), qPrintable(QString(c.scheme) + " " + c.trigger));
        }
    }
};

QTEST_MAIN(test_plugin)
#include "test_plugin.moc"
