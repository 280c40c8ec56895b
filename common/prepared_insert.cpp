#include "prepared_insert.h"

#include <QSqlError>

prepared_insert::prepared_insert(QSqlDatabase& db, const QString& statement) : m_query(db)
{
    m_prepared = m_query.prepare(statement);
}

bool prepared_insert::exec(const QStringList& values)
{
    if (!m_prepared)
        return false;
    const bool first = m_bound.size() != values.size();
    for (int i = 0; i < values.size(); ++i) {
        const QString& value = values.at(i);
        if (!first && value == m_bound.at(i) && value.isNull() == m_bound.at(i).isNull())
            continue;
        m_query.bindValue(i, value.isEmpty() ? QVariant(QMetaType(QMetaType::QString)) : QVariant(value));
    }
    m_bound = values;
    return m_query.exec();
}

QString prepared_insert::last_error_text() const
{
    return m_query.lastError().text();
}
