#include "test_support.h"
#include "tree_writer.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QUuid>

namespace test_support {

QString shared_fixtures_dir() { return tree_writer::shared_fixtures_dir(); }
QString plugin_library_path() { return QStringLiteral(VLC_TEST_PLUGIN_PATH); }
QString host_program_path() { return QStringLiteral(VLC_TEST_HOST_PATH); }
QString source_dir() { return QStringLiteral(VLC_TEST_SOURCE_DIR); }

process_result run_host(const QStringList& arguments, int timeout_ms)
{
    process_result result;
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    env.insert("VLC_ARTIFACTS_PLUGIN", plugin_library_path());
    process.setProcessEnvironment(env);
    process.start(host_program_path(), arguments);
    result.finished = process.waitForFinished(timeout_ms);
    if (!result.finished)
        process.kill();
    process.waitForFinished(5000);
    result.exit_code = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.out = QString::fromLocal8Bit(process.readAllStandardOutput());
    result.err = QString::fromLocal8Bit(process.readAllStandardError());
    return result;
}

namespace {

template <typename Work>
void with_read_only_db(const QString& database_path, Work work)
{
    const QString name = "test_support " + QUuid::createUuid().toString();
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", name);
        db.setDatabaseName(database_path);
        db.setConnectOptions("QSQLITE_OPEN_READONLY");
        if (db.open())
            work(db);
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
}

}  // namespace

QList<QVariantList> query_rows(const QString& database_path, const QString& statement)
{
    QList<QVariantList> rows;
    with_read_only_db(database_path, [&](QSqlDatabase& db) {
        QSqlQuery query(db);
        if (!query.exec(statement))
            return;
        while (query.next()) {
            QVariantList row;
            for (int i = 0; i < query.record().count(); ++i)
                row << query.value(i);
            rows << row;
        }
    });
    return rows;
}

qint64 count_rows(const QString& database_path, const QString& table)
{
    const auto rows = query_rows(database_path, "SELECT count(*) FROM " + table);
    return rows.isEmpty() ? -1 : rows.first().first().toLongLong();
}

QString dump_table(const QString& database_path, const QString& table, const QStringList& masked)
{
    QString text;
    with_read_only_db(database_path, [&](QSqlDatabase& db) {
        QSqlQuery query(db);
        if (!query.exec("SELECT * FROM " + table + " ORDER BY INT"))
            text = "cannot read " + table + "\n";
        while (query.next()) {
            QStringList cells;
            for (int i = 0; i < query.record().count(); ++i) {
                const QString column = query.record().fieldName(i);
                // NULL columns are left out to keep lines short; a value keeps to its line.
                const QString value = query.value(i).toString().replace('\n', "\\n");
                if (!query.value(i).isNull())
                    cells << column + "=" + (column == "INT" || masked.contains(column) ? "*" : value);
            }
            text += cells.join("|") + "\n";
        }
    });
    return text;
}

QString compare_with_golden(const QString& name, const QString& text)
{
    const QString path = source_dir() + "/tests/golden/" + name;
    if (qEnvironmentVariable("VLC_UPDATE_GOLDEN") == "1") {
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            file.write(text.toUtf8());
        return QString();
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return "no golden file " + path + " (run with VLC_UPDATE_GOLDEN=1 to write it)";
    const QStringList expected = QString::fromUtf8(file.readAll()).split('\n');
    const QStringList actual = text.split('\n');
    for (int i = 0; i < qMax(expected.size(), actual.size()); ++i) {
        if (expected.value(i, "<missing>") != actual.value(i, "<missing>"))
            return QString("%1 line %2:\n  expected: %3\n  actual:   %4")
                .arg(name).arg(i + 1).arg(expected.value(i, "<missing>"), actual.value(i, "<missing>"));
    }
    return QString();
}

QMap<QString, QByteArray> snapshot_tree(const QString& root)
{
    QMap<QString, QByteArray> snapshot;
    for (QDirIterator walk(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                           QDirIterator::Subdirectories);
         walk.hasNext();) {
        const QFileInfo info(walk.next());
        // Size, time, and the mode bits and content of what is not a link: a
        // change of any of them alters the evidence.
        QByteArray fact = QByteArray::number(info.size()) + ":" + QByteArray::number(info.lastModified().toMSecsSinceEpoch());
        QFile file(info.filePath());
        QCryptographicHash hash(QCryptographicHash::Sha256);
        if (info.isSymLink())
            fact += ":link:" + info.symLinkTarget().toUtf8();
        else if (info.isFile() && file.open(QIODevice::ReadOnly) && hash.addData(&file))
            fact += ":" + QByteArray::number(uint(info.permissions()), 16) + ":" + hash.result().toHex();
        else
            fact += ":" + QByteArray::number(uint(info.permissions()), 16);
        snapshot.insert(QDir(root).relativeFilePath(info.filePath()), fact);
    }
    return snapshot;
}

bool tree_run::write(const std::function<bool(const QString& folder, QString* error)>& writer)
{
    QString error;
    if (QDir().mkpath(root()) && writer(source.path(), &error))
        return true;
    result.err = "cannot write the tree: " + error;
    return false;
}

bool tree_run::run(const QStringList& extra)
{
    result = run_host(QStringList{"--source", root(), "--out", out.path(), "--debug-log", debug_log()} + extra);
    return result.finished && result.exit_code == 0;
}

QString tree_run::golden_text(const QStringList& masked) const
{
    // The run's duration differs from run to run.
    QString text = "== host report\n" + QString(result.out).replace(QRegularExpression("(?m)^elapsed: .*$"), "elapsed: *");
    const auto tables = query_rows(database(), "SELECT name FROM sqlite_master WHERE type='table' ORDER BY name");
    for (const QVariantList& table : tables) {
        const QString name = table.value(0).toString();
        QStringList columns;
        for (const QString& mask : masked) {
            if (!mask.contains('.'))
                columns << mask;
            else if (mask.section('.', 0, 0) == name)
                columns << mask.section('.', 1);
        }
        QStringList lines = dump_table(database(), name, columns).split('\n', Qt::SkipEmptyParts);
        lines.sort();  // folder listings need not come in one order
        text += QString("== %1 (%2 rows)\n").arg(name).arg(lines.size());
        for (const QString& line : lines)
            text += line + '\n';
    }
    text += "== debug log\n";
    for (const QString& message : log_messages(read_lines(debug_log())))
        text += message + '\n';
    return text.replace(root(), "<source>").replace(source.path(), "<beside>").replace(out.path(), "<out>");
}

QString listing(const QString& folder)
{
    QStringList lines;
    for (QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
         it.hasNext();) {
        const QFileInfo info(it.next());
        lines << QDir(folder).relativeFilePath(info.filePath())
                     + (info.isSymLink() ? " link" : info.isDir() ? "/" : " " + QString::number(info.size()));
    }
    lines.sort();
    return lines.join(", ");
}

QStringList read_lines(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList lines = QString::fromLocal8Bit(file.readAll()).split('\n');
    if (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

QStringList log_messages(const QStringList& lines)
{
    QStringList messages;
    for (const QString& line : lines) {
        const int at = line.indexOf("]:-- ");
        messages << (at >= 0 ? line.mid(at + 5) : line);
    }
    return messages;
}

}  // namespace test_support
