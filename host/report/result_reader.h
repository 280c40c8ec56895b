#pragma once

// Reads a result database for the report: opened read-only, tables in the
// usual order, rows streamed one at a time so that a library of a hundred
// thousand tracks never sits in memory whole.

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

class result_reader
{
public:
    explicit result_reader(const QString& database_path);
    ~result_reader();
    result_reader(const result_reader&) = delete;
    result_reader& operator=(const result_reader&) = delete;

    bool is_open() const { return m_open; }
    QString error() const { return m_error; }

    // The result tables present: the eight in their usual order, then any
    // other table by name.
    QStringList tables() const;
    QStringList columns(const QString& table) const;
    // -1 when the table cannot be read.
    qint64 row_count(const QString& table) const;
    // Per column, whether at least one row holds a value (a bookmark flag of
    // 0 is no value).
    QList<bool> columns_with_values(const QString& table) const;
    // Every row in row-id order, values as text (NULL as a null string);
    // visit returns false to stop. False when the table cannot be read.
    bool for_each_row(const QString& table, const std::function<bool(const QStringList& row)>& visit) const;

    struct account_rows
    {
        QString scheme;  // as the rows show it
        QString user;
        qint64 rows = 0;
    };
    // Rows per scheme and account; one entry without either for a table that
    // has no account columns.
    QList<account_rows> rows_per_account(const QString& table) const;

private:
    QString m_connection;
    bool m_open = false;
    QString m_error;
};
