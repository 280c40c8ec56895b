// Hostile sizes and kinds of file: a media library whose single entry is
// larger than any real one is abandoned at that entry with a log line, the
// tracks before it kept; special files and links beside a database are never
// opened or followed when its working copy is made.

#include <QBuffer>
#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

#include "plugin_helper_functions.h"
#include "plugin_static_function.h"
#include "test_support.h"
#include "tree_writer.h"
#include "xspf_track_reader.h"
#include "xspf_writer.h"

namespace {

xspf_entry entry_at(const QString& location)
{
    xspf_entry entry;
    entry.location = location;
    entry.titles = {"t"};
    return entry;
}

bool write_library(const QString& path, const QStringList& locations)
{
    xspf_writer writer;
    if (!writer.open(path))
        return false;
    for (const QString& location : locations)
        writer.add(entry_at(location));
    return writer.close();
}

QStringList locations_read(const QByteArray& document, qint64 cap, bool* too_large)
{
    QBuffer buffer;
    buffer.setData(document);
    buffer.open(QIODevice::ReadOnly);
    xspf_track_reader reader(&buffer, cap);
    QStringList locations;
    xspf_track track;
    while (reader.next(&track, [] { return false; }))
        locations << track.location;
    *too_large = reader.token_too_large();
    return locations;
}

}  // namespace

class test_bounded_reads : public QObject
{
    Q_OBJECT

private slots:
    void a_token_past_the_cap_ends_the_reading_there_data()
    {
        QTest::addColumn<int>("long_location");
        QTest::addColumn<int>("tracks");
        QTest::addColumn<bool>("too_large");
        // The cap is 64 KiB here; the reader takes its input in blocks, so
        // the margin around it is a block.
        QTest::newRow("well under the cap") << 40000 << 3 << false;
        QTest::newRow("twice the cap") << 131072 << 1 << true;
        QTest::newRow("far past the cap") << 4000000 << 1 << true;
    }

    void a_token_past_the_cap_ends_the_reading_there()
    {
        QFETCH(int, long_location);
        QFETCH(int, tracks);
        QFETCH(bool, too_large);
        QTemporaryDir dir;
        const QString path = dir.filePath("ml.xspf");
        QVERIFY(write_library(path, {"file:///a.mp3", "file:///" + QString(long_location, 'x'), "file:///c.mp3"}));
        bool stopped_at_cap = false;
        const QStringList read = locations_read(tree_writer::read_file(path), 64 * 1024, &stopped_at_cap);
        QCOMPARE(read.size(), tracks);
        QCOMPARE(read.first(), QString("file:///a.mp3"));
        QCOMPARE(stopped_at_cap, too_large);
    }

    void a_library_with_a_huge_entry_keeps_the_rows_before_it()
    {
        QTemporaryDir source;
        const QString library = source.filePath("Users/ann/Library/Application Support/org.videolan.vlc/ml.xspf");
        const QString huge = "file:///" + QString(int(xspf_track_reader::k_max_token_bytes) + 1024 * 1024, 'x');
        QVERIFY(write_library(library, {"file:///Users/ann/a.mp3", huge, "file:///Users/ann/c.mp3"}));
        QTemporaryDir out;
        const QString log = out.filePath("debug.log");
        const auto result = test_support::run_host({"--source", source.path(), "--os", "macOS", "--user", "ann",
                                                    "--tables", "media_library", "--out", out.path(), "--debug-log",
                                                    log});
        QCOMPARE(result.exit_code, 0);
        const auto rows = test_support::query_rows(out.filePath("Artifacts_Result/VLC/VLC.sqlite"),
                                                   "SELECT location FROM media_library");
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows.first().value(0).toString(), QString("/Users/ann/a.mp3"));
        QCOMPARE(test_support::read_lines(log).filter("larger than the read limit").size(), 1);
    }

    // A named pipe has no writer: opening it would wait for ever. A link
    // beside the database may lead anywhere. Neither is taken along.
    void a_working_copy_takes_only_regular_companions()
    {
        QTemporaryDir evidence;
        QTemporaryDir outside;
        QTemporaryDir adhoc;
        const QString database = evidence.filePath("media.db");
        QVERIFY(tree_writer::write_file(database, "database bytes"));
        QVERIFY(tree_writer::write_file(outside.filePath("secret"), "outside bytes"));
        QVERIFY(QFile::link(outside.filePath("secret"), database + "-wal"));
        QCOMPARE(mkfifo(QFile::encodeName(database + "-shm").constData(), 0600), 0);

        plugin_helper_functions helper;
        helper.set_adhoc_parent_path(adhoc.path() + "/");
        const QString copy = helper.get_adhoc_path_for_database(database);
        QCOMPARE(tree_writer::read_file(copy), QByteArray("database bytes"));
        QVERIFY(!QFileInfo::exists(copy + "-wal"));
        QVERIFY(!QFileInfo::exists(copy + "-shm"));

        // The database itself a pipe: no copy, and no wait.
        const QString pipe = evidence.filePath("pipe.db");
        QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        QVERIFY(!QFileInfo(helper.get_adhoc_path_for_database(pipe)).isFile());
    }

    void a_folder_copy_skips_pipes_and_links()
    {
        QTemporaryDir from;
        QTemporaryDir to;
        QVERIFY(tree_writer::write_file(from.filePath("kept"), "kept"));
        QCOMPARE(mkfifo(QFile::encodeName(from.filePath("pipe")).constData(), 0600), 0);
        QVERIFY(QFile::link(from.filePath("kept"), from.filePath("link")));
        plugin_static_function::copy_directory(from.path(), to.path());
        QCOMPARE(QDir(to.path()).entryList(QDir::Files | QDir::System | QDir::Hidden), QStringList{"kept"});
    }
};

QTEST_MAIN(test_bounded_reads)
#include "test_bounded_reads.moc"
