#include "prepared_statement.h"

#include <QSqlDriver>
#include <QSqlError>
#include <QVariant>

#include <sqlite3.h>

namespace {

// The SQLite version that the connection's driver runs, asked through Qt.
QString driver_sqlite_version(const QSqlDatabase& db)
{
    QSqlQuery query(db);
    if (!query.exec("select sqlite_version()") || !query.next())
        return QString();
    return query.value(0).toString();
}

}  // namespace

prepared_statement::prepared_statement(const QSqlDatabase& db, const QString& statement, text_binding binding)
    : m_statement(statement), m_binding(binding), m_query(db)
{
    if (prepare_raw(db))
        return;
    m_query.setForwardOnly(true);
    m_query_prepared = m_query.prepare(statement);
    if (!m_query_prepared)
        m_error = m_query.lastError().text();
}

prepared_statement::~prepared_statement()
{
    if (m_raw)
        sqlite3_finalize(m_raw);
}

bool prepared_statement::binds_null(const QString& value) const
{
    switch (m_binding) {
    case text_binding::null_as_null:
        return value.isNull();
    case text_binding::null_as_empty:
        return false;
    case text_binding::empty_as_null:
        return value.isEmpty();
    }
    return value.isNull();
}

sqlite3* prepared_statement::shared_handle(const QSqlDatabase& db)
{
#ifdef __APPLE__
    // Qt's own builds there carry a private SQLite inside the driver; its
    // handle must never reach the system library's calls, whatever the
    // versions say.
    return nullptr;
#endif
    const QVariant handle = db.driver() ? db.driver()->handle() : QVariant();
    if (!handle.isValid() || qstrcmp(handle.typeName(), "sqlite3*") != 0)
        return nullptr;
    // A handle from another SQLite copy must never reach this library's calls.
    if (driver_sqlite_version(db) != QString::fromLatin1(sqlite3_libversion()))
        return nullptr;
    return *static_cast<sqlite3* const*>(handle.data());
}

bool prepared_statement::prepare_raw(const QSqlDatabase& db)
{
    sqlite3* connection = shared_handle(db);
    if (!connection)
        return false;
    const QByteArray text = m_statement.toUtf8();
    if (sqlite3_prepare_v2(connection, text.constData(), int(text.size()), &m_raw, nullptr) == SQLITE_OK)
        return true;
    m_error = QString::fromUtf8(sqlite3_errmsg(connection));
    sqlite3_finalize(m_raw);
    m_raw = nullptr;
    return false;
}

bool prepared_statement::execute(const QStringList& values)
{
    return execute(values.constData(), values.size());
}

bool prepared_statement::execute(const QString& value)
{
    return execute(&value, 1);
}

bool prepared_statement::execute(const QString* values, qsizetype count)
{
    m_row_pending = false;
    if (!m_raw) {
        if (!m_query_prepared)
            return false;
        for (qsizetype i = 0; i < count; ++i)
            m_query.bindValue(int(i), binds_null(values[i]) ? QVariant(QMetaType(QMetaType::QString))
                                                            : QVariant(values[i].isNull() ? QString("") : values[i]));
        if (m_query.exec())
            return true;
        m_error = m_query.lastError().text();
        return false;
    }
    sqlite3_reset(m_raw);
    bind_raw(values, count);
    // The first step runs here, so a statement that fails on its first row
    // fails as a whole, as with Qt.
    const int status = sqlite3_step(m_raw);
    if (status == SQLITE_ROW || status == SQLITE_DONE) {
        m_row_pending = status == SQLITE_ROW;
        return true;
    }
    m_error = QString::fromUtf8(sqlite3_errmsg(sqlite3_db_handle(m_raw)));
    sqlite3_reset(m_raw);
    return false;
}

void prepared_statement::bind_raw(const QString* values, qsizetype count)
{
    // All values are encoded into one buffer that lives until the next run,
    // so a row costs no allocation once the buffer has grown, and SQLite need
    // not copy the text.
    qsizetype required = 0;
    for (qsizetype i = 0; i < count; ++i)
        required += m_encoder.requiredSpace(values[i].size());
    if (m_utf8.size() < required)
        m_utf8.resize(required);
    char* out = m_utf8.data();
    for (qsizetype i = 0; i < count; ++i) {
        if (binds_null(values[i])) {
            sqlite3_bind_null(m_raw, int(i) + 1);
            continue;
        }
        char* const begin = out;
        out = m_encoder.appendToBuffer(out, values[i]);
        sqlite3_bind_text(m_raw, int(i) + 1, begin, int(out - begin), SQLITE_STATIC);
    }
}

bool prepared_statement::next()
{
    if (!m_raw)
        return m_query_prepared && m_query.next();
    if (m_row_pending) {
        m_row_pending = false;
        return true;
    }
    return sqlite3_stmt_busy(m_raw) && sqlite3_step(m_raw) == SQLITE_ROW;
}

QString prepared_statement::text(int column) const
{
    if (!m_raw)
        return m_query.value(column).toString();
    // Numbers are formatted here: asking SQLite for their text makes it
    // allocate a copy of each.
    const int type = sqlite3_column_type(m_raw, column);
    if (type == SQLITE_INTEGER)
        return QString::number(sqlite3_column_int64(m_raw, column));
    // A real reads as Qt's driver gives it (1.0 as "1", 1e20 as "1e+20"), not
    // as SQLite's own text ("1.0", "1.0e+20"): readers compare and convert
    // these texts.
    if (type == SQLITE_FLOAT)
        return QVariant(sqlite3_column_double(m_raw, column)).toString();
    const auto* data = reinterpret_cast<const char*>(sqlite3_column_text(m_raw, column));
    if (!data)
        return QString();
    const int size = sqlite3_column_bytes(m_raw, column);
    return size == 0 ? QStringLiteral("") : QString::fromUtf8(data, size);
}

bool prepared_statement::is_null(int column) const
{
    if (!m_raw)
        return m_query.value(column).isNull();
    return sqlite3_column_type(m_raw, column) == SQLITE_NULL;
}

void prepared_statement::finish()
{
    m_row_pending = false;
    if (m_raw)
        sqlite3_reset(m_raw);
    else
        m_query.finish();
}
