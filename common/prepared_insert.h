#pragma once

// One insert statement prepared once and executed per row. Binding through
// the SQL module costs far more than the insert itself (each bind rebuilds
// the placeholder's name), so a value equal to the one bound for the previous
// row is left bound as it is: the bound values stay with the statement from
// one execution to the next. Empty texts are stored as NULL.

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QStringList>

class prepared_insert
{
public:
    prepared_insert(QSqlDatabase& db, const QString& statement);

    bool is_prepared() const { return m_prepared; }
    // Binds the values in column order and executes; false on failure
    // (the error text is then in last_error_text()).
    bool exec(const QStringList& values);
    QString last_error_text() const;
    // Releases the statement before its connection goes.
    void finish() { m_query.finish(); }

private:
    QSqlQuery m_query;
    QStringList m_bound;
    bool m_prepared = false;
};
