#include "result_reader.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QVariant>

#include "result_summary.h"

namespace {

QString quoted(const QString& name)
{
    return '"' + QString(name).replace('"', "\"\"") + '"';
}

}  // namespace

result_reader::result_reader(const QString& database_path)
{
    static int s_next = 0;
    m_connection = QString("vlc-artifacts report %1").arg(++s_next);
    QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", m_connection);
    db.setDatabaseName(database_path);
    db.setConnectOptions("QSQLITE_OPEN_READONLY");
    m_open = db.open();
    if (!m_open)
        m_error = db.lastError().text();
}

result_reader::~result_reader()
{
    {
        QSqlDatabase db = QSqlDatabase::database(m_connection, false);
        db.close();
    }
    QSqlDatabase::removeDatabase(m_connection);
}

QStringList result_reader::tables() const
{
    QStringList present = QSqlDatabase::database(m_connection, false).tables();
    QStringList ordered;
    for (const QString& table : result_summary::all_tables()) {
        if (present.removeAll(table) > 0)
            ordered << table;
    }
    present.sort();
    for (const QString& table : present) {
        if (!table.startsWith("sqlite_"))
            ordered << table;
    }
    return ordered;
}

QStringList result_reader::columns(const QString& table) const
{
    const QSqlRecord record = QSqlDatabase::database(m_connection, false).record(table);
    QStringList names;
    for (int i = 0; i < record.count(); ++i)
        names << record.fieldName(i);
    return names;
}

qint64 result_reader::row_count(const QString& table) const
{
    QSqlQuery query(QSqlDatabase::database(m_connection, false));
    if (!query.exec("SELECT count(*) FROM " + quoted(table)) || !query.next())
        return -1;
    return query.value(0).toLongLong();
}

QList<bool> result_reader::columns_with_values(const QString& table) const
{
    const QStringList names = columns(table);
    QList<bool> filled(names.size(), false);
    if (names.isEmpty())
        return filled;
    QStringList counts;
    for (const QString& name : names) {
        const QString empty_flag = name == "bookmark" ? QString(" AND %1 <> 0").arg(quoted(name)) : QString();
        counts << QString("max(%1 IS NOT NULL AND %1 <> ''%2)").arg(quoted(name), empty_flag);
    }
    QSqlQuery query(QSqlDatabase::database(m_connection, false));
    if (!query.exec("SELECT " + counts.join(", ") + " FROM " + quoted(table)) || !query.next())
        return filled;
    for (int i = 0; i < names.size(); ++i)
        filled[i] = query.value(i).toInt() == 1;
    return filled;
}

bool result_reader::for_each_row(const QString& table, const std::function<bool(const QStringList& row)>& visit) const
{
    QSqlQuery query(QSqlDatabase::database(m_connection, false));
    query.setForwardOnly(true);
    const bool has_row_id = columns(table).contains("INT");
    if (!query.exec("SELECT * FROM " + quoted(table) + (has_row_id ? " ORDER BY INT" : QString())))
        return false;
    const int width = query.record().count();
    QStringList row;
    while (query.next()) {
        row.clear();
        for (int i = 0; i < width; ++i) {
            const QVariant value = query.value(i);
            row << (value.isNull() ? QString() : value.toString());
        }
        if (!visit(row))
            break;
    }
    return true;
}

QList<result_reader::account_rows> result_reader::rows_per_account(const QString& table) const
{
    QList<account_rows> counts;
    const QStringList names = columns(table);
    QSqlQuery query(QSqlDatabase::database(m_connection, false));
    if (!names.contains("system_user") || !names.contains("os_scheme_display")) {
        const qint64 rows = row_count(table);
        if (rows > 0)
            counts.append({QString(), QString(), rows});
        return counts;
    }
    if (!query.exec("SELECT os_scheme_display, system_user, count(*) FROM " + quoted(table)
                    + " GROUP BY 1, 2 ORDER BY 1, 2"))
        return counts;
    while (query.next())
        counts.append({query.value(0).toString(), query.value(1).toString(), query.value(2).toLongLong()});
    return counts;
}
