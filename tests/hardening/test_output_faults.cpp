// Faults on the output side: a result folder that cannot be made, a result
// database another connection holds locked, one deleted between the host's
// calls. Each ends in log lines and a clean return, keeps every row already
// written, and the host program reports it in one line with a failing status.

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QtTest>

#include "controller_setup.h"
#include "debug_log_capture.h"
#include "sample_trees.h"
#include "test_support.h"
#include "vlc.h"

namespace {

const QString k_database = "Artifacts_Result/VLC/VLC.sqlite";

// Holds the exclusive lock of a database for as long as it lives, the way
// another program writing to it would.
class exclusive_lock
{
public:
    explicit exclusive_lock(const QString& path)
    {
        m_db = QSqlDatabase::addDatabase("QSQLITE", "exclusive_lock");
        m_db.setDatabaseName(path);
        QSqlQuery query(m_db.open() ? m_db : QSqlDatabase());
        m_held = query.exec("PRAGMA locking_mode=EXCLUSIVE") && query.exec("BEGIN EXCLUSIVE")
                 && query.exec("CREATE TABLE IF NOT EXISTS lock_holder(x)");
    }
    ~exclusive_lock()
    {
        {
            QSqlQuery(m_db).exec("ROLLBACK");
            m_db.close();
            m_db = QSqlDatabase();
        }
        QSqlDatabase::removeDatabase("exclusive_lock");
    }
    bool held() const { return m_held; }

private:
    QSqlDatabase m_db;
    bool m_held = false;
};

controller_setup windows_setup(const QString& source, const QString& out, const debug_log_capture& log)
{
    controller_setup setup;
    setup.source.source_path_1 = source + "/";
    setup.source.os_scheme_internal = "winOS";
    setup.source.os_scheme_display = "Windows";
    setup.source.system_account_QList = {{"carol", QString()}, {"dave", QString()}};
    setup.general = log.general();
    setup.tables = {"podcasts", "recents"};
    setup.result_dir = out;
    return setup;
}

// Discovery and extraction, as the host calls them after the set-up.
void extract(vlc& controller)
{
    controller.pub_find_source_file();
    controller.pub_extract_artifacts();
}

bool log_has(const debug_log_capture& log, const QString& text)
{
    for (const QString& line : test_support::read_lines(log.path())) {
        if (line.contains(text))
            return true;
    }
    return false;
}

}  // namespace

class test_output_faults : public QObject
{
    Q_OBJECT

    QTemporaryDir m_source;

private slots:
    void initTestCase()
    {
        QString error;
        QVERIFY2(write_windows_sample_tree(m_source.path(), &error), qPrintable(error));
    }

    void cleanup()
    {
        plugin_static_function::close_debug_file();
        plugin_static_function::set_essentials();
    }

    // The result folder's parent is a regular file: nothing can be made
    // there (a read-only mode bit would not stop the root user the tests run as).
    void an_unwritable_result_folder_is_logged_and_nothing_is_written()
    {
        QTemporaryDir out;
        QVERIFY(QFile(out.filePath("file")).open(QIODevice::WriteOnly));
        debug_log_capture log;
        vlc controller;
        QSignalSpy tabs(&controller, SIGNAL(signal_tab_processed_of_plugin_overall(int)));
        prepare_controller(controller, windows_setup(m_source.path(), out.filePath("file/sub"), log));
        extract(controller);
        controller.pub_remove_temporary_asthetics();

        QVERIFY(!QFileInfo::exists(out.filePath("file/sub")));
        QVERIFY(log_has(log, "for table creation"));
        QVERIFY(log_has(log, "the database does not exist"));
        QVERIFY(!tabs.isEmpty());  // the run still reports its end to the host
    }

    void a_locked_result_database_keeps_its_rows_and_the_run_ends()
    {
        QTemporaryDir out;
        qint64 podcasts = 0;
        {
            debug_log_capture log;
            vlc controller;
            prepare_controller(controller, windows_setup(m_source.path(), out.path(), log));
            extract(controller);
            podcasts = test_support::count_rows(out.filePath(k_database), "podcasts");
            QVERIFY(podcasts > 0);
        }
        plugin_static_function::close_debug_file();
        {
            exclusive_lock lock(out.filePath(k_database));
            QVERIFY(lock.held());
            debug_log_capture log;
            vlc controller;
            prepare_controller(controller, windows_setup(m_source.path(), out.path(), log));
            extract(controller);
            controller.pub_remove_temporary_asthetics();
            QVERIFY(log_has(log, "for table creation"));
            QVERIFY(log_has(log, "Destination Db opening failed"));
            QVERIFY(log_has(log, "database is locked"));
        }
        QCOMPARE(test_support::count_rows(out.filePath(k_database), "podcasts"), podcasts);
    }

    void a_result_database_deleted_between_calls_is_not_made_again()
    {
        QTemporaryDir out;
        debug_log_capture log;
        vlc controller;
        prepare_controller(controller, windows_setup(m_source.path(), out.path(), log));
        QVERIFY(QFile::remove(out.filePath(k_database)));
        extract(controller);
        controller.pub_remove_temporary_asthetics();
        // A fresh empty database would look like a run that found nothing.
        QVERIFY(!QFileInfo::exists(out.filePath(k_database)));
        QVERIFY(log_has(log, "the database does not exist"));
    }

    void the_host_reports_a_locked_database_in_one_line()
    {
        QTemporaryDir out;
        const QStringList arguments = {"--source", m_source.path(), "--out", out.path(), "--tables", "podcasts"};
        QCOMPARE(test_support::run_host(arguments).exit_code, 0);
        exclusive_lock lock(out.filePath(k_database));
        QVERIFY(lock.held());
        const auto result = test_support::run_host(arguments + QStringList{"--append"});
        QCOMPARE(result.exit_code, 1);
        const QStringList lines = result.err.split('\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines.first().contains("could not be read"), qPrintable(lines.first()));
    }
};

QTEST_MAIN(test_output_faults)
#include "test_output_faults.moc"
