#pragma once

#include <QList>
#include <QString>

namespace result_database_schema {

struct column_definition
{
    const char* name;
    const char* declared_type;
};

struct table_definition
{
    const char* name;
    const column_definition* columns;
    int column_count;
};

// The eight tables in creation order.
const QList<table_definition>& tables();

// "CREATE TABLE IF NOT EXISTS <name> (<column> <type>, ...)"
QString create_statement(const table_definition& table);

}  // namespace result_database_schema
