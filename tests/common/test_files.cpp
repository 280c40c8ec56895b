// The shared services that touch files, on real trees in temporary folders:
// the containment test for paths taken from evidence, working copies of
// evidence databases, capped reads, free names, the folder utilities, sizes
// and times of files.

#include <QDir>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QtTest>

#include <chrono>
#include <fcntl.h>
#include <future>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "bounded_file_reader.h"
#include "debug_log_capture.h"
#include "plugin_helper_functions.h"
#include "source_path_guard.h"
#include "tree_writer.h"

namespace {

using tree_writer::entry;
using tree_writer::kind;
using tree_writer::read_file;
using tree_writer::write_file;
using psf = plugin_static_function;

// A database as a running player leaves it: its first row in the main file,
// its second only in the "-wal" companion beside it.
bool write_database_with_pending_log(const QString& path)
{
    QTemporaryDir staging;
    const QString staged = staging.filePath("staged.db");
    bool ok = true;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "staging");
        db.setDatabaseName(staged);
        QSqlQuery query(db.open() ? db : QSqlDatabase());
        for (const char* statement : {"PRAGMA journal_mode=WAL", "PRAGMA wal_autocheckpoint=0",
                                      "CREATE TABLE Media (title TEXT)", "INSERT INTO Media VALUES ('checkpointed')",
                                      "PRAGMA wal_checkpoint(TRUNCATE)", "INSERT INTO Media VALUES ('only in the log')"})
            ok = query.exec(statement) && ok;
        query.finish();
        // Copied while the writer is open, so the log is not folded in.
        QDir().mkpath(QFileInfo(path).absolutePath());
        for (const QString& suffix : {QString(), QString("-wal"), QString("-shm")})
            ok = QFile::copy(staged + suffix, path + suffix) && ok;
        db.close();
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
    QString m_base;  // holds root/, outside/ and root_sibling/
    QString m_root;

private slots:
    void initTestCase()
    {
        qputenv("TZ", "Europe/Berlin");
        tzset();
        // The temporary folder may sit behind a link; the tree is addressed by
        // its real path, as a mounted source would be.
        m_base = QFileInfo(m_dir.path()).canonicalFilePath();
        m_root = m_base + "/root";
        QString error;
        QVERIFY2(tree_writer::write_entries(
                     m_base, {{"outside/canary.txt", "examiner's file"}, {"outside/deep/deeper", {}, kind::folder},
                              {"root_sibling/file.txt", "next door"}, {"root/Users/ann/Music/song.mp3", "mp3"},
                              // links on the source that lead out of it ...
                              {"root/absolute_out", (m_base + "/outside").toUtf8(), kind::link},
                              {"root/relative_out", "../outside", kind::link},
                              {"root/Users/ann/parent_out", "../../../outside", kind::link},
                              {"root/Users/ann/Music/cover.jpg", (m_base + "/outside/canary.txt").toUtf8(), kind::link},
                              {"root/deep_out", (m_base + "/outside/deep/deeper").toUtf8(), kind::link},
                              {"root/Users/ann/deep_out", (m_base + "/outside/deep/deeper").toUtf8(), kind::link},
                              {"root/dangling_out", (m_base + "/outside/not_yet_there").toUtf8(), kind::link},
                              {"root/sibling_out", "../root_sibling", kind::link},
                              // ... and links that stay inside
                              {"root/absolute_in", (m_root + "/Users/ann/Music").toUtf8(), kind::link},
                              {"root/relative_in", "Users/ann", kind::link},
                              {"root/Users/ann/up_and_in", "../ann/Music", kind::link},
                              {"root/dangling_in", "nothing_here", kind::link},
                              {"root/loop", "loop", kind::link}},
                     &error),
                 qPrintable(error));
    }

    // Inside the source root after cleaning and after resolving the links that
    // exist on the source, or else absent; with the root given in any form.
    void containment_of_paths_from_evidence()
    {
        const struct
        {
            const char* path;  // ROOT and BASE stand for the tree's folders
            bool inside;
        } cases[] = {
            {"ROOT/Users/ann/Music/song.mp3", true},
            {"ROOT/Users/ann/Music/gone.mp3", true},
            {"ROOT/Volumes/USB/a/b/c.mp3", true},
            {"ROOT", true},
            {"ROOT/Users/../Users/ann/Music/song.mp3", true},
            {"ROOT//Users/./ann//Music/song.mp3", true},
            {"ROOT/Users/ann/Music/..", true},
            {"ROOT/Users/.../..a/.b/a..", true},
            {"ROOT/absolute_in/song.mp3", true},
            {"ROOT/relative_in/Music/song.mp3", true},
            {"ROOT/Users/ann/up_and_in/song.mp3", true},
            {"ROOT/../outside/canary.txt", false},
            {"ROOT/..", false},
            {"ROOT/Users/ann/../../../outside/canary.txt", false},
            {"ROOT/../nowhere/x.mp3", false},
            {"BASE/outside/canary.txt", false},
            {"BASE/root_sibling/file.txt", false},
            {"BASE", false},
            {"/etc/passwd", false},
            {"ROOT/absolute_out/canary.txt", false},
            {"ROOT/absolute_out/none.txt", false},
            {"ROOT/relative_out/canary.txt", false},
            {"ROOT/sibling_out/file.txt", false},
            {"ROOT/Users/ann/parent_out/canary.txt", false},
            {"ROOT/Users/ann/parent_out/x/y.mp3", false},
            {"ROOT/Users/ann/Music/cover.jpg", false},
            {"ROOT/dangling_out", false},
            {"ROOT/dangling_out/child.mp3", false},
            {"ROOT/dangling_in", false},
            {"ROOT/loop/x.mp3", false},
            // The system resolves the link before the "..": this names the
            // canary, though the text cleans to a place inside the root.
            {"ROOT/Users/ann/deep_out/../../canary.txt", false},
            {"ROOT/deep_out/../deeper", false},
            {"ROOT/relative_in/../../deep_out/../../canary.txt", false},
            {"Users/ann/Music/song.mp3", false},
            {"C:\\Users\\ann\\Music\\song.mp3", false},
            {"", false},
        };
        for (const auto& c : cases) {
            const QString path = QString(c.path).replace("ROOT", m_root).replace("BASE", m_base);
            for (const QString& root : {m_root, m_root + "/", m_root + "//"})
                QVERIFY2(source_path_guard::is_inside_root(path, root) == c.inside, qPrintable(path + " in " + root));
            QVERIFY2(source_path_guard::exists_inside(path, m_root, "t") == (c.inside && QFileInfo::exists(path)), c.path);
        }
        // A root behind a link is resolved like the paths; a root not yet there holds nothing.
        QVERIFY(QFile::link(m_root, m_base + "/root_link"));
        QVERIFY(source_path_guard::is_inside_root(m_base + "/root_link/Users/ann/Music/song.mp3", m_base + "/root_link"));
        QVERIFY(!source_path_guard::is_inside_root(m_base + "/root_link/absolute_out/x", m_base + "/root_link"));
        QVERIFY(!source_path_guard::is_inside_root(m_base + "/later/a.mp3", m_base + "/later"));
        QVERIFY(write_file(m_base + "/later/a.mp3", "mp3"));
        QVERIFY(source_path_guard::is_inside_root(m_base + "/later/a.mp3", m_base + "/later"));
        for (const QString& bad_root : {QString(), QString("root"), m_root + "/Users/ann/Music/song.mp3/x"})
            QVERIFY(!source_path_guard::is_inside_root(m_root + "/Users/ann/Music/song.mp3", bad_root));
    }

    void refusals_are_logged_once_a_run()
    {
        debug_log_capture log;
        source_path_guard::reset_log();
        const QString outside = m_base + "/outside/canary.txt";
        for (const QString& path : {outside, outside, m_root + "/Users/ann/Music/song.mp3", QString("   ")})
            source_path_guard::allow(path, m_root, "void vlc_winos::extract_playlists()");
        QCOMPARE(log.messages(), QStringList{"path outside the source root ---FAILED--- treated as absent: " + outside});
        QCOMPARE(log.functions(), QStringList{"vlc_winos::extract_playlists"});
        source_path_guard::reset_log();
        QVERIFY(!source_path_guard::exists_inside(outside, m_root, "void t()"));
        QCOMPARE(log.messages().size(), 2);
    }

    void working_copies_of_evidence_databases()
    {
        QTemporaryDir dir;
        const QString adhoc = dir.filePath("adhoc/");
        const QString evidence = dir.filePath("evidence");
        const QString source = evidence + "/vlc_media.db";
        QVERIFY(write_database_with_pending_log(source));
        QVERIFY(write_database_with_pending_log(evidence + "/other/vlc_media.db"));
        for (const QString& suffix : {QString(), QString("-wal"), QString("-shm")})
            QVERIFY(QFile::setPermissions(source + suffix, QFile::ReadOwner | QFile::ReadGroup));
        QString error;
        QVERIFY(tree_writer::write_entries(dir.path(), {{"outside.db-wal", "outside bytes"},
                                                        {"evidence/linked_in.db", read_file(evidence + "/other/vlc_media.db")},
                                                        {"evidence/linked_in.db-wal", "../evidence/other/vlc_media.db-wal", kind::link},
                                                        {"evidence/linked_out.db", read_file(source)},
                                                        {"evidence/linked_out.db-wal", dir.filePath("outside.db-wal").toUtf8(), kind::link},
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
        for (const char* name : {"vlc_media.db", "1_vlc_media.db", "2_vlc_media.db"}) {
            QCOMPARE(helper.get_adhoc_path_for_database(source, evidence), adhoc + name);
            QCOMPARE(titles_in(adhoc + name), QString("checkpointed,only in the log"));
            QVERIFY(QFileInfo(adhoc + name + "-wal").permissions() & QFile::WriteOwner);
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
        // A stale log of an earlier run is not replayed into a new copy.
        QVERIFY(!QFileInfo::exists(helper.get_adhoc_path_for_database(" " + evidence + "/plain.db ", evidence) + "-wal"));
        const QString single = helper.get_adhoc_path_for_regular_file(evidence + "/other/vlc_media.db");
        QVERIFY(single == adhoc + "3_vlc_media.db" && !QFileInfo::exists(single + "-wal"));
        QCOMPARE(helper.get_adhoc_path_for_database("  "), QString());
        psf::bool_cancel_extraction = true;  // cancelled: the folder alone, which callers treat as not found
        QCOMPARE(helper.get_adhoc_path_for_database(source), adhoc);
        psf::bool_cancel_extraction = false;
        QCOMPARE(test_support::snapshot_tree(evidence), before);
    }

    void free_names_in_the_working_copy_folder()
    {
        QTemporaryDir dir;
        const QString adhoc = dir.filePath("a/b/");
        const auto next = [&](const QString& source) { return psf::get_available_file(source, adhoc, "void t()"); };
        QCOMPARE(next("/e/vlc_media.db"), QString("vlc_media.db"));  // the folder is made on the way
        QString error;
        QVERIFY(tree_writer::write_entries(adhoc, {{"vlc_media.db", "1"}, {"1_vlc_media.db", {}, kind::folder},
                                                   {"2_vlc_media.db", "nowhere", kind::link}, {"sub/vlcrc", "x"},
                                                   {" media.db", "x"}},
                                           &error));
        QCOMPARE(next("/e/vlc_media.db"), QString("3_vlc_media.db"));
        QCOMPARE(next("/e/vlcrc"), QString("vlcrc"));  // entries of subfolders do not count
        QCOMPARE(next("/e/ media.db"), QString("1_ media.db"));
        QCOMPARE(next("/e/vlc_media.db "), QString("3_vlc_media.db "));  // equal but for blanks is taken too
        QVERIFY(psf::is_file_exist_in_dir(adhoc, "  vlc_media.db ") && !psf::is_file_exist_in_dir(adhoc, "VLC_media.db"));
    }

    void folder_utilities_never_follow_links_out()
    {
        QTemporaryDir dir;
        const QString outside = dir.filePath("outside");
        QByteArray big(3 * 1024 * 1024 + 17, '\0');
        for (int i = 0; i < big.size(); ++i)
            big[i] = char((i * 31 + 7) & 0xff);
        QString error;
        QVERIFY(tree_writer::write_entries(
            dir.path(), {{"outside/canary.txt", QByteArray(100000, 'c')}, {"tree/a.bin", QByteArray(100, 'a')},
                         {"tree/.hidden", QByteArray(50, 'h')}, {"tree/sub/b.bin", QByteArray(200, 'b')},
                         {"tree/cover.jpg", big}, {"tree/empty", {}}, {"tree/pipe", {}, kind::pipe},
                         {"tree/link_to_file", (outside + "/canary.txt").toUtf8(), kind::link},
                         {"tree/sub/link_to_folder", outside.toUtf8(), kind::link},
                         {"tree/dangling", "nowhere", kind::link}, {"copy/.hidden", QByteArray(500, 'z')}},
            &error));
        const QString tree = dir.filePath("tree");
        QCOMPARE(psf::mining_size(tree), QString::number(100 + 50 + 200 + big.size()));
        QCOMPARE(psf::mining_size(tree + "/sub"), QString("200"));
        QCOMPARE(psf::mining_size(tree + "/dangling"), QString());
        psf::bool_cancel_extraction = true;
        QCOMPARE(psf::mining_size(tree), QString("0"));
        psf::bool_cancel_extraction = false;

        // A copy replaces an older, longer file and takes regular files only.
        psf::copy_directory(tree, dir.filePath("copy"));
        QCOMPARE(read_file(dir.filePath("copy/cover.jpg")), big);
        QCOMPARE(read_file(dir.filePath("copy/.hidden")), QByteArray(50, 'h'));
        QCOMPARE(QDir(dir.filePath("copy")).entryList(QDir::Files | QDir::System | QDir::Hidden),
                 (QStringList{".hidden", "a.bin", "cover.jpg", "empty"}));
        debug_log_capture log;
        psf::copy_directory(dir.filePath("not_there"), dir.filePath("nothing"));
        QCOMPARE(log.messages(), QStringList{"[copy_directory] source diectory does not exist ----FAILED---- :"
                                             + dir.filePath("not_there")});

        // Removal stays inside; a link given is removed alone; an empty path is never the current folder.
        const auto outside_before = test_support::snapshot_tree(outside);
        QVERIFY(QFile::link(outside, dir.filePath("link")));
        psf::remove_directory(dir.filePath("link"));
        psf::remove_directory(tree);
        QVERIFY(!QFileInfo::exists(tree) && !QFileInfo(dir.filePath("link")).isSymLink());
        const QString previous = QDir::currentPath();
        QVERIFY(QDir::setCurrent(dir.filePath("copy")));
        psf::remove_directory("   ");
        QVERIFY(QDir::setCurrent(previous));
        QVERIFY(QFileInfo::exists(dir.filePath("copy/a.bin")));
        QCOMPARE(test_support::snapshot_tree(outside), outside_before);
    }

    // The process runs in a zone with summer time: a time read through local time would show.
    void file_times_are_utc_seconds()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("media.mp4");
        QVERIFY(write_file(path, "data"));
        const struct
        {
            QDateTime moment;
            const char* seconds;
        } cases[] = {
            {QDateTime(QDate(2020, 2, 29), QTime(12, 34, 56, 999), QTimeZone::utc()), "1582979696"},
            {QDateTime(QDate(2019, 3, 31), QTime(1, 30), QTimeZone::utc()), "1553995800"},  // the local clocks jump
            {QDateTime(QDate(1960, 1, 1), QTime(0, 0), QTimeZone::utc()), "-315619200"},
            {QDateTime(QDate(2040, 1, 1), QTime(0, 0), QTimeZone::utc()), "2208988800"},
        };
        for (const auto& c : cases) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadWrite) && file.setFileTime(c.moment, QFileDevice::FileModificationTime));
            file.close();
            QCOMPARE(psf::get_posix_timestamp(" " + path + " ", "modification"), QString(c.seconds));
        }
        QCOMPARE(psf::get_posix_timestamp(dir.filePath("gone.mp4"), "modification"), QString());
        const qint64 birth = psf::get_posix_timestamp(path, "birth").toLongLong();  // 0 where none is kept
        QVERIFY(birth == 0 || qAbs(birth - QDateTime::currentSecsSinceEpoch()) < 3600);
    }

    void capped_reads_of_evidence_files()
    {
        QTemporaryDir dir;
        QString error;
        QVERIFY(tree_writer::write_entries(dir.path(), {{"4095", QByteArray(4095, 'a')}, {"4096", QByteArray(4096, 'a')},
                                                        {"4097", QByteArray(4097, 'a')}, {"empty", {}},
                                                        {"big", "[core]\n", kind::oversized}, {"link", "4096", kind::link},
                                                        {"dangling", "gone", kind::link}},
                                           &error));
        const struct
        {
            const char* name;
            qint64 cap;
            int size;  // -1: not opened
            bool truncated;
        } cases[] = {{"4095", 4096, 4095, false}, {"4096", 4096, 4096, false}, {"4097", 4096, 4096, true},
                     {"empty", 4096, 0, false},   {"empty", 0, 0, false},     {"4095", 0, 0, true},
                     {"big", 1 << 20, 1 << 20, true}, {"link", 4096, 4096, false}, {"dangling", 4096, -1, false},
                     {"missing", 4096, -1, false}, {"", 4096, -1, false}};
        for (const auto& c : cases) {
            const auto read = bounded_file_reader::read(dir.filePath(c.name), c.cap);
            QVERIFY2(read.opened == (c.size >= 0) && read.data.size() == qMax(c.size, 0) && read.truncated == c.truncated,
                     c.name);
        }
        QVERIFY(bounded_file_reader::read(dir.filePath("big")).data.startsWith("[core]\n"));
        // Files of virtual file systems report no size but have content.
        if (QFileInfo("/proc/self/status").size() == 0)
            QVERIFY(bounded_file_reader::read("/proc/self/status", 16).truncated);

        // A named pipe has no writer: opening it would wait for ever.
        const QByteArray pipe = QFile::encodeName(dir.filePath("pipe"));
        QCOMPARE(::mkfifo(pipe.constData(), 0644), 0);
        auto reading = std::async(std::launch::async, [&] { return bounded_file_reader::read(dir.filePath("pipe")); });
        const bool returned = reading.wait_for(std::chrono::seconds(30)) == std::future_status::ready;
        if (!returned)
            ::close(::open(pipe.constData(), O_WRONLY | O_NONBLOCK));  // release the reader so the test can report
        QVERIFY2(returned && !reading.get().opened, "reading a named pipe blocked");
    }
};

QTEST_GUILESS_MAIN(test_files)
#include "test_files.moc"
