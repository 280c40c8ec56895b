#include "sqlite_connection_scope.h"

#include <QSqlError>

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
    return m_db.open();
}

bool sqlite_connection_scope::open_read_only()
{
    m_db.setConnectOptions("QSQLITE_OPEN_READONLY");
    return m_db.open();
}

QString sqlite_connection_scope::last_error_text() const
{
    return m_db.lastError().text();
}
