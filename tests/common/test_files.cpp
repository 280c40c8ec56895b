// The shared services that touch files, on real trees in temporary folders:
// the containment test for paths taken from evidence, working copies of
// evidence databases, capped reads, free names, the folder utilities, sizes
// and times of files.

#include <QDir>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QtTest>

#include <fcntl.h>
#include <future>
#include <sys/stat.h>
#include <unistd.h>

#include "bounded_file_reader.h"
#include "debug_log_capture.h"
#include "plugin_helper_functions.h"
#include "source_path_guard.h"
#include "tree_writer.h"

namespace {

using tree_writer::kind;
using tree_writer::read_file;
using psf = plugin_static_function;

// A database as a running player leaves it: its first row in the main file,
// its second only in the "-wal" companion beside it.
bool write_database_with_pending_log(const QString& path)
{
    QTemporaryDir staging;
    bool ok = QDir().mkpath(QFileInfo(path).absolutePath());
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "staging");
        db.setDatabaseName(staging.filePath("db"));
        QSqlQuery query(db.open() ? db : QSqlDatabase());
        for (const char* statement : {"PRAGMA journal_mode=WAL", "PRAGMA wal_autocheckpoint=0",
                                      "CREATE TABLE Media (title TEXT)", "INSERT INTO Media VALUES ('checkpointed')",
                                      "PRAGMA wal_checkpoint(TRUNCATE)", "INSERT INTO Media VALUES ('only in the log')"})
            ok = query.exec(statement) && ok;
        for (const QString& suffix : {QString(), QString("-wal"), QString("-shm")})
            ok = QFile::copy(staging.filePath("db") + suffix, path + suffix) && ok;  // the writer still open
    }
    QSqlDatabase::removeDatabase("staging");
    return ok;
}

QString titles_in(const QString& database)
{
    QStringList titles;
    for (const QVariantList& row : test_support::query_rows(database, "SELECT title FROM Media ORDER BY rowid"))
        titles << row.value(0).toString();
    return titles.join(',');
}

}  // namespace

class test_files : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_base;  // the real path of m_dir, as a mounted source is addressed

private slots:
    void initTestCase()
    {
        qputenv("TZ", "Europe/Berlin");
        tzset();
        m_base = QFileInfo(m_dir.path()).canonicalFilePath();
        const QString base = m_base;
        QString error;
        QVERIFY2(tree_writer::write_entries(
                     m_base, {{"outside/canary.txt", "examiner's file"}, {"outside/deep/deeper", {}, kind::folder},
                              {"root_sibling/file.txt", "next door"}, {"root/Users/ann/Music/song.mp3", "mp3"},
                              {"root/absolute_out", (base + "/outside").toUtf8(), kind::link},
                              {"root/relative_out", "../outside", kind::link},
                              {"root/Users/ann/parent_out", "../../../outside", kind::link},
                              {"root/Users/ann/Music/cover.jpg", (base + "/outside/canary.txt").toUtf8(), kind::link},
                              {"root/deep_out", (base + "/outside/deep/deeper").toUtf8(), kind::link},
                              {"root/Users/ann/deep_out", (base + "/outside/deep/deeper").toUtf8(), kind::link},
                              {"root/dangling_out", (base + "/outside/not_yet_there").toUtf8(), kind::link},
                              {"root/sibling_out", "../root_sibling", kind::link},
                              {"root/absolute_in", (base + "/root/Users/ann/Music").toUtf8(), kind::link},
                              {"root/relative_in", "Users/ann", kind::link},
                              {"root/Users/ann/up_and_in", "../ann/Music", kind::link},
                              {"root/dangling_in", "nothing_here", kind::link}, {"root/loop", "loop", kind::link},
                              {"root_link", (base + "/root").toUtf8(), kind::link}},
                     &error),
                 qPrintable(error));
    }

    // Inside the source root after cleaning and after resolving the links that
    // exist on the source, or else absent; with the root given in any form.
    void containment_of_paths_from_evidence()
    {
        const QStringList inside = {"/Users/ann/Music/song.mp3", "/Users/ann/Music/gone.mp3", "/Volumes/USB/c.mp3", "",
                                    "/Users/../Users/ann/Music/song.mp3", "//Users/./ann//Music/song.mp3",
                                    "/Users/ann/Music/..", "/Users/.../..a/.b/a..", "/absolute_in/song.mp3",
                                    "/relative_in/Music/song.mp3", "/Users/ann/up_and_in/song.mp3"};
        // The last ones name the canary through a link followed by "..",
        // though their text cleans to a place inside the root.
        const QStringList outside = {"/../outside/canary.txt", "/..", "/Users/ann/../../../outside/canary.txt",
                                     "/../nowhere/x.mp3", "/absolute_out/canary.txt", "/absolute_out/none.txt",
                                     "/relative_out/canary.txt", "/sibling_out/file.txt", "/Users/ann/parent_out/canary.txt",
                                     "/Users/ann/parent_out/x/y.mp3", "/Users/ann/Music/cover.jpg", "/dangling_out",
                                     "/dangling_out/child.mp3", "/dangling_in", "/loop/x.mp3",
                                     "/Users/ann/deep_out/../../canary.txt", "/deep_out/../deeper",
                                     "/relative_in/../../deep_out/../../canary.txt"};
        for (const QString& root : {m_base + "/root", m_base + "/root/", m_base + "/root//", m_base + "/root_link"}) {
            for (const QString& path : inside + outside) {
                const QString full = QDir::cleanPath(root) + path;
                QVERIFY2(source_path_guard::is_inside_root(full, root) == inside.contains(path), qPrintable(full));
                QVERIFY2(source_path_guard::exists_inside(full, root, "t") == (inside.contains(path) && QFileInfo::exists(full)),
                         qPrintable(full));
            }
        }
        for (const QString& other : {m_base + "/outside/canary.txt", m_base + "/root_sibling/file.txt", m_base,
                                     QString("/etc/passwd"), QString("Users/ann/song.mp3"), QString("C:\\Users"), QString()})
            QVERIFY2(!source_path_guard::is_inside_root(other, m_base + "/root"), qPrintable(other));
        // A root not there yet holds nothing; bad roots hold nothing.
        QVERIFY(!source_path_guard::is_inside_root(m_base + "/later/a.mp3", m_base + "/later"));
        QVERIFY(tree_writer::write_file(m_base + "/later/a.mp3", "mp3"));
        QVERIFY(source_path_guard::is_inside_root(m_base + "/later/a.mp3", m_base + "/later"));
        for (const QString& bad_root : {QString(), QString("root"), m_base + "/root/Users/ann/Music/song.mp3/x"})
            QVERIFY(!source_path_guard::is_inside_root(m_base + "/root/Users/ann/Music/song.mp3", bad_root));
    }

    void working_copies_of_evidence_databases()
    {
        QTemporaryDir dir;
        const QString adhoc = dir.filePath("adhoc/");
        const QString evidence = dir.filePath("evidence");
        const QString source = evidence + "/vlc_media.db";
        QVERIFY(write_database_with_pending_log(source) && write_database_with_pending_log(evidence + "/other/db"));
        for (const QString& suffix : {QString(), QString("-wal"), QString("-shm")})
            QVERIFY(QFile::setPermissions(source + suffix, QFile::ReadOwner | QFile::ReadGroup));
        QString error;
        QVERIFY(tree_writer::write_entries(dir.path(), {{"outside.db-wal", "outside bytes"},
                                                        {"evidence/linked_in.db", read_file(evidence + "/other/db")},
                                                        {"evidence/linked_in.db-wal", "other/db-wal", kind::link},
                                                        {"evidence/linked_out.db", read_file(source)},
                                                        {"evidence/linked_out.db-wal", "../outside.db-wal", kind::link},
                                                        {"evidence/linked_out.db-shm", {}, kind::pipe},
                                                        {"evidence/pipe.db", {}, kind::pipe},
                                                        {"evidence/plain.db", read_file(source)},
                                                        {"adhoc/plain.db-wal", QByteArray(4096, 'z')}},
                                           &error));
        const auto before = test_support::snapshot_tree(evidence);
        debug_log_capture log;
        source_path_guard::reset_log();
        plugin_helper_functions helper;
        helper.set_adhoc_parent_path(adhoc);
        // Numbered copies, each writable and with the rows still in its log.
        for (const char* name : {"vlc_media.db", "1_vlc_media.db"}) {
            QCOMPARE(helper.get_adhoc_path_for_database(source, evidence), adhoc + name);
            QVERIFY(QFileInfo(adhoc + name + "-wal").permissions() & QFile::WriteOwner);
            QCOMPARE(titles_in(adhoc + name), QString("checkpointed,only in the log"));
        }
        // A companion that links inside the source is copied like a file; one
        // that leads out, or a pipe, is left out and the database read without it.
        QCOMPARE(titles_in(helper.get_adhoc_path_for_database(evidence + "/linked_in.db", evidence)),
                 QString("checkpointed,only in the log"));
        const QString out_copy = helper.get_adhoc_path_for_database(evidence + "/linked_out.db", evidence);
        QVERIFY(!QFileInfo::exists(out_copy + "-wal") && !QFileInfo::exists(out_copy + "-shm"));
        QCOMPARE(titles_in(out_copy), QString("checkpointed"));
        QCOMPARE(log.messages_with("path outside the source root").size(), 1);
        QVERIFY(!QFileInfo(helper.get_adhoc_path_for_database(evidence + "/pipe.db", evidence)).isFile());
        // A stale log of an earlier run is not replayed into a new copy; a plain file is copied alone.
        QVERIFY(!QFileInfo::exists(helper.get_adhoc_path_for_database(" " + evidence + "/plain.db ", evidence) + "-wal"));
        QVERIFY(!QFileInfo::exists(helper.get_adhoc_path_for_regular_file(source) + "-wal"));
        QCOMPARE(helper.get_adhoc_path_for_database("  "), QString());
        psf::bool_cancel_extraction = true;  // cancelled: the folder alone, which callers treat as not found
        QCOMPARE(helper.get_adhoc_path_for_database(source), adhoc);
        psf::bool_cancel_extraction = false;
        QCOMPARE(test_support::snapshot_tree(evidence), before);
    }

    void free_names_and_folder_utilities()
    {
        QTemporaryDir dir;
        const QString adhoc = dir.filePath("a/b/");
        const auto next = [&](const QString& source) { return psf::get_available_file(source, adhoc, "void t()"); };
        QCOMPARE(next("/e/vlc_media.db"), QString("vlc_media.db"));  // the folder is made on the way
        QByteArray big(3 * 1024 * 1024 + 17, '\0');
        for (int i = 0; i < big.size(); ++i)
            big[i] = char((i * 31 + 7) & 0xff);
        const QString outside = dir.filePath("outside");
        QString error;
        QVERIFY(tree_writer::write_entries(
            dir.path(), {{"a/b/vlc_media.db", "1"}, {"a/b/1_vlc_media.db", {}, kind::folder},
                         {"a/b/2_vlc_media.db", "nowhere", kind::link}, {"a/b/sub/vlcrc", "x"},
                         {"outside/canary.txt", QByteArray(100000, 'c')}, {"tree/a.bin", QByteArray(100, 'a')},
                         {"tree/.hidden", QByteArray(50, 'h')}, {"tree/sub/b.bin", QByteArray(200, 'b')},
                         {"tree/cover.jpg", big}, {"tree/empty", {}}, {"tree/pipe", {}, kind::pipe},
                         {"tree/link_to_file", (outside + "/canary.txt").toUtf8(), kind::link},
                         {"tree/sub/link_to_folder", outside.toUtf8(), kind::link},
                         {"tree/dangling", "nowhere", kind::link}, {"copy/.hidden", QByteArray(500, 'z')}},
            &error));
        QCOMPARE(next("/e/vlc_media.db "), QString("3_vlc_media.db "));  // equal but for blanks is taken too
        QCOMPARE(next("/e/vlcrc"), QString("vlcrc"));  // entries of subfolders do not count

        // Sizes and copies take regular files only, never following a link.
        const QString tree = dir.filePath("tree");
        QCOMPARE(psf::mining_size(tree), QString::number(350 + big.size()));
        QCOMPARE(psf::mining_size(tree + "/dangling"), QString());
        psf::copy_directory(tree, dir.filePath("copy"));
        QCOMPARE(read_file(dir.filePath("copy/cover.jpg")), big);
        QCOMPARE(read_file(dir.filePath("copy/.hidden")), QByteArray(50, 'h'));  // an older, longer file replaced
        QCOMPARE(QDir(dir.filePath("copy")).entryList(QDir::Files | QDir::System | QDir::Hidden),
                 (QStringList{".hidden", "a.bin", "cover.jpg", "empty"}));
        debug_log_capture log;
        psf::copy_directory(dir.filePath("none"), dir.filePath("nothing"));
        QCOMPARE(log.messages(), QStringList{"[copy_directory] source diectory does not exist ----FAILED---- :"
                                             + dir.filePath("none")});

        // Removal stays inside; a link given is removed alone; an empty path is never the current folder.
        const auto outside_before = test_support::snapshot_tree(outside);
        QVERIFY(QFile::link(outside, dir.filePath("link")));
        psf::remove_directory(dir.filePath("link"));
        psf::remove_directory(tree);
        QVERIFY(!QFileInfo::exists(tree) && !QFileInfo(dir.filePath("link")).isSymLink());
        QVERIFY(QDir::setCurrent(dir.filePath("copy")));
        psf::remove_directory("   ");
        QVERIFY(QFileInfo::exists(dir.filePath("copy/a.bin")));
        QCOMPARE(test_support::snapshot_tree(outside), outside_before);
        psf::bool_cancel_extraction = true;
        QVERIFY(psf::mining_size(outside) == "0" && next("/e/x").isEmpty());
        psf::bool_cancel_extraction = false;
    }

    // Times of files as seconds in UTC, whatever the zone's summer time does.
    void file_times_and_capped_reads()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("media.mp4");
        QVERIFY(tree_writer::write_file(path, "data"));
        const QList<QPair<QDateTime, QString>> times = {
            {QDateTime(QDate(2020, 2, 29), QTime(12, 34, 56, 999), QTimeZone::utc()), "1582979696"},
            {QDateTime(QDate(2019, 3, 31), QTime(1, 30), QTimeZone::utc()), "1553995800"},
            {QDateTime(QDate(1960, 1, 1), QTime(0, 0), QTimeZone::utc()), "-315619200"},
            {QDateTime(QDate(2040, 1, 1), QTime(0, 0), QTimeZone::utc()), "2208988800"}};
        for (const auto& [moment, seconds] : times) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadWrite) && file.setFileTime(moment, QFileDevice::FileModificationTime));
            file.close();
            QCOMPARE(psf::get_posix_timestamp(" " + path + " ", "modification"), seconds);
        }
        QCOMPARE(psf::get_posix_timestamp(dir.filePath("gone.mp4"), "modification"), QString());
        const qint64 birth = psf::get_posix_timestamp(path, "birth").toLongLong();  // 0 where none is kept
        QVERIFY(birth == 0 || qAbs(birth - QDateTime::currentSecsSinceEpoch()) < 3600);

        // Never more than the ceiling in memory, a flag when the file holds more.
        QString error;
        QVERIFY(tree_writer::write_entries(dir.path(), {{"4096", QByteArray(4096, 'a')}, {"4097", QByteArray(4097, 'a')},
                                                        {"empty", {}}, {"big", "[core]\n", kind::oversized},
                                                        {"link", "4096", kind::link}, {"dangling", "gone", kind::link},
                                                        {"pipe", {}, kind::pipe}},
                                           &error));
        const struct
        {
            const char* name;
            qint64 cap;
            int size;  // -1: not opened
            bool truncated;
        } reads[] = {{"4096", 4096, 4096, false}, {"4097", 4096, 4096, true}, {"empty", 0, 0, false},
                     {"4096", 0, 0, true},        {"big", 1 << 20, 1 << 20, true}, {"link", 4096, 4096, false},
                     {"dangling", 4096, -1, false}, {"missing", 4096, -1, false}, {"", 4096, -1, false}};
        for (const auto& c : reads) {
            const auto read = bounded_file_reader::read(dir.filePath(c.name), c.cap);
            QVERIFY2(read.opened == (c.size >= 0) && read.data.size() == qMax(c.size, 0) && read.truncated == c.truncated,
                     c.name);
        }
        QVERIFY(bounded_file_reader::read(dir.filePath("big")).data.startsWith("[core]\n"));
        if (QFileInfo("/proc/self/status").size() == 0)  // virtual files report no size but have content
            QVERIFY(bounded_file_reader::read("/proc/self/status", 16).truncated);
        // A named pipe has no writer: opening it would wait for ever.
        auto reading = std::async(std::launch::async, [&] { return bounded_file_reader::read(dir.filePath("pipe")); });
        const bool returned = reading.wait_for(std::chrono::seconds(30)) == std::future_status::ready;
        if (!returned)  // release the reader so that the test can report
            ::close(::open(QFile::encodeName(dir.filePath("pipe")).constData(), O_WRONLY | O_NONBLOCK));
        QVERIFY2(returned && !reading.get().opened, "reading a named pipe blocked");
    }
};

QTEST_GUILESS_MAIN(test_files)
#include "test_files.moc"
