#pragma once

// The frame every Android table reader runs in: a working copy of the media
// database, the result database open with one transaction, the copy open
// beside it, and the reader's main statement executed on the copy. Leaving the
// scope closes the copy and commits and closes the result database, so rows
// written before a cancel or a failure always stay.

#include <QElapsedTimer>
#include <QString>

#include <memory>

#include "prepared_statement.h"
#include "sqlite_connection_scope.h"

class plugin_helper_functions;

class android_source_run
{
public:
    // signature: the reader's full signature, used for its log lines and as
    // the name of its result connection (its source connection adds "1").
    android_source_run(const QString& signature, const QString& result_db_path);
    ~android_source_run();

    android_source_run(const android_source_run&) = delete;
    android_source_run& operator=(const android_source_run&) = delete;

    // Logs the start, then copies and opens; false (with the failure logged)
    // when there is nothing to read.
    bool open(const QString& source_path, const QString& source_root, plugin_helper_functions* helper);
    // Runs the reader's main statement on the open copy; false (logged) when
    // it failed.
    bool select(const QString& select_statement);

    prepared_statement& rows() { return *m_rows; }
    // The next row of the main statement; starts that row's time. Never more
    // rows than the statement counts when run alone (see row_ceiling).
    bool next_row();
    const QSqlDatabase& source() const { return m_source->db(); }
    const QSqlDatabase& result() const { return m_result->db(); }
    QString source_name() const;

    // Logs a failed statement the way every reader does: a headline with the
    // source's name, then the error text, then the statement.
    void log_query_failure(const QString& headline, const prepared_statement& statement) const;
    // Runs a statement for one key and gathers the first column of its rows
    // (the media of an album or a playlist); false when it failed.
    static bool read_ids(prepared_statement& statement, const QString& key, QStringList* ids);
    // Inserts one row; false (logged) when it failed.
    bool insert(prepared_statement& insert, const QStringList& values) const;
    // Normal end of a reader: closes everything and logs the end line.
    void finish();
    // A reader calls this before the statements of each row: a statement of
    // the source that keeps running longer than k_row_limit_ms after it (a
    // view in a forged database can compute without end) is stopped and
    // fails like any other. From then on every long statement of this source
    // is stopped at once, so such a database costs the limit once a table,
    // not once a row.
    void row_started() { m_row_timer.start(); }

    static constexpr qint64 k_row_limit_ms = 10000;

private:
    static constexpr int k_source_cache_kib = 64 * 1024;
    void tune_source_cache();
    void watch_source_statements();
    static int over_row_limit(void* run);
    qint64 row_ceiling(const QString& select_statement);
    void close();

    QString m_signature;
    QString m_result_path;
    std::unique_ptr<sqlite_connection_scope> m_result;
    std::unique_ptr<sqlite_connection_scope> m_source;
    std::unique_ptr<prepared_statement> m_rows;
    qint64 m_row_ceiling = 0;
    qint64 m_rows_given = 0;
    QElapsedTimer m_row_timer;
    bool m_over_limit = false;
};
