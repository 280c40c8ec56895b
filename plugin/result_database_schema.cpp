#include "result_database_schema.h"

#include <QStringList>

namespace result_database_schema {

QString create_statement(const table_definition& table)
{
    QStringList columns;
    for (int i = 0; i < table.column_count; ++i)
        columns << QString::fromLatin1(table.columns[i].name) + " " + QString::fromLatin1(table.columns[i].declared_type);
    return "CREATE TABLE IF NOT EXISTS " + QString::fromLatin1(table.name) + " (" + columns.join(", ") + ")";
}

}  // namespace result_database_schema
