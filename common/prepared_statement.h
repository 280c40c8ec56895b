#pragma once

// One prepared statement on a QSQLITE connection, run many times with new
// values: the readers' lookups and inserts run once or more per evidence row,
// over tables of a hundred thousand rows.
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

struct sqlite3;
struct sqlite3_stmt;

class prepared_statement
{
public:
    // How bound texts reach the database. Each extractor's tables keep the
    // form their readers have always written: a missing value as NULL
    // (null_as_null), as an empty text (null_as_empty), or every empty text
    // as NULL (empty_as_null).
    enum class text_binding { null_as_null, null_as_empty, empty_as_null };

    prepared_statement(const QSqlDatabase& db, const QString& statement,
                       text_binding binding = text_binding::null_as_null);
    ~prepared_statement();

    prepared_statement(const prepared_statement&) = delete;
    prepared_statement& operator=(const prepared_statement&) = delete;

    bool is_prepared() const { return m_raw || m_query_prepared; }

    // The connection's own SQLite handle when its driver runs on the library
    // this code links; null otherwise (then only Qt may touch the connection).
    static sqlite3* shared_handle(const QSqlDatabase& db);

    // Binds the values in order as text (nulls and empties as the binding
    // says) and runs the statement up to its first row; false when preparing
    // or running failed.
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
    bool binds_null(const QString& value) const;

    QString m_statement;
    text_binding m_binding;
    QString m_error;
    sqlite3_stmt* m_raw = nullptr;
    QStringEncoder m_encoder{QStringEncoder::Utf8};
    QByteArray m_utf8;
    bool m_row_pending = false;
    QSqlQuery m_query;
    bool m_query_prepared = false;
};
