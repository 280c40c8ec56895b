// Every scheme's sample tree through the host program and the real plug-in:
// all result tables and the debug log against one golden dump per tree, and
// the evidence unchanged by the run.

#include <QtTest>

#include "sample_trees.h"
#include "test_support.h"

namespace {

// Values that change with every checkout or machine: times and kinds of the
// generated files on disk (times taken from inside evidence files stay).
const QStringList k_volatile = {
    "date_added", "fs_creation_date", "fs_content_change_date", "file_type",
    "playlists.creation_timestamp", "playlists.modification_timestamp", "playlists.last_access_timestamp",
    "album_art.creation_timestamp", "album_art.modification_timestamp", "album_art.last_access_timestamp",
};

}  // namespace

class test_sample_trees : public QObject
{
    Q_OBJECT

private slots:
    void every_tree_matches_its_golden_dump()
    {
        for (const sample_tree& tree : sample_trees()) {
            test_support::tree_run run;
            QVERIFY2(run.write(tree.write), qPrintable(run.result.err));
            const auto before = test_support::snapshot_tree(run.source.path());
            QVERIFY2(run.run({"--os", tree.os_scheme}), qPrintable(tree.folder_name + ": " + run.result.err));
            const QString difference =
                test_support::compare_with_golden(tree.folder_name + ".txt", run.golden_text(k_volatile));
            QVERIFY2(difference.isEmpty(), qPrintable(difference));
            QVERIFY2(test_support::snapshot_tree(run.source.path()) == before, qPrintable(tree.folder_name));
        }
    }
};

QTEST_GUILESS_MAIN(test_sample_trees)
#include "test_sample_trees.moc"
