#include "sqlite_connection_scope.h"

#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>

namespace {

// How long a writer waits for a lock another connection holds. Short: the
// plug-in never holds two writers on its result database, so a lock that
// lasts longer is another program's, and waiting on every row would stall
// the run for hours.
constexpr int k_busy_timeout_ms = 2000;

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
    return open() && begin_writing();
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
