#include "result_summary.h"

#include <QMap>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QVariant>

namespace result_summary {

const QStringList& all_tables()
{
    static const QStringList tables = {"media_library", "podcasts",      "recents", "recent_played",
                                       "playlists",     "album_art",     "album",   "exportfilelist"};
    return tables;
}

namespace {

// Runs work on a read-only connection to the result database.
template <typename Work>
void with_result_database(const QString& database_path, Work work)
{
    const QString name = "vlc-artifacts result summary";
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", name);
        db.setDatabaseName(database_path);
        db.setConnectOptions("QSQLITE_OPEN_READONLY");
        work(db, db.open());
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
}

QString quoted(const QString& table)
{
    return "\"" + QString(table).replace('"', "\"\"") + "\"";
}

}  // namespace

QList<QPair<QString, qint64>> count_rows(const QString& database_path, const QStringList& tables)
{
    QList<QPair<QString, qint64>> counts;
    with_result_database(database_path, [&](QSqlDatabase& db, bool open) {
        for (const QString& table : tables) {
            qint64 rows = -1;
            if (open) {
                QSqlQuery query(db);
                if (query.exec("SELECT count(*) FROM " + quoted(table)) && query.next())
                    rows = query.value(0).toLongLong();
            }
            counts.append({table, rows});
        }
    });
    return counts;
}

QList<QPair<QString, qint64>> rows_per_user(const QString& database_path, const QStringList& tables)
{
    QMap<QString, qint64> rows;
    with_result_database(database_path, [&](QSqlDatabase& db, bool open) {
        for (const QString& table : tables) {
            QSqlQuery query(db);
            if (!open || !query.exec("SELECT system_user, count(*) FROM " + quoted(table) + " GROUP BY system_user"))
                continue;
            while (query.next()) {
                const QString user = query.value(0).toString();
                rows[user.isEmpty() ? QString("(none)") : user] += query.value(1).toLongLong();
            }
        }
    });
    QList<QPair<QString, qint64>> listed;
    for (auto at = rows.cbegin(); at != rows.cend(); ++at)
        listed.append({at.key(), at.value()});
    return listed;
}

QString format_table(const QList<QPair<QString, qint64>>& counts)
{
    QString text = QString("%1  %2\n").arg("table", -16).arg("rows", 8);
    for (const auto& entry : counts) {
        const QString rows = entry.second < 0 ? QString("unreadable") : QString::number(entry.second);
        text += QString("%1  %2\n").arg(entry.first, -16).arg(rows, 8);
    }
    return text;
}

}  // namespace result_summary
