// The macOS extractor end to end: the host program loads the real plug-in and
// runs it on generated macOS trees; results are compared with golden dumps
// and the evidence is checked to be untouched.

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include "plist_writer.h"
#include "sample_trees.h"
#include "test_support.h"
#include "tree_writer.h"
#include "xspf_writer.h"

namespace {

const QStringList k_macos_tables = {"media_library", "podcasts", "recents", "recent_played"};
// Times of the generated files change with every run; the kind is the
// system MIME database's description, worded differently per release and locale.
const QStringList k_volatile = {"date_added", "fs_creation_date", "fs_content_change_date", "file_type"};
const QString k_alice_library = "Users/alice/Library/Application Support/org.videolan.vlc/ml.xspf";

struct macos_run
{
    QTemporaryDir source;
    QTemporaryDir out;
    test_support::process_result result;

    QString database() const { return out.path() + "/Artifacts_Result/VLC/VLC.sqlite"; }
    bool run(const QStringList& extra = {})
    {
        result = test_support::run_host(QStringList{"--source", source.path(), "--os", "macOS", "--out",
                                                    out.path(), "--debug-log", out.filePath("debug.log")}
                                        + extra);
        return result.finished && result.exit_code == 0;
    }
    // The source root is a temporary folder: shown as "<source>" in dumps.
    QString dump(const QString& table) const
    {
        return test_support::dump_table(database(), table, k_volatile).replace(source.path(), "<source>");
    }
    QList<QVariantList> rows(const QString& statement) const
    {
        return test_support::query_rows(database(), statement);
    }
};

void write_library(const QString& path, const QList<xspf_entry>& entries)
{
    xspf_writer writer;
    QVERIFY(writer.open(path));
    for (const xspf_entry& entry : entries)
        writer.add(entry);
    QVERIFY(writer.close());
}

xspf_entry entry_at(const QString& location, int id)
{
    xspf_entry entry;
    entry.location = location;
    entry.id = id;
    return entry;
}

}  // namespace

class test_macos_host : public QObject
{
    Q_OBJECT

private slots:
    void sample_tree_fills_every_macos_table_and_stays_untouched()
    {
        macos_run run;
        QString error;
        QVERIFY2(write_macos_sample_tree(run.source.path(), &error), qPrintable(error));
        const auto before = test_support::snapshot_tree(run.source.path());
        QVERIFY2(run.run(), qPrintable(run.result.err));
        for (const QString& table : k_macos_tables) {
            const QString difference = test_support::compare_with_golden("macos_" + table + ".txt", run.dump(table));
            QVERIFY2(difference.isEmpty(), qPrintable(table + ": " + difference));
        }
        QCOMPARE(test_support::snapshot_tree(run.source.path()), before);
        // The hostile location was refused, never measured.
        const QStringList log = test_support::read_lines(run.out.filePath("debug.log"));
        QVERIFY(!log.filter("path outside the source root").isEmpty());
    }

    void binary_recent_list_reads_like_the_xml_one()
    {
        macos_run xml_run;
        macos_run binary_run;
        QString error;
        QVERIFY(write_macos_sample_tree(xml_run.source.path(), &error));
        QVERIFY(write_macos_sample_tree(binary_run.source.path(), &error));
        const QString list = "Users/alice/Library/Preferences/org.videolan.vlc.LSSharedFileList.plist";
        QVERIFY(tree_writer::write_file(
            binary_run.source.path(), list,
            plist_writer::recent_documents_list({"Holiday Trip – Day 1.mp4", "song one.mp3"},
                                                plist_writer::format::binary),
            &error));
        QVERIFY(tree_writer::read_file(binary_run.source.filePath(list)).startsWith("bplist00"));
        QVERIFY(xml_run.run({"--tables", "recents"}));
        QVERIFY(binary_run.run({"--tables", "recents"}));
        QCOMPARE(binary_run.dump("recents"), xml_run.dump("recents"));
        QCOMPARE(binary_run.rows("select count(*) from recents where system_user='alice'").value(0).value(0),
                 QVariant(2));
    }

    void locations_leading_out_of_the_source_count_as_absent()
    {
        macos_run run;
        QTemporaryDir outside;
        QVERIFY(tree_writer::write_file(outside.filePath("secret.mp4"), "not evidence"));
        QVERIFY(QDir().mkpath(run.source.filePath("Users/alice/Movies")));
        QVERIFY(QFile::link(outside.filePath("secret.mp4"), run.source.filePath("Users/alice/Movies/link.mp4")));
        QVERIFY(QFile::link(outside.path(), run.source.filePath("Users/alice/Movies/folder")));
        write_library(run.source.filePath(k_alice_library),
                      {entry_at("file:///Users/alice/Movies/link.mp4", 0),
                       entry_at("file:///Users/alice/Movies/folder/secret.mp4", 1),
                       entry_at("file:///Users/alice/Movies/%2E%2E/%2E%2E/%2E%2E/%2E%2E" + outside.path()
                                    + "/secret.mp4",
                                2)});
        // bob's library itself is a link to a library outside: it is not read.
        write_library(outside.filePath("ml.xspf"), {entry_at("file:///Users/bob/x.mp4", 0)});
        const QString bob_library = run.source.filePath(k_alice_library).replace("/alice/", "/bob/");
        QVERIFY(QDir().mkpath(QFileInfo(bob_library).absolutePath()));
        QVERIFY(QFile::link(outside.filePath("ml.xspf"), bob_library));
        QVERIFY2(run.run({"--user", "alice", "--user", "bob", "--tables", "media_library"}), qPrintable(run.result.err));
        const auto rows = run.rows("select file_exist, file_size, content_type, preview_file_path from media_library");
        QCOMPARE(rows.size(), 3);
        for (const QVariantList& row : rows) {
            QCOMPARE(row.value(0).toString(), QString("NO"));
            QVERIFY(row.value(1).isNull() && row.value(2).isNull() && row.value(3).isNull());
        }
    }

    void malformed_library_keeps_the_tracks_before_the_damage()
    {
        macos_run run;
        const QString path = run.source.filePath(k_alice_library);
        write_library(path, {entry_at("file:///a.mp4", 0), entry_at("file:///b.mp4", 1), entry_at("file:///c.mp4", 2)});
        QByteArray text = tree_writer::read_file(path);
        const int third = text.indexOf("<location>file:///c.mp4");
        QVERIFY(third > 0);
        text.truncate(third);
        text += "<title>broken</tit";  // damaged in the middle of the third track
        QVERIFY(tree_writer::write_file(path, text));
        QVERIFY(tree_writer::write_file(run.source.path(), "Users/bob/Library/Application Support/org.videolan.vlc/ml.xspf",
                                        "this is not XML at all", nullptr));
        QVERIFY2(run.run({"--user", "alice", "--user", "bob", "--tables", "media_library"}), qPrintable(run.result.err));
        const auto rows = run.rows("select location from media_library order by INT");
        QCOMPARE(rows.size(), 2);
        QCOMPARE(rows.at(1).value(0).toString(), QString("/b.mp4"));
    }

    void real_library_from_another_machine_is_read_whole()
    {
        const QString sample = test_support::shared_fixtures_dir() + "/vlc/jexxar-dotfiles/.local/share/vlc/ml.xspf";
        if (!QFileInfo::exists(sample))
            QSKIP("shared samples are not available");
        macos_run run;
        QVERIFY(tree_writer::write_file(run.source.filePath(k_alice_library), tree_writer::read_file(sample)));
        QVERIFY2(run.run({"--user", "alice", "--tables", "media_library"}), qPrintable(run.result.err));
        const auto rows = run.rows("select location, file_exist, duration, id from media_library order by INT");
        QCOMPARE(rows.size(), 20);
        QVERIFY(rows.first().value(0).toString().startsWith("/home/usuario/Vídeos/Video Downloader/"));
        QCOMPARE(rows.first().value(1).toString(), QString("NO"));
        QCOMPARE(rows.first().value(2).toString(), QString("04:58 Min"));
        QCOMPARE(rows.last().value(3).toString(), QString("19"));
    }
};

QTEST_GUILESS_MAIN(test_macos_host)
#include "test_macos_host.moc"
