// The helper object: working copies of evidence files (databases with their
// write-ahead companions, single files) and the classification of file names
// as image, audio or video by extension.

#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QUuid>
#include <QtTest>

#include "plugin_helper_functions.h"
#include "plugin_static_function.h"
#include "test_support.h"

#include "tree_writer.h"

namespace {

using tree_writer::read_file;
using tree_writer::write_file;


// Writes an evidence database as a running player leaves it: its first row is
// in the main file, its second only in the "-wal" companion beside it.
bool write_database_with_pending_log(const QString& staging_dir, const QString& evidence_path)
{
    bool ok = true;
    const QString staged = staging_dir + "/staged.db";
    const QString name = "staging " + QUuid::createUuid().toString();
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", name);
        db.setDatabaseName(staged);
        ok = db.open();
        QSqlQuery query(db);
        for (const char* statement :
             {"PRAGMA journal_mode=WAL", "PRAGMA wal_autocheckpoint=0", "CREATE TABLE Media (title TEXT)",
              "INSERT INTO Media VALUES ('checkpointed')", "PRAGMA wal_checkpoint(TRUNCATE)",
              "INSERT INTO Media VALUES ('only in the log')"}) {
            if (ok && !query.exec(statement))
                ok = false;
        }
        query.finish();
        // Copied while the writer is still open, so the log is not folded in.
        QDir().mkpath(QFileInfo(evidence_path).absolutePath());
        for (const QString& suffix : {QString(), QString("-wal"), QString("-shm")}) {
            if (ok && !QFile::copy(staged + suffix, evidence_path + suffix))
                ok = false;
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    return ok;
}

bool write_plain_database(const QString& path)
{
    bool ok = true;
    const QString name = "plain " + QUuid::createUuid().toString();
    QDir().mkpath(QFileInfo(path).absolutePath());
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", name);
        db.setDatabaseName(path);
        ok = db.open();
        QSqlQuery query(db);
        ok = ok && query.exec("CREATE TABLE Media (title TEXT)") && query.exec("INSERT INTO Media VALUES ('one')");
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    return ok;
}

QStringList titles_in(const QString& database_path)
{
    QStringList titles;
    for (const QVariantList& row : test_support::query_rows(database_path, "SELECT title FROM Media ORDER BY rowid"))
        titles << row.value(0).toString();
    return titles;
}

}  // namespace

class test_plugin_helper_functions : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir* m_dir = nullptr;
    QString m_adhoc;
    QString m_evidence;

private slots:
    void init()
    {
        m_dir = new QTemporaryDir;
        QVERIFY(m_dir->isValid());
        m_adhoc = m_dir->filePath("results/adhoc") + "/";
        m_evidence = m_dir->filePath("evidence");
        QVERIFY(QDir().mkpath(m_dir->filePath("staging")));
        plugin_static_function::bool_cancel_extraction = false;
    }

    void cleanup()
    {
        plugin_static_function::bool_cancel_extraction = false;
        delete m_dir;
        m_dir = nullptr;
    }

    // ---- working copies ---------------------------------------------------

    void database_copies_are_numbered_and_keep_their_log()
    {
        const QString source = m_evidence + "/data/org.videolan.vlc/databases/vlc_media.db";
        QVERIFY(write_database_with_pending_log(m_dir->filePath("staging"), source));
        QVERIFY(QFileInfo::exists(source + "-wal"));
        QVERIFY(QFileInfo::exists(source + "-shm"));
        const auto evidence_before = test_support::snapshot_tree(m_evidence);

        plugin_helper_functions helper;
        helper.set_adhoc_parent_path(m_adhoc);
        const QStringList expected_names = {"vlc_media.db", "1_vlc_media.db", "2_vlc_media.db"};
        for (const QString& expected : expected_names) {
            const QString copy = helper.get_adhoc_path_for_database(source);
            QCOMPARE(copy, m_adhoc + expected);
            QCOMPARE(read_file(copy), read_file(source));
            QCOMPARE(read_file(copy + "-wal"), read_file(source + "-wal"));
            QCOMPARE(read_file(copy + "-shm"), read_file(source + "-shm"));
        }

        // Each copy, opened on its own, sees the row that was still in the log.
        for (const QString& name : expected_names)
            QCOMPARE(titles_in(m_adhoc + name), (QStringList{"checkpointed", "only in the log"}));

        QCOMPARE(test_support::snapshot_tree(m_evidence), evidence_before);
    }

    void database_without_companions_is_copied_alone()
    {
        const QString source = m_evidence + "/Users/ann/vlc_media.db";
        QVERIFY(write_plain_database(source));
        // Leftovers of an earlier run whose database copy is gone: a stale log
        // must not be replayed into the new copy.
        QVERIFY(write_file(m_adhoc + "vlc_media.db-wal", QByteArray(4096, '\x5a')));
        QVERIFY(write_file(m_adhoc + "vlc_media.db-shm", QByteArray(4096, '\x5a')));

        plugin_helper_functions helper;
        helper.set_adhoc_parent_path(m_adhoc);
        const QString copy = helper.get_adhoc_path_for_database("  " + source + " ");
        QCOMPARE(copy, m_adhoc + "vlc_media.db");
        QCOMPARE(read_file(copy), read_file(source));
        QVERIFY(!QFileInfo::exists(copy + "-wal"));
        QVERIFY(!QFileInfo::exists(copy + "-shm"));
        QCOMPARE(titles_in(copy), QStringList{"one"});
    }

    void read_only_evidence_gives_a_writable_copy()
    {
        const QString source = m_evidence + "/vlc_media.db";
        QVERIFY(write_database_with_pending_log(m_dir->filePath("staging"), source));
        const QFileDevice::Permissions read_only =
            QFileDevice::ReadOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther;
        for (const QString& suffix : {QString(), QString("-wal"), QString("-shm")})
            QVERIFY(QFile::setPermissions(source + suffix, read_only));
        const auto evidence_before = test_support::snapshot_tree(m_evidence);

        plugin_helper_functions helper;
        helper.set_adhoc_parent_path(m_adhoc);
        const QString copy = helper.get_adhoc_path_for_database(source);
        for (const QString& suffix : {QString(), QString("-wal"), QString("-shm")}) {
            QVERIFY(QFileInfo(copy + suffix).permissions() & QFileDevice::WriteOwner);
            // (The user bits say what this process may do; the mode bits are
            // what matters here.)
            QVERIFY(!(QFileInfo(source + suffix).permissions()
                      & (QFileDevice::WriteOwner | QFileDevice::WriteGroup | QFileDevice::WriteOther)));
        }
        // The copy is worked on like any database; the evidence is not.
        QVERIFY(plugin_static_function::execute_db_command_by_dbpath("INSERT INTO Media VALUES ('added')", copy,
                                                                     "void test()"));
        QCOMPARE(titles_in(copy), (QStringList{"checkpointed", "only in the log", "added"}));
        QCOMPARE(test_support::snapshot_tree(m_evidence), evidence_before);
    }

    void regular_file_copies()
    {
        const QString source = m_evidence + "/Users/ann/Library/Preferences/org.videolan.vlc/vlcrc";
        QVERIFY(write_file(source, "[core]\nrecursive=expand\n"));
        QVERIFY(write_file(source + "-wal", "not a companion of a plain file"));

        plugin_helper_functions helper;
        helper.set_adhoc_parent_path(m_adhoc);
        QCOMPARE(helper.get_adhoc_path_for_regular_file(source), m_adhoc + "vlcrc");
        QCOMPARE(helper.get_adhoc_path_for_regular_file(source), m_adhoc + "1_vlcrc");
        QCOMPARE(read_file(m_adhoc + "1_vlcrc"), read_file(source));
        QVERIFY(!QFileInfo::exists(m_adhoc + "vlcrc-wal"));
        QVERIFY(!QFileInfo::exists(m_adhoc + "1_vlcrc-wal"));
    }

    void nothing_to_copy()
    {
        plugin_helper_functions helper;
        helper.set_adhoc_parent_path(m_adhoc);
        QCOMPARE(helper.get_adhoc_path_for_database(QString()), QString());
        QCOMPARE(helper.get_adhoc_path_for_database("   "), QString());
        QCOMPARE(helper.get_adhoc_path_for_regular_file(QString()), QString());

        // A source that is not there yields no file at the copy's path.
        const QString copy = helper.get_adhoc_path_for_database(m_evidence + "/missing.db");
        QVERIFY(!copy.isEmpty());
        QVERIFY(!QFileInfo::exists(copy));
    }

    void cancelled_copy_gives_the_folder_alone()
    {
        const QString source = m_evidence + "/vlc_media.db";
        QVERIFY(write_database_with_pending_log(m_dir->filePath("staging"), source));
        plugin_helper_functions helper;
        helper.set_adhoc_parent_path(m_adhoc);

        plugin_static_function::bool_cancel_extraction = true;
        QCOMPARE(helper.get_adhoc_path_for_database(source), m_adhoc);
        QCOMPARE(helper.get_adhoc_path_for_regular_file(source), m_adhoc);
        QVERIFY(QDir(m_adhoc).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).isEmpty());
    }

    // ---- classification ---------------------------------------------------

    void list_sizes()
    {
        plugin_helper_functions helper;
        QCOMPARE(helper.image_extension_count(), 570);
        QCOMPARE(helper.audio_extension_count(), 571);
        QCOMPARE(helper.video_extension_count(), 136);
        QCOMPARE(helper.image_extensions().size(), 570);
        const auto distinct = [](QStringList list) {
            list.removeDuplicates();
            return list.size();
        };
        QCOMPARE(distinct(helper.image_extensions()), 548);
        QCOMPARE(distinct(helper.audio_extensions()), 545);
        QCOMPARE(distinct(helper.video_extensions()), 133);
    }

    void every_entry_is_found_by_its_own_check_data()
    {
        QTest::addColumn<int>("kind");
        QTest::newRow("image") << 0;
        QTest::newRow("audio") << 1;
        QTest::newRow("video") << 2;
    }

    // Each stored entry is reachable through its bucket, whatever the case of
    // the name and the blanks around it; a few well-known entries are there.
    void every_entry_is_found_by_its_own_check()
    {
        QFETCH(int, kind);
        plugin_helper_functions helper;
        const QStringList entries = kind == 0   ? helper.image_extensions()
                                    : kind == 1 ? helper.audio_extensions()
                                                : helper.video_extensions();
        const QStringList well_known = kind == 0   ? QStringList{".jpg", ".png", ".tiff", ".zgm", ".001"}
                                       : kind == 1 ? QStringList{".mp3", ".flac", ".m4a", ".zvr", ".2sf"}
                                                   : QStringList{".mp4", ".mkv", ".mov", ".264", ".gvp"};
        for (const QString& entry : well_known)
            QVERIFY2(entries.contains(entry), qPrintable(entry));
        for (const QString& entry : entries) {
            QVERIFY2(entry.startsWith('.') && entry == entry.toLower(), qPrintable(entry));
            for (const QString& name : {"file" + entry, " /Users/ann/Downloads/FILE" + entry.toUpper() + " "}) {
                const bool found = kind == 0   ? helper.check_is_image_by_extn(name)
                                   : kind == 1 ? helper.check_is_audio_by_extn(name)
                                               : helper.check_is_video_by_extn(name);
                QVERIFY2(found, qPrintable(name));
            }
        }
    }

    void classification_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("image");
        QTest::addColumn<bool>("audio");
        QTest::addColumn<bool>("video");

        QTest::newRow("upper-case suffix") << "movie.MP4" << false << false << true;
        QTest::newRow("mixed case with blanks") << " Movie.Mp4 " << false << false << true;
        QTest::newRow("full path") << "/Users/ann/Movies/Holiday 2019.mov" << false << false << true;
        QTest::newRow("mkv") << "clip.mkv" << false << false << true;
        QTest::newRow("digit bucket") << "phone.3gp" << false << false << true;
        QTest::newRow("entry with a hyphen") << "show.dvr-ms" << false << false << true;
        QTest::newRow("ends with a dot") << "movie." << false << false << false;
        QTest::newRow("ends with two dots") << "movie.." << false << false << false;
        QTest::newRow("suffix then a dot") << "movie.mp4." << false << false << false;
        QTest::newRow("no dot") << "movie" << false << false << false;
        QTest::newRow("dot only in a folder") << "/Users/ann/music.d/track" << false << false << false;
        QTest::newRow("empty") << "" << false << false << false;
        QTest::newRow("last piece only") << "archive.tar.mp3" << false << true << true;
        QTest::newRow("earlier piece is not looked at") << "song.mp3.part" << false << false << false;
        QTest::newRow("name that is only a suffix") << ".mp3" << false << true << true;
        QTest::newRow("image") << "IMG_0001.JPG" << true << false << false;
        QTest::newRow("in two lists") << "scan.cdr" << true << true << true;
        QTest::newRow("image and video") << "clip.bmc" << true << false << true;
        QTest::newRow("underscore inside") << "track.mp_" << false << true << true;
        QTest::newRow("underscore first") << "track._mp3" << false << false << false;
        QTest::newRow("non-ASCII first") << "track.\u00e9mp3" << false << false << false;
        QTest::newRow("non-ASCII letter that lowers to ASCII") << "photo.\u212Adi" << false << false << false;
        QTest::newRow("blank first") << "track. mp3" << false << false << false;
        // Video falls back to audio, also where its own bucket is empty.
        QTest::newRow("audio counts as video") << "podcast.m4a" << false << true << true;
        QTest::newRow("empty video bucket") << "list.zpl" << false << true << true;
        QTest::newRow("in no list") << "notes.zzz" << false << false << false;
        // Deliberately not video: nothing after "m" in the video list.
        QTest::newRow("wmv") << "old.wmv" << false << false << false;
        QTest::newRow("webm") << "web.webm" << false << false << false;
        QTest::newRow("ogv") << "theora.ogv" << false << false << false;
        QTest::newRow("ogg is audio") << "theora.ogg" << false << true << true;
    }

    void classification()
    {
        QFETCH(QString, name);
        QFETCH(bool, image);
        QFETCH(bool, audio);
        QFETCH(bool, video);
        plugin_helper_functions helper;
        QCOMPARE(helper.check_is_image_by_extn(name), image);
        QCOMPARE(helper.check_is_audio_by_extn(name), audio);
        QCOMPARE(helper.check_is_video_by_extn(name), video);
    }

    void cancelled_checks_answer_false()
    {
        plugin_helper_functions helper;
        helper.set_cancel_extraction(true);
        for (const char* name : {"a.jpg", "a.mp3", "a.mp4", "a.zpl", "a.m4a"}) {
            QVERIFY(!helper.check_is_image_by_extn(name));
            QVERIFY(!helper.check_is_audio_by_extn(name));
            QVERIFY(!helper.check_is_video_by_extn(name));
        }
        helper.set_essentials();
        QVERIFY(helper.check_is_image_by_extn("a.jpg"));
        QVERIFY(helper.check_is_video_by_extn("a.mp3"));
        helper.set_cancel_extraction(false);
        QVERIFY(helper.check_is_audio_by_extn("a.mp3"));
    }
};

QTEST_GUILESS_MAIN(test_plugin_helper_functions)
#include "test_plugin_helper_functions.moc"
