#include "sqlite_connection_scope.h"

#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>

#include "plugin_static_function.h"

namespace {

// How long a writer waits for a lock another connection holds. Short: the
// plug-in never holds two writers on its result database, so a lock that
// lasts longer is another program's, and waiting on every row would stall
// the run for hours.
constexpr int k_busy_timeout_ms = 2000;

// The connection of the table being written: the plug-in writes one table at
// a time, on one thread.
sqlite_connection_scope* g_batch_writer = nullptr;

}  // namespace

sqlite_connection_scope::sqlite_connection_scope(const QString& connection_name, const QString& database_path)
    : m_name(connection_name)
{
    if (QSqlDatabase::contains(m_name))
        QSqlDatabase::removeDatabase(m_name);
    m_db = QSqlDatabase::addDatabase("QSQLITE", m_name);
    m_db.setDatabaseName(database_path);
}

sqlite_connection_scope::~sqlite_connection_scope()
{
    if (g_batch_writer == this)
        g_batch_writer = nullptr;
    if (m_db.isOpen())
        m_db.close();
    m_db = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_name);
}

bool sqlite_connection_scope::open()
{
    m_db.setConnectOptions(QString("QSQLITE_BUSY_TIMEOUT=%1").arg(k_busy_timeout_ms));
    return m_db.open();
}

bool sqlite_connection_scope::open_for_writing()
{
    if (!QFileInfo(m_db.databaseName()).isFile()) {
        m_error = "the database does not exist: " + m_db.databaseName();
        return false;
    }
    if (!open() || !begin_writing())
        return false;
    g_batch_writer = this;
    return true;
}

void sqlite_connection_scope::commit_batch()
{
    if (!g_batch_writer || !g_batch_writer->m_db.isOpen())
        return;
    QSqlDatabase& db = g_batch_writer->m_db;
    // A failed commit leaves the transaction open: its rows then go with the
    // next batch or the table's own commit.
    if (!db.commit() || !g_batch_writer->begin_writing())
        plugin_static_function::app_debug("batch commit of the result database ---FAILED--- "
                                              + g_batch_writer->last_error_text(),
                                          "static void sqlite_connection_scope::commit_batch()");
}

bool sqlite_connection_scope::begin_writing()
{
    QSqlQuery begin(m_db);
    if (begin.exec("BEGIN IMMEDIATE"))
        return true;
    m_error = begin.lastError().text();
    return false;
}

bool sqlite_connection_scope::open_read_only()
{
    m_db.setConnectOptions("QSQLITE_OPEN_READONLY");
    return m_db.open();
}

QString sqlite_connection_scope::last_error_text() const
{
    return m_error.isEmpty() ? m_db.lastError().text() : m_error;
}
