// The SQL helpers: statements against real SQLite files, through a private
// connection ("by dbpath") or the caller's own ("by dbreference"); the exact
// four-line failure report of each family; cancellation; table listing and
// value lookup.

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QUuid>
#include <QtTest>

#include "debug_log_capture.h"
#include "plugin_static_function.h"
#include "test_support.h"

namespace {

const QString k_caller = "void vlc_androidos::extract_media_library()";

enum helper_variant {
    exec_path,
    exec_bind_path,
    exec_ref,
    exec_bind_ref,
    list_path,
    list_bind_path,
    list_ref,
    list_bind_ref,
};

bool is_list_variant(int variant)
{
    return variant >= list_path;
}

bool is_path_variant(int variant)
{
    return variant == exec_path || variant == exec_bind_path || variant == list_path || variant == list_bind_path;
}

bool has_bind_values(int variant)
{
    return variant == exec_bind_path || variant == exec_bind_ref || variant == list_bind_path
           || variant == list_bind_ref;
}

// The qualified name app_debug shows for each helper.
QString helper_name(int variant)
{
    switch (variant) {
    case exec_path:
        return "plugin_static_function::execute_db_command_by_dbpath";
    case exec_bind_path:
        return "plugin_static_function::execute_db_command_with_addbindvalue_by_dbpath";
    case exec_ref:
        return "plugin_static_function::execute_db_command_by_dbreference";
    case exec_bind_ref:
        return "plugin_static_function::execute_db_command_with_addbindvalue_by_dbreference";
    case list_path:
        return "plugin_static_function::get_stringlist_from_db_by_dbpath";
    case list_bind_path:
        return "plugin_static_function::get_stringlist_from_db_with_addbindvalues_by_dbpath";
    case list_ref:
        return "plugin_static_function::get_stringlist_from_db_by_dbreference";
    default:
        return "plugin_static_function::get_stringlist_from_db_with_addbindvalues_by_dbreference";
    }
}

struct helper_outcome
{
    bool ok = false;
    QStringList rows;
};

// Runs one helper. The dbreference helpers get a connection the test opened
// itself, as the table readers do.
helper_outcome run_helper(int variant, const QString& command, const QStringList& values, int column,
                          const QString& db_path)
{
    helper_outcome outcome;
    if (is_path_variant(variant)) {
        switch (variant) {
        case exec_path:
            outcome.ok = plugin_static_function::execute_db_command_by_dbpath(command, db_path, k_caller);
            break;
        case exec_bind_path:
            outcome.ok = plugin_static_function::execute_db_command_with_addbindvalue_by_dbpath(command, values,
                                                                                               db_path, k_caller);
            break;
        case list_path:
            outcome.rows = plugin_static_function::get_stringlist_from_db_by_dbpath(command, column, db_path,
                                                                                    k_caller);
            break;
        case list_bind_path:
            outcome.rows = plugin_static_function::get_stringlist_from_db_with_addbindvalues_by_dbpath(
                command, values, column, db_path, k_caller);
            break;
        }
        return outcome;
    }

    const QString name = "test connection " + QUuid::createUuid().toString();
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", name);
        db.setDatabaseName(db_path);
        if (db.open()) {
            switch (variant) {
            case exec_ref:
                outcome.ok = plugin_static_function::execute_db_command_by_dbreference(command, db, k_caller);
                break;
            case exec_bind_ref:
                outcome.ok = plugin_static_function::execute_db_command_with_addbindvalue_by_dbreference(
                    command, values, db, k_caller);
                break;
            case list_ref:
                outcome.rows =
                    plugin_static_function::get_stringlist_from_db_by_dbreference(command, column, db, k_caller);
                break;
            case list_bind_ref:
                outcome.rows = plugin_static_function::get_stringlist_from_db_with_addbindvalues_by_dbreference(
                    command, values, column, db, k_caller);
                break;
            }
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    return outcome;
}

// A small database written by the test's own connection.
bool make_database(const QString& path, const QStringList& statements)
{
    bool ok = true;
    const QString name = "fixture " + QUuid::createUuid().toString();
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", name);
        db.setDatabaseName(path);
        ok = db.open();
        QSqlQuery query(db);
        for (const QString& statement : statements) {
            if (ok && !query.exec(statement))
                ok = false;
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    return ok;
}

QByteArray file_hash(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray();
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(&file);
    return hash.result();
}

const QStringList k_people_table = {
    "CREATE TABLE people (id INTEGER PRIMARY KEY, name TEXT, note TEXT)",
    "INSERT INTO people VALUES (1, 'ann', 'first')",
    "INSERT INTO people VALUES (2, 'bob', NULL)",
    "INSERT INTO people VALUES (3, ' carl ', 'third')",
};

}  // namespace

class test_plugin_static_function_db : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir* m_dir = nullptr;

    QString path_in(const QString& name) const { return m_dir->filePath(name); }

private slots:
    void init()
    {
        m_dir = new QTemporaryDir;
        QVERIFY(m_dir->isValid());
        plugin_static_function::bool_cancel_extraction = false;
    }

    void cleanup()
    {
        plugin_static_function::bool_cancel_extraction = false;
        delete m_dir;
        m_dir = nullptr;
    }

    void execute_helpers_write_rows_data()
    {
        QTest::addColumn<int>("variant");
        QTest::newRow("by dbpath") << int(exec_path);
        QTest::newRow("by dbpath with bind values") << int(exec_bind_path);
        QTest::newRow("by dbreference") << int(exec_ref);
        QTest::newRow("by dbreference with bind values") << int(exec_bind_ref);
    }

    void execute_helpers_write_rows()
    {
        QFETCH(int, variant);
        const QString db_path = path_in("result.sqlite");
        QVERIFY(make_database(db_path, {"CREATE TABLE recents (INT INTEGER PRIMARY KEY, path TEXT, title TEXT)"}));

        // A value with quotes and SQL in it must arrive verbatim: bound, never
        // pasted into the statement.
        const QString hostile = "O'Brien\"; DROP TABLE recents; --";
        helper_outcome outcome;
        if (has_bind_values(variant)) {
            outcome = run_helper(variant, "INSERT INTO recents (path, title) VALUES (?, ?)",
                                 {"/Users/ann/Movies/a.mkv", hostile}, 0, db_path);
        } else {
            outcome = run_helper(variant,
                                 "INSERT INTO recents (path, title) VALUES ('/Users/ann/Movies/a.mkv', 'plain')",
                                 {}, 0, db_path);
        }
        QVERIFY(outcome.ok);

        const auto rows = test_support::query_rows(db_path, "SELECT path, title FROM recents");
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows.at(0).at(0).toString(), QString("/Users/ann/Movies/a.mkv"));
        QCOMPARE(rows.at(0).at(1).toString(), has_bind_values(variant) ? hostile : QString("plain"));
    }

    void string_list_helpers_read_one_column_data()
    {
        QTest::addColumn<int>("variant");
        QTest::addColumn<QString>("end_line");
        QTest::newRow("by dbpath") << int(list_path) << " end ";
        QTest::newRow("by dbpath with bind values") << int(list_bind_path) << " End ";
        QTest::newRow("by dbreference") << int(list_ref) << " end ";
        QTest::newRow("by dbreference with bind values") << int(list_bind_ref) << " end ";
    }

    void string_list_helpers_read_one_column()
    {
        QFETCH(int, variant);
        QFETCH(QString, end_line);
        const QString db_path = path_in("library.db");
        QVERIFY(make_database(db_path, k_people_table));

        debug_log_capture log(path_in("debug.log"));
        QVERIFY(log.is_open());
        helper_outcome outcome;
        if (has_bind_values(variant))
            outcome = run_helper(variant, "SELECT id, note FROM people WHERE id >= ? ORDER BY id", {"2"}, 1, db_path);
        else
            outcome = run_helper(variant, "SELECT id, note FROM people ORDER BY id", {}, 1, db_path);

        // NULL reads as an empty text; the column index picks the second column.
        const QStringList expected = has_bind_values(variant) ? QStringList{"", "third"}
                                                               : QStringList{"first", "", "third"};
        QCOMPARE(outcome.rows, expected);
        QCOMPARE(log.messages(), (QStringList{" Start ", end_line}));
        QCOMPARE(log.functions(), (QStringList{helper_name(variant), helper_name(variant)}));
    }

    void failing_statement_is_reported_in_four_lines_data()
    {
        QTest::addColumn<int>("variant");
        QTest::addColumn<QString>("command");
        QTest::addColumn<QStringList>("values");
        QTest::addColumn<QStringList>("prefixes");
        QTest::addColumn<QString>("error_part");

        const QStringList exec_path_prefixes = {" query  --------FAILED------ db file - ", "CALLER FUNCTION -  ",
                                                " command -  ", " error -  "};
        const QStringList exec_bind_path_prefixes = {" query  --------FAILED------ db file - ",
                                                     " CALLER FUNCTION -  ", " command -  ", " error -  "};
        const QStringList exec_ref_prefixes = {" query  --------FAILED------ db file - ", " CALLER FUNCTION -  -  ",
                                               " command -  ", " error -  "};
        const QStringList list_ref_prefixes = {" query  --------FAILED------db file - ", " CALLER FUNCTION -  -  ",
                                               " command -  ", " error -  "};
        const QStringList list_path_prefixes = {"query  --------FAILED------db file - ", "CALLER FUNCTION -  ",
                                                "command -  ", "error -  "};

        struct family
        {
            int variant;
            const char* label;
            QStringList prefixes;
        };
        const QList<family> families = {
            {exec_path, "execute by dbpath", exec_path_prefixes},
            {exec_bind_path, "execute by dbpath with bind values", exec_bind_path_prefixes},
            {exec_ref, "execute by dbreference", exec_ref_prefixes},
            {exec_bind_ref, "execute by dbreference with bind values", exec_ref_prefixes},
            {list_path, "string list by dbpath", list_path_prefixes},
            {list_bind_path, "string list by dbpath with bind values", list_path_prefixes},
            {list_ref, "string list by dbreference", list_ref_prefixes},
            {list_bind_ref, "string list by dbreference with bind values", list_ref_prefixes},
        };

        for (const family& f : families) {
            const bool list = is_list_variant(f.variant);
            // A statement that cannot even be prepared.
            QTest::addRow("%s: missing table", f.label)
                << f.variant << (list ? "SELECT name FROM no_such_table" : "INSERT INTO no_such_table VALUES (1)")
                << QStringList() << f.prefixes << "no such table: no_such_table";
            // A statement that is prepared and fails while running: the
            // primary key is taken (for the readers, a function error).
            QTest::addRow("%s: fails while running", f.label)
                << f.variant
                << (list ? "SELECT abs(-9223372036854775807 - 1) FROM people"
                         : "INSERT INTO people VALUES (1, 'again', 'duplicate key')")
                << QStringList() << f.prefixes << (list ? "integer overflow" : "UNIQUE constraint failed");
            if (has_bind_values(f.variant)) {
                // Fewer values than placeholders.
                QTest::addRow("%s: bind list too short", f.label)
                    << f.variant
                    << (list ? "SELECT name FROM people WHERE id = ? AND name = ?"
                             : "INSERT INTO people (id, name, note) VALUES (?, ?, ?)")
                    << (list ? QStringList{"7"} : QStringList{"7", "short"}) << f.prefixes
                    << "Parameter count mismatch";
            }
        }
    }

    void failing_statement_is_reported_in_four_lines()
    {
        QFETCH(int, variant);
        QFETCH(QString, command);
        QFETCH(QStringList, values);
        QFETCH(QStringList, prefixes);
        QFETCH(QString, error_part);

        const QString db_path = path_in("evidence_copy.db");
        QVERIFY(make_database(db_path, k_people_table));
        const QByteArray before = file_hash(db_path);
        const QStringList entries_before = QDir(m_dir->path()).entryList(QDir::Files | QDir::Hidden);

        debug_log_capture log(path_in("debug.log"));
        const helper_outcome outcome = run_helper(variant, command, values, 0, db_path);
        QVERIFY(!outcome.ok);
        QVERIFY(outcome.rows.isEmpty());

        QStringList messages = log.messages();
        QStringList functions = log.functions();
        // The readers announce themselves before the statement; nothing
        // follows the failure report.
        if (is_list_variant(variant)) {
            QVERIFY(!messages.isEmpty());
            QCOMPARE(messages.takeFirst(), QString(" Start "));
            functions.removeFirst();
        }
        QCOMPARE(messages.size(), 4);
        QCOMPARE(messages.at(0), prefixes.at(0) + db_path);
        QCOMPARE(messages.at(1), prefixes.at(1) + k_caller);
        QCOMPARE(messages.at(2), prefixes.at(2) + command);
        QVERIFY2(messages.at(3).startsWith(prefixes.at(3)), qPrintable(messages.at(3)));
        QVERIFY2(messages.at(3).contains(error_part), qPrintable(messages.at(3)));
        for (const QString& function : functions)
            QCOMPARE(function, helper_name(variant));

        // Nothing was written: the file is byte for byte what it was, and no
        // journal was left beside it.
        QCOMPARE(file_hash(db_path), before);
        QStringList entries_after = QDir(m_dir->path()).entryList(QDir::Files | QDir::Hidden);
        entries_after.removeAll("debug.log");
        QCOMPARE(entries_after, entries_before);
        QCOMPARE(test_support::count_rows(db_path, "people"), qint64(3));
    }

    void bind_list_longer_than_placeholders_fails_too()
    {
        const QString db_path = path_in("people.db");
        QVERIFY(make_database(db_path, k_people_table));
        debug_log_capture log(path_in("debug.log"));
        QVERIFY(!plugin_static_function::execute_db_command_with_addbindvalue_by_dbpath(
            "INSERT INTO people (id, name) VALUES (?, ?)", {"9", "dan", "surplus"}, db_path, k_caller));
        QCOMPARE(log.messages().size(), 4);
        QCOMPARE(test_support::count_rows(db_path, "people"), qint64(3));
    }

    void database_that_cannot_be_opened_data()
    {
        QTest::addColumn<int>("variant");
        QTest::addColumn<QStringList>("prefixes");
        QTest::newRow("execute by dbpath")
            << int(exec_path) << QStringList{" Destination Db opening --------FAILED------ ", "CALLER FUNCTION -  "};
        QTest::newRow("execute by dbpath with bind values")
            << int(exec_bind_path)
            << QStringList{" Destination Db opening --------FAILED------ ", "CALLER FUNCTION -  ", " error -  "};
        QTest::newRow("string list by dbpath")
            << int(list_path) << QStringList{"Destination Db opening --------FAILED------ ", "CALLER FUNCTION -  "};
        QTest::newRow("string list by dbpath with bind values")
            << int(list_bind_path)
            << QStringList{"Destination Db opening --------FAILED------ ", "CALLER FUNCTION -  "};
    }

    void database_that_cannot_be_opened()
    {
        QFETCH(int, variant);
        QFETCH(QStringList, prefixes);
        // A folder that does not exist: SQLite can neither open nor create it.
        const QString db_path = path_in("missing_folder/result.sqlite");

        debug_log_capture log(path_in("debug.log"));
        const helper_outcome outcome = run_helper(variant, "SELECT 1", {"1"}, 0, db_path);
        QVERIFY(!outcome.ok);
        QVERIFY(outcome.rows.isEmpty());
        QVERIFY(!QFileInfo::exists(path_in("missing_folder")));

        QStringList messages = log.messages();
        if (is_list_variant(variant))
            QCOMPARE(messages.takeFirst(), QString(" Start "));
        QCOMPARE(messages.size(), prefixes.size());
        QCOMPARE(messages.at(0), prefixes.at(0) + db_path);
        QCOMPARE(messages.at(1), prefixes.at(1) + k_caller);
        if (prefixes.size() > 2)
            QVERIFY(messages.at(2).startsWith(prefixes.at(2)));
    }

    void cancelled_run_reads_no_rows_data()
    {
        QTest::addColumn<int>("variant");
        QTest::newRow("by dbpath") << int(list_path);
        QTest::newRow("by dbpath with bind values") << int(list_bind_path);
        QTest::newRow("by dbreference") << int(list_ref);
        QTest::newRow("by dbreference with bind values") << int(list_bind_ref);
    }

    void cancelled_run_reads_no_rows()
    {
        QFETCH(int, variant);
        const QString db_path = path_in("many.db");
        QStringList statements = {"CREATE TABLE media (id INTEGER PRIMARY KEY, title TEXT)",
                                  "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 5000) "
                                  "INSERT INTO media SELECT i, 'title ' || i FROM n"};
        QVERIFY(make_database(db_path, statements));

        const QString command = has_bind_values(variant) ? "SELECT title FROM media WHERE id > ? ORDER BY id"
                                                         : "SELECT title FROM media ORDER BY id";
        QCOMPARE(run_helper(variant, command, {"0"}, 0, db_path).rows.size(), 5000);

        // The flag is tested before every row, so a run cancelled before the
        // read starts gets nothing at all.
        plugin_static_function::bool_cancel_extraction = true;
        QVERIFY(run_helper(variant, command, {"0"}, 0, db_path).rows.isEmpty());
        plugin_static_function::bool_cancel_extraction = false;
        QCOMPARE(run_helper(variant, command, {"0"}, 0, db_path).rows.size(), 5000);
    }

    void path_helpers_leave_the_callers_connection_alone()
    {
        // A reader holds its own connection named after itself and, inside,
        // calls a by-dbpath helper with the same caller text: the helper's
        // private connection must neither replace nor close the reader's.
        const QString db_path = path_in("library.db");
        QVERIFY(make_database(db_path, k_people_table));
        {
            QSqlDatabase own = QSqlDatabase::addDatabase("QSQLITE", k_caller);
            own.setDatabaseName(db_path);
            QVERIFY(own.open());

            QCOMPARE(plugin_static_function::get_stringlist_from_db_by_dbpath("SELECT name FROM people ORDER BY id",
                                                                              0, db_path, k_caller),
                     (QStringList{"ann", "bob", " carl "}));
            QVERIFY(plugin_static_function::execute_db_command_by_dbpath(
                "UPDATE people SET note = 'seen' WHERE id = 2", db_path, k_caller));

            QVERIFY(own.isOpen());
            QCOMPARE(plugin_static_function::get_stringlist_from_db_by_dbreference(
                         "SELECT note FROM people WHERE id = 2", 0, own, k_caller),
                     QStringList{"seen"});
            own.close();
        }
        QSqlDatabase::removeDatabase(k_caller);

        // And no private connection stays open once a helper has returned.
        for (const QString& name : QSqlDatabase::connectionNames())
            QVERIFY2(!QSqlDatabase::database(name, false).isOpen(), qPrintable(name));
    }

    void table_list_of_a_database()
    {
        const QString db_path = path_in("vlc_media.db");
        QVERIFY(make_database(db_path, {"CREATE TABLE Media (id INTEGER PRIMARY KEY)",
                                        "CREATE TABLE Album (id INTEGER PRIMARY KEY)",
                                        "CREATE INDEX media_idx ON Media(id)",
                                        "CREATE VIEW every_media AS SELECT * FROM Media"}));
        QStringList tables = plugin_static_function::get_total_tables_list_by_dbpath(db_path, k_caller);
        tables.sort();
        QCOMPARE(tables, (QStringList{"Album", "Media"}));
    }

    void table_list_of_a_missing_file_is_empty()
    {
        const QString db_path = path_in("never_written.db");
        QVERIFY(plugin_static_function::get_total_tables_list_by_dbpath(db_path, k_caller).isEmpty());
        // The open may create an empty database; whatever stands there holds
        // no table.
        if (QFileInfo::exists(db_path))
            QCOMPARE(QFileInfo(db_path).size(), qint64(0));
    }

    void table_list_of_a_file_that_is_not_a_database()
    {
        const QString db_path = path_in("playlist.db");
        {
            QFile file(db_path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(QByteArray("#EXTM3U\n/Users/ann/Music/a.mp3\n").repeated(200));
        }
        const QByteArray before = file_hash(db_path);
        QVERIFY(plugin_static_function::get_total_tables_list_by_dbpath(db_path, k_caller).isEmpty());
        QCOMPARE(file_hash(db_path), before);
    }

    void value_existence_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("expected");
        QTest::newRow("first row") << "SELECT name FROM people ORDER BY id" << 0 << "ann" << true;
        QTest::newRow("last row") << "SELECT name FROM people ORDER BY id" << 0 << "carl" << true;
        QTest::newRow("value padded") << "SELECT name FROM people ORDER BY id" << 0 << "  bob\t" << true;
        QTest::newRow("other case") << "SELECT name FROM people ORDER BY id" << 0 << "Bob" << false;
        QTest::newRow("part of a value") << "SELECT name FROM people ORDER BY id" << 0 << "an" << false;
        QTest::newRow("second column") << "SELECT id, note FROM people" << 1 << "third" << true;
        QTest::newRow("other column holds it") << "SELECT id, note FROM people" << 1 << "ann" << false;
        QTest::newRow("NULL reads as empty") << "SELECT note FROM people WHERE id = 2" << 0 << "" << true;
        QTest::newRow("no rows") << "SELECT name FROM people WHERE id > 100" << 0 << "" << false;
    }

    void value_existence()
    {
        QFETCH(QString, command);
        QFETCH(int, column);
        QFETCH(QString, value);
        QFETCH(bool, expected);
        const QString db_path = path_in("people.db");
        QVERIFY(make_database(db_path, k_people_table));
        const QString name = "existence " + QUuid::createUuid().toString();
        {
            QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", name);
            db.setDatabaseName(db_path);
            QVERIFY(db.open());
            QCOMPARE(plugin_static_function::check_value_existence_in_db_by_dbreference(command, column, value, db),
                     expected);

            // A cancelled run never finds anything.
            plugin_static_function::bool_cancel_extraction = true;
            QVERIFY(!plugin_static_function::check_value_existence_in_db_by_dbreference(command, column, value, db));
            plugin_static_function::bool_cancel_extraction = false;
            db.close();
        }
        QSqlDatabase::removeDatabase(name);
    }

    void value_existence_with_failing_statement()
    {
        const QString db_path = path_in("people.db");
        QVERIFY(make_database(db_path, k_people_table));
        debug_log_capture log(path_in("debug.log"));
        const QString name = "existence " + QUuid::createUuid().toString();
        {
            QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", name);
            db.setDatabaseName(db_path);
            QVERIFY(db.open());
            QVERIFY(!plugin_static_function::check_value_existence_in_db_by_dbreference(
                "SELECT title FROM people", 0, "ann", db));
            db.close();
        }
        QSqlDatabase::removeDatabase(name);

        const QStringList messages = log.messages();
        QCOMPARE(messages.size(), 3);
        QVERIFY(messages.at(0).startsWith("[check_value_existence_in_db_by_dbpath] query --------FAILED------"));
        QVERIFY(messages.at(0).contains(db_path));
        QCOMPARE(messages.at(1), QString("[check_value_existence_in_db_by_dbpath]commandSELECT title FROM people"));
        QVERIFY(messages.at(2).startsWith("[check_value_existence_in_db_by_dbpath] error"));
        QVERIFY(messages.at(2).contains("no such column: title"));
        for (const QString& function : log.functions())
            QCOMPARE(function, QString("plugin_static_function::check_value_existence_in_db_by_dbreference"));
    }

    void debug_mode_off_writes_nothing()
    {
        // The failure report goes through the debug log only; with the log
        // off the helper still fails quietly and returns.
        const QString db_path = path_in("people.db");
        QVERIFY(make_database(db_path, k_people_table));
        const QString log_path = path_in("debug.log");
        {
            debug_log_capture log(log_path);
            plugin_static_function::debug_mode_status_bool = false;
            QVERIFY(!plugin_static_function::execute_db_command_by_dbpath("DELETE FROM nowhere", db_path, k_caller));
            QVERIFY(log.lines().isEmpty());
        }
    }
};

QTEST_GUILESS_MAIN(test_plugin_static_function_db)
#include "test_plugin_static_function_db.moc"
