#pragma once

// One prepared statement on a QSQLITE connection, run many times with new
// values: the lookups and inserts of the Android readers run once or more
// per row, over tables of a hundred thousand rows.
//
// Qt re-reads the column layout and converts every value through QVariant on
// each run, which costs more than the statement itself. When the connection's
// driver runs on the same SQLite library that this code links, the statement
// is kept as SQLite's own and values pass as UTF-8 text. When it does not (a
// Qt build with its own SQLite copy), a prepared QSqlQuery does the same work
// more slowly.

#include <QByteArray>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QStringEncoder>
#include <QStringList>

#include <memory>

struct sqlite3_stmt;

class android_statement
{
public:
    android_statement(const QSqlDatabase& db, const QString& statement);
    ~android_statement();

    android_statement(const android_statement&) = delete;
    android_statement& operator=(const android_statement&) = delete;

    // Binds the values in order as text (a null text as NULL) and runs the
    // statement up to its first row; false when preparing or running failed.
    bool execute(const QStringList& values);
    bool execute(const QString& value);
    // The next result row of a query; false at the end or on an error.
    bool next();
    // A column of the current row as text; NULL is a null text.
    QString text(int column) const;
    bool is_null(int column) const;
    // Releases the current result so the statement holds no read lock.
    void finish();

    QString error_text() const { return m_error; }
    const QString& statement() const { return m_statement; }

private:
    bool prepare_raw(const QSqlDatabase& db);
    bool execute(const QString* values, qsizetype count);
    void bind_raw(const QString* values, qsizetype count);

    QString m_statement;
    QString m_error;
    sqlite3_stmt* m_raw = nullptr;
    QStringEncoder m_encoder{QStringEncoder::Utf8};
    QByteArray m_utf8;
    bool m_row_pending = false;
    QSqlQuery m_query;
    bool m_query_prepared = false;
};

// A query object of the source database, kept for a whole run; the lookup
// that uses it prepares its statement on the first call and re-binds it after.
class android_query
{
public:
    explicit android_query(const QSqlDatabase& db) : m_db(db) {}

    android_statement& prepared(const QString& statement)
    {
        if (!m_statement || m_statement->statement() != statement)
            m_statement = std::make_unique<android_statement>(m_db, statement);
        return *m_statement;
    }

private:
    QSqlDatabase m_db;
    std::unique_ptr<android_statement> m_statement;
};
