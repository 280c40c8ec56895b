#include "android_row_insert.h"

#include <QSqlDriver>
#include <QSqlError>
#include <QVariant>

#include <sqlite3.h>

namespace {

// The SQLite version that the connection's driver runs, asked through Qt.
QString driver_sqlite_version(QSqlDatabase& db)
{
    QSqlQuery query(db);
    if (!query.exec("select sqlite_version()") || !query.next())
        return QString();
    return query.value(0).toString();
}

}  // namespace

android_row_insert::android_row_insert(QSqlDatabase& db, const QString& statement)
    : m_statement(statement), m_query(db)
{
    if (prepare_raw(db))
        return;
    m_query_prepared = m_query.prepare(statement);
    if (!m_query_prepared)
        m_error = m_query.lastError().text();
}

android_row_insert::~android_row_insert()
{
    if (m_raw)
        sqlite3_finalize(m_raw);
}

bool android_row_insert::prepare_raw(QSqlDatabase& db)
{
    const QVariant handle = db.driver() ? db.driver()->handle() : QVariant();
    if (!handle.isValid() || qstrcmp(handle.typeName(), "sqlite3*") != 0)
        return false;
    // A handle from another SQLite copy must never reach this library's calls.
    if (driver_sqlite_version(db) != QString::fromLatin1(sqlite3_libversion()))
        return false;
    sqlite3* connection = *static_cast<sqlite3* const*>(handle.data());
    if (!connection)
        return false;
    const QByteArray text = m_statement.toUtf8();
    if (sqlite3_prepare_v2(connection, text.constData(), int(text.size()), &m_raw, nullptr) != SQLITE_OK) {
        m_error = QString::fromUtf8(sqlite3_errmsg(connection));
        if (m_raw)
            sqlite3_finalize(m_raw);
        m_raw = nullptr;
        return false;
    }
    return true;
}

bool android_row_insert::execute(const QStringList& values)
{
    if (m_raw) {
        sqlite3_reset(m_raw);
        for (int i = 0; i < values.size(); ++i) {
            const QString& value = values.at(i);
            // As Qt's own binding does: a null text is NULL, any other is text.
            if (value.isNull()) {
                sqlite3_bind_null(m_raw, i + 1);
                continue;
            }
            sqlite3_bind_text16(m_raw, i + 1, value.utf16(), int(value.size() * sizeof(char16_t)),
                                SQLITE_TRANSIENT);
        }
        const int status = sqlite3_step(m_raw);
        if (status == SQLITE_DONE)
            return true;
        m_error = QString::fromUtf8(sqlite3_errmsg(sqlite3_db_handle(m_raw)));
        return false;
    }
    if (!m_query_prepared)
        return false;
    for (int i = 0; i < values.size(); ++i)
        m_query.bindValue(i, values.at(i));
    if (m_query.exec())
        return true;
    m_error = m_query.lastError().text();
    return false;
}
