// The shared services that touch files, on a real tree in a temporary
// folder: the containment test for paths taken from evidence, working copies
// of evidence databases, free names, the folder utilities, capped reads, and
// times of files. What each gives is pinned by tests/golden/files.txt.

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <fcntl.h>
#include <future>
#include <unistd.h>

#include "android_media_db_writer.h"
#include "bounded_file_reader.h"
#include "debug_log_capture.h"
#include "plugin_helper_functions.h"
#include "source_path_guard.h"
#include "tree_writer.h"

namespace {

using tree_writer::kind;
using psf = plugin_static_function;

// A database as a running player leaves it: its first row in the main file,
// its second only in the "-wal" companion beside it.
bool write_database_with_pending_log(const QString& path)
{
    QTemporaryDir staging;
    android_media_db_writer db("staging");
    const bool ok = db.create(staging.filePath("db"), 15, nullptr) && db.use_wal()
                    && db.add_media({{"title", "checkpointed"}}, {}) > 0 && db.checkpoint()
                    && db.add_media({{"title", "only in the log"}}, {}) > 0;
    return ok && db.snapshot_to(path, nullptr);  // the writer still open
}

// A working copy as text: its name, its companions, the rows it gives.
QString copy_text(const QString& copy)
{
    QString text = QFileInfo(copy).fileName();
    for (const char* companion : {"-wal", "-shm"})
        text += QFileInfo::exists(copy + companion) ? companion : "";
    text += " writable=" + QString::number(bool(QFileInfo(copy).permissions() & QFile::WriteOwner)) + " rows=";
    for (const QVariantList& row : test_support::query_rows(copy, "SELECT title FROM Media ORDER BY rowid"))
        text += row.value(0).toString() + ",";
    return text;
}

}  // namespace

class test_files : public QObject
{
    Q_OBJECT

private slots:
    void every_case_on_a_real_tree()
    {
        qputenv("TZ", "Europe/Berlin");  // a zone with summer time: a time read through local time would show
        tzset();
        QTemporaryDir dir;
        const QString base = QFileInfo(dir.path()).canonicalFilePath();  // as a mounted source is addressed
        const QString evidence = base + "/evidence";
        QVERIFY(write_database_with_pending_log(evidence + "/vlc_media.db") && write_database_with_pending_log(evidence + "/other/db"));
        QByteArray big(3 * 1024 * 1024 + 17, '\0');
        for (int i = 0; i < big.size(); ++i)
            big[i] = char((i * 31 + 7) & 0xff);
        const QByteArray main_file = tree_writer::read_file(evidence + "/vlc_media.db");
        QString error;
        QVERIFY2(tree_writer::write_entries(base, {
            {"outside/canary.txt", "examiner's file"}, {"outside/deep/deeper", {}, kind::folder}, {"root_sibling/f.txt", "x"},
            {"root/Users/ann/Music/song.mp3", "mp3"}, {"root/absolute_out", (base + "/outside").toUtf8(), kind::link},
            {"root/relative_out", "../outside", kind::link}, {"root/Users/ann/parent_out", "../../../outside", kind::link},
            {"root/Users/ann/Music/cover.jpg", (base + "/outside/canary.txt").toUtf8(), kind::link},
            {"root/deep_out", (base + "/outside/deep/deeper").toUtf8(), kind::link},
            {"root/Users/ann/deep_out", (base + "/outside/deep/deeper").toUtf8(), kind::link},
            {"root/dangling_out", (base + "/outside/not_yet_there").toUtf8(), kind::link},
            {"root/sibling_out", "../root_sibling", kind::link}, {"root/relative_in", "Users/ann", kind::link},
            {"root/absolute_in", (base + "/root/Users/ann/Music").toUtf8(), kind::link},
            {"root/Users/ann/up_and_in", "../ann/Music", kind::link}, {"root/dangling_in", "nothing_here", kind::link},
            {"root/loop", "loop", kind::link}, {"root_link", (base + "/root").toUtf8(), kind::link},
            {"outside.db-wal", "outside bytes"}, {"evidence/in.db", tree_writer::read_file(evidence + "/other/db")},
            {"evidence/in.db-wal", "other/db-wal", kind::link}, {"evidence/out.db", main_file},
            {"evidence/out.db-wal", "../outside.db-wal", kind::link}, {"evidence/out.db-shm", {}, kind::pipe},
            {"evidence/pipe.db", {}, kind::pipe}, {"evidence/plain.db", main_file}, {"adhoc/plain.db-wal", "stale"},
            {"adhoc/x", "1"}, {"adhoc/1_x", {}, kind::folder}, {"adhoc/2_x", "nowhere", kind::link}, {"adhoc/sub/vlcrc", "x"},
            {"tree/a.bin", QByteArray(100, 'a')}, {"tree/.hidden", "h"}, {"tree/sub/b.bin", QByteArray(200, 'b')},
            {"tree/cover.jpg", big}, {"tree/empty", {}}, {"tree/pipe", {}, kind::pipe},
            {"tree/link_to_file", (base + "/outside/canary.txt").toUtf8(), kind::link},
            {"tree/sub/link_to_folder", (base + "/outside").toUtf8(), kind::link}, {"tree/dangling", "gone", kind::link},
            {"copy/.hidden", QByteArray(500, 'z')}, {"reads/4096", QByteArray(4096, 'a')},
            {"reads/4097", QByteArray(4097, 'a')}, {"reads/empty", {}}, {"reads/big", "[core]\n", kind::oversized},
            {"reads/link", "4096", kind::link}, {"reads/pipe", {}, kind::pipe}}, &error), qPrintable(error));
        const auto evidence_before = test_support::snapshot_tree(evidence);
        const auto outside_before = test_support::snapshot_tree(base + "/outside");
        QString text;

        // Inside the source root after cleaning and after resolving the links
        // that exist on the source, or else absent; the last ones name the
        // canary through a link followed by "..", though their text cleans to
        // a place inside the root.
        for (const QString& root : {base + "/root", base + "/root//", base + "/root_link"}) {
            for (const char* path :
                 {"/Users/ann/Music/song.mp3", "/Users/ann/Music/gone.mp3", "", "/Users/../Users/ann/Music/song.mp3",
                  "//Users/./ann//Music/..", "/Users/.../..a/.b/a..", "/absolute_in/song.mp3", "/relative_in/Music/song.mp3",
                  "/Users/ann/up_and_in/song.mp3", "/../outside/canary.txt", "/..", "/Users/ann/../../../outside/canary.txt",
                  "/../nowhere/x.mp3", "/absolute_out/canary.txt", "/absolute_out/none.txt", "/relative_out/canary.txt",
                  "/sibling_out/f.txt", "/Users/ann/parent_out/x/y.mp3", "/Users/ann/Music/cover.jpg", "/dangling_out/c.mp3",
                  "/dangling_in", "/loop/x.mp3", "/Users/ann/deep_out/../../canary.txt", "/deep_out/../deeper",
                  "/relative_in/../../deep_out/../../canary.txt"}) {
                const QString full = QDir::cleanPath(root) + path;
                text += QString("inside %1%2: %3 %4\n").arg(QString(root).remove(base), path)
                            .arg(source_path_guard::is_inside_root(full, root))
                            .arg(source_path_guard::exists_inside(full, root, "void t()"));
            }
        }
        for (const QString& other : {base + "/outside/canary.txt", base + "/root_sibling/f.txt", base, QString("/etc/passwd"),
                                     QString("Users/ann/song.mp3"), QString("C:\\Users"), QString()})
            text += "other " + QString(other).replace(base, "<base>") + ": "
                    + QString::number(source_path_guard::is_inside_root(other, base + "/root")) + "\n";
        for (const QString& bad_root : {QString(), QString("root"), base + "/root/Users/ann/Music/song.mp3/x", base + "/later"})
            text += "root " + QString(bad_root).replace(base, "<base>") + ": "
                    + QString::number(source_path_guard::is_inside_root(base + "/root/Users/ann/Music/song.mp3", bad_root)) + "\n";

        // Working copies: numbered, writable, with the rows still in the log; a
        // companion that links inside the source is copied, one leading out or
        // a pipe is left out (logged once) and the database read without it; a
        // stale log of an earlier run is not replayed; cancelled, the folder alone.
        debug_log_capture log;
        source_path_guard::reset_log();
        plugin_helper_functions helper;
        helper.set_adhoc_parent_path(base + "/adhoc/");
        for (const char* name : {"/vlc_media.db", "/vlc_media.db", "/in.db", "/out.db", "/pipe.db", "/plain.db "})
            text += "copy " + copy_text(helper.get_adhoc_path_for_database(evidence + name, evidence)) + "\n";
        text += "regular " + copy_text(helper.get_adhoc_path_for_regular_file(evidence + "/vlc_media.db")) + "\n";
        psf::bool_cancel_extraction = true;
        text += "cancelled [" + helper.get_adhoc_path_for_database(evidence + "/vlc_media.db").remove(base) + "] ["
                + psf::get_available_file("/e/x", base + "/adhoc/", "t") + "] [" + psf::mining_size(base + "/tree") + "]\n";
        psf::bool_cancel_extraction = false;
        for (const char* source : {"/e/x", "/e/vlc_media.db ", "/e/vlcrc"})
            text += "free name " + psf::get_available_file(source, base + "/adhoc/", "t") + "|\n";
        text += "log " + log.messages().join(" / ").remove(base) + "\n";

        // Sizes and copies take regular files only and never follow a link;
        // removal stays inside, removes a link given alone and never takes an
        // empty path for the current folder.
        text += "size " + psf::mining_size(base + "/tree") + " " + psf::mining_size(base + "/tree/dangling") + "\n";
        psf::copy_directory(base + "/tree", base + "/copy");
        psf::copy_directory(base + "/none", base + "/nothing");
        QVERIFY(tree_writer::read_file(base + "/copy/cover.jpg") == big && QFile::link(base + "/outside", base + "/link"));
        psf::remove_directory(base + "/link");
        psf::remove_directory(base + "/tree");
        QVERIFY(QDir::setCurrent(base + "/copy"));
        psf::remove_directory("   ");
        text += "after [" + test_support::listing(base + "/copy") + "] tree " + QString::number(QFileInfo::exists(base + "/tree"))
                + " link " + QString::number(QFileInfo(base + "/link").isSymLink()) + "\n";

        // Never more than the ceiling in memory, a flag when the file holds
        // more; a named pipe is not opened (it would wait for ever for a writer).
        for (const auto& [name, cap] : QList<QPair<QString, qint64>>{{"4096", 4096}, {"4097", 4096}, {"empty", 0},
                                                                     {"4096", 0}, {"big", 1 << 20}, {"link", 4096},
                                                                     {"missing", 4096}, {"", 4096}}) {
            const auto read = bounded_file_reader::read(base + "/reads/" + name, cap);
            text += QString("read %1 %2: %3 %4 %5\n").arg(name).arg(cap).arg(read.opened).arg(read.data.size()).arg(read.truncated);
        }
        QVERIFY(bounded_file_reader::read(base + "/reads/big").data.startsWith("[core]\n"));
        auto reading = std::async(std::launch::async, [&] { return bounded_file_reader::read(base + "/reads/pipe"); });
        const bool returned = reading.wait_for(std::chrono::seconds(30)) == std::future_status::ready;
        if (!returned)  // release the reader so that the test can report
            ::close(::open(QFile::encodeName(base + "/reads/pipe").constData(), O_WRONLY | O_NONBLOCK));
        QVERIFY2(returned && !reading.get().opened, "reading a named pipe blocked");

        // Times of files as seconds in UTC, whatever the zone's summer time does.
        for (const QDateTime& moment : {QDateTime(QDate(2020, 2, 29), QTime(12, 34, 56, 999), QTimeZone::utc()),
                                        QDateTime(QDate(2019, 3, 31), QTime(1, 30), QTimeZone::utc()),
                                        QDateTime(QDate(1960, 1, 1), QTime(0, 0), QTimeZone::utc())}) {
            QFile file(base + "/reads/4096");
            QVERIFY(file.open(QIODevice::ReadWrite) && file.setFileTime(moment, QFileDevice::FileModificationTime));
            file.close();
            text += "time " + psf::get_posix_timestamp(" " + base + "/reads/4096 ", "modification") + "\n";
        }
        text += "time of nothing [" + psf::get_posix_timestamp(base + "/gone", "modification") + "]\n";

        QCOMPARE(test_support::snapshot_tree(evidence), evidence_before);
        QCOMPARE(test_support::snapshot_tree(base + "/outside"), outside_before);
        const QString difference = test_support::compare_with_golden("files.txt", text);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }
};

QTEST_GUILESS_MAIN(test_files)
#include "test_files.moc"
