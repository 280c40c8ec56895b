// The containment test for paths taken from evidence content: inside the
// source root after cleaning and after resolving the links that exist on the
// source, or else absent. Every case runs against a real tree with a canary
// file outside the root, with the root given with and without a trailing
// slash.

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include "debug_log_capture.h"
#include "source_path_guard.h"

#include "tree_writer.h"

namespace {

using tree_writer::read_file;
using tree_writer::write_file;

}  // namespace

class test_source_path_guard : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_base;  // holds root/, outside/ and root_sibling/
    QString m_root;

    // "ROOT" and "BASE" in a row's path stand for the tree's folders.
    QString expand(QString path) const
    {
        path.replace("ROOT", m_root);
        path.replace("BASE", m_base);
        return path;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        // The temporary folder itself may sit behind a link; the tree is
        // addressed by its real path, as a mounted source would be.
        m_base = QFileInfo(m_dir.path()).canonicalFilePath();
        m_root = m_base + "/root";

        QVERIFY(write_file(m_base + "/outside/canary.txt", "examiner's file"));
        QVERIFY(QDir().mkpath(m_base + "/outside/deep/deeper"));
        QVERIFY(write_file(m_base + "/root_sibling/file.txt", "next door"));

        QVERIFY(write_file(m_root + "/Users/ann/Music/song.mp3", "mp3"));
        QVERIFY(write_file(m_root + "/Users/ann/Library/vlcrc", "[core]"));
        // Links on the source that point out of it ...
        QVERIFY(QFile::link(m_base + "/outside", m_root + "/absolute_out"));
        QVERIFY(QFile::link("../outside", m_root + "/relative_out"));
        QVERIFY(QFile::link("../../../outside", m_root + "/Users/ann/parent_out"));
        QVERIFY(QFile::link(m_base + "/outside/canary.txt", m_root + "/Users/ann/Music/cover.jpg"));
        QVERIFY(QFile::link(m_base + "/outside/deep/deeper", m_root + "/deep_out"));
        QVERIFY(QFile::link(m_base + "/outside/deep/deeper", m_root + "/Users/ann/deep_out"));
        QVERIFY(QFile::link(m_base + "/outside/not_yet_there", m_root + "/dangling_out"));
        QVERIFY(QFile::link("../root_sibling", m_root + "/sibling_out"));
        // ... and links that stay inside.
        QVERIFY(QFile::link(m_root + "/Users/ann/Music", m_root + "/absolute_in"));
        QVERIFY(QFile::link("Users/ann", m_root + "/relative_in"));
        QVERIFY(QFile::link("../ann/Music", m_root + "/Users/ann/up_and_in"));
        QVERIFY(QFile::link("nothing_here", m_root + "/dangling_in"));
        QVERIFY(QFile::link("loop", m_root + "/loop"));
    }

    void init()
    {
        source_path_guard::reset_log();
    }

    void containment_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("inside");

        QTest::newRow("file inside") << "ROOT/Users/ann/Music/song.mp3" << true;
        QTest::newRow("missing file inside") << "ROOT/Users/ann/Music/gone.mp3" << true;
        QTest::newRow("missing folders inside") << "ROOT/Volumes/USB/a/b/c.mp3" << true;
        QTest::newRow("the root itself") << "ROOT" << true;
        QTest::newRow("the root with a slash") << "ROOT/" << true;
        QTest::newRow("dot-dot that stays inside") << "ROOT/Users/../Users/ann/Music/song.mp3" << true;
        QTest::newRow("doubled slashes and dots") << "ROOT//Users/./ann//Music/song.mp3" << true;
        QTest::newRow("trailing dot") << "ROOT/Users/ann/Music/." << true;
        QTest::newRow("trailing dot-dot that stays inside") << "ROOT/Users/ann/Music/.." << true;
        QTest::newRow("names made of dots are names") << "ROOT/Users/.../..a/.b/a.." << true;
        QTest::newRow("absolute link inside") << "ROOT/absolute_in/song.mp3" << true;
        QTest::newRow("relative link inside") << "ROOT/relative_in/Music/song.mp3" << true;
        QTest::newRow("link up and back in") << "ROOT/Users/ann/up_and_in/song.mp3" << true;

        QTest::newRow("dot-dot out of the root") << "ROOT/../outside/canary.txt" << false;
        QTest::newRow("trailing dot-dot out of the root") << "ROOT/.." << false;
        QTest::newRow("dot-dot deep out of the root") << "ROOT/Users/ann/../../../outside/canary.txt" << false;
        QTest::newRow("dot-dot to a missing place outside") << "ROOT/../nowhere/x.mp3" << false;
        QTest::newRow("outside file") << "BASE/outside/canary.txt" << false;
        QTest::newRow("sibling sharing the root's name") << "BASE/root_sibling/file.txt" << false;
        QTest::newRow("parent of the root") << "BASE" << false;
        QTest::newRow("system file") << "/etc/passwd" << false;
        QTest::newRow("absolute link out") << "ROOT/absolute_out/canary.txt" << false;
        QTest::newRow("absolute link out, missing file") << "ROOT/absolute_out/none.txt" << false;
        QTest::newRow("relative link out") << "ROOT/relative_out/canary.txt" << false;
        QTest::newRow("link to the sibling") << "ROOT/sibling_out/file.txt" << false;
        QTest::newRow("linked parent folder") << "ROOT/Users/ann/parent_out/canary.txt" << false;
        QTest::newRow("linked parent folder, missing file") << "ROOT/Users/ann/parent_out/x/y.mp3" << false;
        QTest::newRow("file link out") << "ROOT/Users/ann/Music/cover.jpg" << false;
        QTest::newRow("dangling link out") << "ROOT/dangling_out" << false;
        QTest::newRow("below a dangling link") << "ROOT/dangling_out/child.mp3" << false;
        QTest::newRow("dangling link inside") << "ROOT/dangling_in" << false;
        QTest::newRow("link loop") << "ROOT/loop" << false;
        QTest::newRow("below a link loop") << "ROOT/loop/x.mp3" << false;
        // The system resolves the link before the dot-dot: this names the
        // canary, though the text cleans to a place inside the root.
        QTest::newRow("dot-dot after a link out") << "ROOT/Users/ann/deep_out/../../canary.txt" << false;
        QTest::newRow("dot-dot after a link out, one level") << "ROOT/deep_out/../deeper" << false;
        QTest::newRow("dot-dot after a link out, missing file") << "ROOT/Users/ann/deep_out/../../x.mp3" << false;
        QTest::newRow("relative path") << "Users/ann/Music/song.mp3" << false;
        QTest::newRow("Windows path") << "C:\\Users\\ann\\Music\\song.mp3" << false;
        QTest::newRow("empty") << "" << false;
    }

    void containment()
    {
        QFETCH(QString, path);
        QFETCH(bool, inside);
        const QString full = expand(path);
        for (const QString& root : {m_root, m_root + "/", m_root + "//"}) {
            QVERIFY2(source_path_guard::is_inside_root(full, root) == inside,
                     qPrintable(full + " against " + root));
            QVERIFY2(source_path_guard::allow(full, root, "void test()") == inside,
                     qPrintable(full + " against " + root));
        }
        // An existence test through the guard never sees past the root.
        const bool exists = QFileInfo::exists(full);
        QCOMPARE(source_path_guard::exists_inside(full, m_root, "void test()"), inside && exists);
    }

    void the_canary_is_never_seen()
    {
        // Every way in the tree to name the canary is refused, whatever the
        // system would make of the text.
        const QStringList ways = {"ROOT/../outside/canary.txt", "ROOT/absolute_out/canary.txt",
                                  "ROOT/relative_out/canary.txt", "ROOT/Users/ann/parent_out/canary.txt",
                                  "ROOT/Users/ann/Music/cover.jpg", "ROOT/Users/ann/deep_out/../../canary.txt",
                                  "ROOT/relative_in/../../deep_out/../../canary.txt"};
        for (const QString& way : ways) {
            const QString full = expand(way);
            QVERIFY2(QFileInfo::exists(full), qPrintable(full));
            QVERIFY2(!source_path_guard::exists_inside(full, m_root, "void test()"), qPrintable(full));
        }
    }

    void root_behind_a_link()
    {
        // The source root may itself be reached through a link (a mount
        // point); its own links are resolved like the paths'.
        const QString linked_root = m_base + "/root_link";
        QVERIFY(QFile::link(m_root, linked_root));
        QVERIFY(source_path_guard::is_inside_root(linked_root + "/Users/ann/Music/song.mp3", linked_root));
        QVERIFY(!source_path_guard::is_inside_root(linked_root + "/absolute_out/canary.txt", linked_root));
        QVERIFY(!source_path_guard::is_inside_root(linked_root + "/../outside/canary.txt", linked_root));
        QVERIFY(QFile::remove(linked_root));
    }

    void root_that_does_not_exist_yet()
    {
        // Nothing is inside a root that is not there; once it is there, its
        // files are, with no stale answer kept from before.
        const QString later_root = m_base + "/later_root";
        QVERIFY(!source_path_guard::is_inside_root(later_root + "/a.mp3", later_root));
        QVERIFY(write_file(later_root + "/a.mp3", "mp3"));
        QVERIFY(source_path_guard::is_inside_root(later_root + "/a.mp3", later_root));
        QVERIFY(QDir(later_root).removeRecursively());
    }

    void bad_roots()
    {
        const QString path = m_root + "/Users/ann/Music/song.mp3";
        QVERIFY(!source_path_guard::is_inside_root(path, QString()));
        QVERIFY(!source_path_guard::is_inside_root(path, "root"));
        QVERIFY(!source_path_guard::is_inside_root(path, m_root + "/Users/ann/Music/song.mp3/x"));
    }

    void refusals_are_logged_once()
    {
        QTemporaryDir log_dir;
        debug_log_capture log(log_dir.filePath("debug.log"));
        const QString caller = "void vlc_winos::extract_playlists()";
        const QString outside = m_base + "/outside/canary.txt";
        const QString inside = m_root + "/Users/ann/Music/song.mp3";

        QVERIFY(!source_path_guard::allow(outside, m_root, caller));
        QVERIFY(!source_path_guard::allow(outside, m_root, caller));
        QVERIFY(source_path_guard::allow(inside, m_root, caller));
        QVERIFY(!source_path_guard::allow("   ", m_root, caller));
        QCOMPARE(log.messages(),
                 QStringList{"path outside the source root ---FAILED--- treated as absent: " + outside});
        QCOMPARE(log.functions(), QStringList{"vlc_winos::extract_playlists"});

        // A new run logs it again.
        source_path_guard::reset_log();
        QVERIFY(!source_path_guard::exists_inside(outside, m_root, caller));
        QCOMPARE(log.messages().size(), 2);
    }
};

QTEST_GUILESS_MAIN(test_source_path_guard)
#include "test_source_path_guard.moc"
