#include "result_summary.h"

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

QList<QPair<QString, qint64>> count_rows(const QString& database_path, const QStringList& tables)
{
    QList<QPair<QString, qint64>> counts;
    const QString name = "vlc-artifacts result summary";
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", name);
        db.setDatabaseName(database_path);
        db.setConnectOptions("QSQLITE_OPEN_READONLY");
        const bool open = db.open();
        for (const QString& table : tables) {
            qint64 rows = -1;
            if (open) {
                QSqlQuery query(db);
                if (query.exec("SELECT count(*) FROM \"" + QString(table).replace('"', "\"\"") + "\"") && query.next())
                    rows = query.value(0).toLongLong();
            }
            counts.append({table, rows});
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    return counts;
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
