// iOS sources through the host program: both layouts told from the tree
// alone, and the damaged or refused inputs that must be named, not read.

#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QtTest>

#include "plist_writer.h"
#include "sample_trees.h"
#include "test_support.h"
#include "tree_writer.h"

namespace {

using writer = std::function<bool(const QString&, QString*)>;

const QString k_store = "/private/var/mobile/Containers/Shared/AppGroup/0F6E2B9C-3A1D-4C7E-8B5F-2D9A4E6C1B83/"
                        "MediaLibrary.sqlite";

// The backup sample changed after it is written.
writer backup_with(const std::function<bool(const QString&)>& change)
{
    return [change](const QString& root, QString* error) {
        return write_ios_backup_sample_tree(root, error) && change(root);
    };
}

// A Core Data store of an app version whose files kept only their address.
bool store_without_columns(const QString& root, QString* error)
{
    if (!write_ios_sample_tree(root, error))
        return false;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "store_without_columns");
        db.setDatabaseName(root + k_store);
        QSqlQuery query(db);
        if (!db.open() || !query.exec("DROP TABLE ZFILE") || !query.exec("CREATE TABLE ZFILE (Z_PK INTEGER, ZURL TEXT)")
            || !query.exec("INSERT INTO ZFILE VALUES (1, 'file:///var/mobile/x.mp4')"))
            return false;
    }
    QSqlDatabase::removeDatabase("store_without_columns");
    return true;
}

}  // namespace

class test_ios_sources : public QObject
{
    Q_OBJECT

private slots:
    void each_source_is_recognised_and_its_failures_named()
    {
        const struct
        {
            const char* name;
            writer write;
            QString logged;
            qint64 media_library, recents;
        } cases[] = {
            {"full extraction", write_ios_sample_tree, "the app's data container: ", 7, 3},
            {"backup", write_ios_backup_sample_tree,
             "backup manifest rows whose file id names no stored file, skipped: 2", 2, 3},
            {"encrypted backup", backup_with([](const QString& root) {
                 return tree_writer::write_file(root + "/Manifest.plist",
                                                plist_writer::write(QVariantMap{{"IsEncrypted", true}},
                                                                    plist_writer::format::xml));
             }),
             "encrypted iOS backup, its files are not read: ", 0, 0},
            {"manifest not a database", backup_with([](const QString& root) {
                 return QFile::remove(root + "/Manifest.plist")
                        && tree_writer::write_file(root + "/Manifest.db", QByteArray(4096, '\x5a'));
             }),
             "no working copy of the database, it is not an SQLite database", 0, 0},
            {"store without its columns", store_without_columns,
             "not in this media library store, its columns stay empty: ZFILE.ZTITLE", 6, 3},
        };
        for (const auto& c : cases) {
            test_support::tree_run run;
            QVERIFY2(run.write(c.write), c.name);
            QVERIFY2(run.run(), qPrintable(QString(c.name) + ": " + run.result.err));
            QVERIFY2(run.result.out.contains("(iOS_UID)"), c.name);
            const QStringList messages = test_support::log_messages(test_support::read_lines(run.debug_log()));
            QVERIFY2(!messages.filter(c.logged).isEmpty(), c.name);
            QVERIFY2(test_support::count_rows(run.database(), "media_library") == c.media_library, c.name);
            QVERIFY2(test_support::count_rows(run.database(), "recents") == c.recents, c.name);
        }
    }
};

QTEST_GUILESS_MAIN(test_ios_sources)
#include "test_ios_sources.moc"
