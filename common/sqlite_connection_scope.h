#pragma once

// Owns one named QSQLITE connection for the length of a scope. Any earlier
// connection of the same name is dropped first, and on leaving the scope the
// connection is closed and removed from Qt's registry, after every handle to
// it is gone, so no "connection still in use" warnings and no leaked names.

#include <QSqlDatabase>
#include <QString>

class sqlite_connection_scope
{
public:
    sqlite_connection_scope(const QString& connection_name, const QString& database_path);
    ~sqlite_connection_scope();

    sqlite_connection_scope(const sqlite_connection_scope&) = delete;
    sqlite_connection_scope& operator=(const sqlite_connection_scope&) = delete;

    bool open();
    // Opens the result database for a run of inserts and takes its write lock
    // at once. A database that is gone (deleted since it was made) is not made
    // again empty, and one that another program holds locked fails here after
    // a short wait: either way one failure, not one per row. This connection
    // then takes the batch commits below until it goes.
    bool open_for_writing();
    // Commits the rows the table being written holds so far and goes on in a
    // new transaction. A table's readers call it about once a second (see
    // extractor_base::count_inserted_row): a run killed in the middle of a
    // long table loses only its last batch, not the table.
    static void commit_batch();
    // Takes the write lock on an open connection ("BEGIN IMMEDIATE"); the
    // caller's commit() ends it.
    bool begin_writing();
    // Opens an evidence working copy read-only; SQLite still replays a -wal
    // companion that sits beside the copy.
    bool open_read_only();
    QSqlDatabase& db() { return m_db; }
    QString last_error_text() const;
    const QString& name() const { return m_name; }

private:
    QString m_name;
    QSqlDatabase m_db;
    QString m_error;  // a failure found before SQLite was asked
};
