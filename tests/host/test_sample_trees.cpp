// Every sample and hostile tree through the host program and the real
// plug-in: the host's report, all result tables and the debug log against one
// golden dump per tree; the evidence, made read-only, and what lies beside it
// unchanged by the run.

#include <QDirIterator>
#include <QtTest>

#include "sample_trees.h"
#include "shell_link_writer.h"
#include "test_support.h"
#include "tree_writer.h"

namespace {

// Values that change with every checkout or machine: times and kinds of the
// generated files on disk (times taken from inside evidence files stay).
const QStringList k_volatile = {
    "date_added", "fs_creation_date", "fs_content_change_date", "file_type",
    "playlists.creation_timestamp", "playlists.modification_timestamp", "playlists.last_access_timestamp",
    "album_art.creation_timestamp", "album_art.modification_timestamp", "album_art.last_access_timestamp",
};

// What only the files beside the hostile trees hold: a row showing one of
// these read something outside the source.
const QStringList k_outside_only = {"271828", "1234567890", "canary_entry", "canary-podcast",
                                    "canary_jump", "canary_library", "canary_art"};

void set_writable(const QString& root, bool writable)
{
    const QFileDevice::Permissions write = QFile::WriteOwner | QFile::WriteUser | QFile::WriteGroup | QFile::WriteOther;
    for (QDirIterator walk(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                           QDirIterator::Subdirectories);
         walk.hasNext();) {
        const QString path = walk.next();
        if (!walk.fileInfo().isSymLink())
            QFile::setPermissions(path, writable ? QFile::permissions(path) | QFile::WriteOwner : QFile::permissions(path) & ~write);
    }
}

void check_tree(const sample_tree& tree)
{
    test_support::tree_run run;
    run.below = tree.root_below;
    QVERIFY2(run.write(tree.write), qPrintable(tree.folder_name + ": " + run.result.err));
    // A run that was killed left the streams of another evidence behind.
    QVERIFY(tree_writer::write_file(
        run.out.filePath("Artifacts_Result/VLC/Files/mallory_9fda41b86ddcf1db.automaticDestinations-ms/7f/file"),
        shell_link_writer::build(shell_link_writer::media_link("C:\\left_over.mp3", 1, 1))));
    set_writable(run.root(), false);
    const auto before = test_support::snapshot_tree(run.source.path());
    const bool ran = run.run(tree.arguments + QStringList{"--os", tree.os_scheme});
    const auto after = test_support::snapshot_tree(run.source.path());
    set_writable(run.root(), true);
    QVERIFY2(ran, qPrintable(tree.folder_name + ": " + run.result.err));
    QVERIFY2(after == before, qPrintable(tree.folder_name + ": the evidence was altered"));
    const QString text = run.golden_text(k_volatile);
    for (const QString& marker : k_outside_only)
        QVERIFY2(!text.left(text.indexOf("== debug log")).contains(marker), qPrintable(tree.folder_name + ": " + marker));
    const QString difference = test_support::compare_with_golden(tree.folder_name + ".txt", text);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

}  // namespace

class test_sample_trees : public QObject
{
    Q_OBJECT

private slots:
    void every_tree_matches_its_golden_dump()
    {
        for (const sample_tree& tree : sample_trees() + hostile_trees()) {
            check_tree(tree);
            if (QTest::currentTestFailed())
                return;
        }
    }
};

QTEST_GUILESS_MAIN(test_sample_trees)
#include "test_sample_trees.moc"
