// The debug log (its line layout, edition texts and enciphered form) and the
// SQL helpers (their rows and the exact report of each family's failures),
// on real SQLite files.

#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QtTest>

#include "debug_log_capture.h"
#include "encryptor_string.h"
#include "tree_writer.h"

namespace {

using psf = plugin_static_function;
const QString k_caller = "void vlc_androidos::extract_media_library()";

// Runs one helper, named by its family: "exec" or "list", by "path" or by
// "reference" (a connection the test opened, as the readers do), "bound"
// with values. Rows for the readers, "ok" or "failed" for the others.
QStringList run_helper(const QString& helper, const QString& command, const QStringList& values, const QString& db_path)
{
    const bool list = helper.contains("list");
    const bool bound = helper.contains("bound");
    QStringList rows;
    bool ok = false;
    if (helper.contains("path")) {
        if (list)
            rows = bound ? psf::get_stringlist_from_db_with_addbindvalues_by_dbpath(command, values, 1, db_path, k_caller)
                         : psf::get_stringlist_from_db_by_dbpath(command, 1, db_path, k_caller);
        else
            ok = bound ? psf::execute_db_command_with_addbindvalue_by_dbpath(command, values, db_path, k_caller)
                       : psf::execute_db_command_by_dbpath(command, db_path, k_caller);
        return list ? rows : QStringList{ok ? "ok" : "failed"};
    }
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "reference");
        db.setDatabaseName(db_path);
        db.open();
        if (list)
            rows = bound ? psf::get_stringlist_from_db_with_addbindvalues_by_dbreference(command, values, 1, db, k_caller)
                         : psf::get_stringlist_from_db_by_dbreference(command, 1, db, k_caller);
        else
            ok = bound ? psf::execute_db_command_with_addbindvalue_by_dbreference(command, values, db, k_caller)
                       : psf::execute_db_command_by_dbreference(command, db, k_caller);
    }
    QSqlDatabase::removeDatabase("reference");
    return list ? rows : QStringList{ok ? "ok" : "failed"};
}

}  // namespace

class test_log_and_sql : public QObject
{
    Q_OBJECT

private slots:
    void line_layout_and_edition_texts()
    {
        const struct
        {
            int engine;
            QString function;
            QString line_end;
        } cases[] = {
            {0, "void vlc::create_db_tables()", "[QUARL_DESK][Artifacts Extraction][vlc::create_db_tables]:-- m"},
            {1, "virtual void vlc::pub_extract_artifacts()", "[QUARL_SWEEP][Artifacts Extraction][vlc::pub_extract_artifacts]:-- m"},
            {2, "static QStringList plugin_static_function::f(QString, QString)", "[QUARL_PROBE][Artifacts Extraction][plugin_static_function::f]:-- m"},
            {-1, "  vlc::vlc(QWidget*)  ", "[ -----FAILED----- to find Engine Type ][-1][Artifacts Extraction][vlc::vlc]:-- m"},
            {7, "   ", "[ -----FAILED----- to find Engine Type ][7][Artifacts Extraction][FUNCTION INFO IS EMPTY ---FAILED--- debug!!!]:-- m"},
        };
        for (const auto& c : cases) {
            debug_log_capture log(c.engine);
            psf::app_debug("m", c.function);
            const QString line = log.lines().value(0);
            QVERIFY2(QRegularExpression("^\\[\\d{4}-[A-Z][a-z]{2}-\\d{2}T\\d{2}-\\d{2}-\\d{2}\\]").match(line).hasMatch()
                         && line.endsWith(c.line_end),
                     qPrintable(line));
        }
        // The master switch off writes nothing; an existing log is appended to.
        debug_log_capture log;
        psf::debug_mode_status_bool = false;
        psf::app_debug("never", "void vlc::f()");
        psf::debug_mode_status_bool = true;
        psf::app_debug("later", "void vlc::f()");
        QCOMPARE(log.messages(), QStringList{"later"});
    }

    void enciphered_log_reads_back_record_by_record()
    {
        debug_log_capture log;
        psf::close_debug_file();
        psf::set_general_info(log.general(true));
        const QStringList sent = {"first", QString(3000, 'r'), "ümlaut and \"quotes\" <[{ not a separator"};
        for (const QString& message : sent)
            psf::app_debug(message, "void vlc_macos::extract_podcasts()");
        psf::close_debug_file();
        const QString text = QString::fromLocal8Bit(tree_writer::read_file(log.path()));
        const QStringList records = text.split("<[{()}]>", Qt::SkipEmptyParts);
        QVERIFY(!text.contains('\n') && text.endsWith("<[{()}]>") && records.size() == sent.size());
        for (int i = 0; i < records.size(); ++i) {
            encryptor_string cipher;
            QVERIFY(cipher.decryptToString(records.at(i)).endsWith("[vlc_macos::extract_podcasts]:-- " + sent.at(i)));
        }
    }

    void cipher_round_trips_and_detects_tampering()
    {
        for (int compression = 0; compression <= 2; ++compression) {
            for (int protection = 0; protection <= 2; ++protection) {
                for (const QString& text : {QString("a"), QString(5000, 'x') + "tail", QString("ümlauts"), QString()}) {
                    encryptor_string cipher;
                    cipher.setCompressionMode(encryptor_string::CompressionMode(compression));
                    cipher.setIntegrityProtectionMode(encryptor_string::IntegrityProtectionMode(protection));
                    QCOMPARE(encryptor_string().decryptToString(cipher.encryptToString(text)), text);
                }
            }
        }
        encryptor_string cipher;
        QCOMPARE(cipher.encryptToByteArray(QString("short")).left(2), QByteArray("\x03\x02"));
        QVERIFY(cipher.encryptToByteArray(QString(4000, 'z')).size() < 400);  // compressed where it gains
        for (auto protection : {encryptor_string::ProtectionChecksum, encryptor_string::ProtectionHash}) {
            cipher.setIntegrityProtectionMode(protection);
            QByteArray sealed = cipher.encryptToByteArray(QString("evidence line that must not be altered"));
            sealed[sealed.size() - 5] = char(sealed.at(sealed.size() - 5) ^ 0x10);
            QVERIFY(cipher.decryptToByteArray(sealed).isEmpty());
            QCOMPARE(cipher.lastError(), encryptor_string::ErrorIntegrityFailed);
        }
        // Key bytes are taken least significant first: position 8 of the body uses the first again.
        encryptor_string keyed(0x41);
        keyed.setCompressionMode(encryptor_string::CompressionNever);
        keyed.setIntegrityProtectionMode(encryptor_string::ProtectionNone);
        const QByteArray body = keyed.encryptToByteArray(QByteArray("AAAAAAAAA")).mid(2);
        QVERIFY(char(body.at(1) ^ body.at(0)) == 'A' && char(body.at(8) ^ body.at(7) ^ 'A') == 'A');
        QTest::ignoreMessage(QtWarningMsg, "Invalid version or not a cyphertext.");
        QVERIFY(cipher.decryptToByteArray(QByteArray("\x07\x02garbage")).isEmpty());
        QVERIFY(encryptor_string(0x1122334455667788ULL).decryptToByteArray(cipher.encryptToByteArray(QString("case")))
                != QByteArray("case"));
    }

    // Rows through every family, values bound verbatim; a failure is reported
    // in four lines whose texts differ by family, and nothing is written.
    void sql_helpers_and_their_failure_reports()
    {
        QTemporaryDir dir;
        const QString db = dir.filePath("evidence_copy.db");
        for (const char* statement : {"CREATE TABLE people (id INTEGER PRIMARY KEY, name TEXT, note TEXT)",
                                         "INSERT INTO people VALUES (1, 'ann', 'first'), (2, 'bob', NULL)"})
            QVERIFY(psf::execute_db_command_by_dbpath(statement, db, k_caller));
        const QString hostile = "O'Brien\"; DROP TABLE people; --";
        const struct
        {
            const char* helper;
            QString command;
            QStringList values;
            QString result;  // rows joined by "," or ok/failed
            QStringList report;  // the four failure lines, up to the variable part
        } cases[] = {
            {"exec by path", "INSERT INTO people (id, name) VALUES (3, 'carl')", {}, "ok", {}},
            {"exec bound by path", "INSERT INTO people (id, name) VALUES (?, ?)", {"4", hostile}, "ok", {}},
            {"exec by reference", "UPDATE people SET note = 'seen' WHERE id = 2", {}, "ok", {}},
            {"exec bound by reference", "DELETE FROM people WHERE id = ?", {"3"}, "ok", {}},
            {"list by path", "SELECT id, note FROM people ORDER BY id", {}, "first,seen,", {}},
            {"list bound by path", "SELECT id, name FROM people WHERE id >= ? ORDER BY id", {"2"}, "bob," + hostile, {}},
            {"list by reference", "SELECT id, name FROM people WHERE id = 1", {}, "ann", {}},
            {"list bound by reference", "SELECT id, name FROM people WHERE id = ?", {"4"}, hostile, {}},
            {"exec by path", "INSERT INTO nowhere VALUES (1)", {}, "failed",
             {" query  --------FAILED------ db file - ", "CALLER FUNCTION -  ", " command -  ", " error -  no such table"}},
            {"exec bound by path", "INSERT INTO people (id, name, note) VALUES (?, ?, ?)", {"7", "short"}, "failed",
             {" query  --------FAILED------ db file - ", " CALLER FUNCTION -  ", " command -  ", " error -  "}},
            {"exec by reference", "INSERT INTO people VALUES (1, 'again', 'duplicate key')", {}, "failed",
             {" query  --------FAILED------ db file - ", " CALLER FUNCTION -  -  ", " command -  ", " error -  UNIQUE"}},
            {"exec bound by reference", "INSERT INTO people (id, name) VALUES (?, ?)", {"9", "dan", "surplus"}, "failed",
             {" query  --------FAILED------ db file - ", " CALLER FUNCTION -  -  ", " command -  ", " error -  "}},
            {"list by path", "SELECT abs(-9223372036854775807 - 1), 1 FROM people", {}, "",
             {"query  --------FAILED------db file - ", "CALLER FUNCTION -  ", "command -  ", "error -  integer overflow"}},
            {"list bound by path", "SELECT name FROM people WHERE id = ? AND name = ?", {"7"}, "",
             {"query  --------FAILED------db file - ", "CALLER FUNCTION -  ", "command -  ", "error -  "}},
            {"list by reference", "SELECT name FROM no_such_table", {}, "",
             {" query  --------FAILED------db file - ", " CALLER FUNCTION -  -  ", " command -  ", " error -  no such"}},
            {"list bound by reference", "SELECT x FROM people WHERE id = ?", {"1"}, "",
             {" query  --------FAILED------db file - ", " CALLER FUNCTION -  -  ", " command -  ", " error -  no such"}},
        };
        for (const auto& c : cases) {
            const QByteArray before = tree_writer::read_file(db);
            debug_log_capture log;
            const QString got = run_helper(c.helper, c.command, c.values, db).join(',');
            QVERIFY2(got == c.result, qPrintable(QString(c.helper) + ": " + got));
            const QStringList report = log.messages().filter(QRegularExpression("^ ?(query|CALLER|command|error)"));
            QVERIFY2(report.size() == c.report.size(), qPrintable(QString(c.helper) + ": " + log.messages().join('\n')));
            if (c.report.isEmpty())
                continue;
            QCOMPARE(report.mid(0, 3), (QStringList{c.report[0] + db, c.report[1] + k_caller, c.report[2] + c.command}));
            QVERIFY2(report[3].startsWith(c.report[3]), qPrintable(report[3]));
            QCOMPARE(tree_writer::read_file(db), before);
        }
        // A database that cannot be opened, and a cancelled run, give nothing.
        debug_log_capture log;
        QVERIFY(psf::get_stringlist_from_db_by_dbpath("SELECT 1", 0, dir.filePath("no/db"), k_caller).isEmpty());
        QCOMPARE(log.messages().value(1), "Destination Db opening --------FAILED------ " + dir.filePath("no/db"));
        psf::bool_cancel_extraction = true;
        QVERIFY(run_helper("list by path", "SELECT id, name FROM people", {}, db).isEmpty());
        psf::bool_cancel_extraction = false;
        QCOMPARE(psf::get_total_tables_list_by_dbpath(db, k_caller), QStringList{"people"});
        QVERIFY(psf::get_total_tables_list_by_dbpath(dir.filePath("missing.db"), k_caller).isEmpty());
    }
};

QTEST_GUILESS_MAIN(test_log_and_sql)
#include "test_log_and_sql.moc"
