#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

namespace result_summary {

const QStringList& all_tables();

// Rows per table of a result database, in the order asked; -1 where the table
// cannot be read. Opens the file read-only.
QList<QPair<QString, qint64>> count_rows(const QString& database_path, const QStringList& tables);

QString format_table(const QList<QPair<QString, qint64>>& counts);

// Rows per account (system_user) over the tables, accounts in name order;
// rows without an account count under "(none)".
QList<QPair<QString, qint64>> rows_per_user(const QString& database_path, const QStringList& tables);

}  // namespace result_summary
