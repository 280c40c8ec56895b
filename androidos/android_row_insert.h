#pragma once

// One prepared insert into the result database, re-bound for every row.
//
// Qt binds each value through a QVariant conversion; for a table of many
// columns and many rows that binding is most of the cost of the insert. When
// the result connection's driver runs on the same SQLite library that this
// code links, the values are bound straight on SQLite's own statement. When it
// does not (a Qt build with its own SQLite copy), a Qt prepared query does the
// same work more slowly.

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QStringList>

struct sqlite3_stmt;

class android_row_insert
{
public:
    android_row_insert(QSqlDatabase& db, const QString& statement);
    ~android_row_insert();

    android_row_insert(const android_row_insert&) = delete;
    android_row_insert& operator=(const android_row_insert&) = delete;

    bool is_prepared() const { return m_raw != nullptr || m_query_prepared; }
    // Binds the values in order as text and runs the insert once.
    bool execute(const QStringList& values);
    QString error_text() const { return m_error; }
    QString statement() const { return m_statement; }

private:
    bool prepare_raw(QSqlDatabase& db);

    QString m_statement;
    QString m_error;
    sqlite3_stmt* m_raw = nullptr;
    QSqlQuery m_query;
    bool m_query_prepared = false;
};
