// SQL helpers: every statement of the plug-in runs through these, so that a
// failure is always logged in the same four-line pattern and never thrown.

#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include "plugin_static_function.h"
#include "sqlite_connection_scope.h"

namespace {

const QString sig_exec_path = "static bool plugin_static_function::execute_db_command_by_dbpath(QString, QString, QString)";
const QString sig_exec_bind_path = "static bool plugin_static_function::execute_db_command_with_addbindvalue_by_dbpath(QString, QStringList, QString, QString)";
const QString sig_exec_ref = "static bool plugin_static_function::execute_db_command_by_dbreference(QString, QSqlDatabase &, QString)";
const QString sig_exec_bind_ref = "static bool plugin_static_function::execute_db_command_with_addbindvalue_by_dbreference(QString, QStringList, QSqlDatabase &, QString)";
const QString sig_list_path = "static QStringList plugin_static_function::get_stringlist_from_db_by_dbpath(QString, int, QString, QString)";
const QString sig_list_bind_path = "static QStringList plugin_static_function::get_stringlist_from_db_with_addbindvalues_by_dbpath(QString, QStringList, int, QString, QString)";
const QString sig_list_ref = "static QStringList plugin_static_function::get_stringlist_from_db_by_dbreference(QString, int, QSqlDatabase &, QString)";
const QString sig_list_bind_ref = "static QStringList plugin_static_function::get_stringlist_from_db_with_addbindvalues_by_dbreference(QString, QStringList, int, QSqlDatabase &, QString)";
const QString sig_exists_ref = "static bool plugin_static_function::check_value_existence_in_db_by_dbreference(QString, int, QString, QSqlDatabase)";
const QString sig_tables_path = "static QStringList plugin_static_function::get_total_tables_list_by_dbpath(QString, QString)";

// The four prefixes of a failed-statement report differ slightly between the
// helper families; each family keeps its own.
struct failure_prefixes
{
    const char* db_file;
    const char* caller;
    const char* command;
    const char* error;
};

const failure_prefixes exec_path_prefixes{" query  --------FAILED------ db file - ", "CALLER FUNCTION -  ", " command -  ", " error -  "};
const failure_prefixes exec_bind_path_prefixes{" query  --------FAILED------ db file - ", " CALLER FUNCTION -  ", " command -  ", " error -  "};
const failure_prefixes exec_ref_prefixes{" query  --------FAILED------ db file - ", " CALLER FUNCTION -  -  ", " command -  ", " error -  "};
const failure_prefixes list_ref_prefixes{" query  --------FAILED------db file - ", " CALLER FUNCTION -  -  ", " command -  ", " error -  "};
const failure_prefixes list_path_prefixes{"query  --------FAILED------db file - ", "CALLER FUNCTION -  ", "command -  ", "error -  "};

void log_failed_statement(const failure_prefixes& p, const QString& db_name, const QString& caller,
                          const QString& command, const QSqlQuery& query, const QString& signature)
{
    plugin_static_function::app_debug(QString(p.db_file) + db_name, signature);
    plugin_static_function::app_debug(QString(p.caller) + caller, signature);
    plugin_static_function::app_debug(QString(p.command) + command, signature);
    plugin_static_function::app_debug(QString(p.error) + query.lastError().text(), signature);
}

bool run_statement(QSqlQuery& query, const QString& command, const QStringList* values)
{
    if (!query.prepare(command))
        return false;
    if (values) {
        for (const QString& value : *values)
            query.addBindValue(value);
    }
    return query.exec();
}

// Reads one column of every row; stops at once when the run is cancelled.
QStringList read_column(QSqlQuery& query, int column)
{
    QStringList rows;
    while (query.next()) {
        if (plugin_static_function::bool_cancel_extraction)
            break;
        rows << query.value(column).toString();
    }
    return rows;
}

bool execute_by_reference(const QString& command, const QStringList* values, QSqlDatabase& db,
                          const QString& caller, const QString& signature)
{
    QSqlQuery query(db);
    if (!run_statement(query, command, values)) {
        log_failed_statement(exec_ref_prefixes, db.databaseName(), caller, command, query, signature);
        return false;
    }
    return true;
}

QStringList list_by_reference(const QString& command, const QStringList* values, int column, QSqlDatabase& db,
                              const QString& caller, const QString& signature)
{
    plugin_static_function::app_debug(" Start ", signature);
    QSqlQuery query(db);
    if (!run_statement(query, command, values)) {
        log_failed_statement(list_ref_prefixes, db.databaseName(), caller, command, query, signature);
        return QStringList();
    }
    const QStringList rows = read_column(query, column);
    plugin_static_function::app_debug(" end ", signature);
    return rows;
}

}  // namespace

bool plugin_static_function::execute_db_command_by_dbpath(QString command, QString db_path, QString caller)
{
    sqlite_connection_scope connection(sig_exec_path + caller, db_path);
    if (!connection.open()) {
        app_debug(" Destination Db opening --------FAILED------ " + db_path, sig_exec_path);
        app_debug("CALLER FUNCTION -  " + caller, sig_exec_path);
        return false;
    }
    QSqlQuery query(connection.db());
    const bool ok = run_statement(query, command, nullptr);
    if (!ok)
        log_failed_statement(exec_path_prefixes, db_path, caller, command, query, sig_exec_path);
    return ok;
}

bool plugin_static_function::execute_db_command_with_addbindvalue_by_dbpath(QString command, QStringList values,
                                                                            QString db_path, QString caller)
{
    sqlite_connection_scope connection(sig_exec_bind_path + caller, db_path);
    if (!connection.open()) {
        app_debug(" Destination Db opening --------FAILED------ " + db_path, sig_exec_bind_path);
        app_debug("CALLER FUNCTION -  " + caller, sig_exec_bind_path);
        app_debug(" error -  " + connection.last_error_text(), sig_exec_bind_path);
        return false;
    }
    QSqlQuery query(connection.db());
    const bool ok = run_statement(query, command, &values);
    if (!ok)
        log_failed_statement(exec_bind_path_prefixes, db_path, caller, command, query, sig_exec_bind_path);
    return ok;
}

bool plugin_static_function::execute_db_command_by_dbreference(QString command, QSqlDatabase& db, QString caller)
{
    return execute_by_reference(command, nullptr, db, caller, sig_exec_ref);
}

bool plugin_static_function::execute_db_command_with_addbindvalue_by_dbreference(QString command,
                                                                                 QStringList values,
                                                                                 QSqlDatabase& db, QString caller)
{
    return execute_by_reference(command, &values, db, caller, sig_exec_bind_ref);
}

namespace {

QStringList list_by_path(const QString& command, const QStringList* values, int column, const QString& db_path,
                         const QString& caller, const QString& signature)
{
    plugin_static_function::app_debug(" Start ", signature);
    sqlite_connection_scope connection(signature + caller, db_path);
    if (!connection.open()) {
        plugin_static_function::app_debug("Destination Db opening --------FAILED------ " + db_path, signature);
        plugin_static_function::app_debug("CALLER FUNCTION -  " + caller, signature);
        return QStringList();
    }
    QSqlQuery query(connection.db());
    if (!run_statement(query, command, values)) {
        log_failed_statement(list_path_prefixes, db_path, caller, command, query, signature);
        return QStringList();
    }
    const QStringList rows = read_column(query, column);
    plugin_static_function::app_debug(values ? " End " : " end ", signature);
    return rows;
}

}  // namespace

QStringList plugin_static_function::get_stringlist_from_db_by_dbpath(QString command, int column, QString db_path,
                                                                     QString caller)
{
    return list_by_path(command, nullptr, column, db_path, caller, sig_list_path);
}

QStringList plugin_static_function::get_stringlist_from_db_with_addbindvalues_by_dbpath(QString command,
                                                                                        QStringList values,
                                                                                        int column, QString db_path,
                                                                                        QString caller)
{
    return list_by_path(command, &values, column, db_path, caller, sig_list_bind_path);
}

QStringList plugin_static_function::get_stringlist_from_db_by_dbreference(QString command, int column,
                                                                          QSqlDatabase& db, QString caller)
{
    return list_by_reference(command, nullptr, column, db, caller, sig_list_ref);
}

QStringList plugin_static_function::get_stringlist_from_db_with_addbindvalues_by_dbreference(
    QString command, QStringList values, int column, QSqlDatabase& db, QString caller)
{
    return list_by_reference(command, &values, column, db, caller, sig_list_bind_ref);
}

bool plugin_static_function::check_value_existence_in_db_by_dbreference(QString command, int column, QString value,
                                                                        QSqlDatabase db)
{
    QSqlQuery query(db);
    if (!run_statement(query, command, nullptr)) {
        app_debug("[check_value_existence_in_db_by_dbpath] query --------FAILED------" + db.databaseName(),
                  sig_exists_ref);
        app_debug("[check_value_existence_in_db_by_dbpath]command" + command, sig_exists_ref);
        app_debug("[check_value_existence_in_db_by_dbpath] error" + query.lastError().text(), sig_exists_ref);
        return false;
    }
    const QString wanted = value.trimmed();
    while (query.next()) {
        if (bool_cancel_extraction)
            return false;
        if (query.value(column).toString().trimmed() == wanted)
            return true;
    }
    return false;
}

QStringList plugin_static_function::get_total_tables_list_by_dbpath(QString db_path, QString caller)
{
    sqlite_connection_scope connection(sig_tables_path + caller, db_path);
    if (!connection.open()) {
        app_debug("Destination Db opening --------FAILED------ " + db_path, sig_tables_path);
        app_debug("CALLER FUNCTION -  " + caller, sig_tables_path);
        return QStringList();
    }
    return connection.db().tables(QSql::Tables);
}
