#include "android_source_run.h"

#include <QFileInfo>

#include "plugin_helper_functions.h"
#include "plugin_static_function.h"

#include <QSqlQuery>

#include <sqlite3.h>

android_source_run::android_source_run(const QString& signature, const QString& result_db_path)
    : m_signature(signature), m_result_path(result_db_path)
{
}

android_source_run::~android_source_run()
{
    close();
}

bool android_source_run::open(const QString& source_path, const QString& source_root,
                              plugin_helper_functions* helper)
{
    plugin_static_function::app_debug("START", m_signature);
    if (source_path.isEmpty() || !QFileInfo::exists(source_path) || !helper)
        return false;

    // The evidence is only ever opened through this copy, with its -wal and
    // -shm where they stay inside the source.
    const QString copy = helper->get_adhoc_path_for_database(source_path, source_root);
    if (copy.isEmpty() || !QFileInfo::exists(copy) || QFileInfo(copy).isDir())
        return false;

    m_result = std::make_unique<sqlite_connection_scope>(m_signature, m_result_path);
    if (!m_result->open_for_writing()) {
        plugin_static_function::app_debug("Destination Db opening ---FAILED--- " + m_result_path, m_signature);
        plugin_static_function::app_debug(m_result->last_error_text(), m_signature);
        m_result.reset();
        return false;
    }

    m_source = std::make_unique<sqlite_connection_scope>(m_signature + "1", copy);
    if (!m_source->open_read_only()) {
        plugin_static_function::app_debug("source db opening ------FAILED----- ", m_signature);
        plugin_static_function::app_debug(m_source->last_error_text(), m_signature);
        close();
        return false;
    }

    tune_source_cache();
    watch_source_statements();
    // The statements that read the database's shape run under the limit too.
    row_started();
    return true;
}

bool android_source_run::select(const QString& select_statement)
{
    row_started();
    m_row_ceiling = row_ceiling(select_statement);
    m_rows_given = 0;
    m_rows = std::make_unique<prepared_statement>(m_source->db(), select_statement);
    if (!m_rows->execute(QStringList())) {
        log_query_failure("query_select --------FAILED---------- ", *m_rows);
        close();
        return false;
    }
    return true;
}

bool android_source_run::next_row()
{
    row_started();
    if (!m_rows->next())
        return false;
    if (m_rows_given == m_row_ceiling) {
        plugin_static_function::app_debug("damaged database, the table gives more rows than it holds; the rest of it "
                                          "is skipped: " + source_name(),
                                          m_signature);
        return false;
    }
    ++m_rows_given;
    return true;
}

// A damaged table can send its scan round in circles: where its row numbers
// are out of order, SQLite can seek the scan back to an earlier row whenever
// another statement of the connection has failed in between, as the lookups
// of every row do on a damaged database. The scan is
// therefore held to the number of rows the same statement counts when run
// alone, which a sound database always reaches and never passes.
qint64 android_source_run::row_ceiling(const QString& select_statement)
{
    QSqlQuery count(m_source->db());
    if (count.exec("SELECT count(*) FROM (" + select_statement + ")") && count.next())
        return count.value(0).toLongLong();
    // Too damaged to count: no row of a table takes less than four bytes of
    // its file.
    return QFileInfo(source_name()).size() / 4;
}

void android_source_run::tune_source_cache()
{
    // The lookups seek into half a dozen tables and their indexes for every
    // row; SQLite's default page cache (2 MB) keeps too little of them, and
    // every page read again is a system call.
    QSqlQuery pragma(m_source->db());
    pragma.exec(QString("PRAGMA cache_size=%1").arg(-k_source_cache_kib));
}

void android_source_run::watch_source_statements()
{
    // Only where the driver's SQLite is the one linked here; otherwise Qt's
    // own handling stays alone on the connection.
    if (sqlite3* handle = prepared_statement::shared_handle(m_source->db()))
        sqlite3_progress_handler(handle, 100000, &android_source_run::over_row_limit, this);
}

int android_source_run::over_row_limit(void* run)
{
    auto* self = static_cast<android_source_run*>(run);
    if (!self->m_over_limit && self->m_row_timer.elapsed() > k_row_limit_ms)
        self->m_over_limit = true;
    return self->m_over_limit ? 1 : 0;
}

bool android_source_run::read_ids(prepared_statement& statement, const QString& key, QStringList* ids)
{
    if (!statement.execute(key))
        return false;
    while (statement.next())
        *ids << statement.text(0);
    statement.finish();
    return true;
}

QString android_source_run::source_name() const
{
    return m_source ? m_source->db().databaseName() : QString();
}

void android_source_run::log_query_failure(const QString& headline, const prepared_statement& statement) const
{
    plugin_static_function::app_debug(headline + source_name(), m_signature);
    plugin_static_function::app_debug(statement.error_text(), m_signature);
    plugin_static_function::app_debug(statement.statement(), m_signature);
}

bool android_source_run::insert(prepared_statement& insert, const QStringList& values) const
{
    if (insert.execute(values))
        return true;
    plugin_static_function::app_debug("Insertion Query -----FAILED-----", m_signature);
    plugin_static_function::app_debug(insert.error_text(), m_signature);
    plugin_static_function::app_debug(insert.statement(), m_signature);
    return false;
}

void android_source_run::finish()
{
    close();
    plugin_static_function::app_debug("ENDS", m_signature);
}

void android_source_run::close()
{
    m_rows.reset();
    m_source.reset();
    if (m_result) {
        m_result->db().commit();
        m_result.reset();
    }
}
