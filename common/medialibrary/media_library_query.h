#pragma once

// A query object of the source database, kept for a whole run; the lookup
// that uses it prepares its statement on the first call and re-binds it after.

#include <QSqlDatabase>
#include <QString>

#include <memory>

#include "prepared_statement.h"

class media_library_query
{
public:
    explicit media_library_query(const QSqlDatabase& db) : m_db(db) {}

    prepared_statement& prepared(const QString& statement)
    {
        if (!m_statement || m_statement->statement() != statement)
            m_statement = std::make_unique<prepared_statement>(m_db, statement);
        return *m_statement;
    }

private:
    QSqlDatabase m_db;
    std::unique_ptr<prepared_statement> m_statement;
};
