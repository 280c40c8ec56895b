// The Windows sample tree through the host program and the real plug-in:
// every Windows table against its golden dump, the evidence unchanged, and
// no scratch copies of jump-list streams left behind.

#include <QTemporaryDir>
#include <QtTest>

#include "sample_trees.h"
#include "test_support.h"

namespace {

// Rows sorted, so the dump does not depend on the order folders are listed in.
QString sorted_dump(const QString& database, const QString& table, const QStringList& masked)
{
    QStringList lines = test_support::dump_table(database, table, masked).split('\n', Qt::SkipEmptyParts);
    lines.sort();
    return lines.join('\n') + '\n';
}

}  // namespace

class test_winos_end_to_end : public QObject
{
    Q_OBJECT

    QTemporaryDir source;

private slots:
    void initTestCase()
    {
        QString error;
        QVERIFY2(write_windows_sample_tree(source.path(), &error), qPrintable(error));
    }

    void sample_tree_fills_every_windows_table()
    {
        QTemporaryDir out;
        const auto before = test_support::snapshot_tree(source.path());
        const auto result = test_support::run_host({"--source", source.path(), "--out", out.path(), "--tables",
                                                    "podcasts,recents,playlists,album_art"});
        QCOMPARE(result.exit_code, 0);
        QVERIFY2(result.out.contains("users:    carol, dave\n"), qPrintable(result.out));
        const QString database = out.path() + "/Artifacts_Result/VLC/VLC.sqlite";

        // Times of files on disk change with every checkout; those from links do not.
        const QStringList disk_times = {"creation_timestamp", "modification_timestamp", "last_access_timestamp"};
        const struct
        {
            const char* table;
            QStringList masked;
        } tables[] = {{"recents", {}}, {"playlists", disk_times}, {"album_art", disk_times}, {"podcasts", {}}};
        for (const auto& t : tables) {
            const QString difference = test_support::compare_with_golden(
                QString("windows_%1.txt").arg(t.table), sorted_dump(database, t.table, t.masked));
            QVERIFY2(difference.isEmpty(), qPrintable(difference));
        }
        QCOMPARE(test_support::snapshot_tree(source.path()), before);
        QVERIFY(!QFileInfo::exists(out.path() + "/Artifacts_Result/VLC/Files"));
    }

    void playlists_need_the_recents_of_the_same_run()
    {
        QTemporaryDir out;
        const auto result =
            test_support::run_host({"--source", source.path(), "--out", out.path(), "--tables", "playlists"});
        QCOMPARE(result.exit_code, 0);
        // Only the player 4's database gives playlist rows then.
        QCOMPARE(test_support::query_rows(out.path() + "/Artifacts_Result/VLC/VLC.sqlite",
                                          "select count(*) from playlists where source_file not like '%/ml.db'")
                     .value(0)
                     .value(0),
                 QVariant(0));
    }
};

QTEST_GUILESS_MAIN(test_winos_end_to_end)
#include "test_winos_end_to_end.moc"
