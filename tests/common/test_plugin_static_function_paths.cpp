// Path helpers: free names in the working-copy folder, relative source paths
// of result rows, account names taken from paths, and the directory
// utilities, on real folders in temporary trees.

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include "debug_log_capture.h"
#include "plugin_static_function.h"
#include "test_support.h"

#include "tree_writer.h"

namespace {

using tree_writer::read_file;
using tree_writer::write_file;

const QString k_home = "macOS_Home_Directory";

struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_system_account account(const QString& name, const QString& second = {})
{
    struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_system_account a;
    a.system_user = name;
    a.domain_user = second;
    return a;
}

}  // namespace

class test_plugin_static_function_paths : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        plugin_static_function::bool_cancel_extraction = false;
        plugin_static_function::system_account_QList.clear();
    }

    void cleanup()
    {
        plugin_static_function::bool_cancel_extraction = false;
        plugin_static_function::system_account_QList.clear();
    }

    void available_file_counts_up()
    {
        QTemporaryDir dir;
        const QString adhoc = dir.filePath("adhoc/deeper/");
        const QString source = "/evidence/data/org.videolan.vlc/databases/vlc_media.db";
        const QString caller = "void test()";

        // The folder and its missing parents are made on the way.
        QCOMPARE(plugin_static_function::get_available_file(source, adhoc, caller), QString("vlc_media.db"));
        QVERIFY(QFileInfo(adhoc).isDir());

        QVERIFY(write_file(adhoc + "vlc_media.db", "1"));
        QCOMPARE(plugin_static_function::get_available_file(source, adhoc, caller), QString("1_vlc_media.db"));
        QVERIFY(write_file(adhoc + "1_vlc_media.db", "2"));
        QCOMPARE(plugin_static_function::get_available_file(source, adhoc, caller), QString("2_vlc_media.db"));

        // A folder, or a dangling link, of that name takes the name too.
        QVERIFY(QDir().mkpath(adhoc + "2_vlc_media.db"));
        QVERIFY(QFile::link(dir.filePath("nowhere"), adhoc + "3_vlc_media.db"));
        QCOMPARE(plugin_static_function::get_available_file(source, adhoc, caller), QString("4_vlc_media.db"));

        // Only the folder's own entries count, not those of its subfolders.
        QVERIFY(write_file(adhoc + "sub/vlcrc", "x"));
        QCOMPARE(plugin_static_function::get_available_file("/evidence/vlcrc", adhoc, caller), QString("vlcrc"));
    }

    void available_file_with_blanks_in_the_name()
    {
        // Names from the evidence may start with a blank; a copy of a second
        // file of that name must not land on the first copy.
        QTemporaryDir dir;
        const QString adhoc = dir.filePath("adhoc/");
        const QString caller = "void test()";
        QVERIFY(write_file(adhoc + " media.db", "first copy"));
        QCOMPARE(plugin_static_function::get_available_file("/evidence/Users/ann/ media.db", adhoc, caller),
                 QString("1_ media.db"));

        // And a name equal to a taken one but for blanks is taken as well.
        QVERIFY(write_file(adhoc + "vlcrc", "x"));
        QCOMPARE(plugin_static_function::get_available_file("/evidence/Users/ann/vlcrc ", adhoc, caller),
                 QString("1_vlcrc "));
    }

    void available_file_when_cancelled()
    {
        QTemporaryDir dir;
        plugin_static_function::bool_cancel_extraction = true;
        QCOMPARE(plugin_static_function::get_available_file("/evidence/vlc_media.db", dir.path() + "/", "void t()"),
                 QString());
    }

    void file_exists_in_dir()
    {
        QTemporaryDir dir;
        QVERIFY(write_file(dir.filePath("ml.xspf"), "x"));
        QVERIFY(plugin_static_function::is_file_exist_in_dir(dir.path(), "ml.xspf"));
        QVERIFY(plugin_static_function::is_file_exist_in_dir(dir.path(), "  ml.xspf "));
        QVERIFY(!plugin_static_function::is_file_exist_in_dir(dir.path(), "ML.xspf"));
        QVERIFY(!plugin_static_function::is_file_exist_in_dir(dir.path(), "ml"));
        QVERIFY(!plugin_static_function::is_file_exist_in_dir(dir.path(), ""));
        QVERIFY(!plugin_static_function::is_file_exist_in_dir(dir.filePath("missing"), "ml.xspf"));

        plugin_static_function::bool_cancel_extraction = true;
        QVERIFY(!plugin_static_function::is_file_exist_in_dir(dir.path(), "ml.xspf"));
    }

    void final_artifact_source_file_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<QString>("source_type");
        QTest::addColumn<QString>("relative");
        QTest::addColumn<QString>("second");

        QTest::newRow("home directory")
            << "/cases/7/home/Library/Preferences/org.videolan.vlc.plist"
            << "/cases/7/home/" << k_home << "/Library/Preferences/org.videolan.vlc.plist"
            << "/cases/7/home/Library/Preferences/org.videolan.vlc.plist";
        QTest::newRow("home directory, prefix without slash")
            << "/cases/7/home/Library/vlcrc" << "/cases/7/home" << k_home << "/Library/vlcrc"
            << "/cases/7/home/Library/vlcrc";
        QTest::newRow("home directory, prefix absent")
            << "Library/vlcrc" << "/cases/7/home/" << k_home << "/Library/vlcrc" << "Library/vlcrc";
        QTest::newRow("home directory, first occurrence only")
            << "/x/src/a/src/b.plist" << "/src/" << k_home << "/a/src/b.plist" << "/x/src/a/src/b.plist";
        QTest::newRow("other source type keeps the path whole")
            << "/cases/7/root/Users/ann/Library/vlcrc" << "/cases/7/root/" << "macOS"
            << "/cases/7/root/Users/ann/Library/vlcrc" << "";
        QTest::newRow("other source type, relative path")
            << "Users/ann/AppData/Roaming/vlc/vlcrc" << "/cases/7/root/" << "winOS"
            << "/Users/ann/AppData/Roaming/vlc/vlcrc" << "";
        QTest::newRow("empty path") << "" << "/cases/" << "macOS" << "" << "";
        QTest::newRow("blank path") << "  " << "/cases/" << "macOS" << "  " << "";
    }

    void final_artifact_source_file()
    {
        QFETCH(QString, path);
        QFETCH(QString, prefix);
        QFETCH(QString, source_type);
        QFETCH(QString, relative);
        QFETCH(QString, second);
        QCOMPARE(plugin_static_function::get_final_artifact_source_file(path, prefix, source_type),
                 (QStringList{relative, second}));
        QCOMPARE(plugin_static_function::get_relative_file_path(path, prefix, source_type), relative);
    }

    void complete_file_path_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("source_type");
        QTest::addColumn<QString>("expected");
        QTest::newRow("user replaced") << "/Users/home/Movies/a.mkv" << "ann" << k_home << "/Users/ann/Movies/a.mkv";
        QTest::newRow("user folder alone") << "/Users/home" << "ann" << k_home << "/Users/ann";
        QTest::newRow("not below Users") << "/Volumes/USB/a.mkv" << "ann" << k_home << "/Volumes/USB/a.mkv";
        QTest::newRow("relative") << "Movies/a.mkv" << "ann" << k_home << "/Movies/a.mkv";
        QTest::newRow("other source type") << "/Users/home/Movies/a.mkv" << "ann" << "macOS"
                                           << "/Users/home/Movies/a.mkv";
        QTest::newRow("other source type, relative") << "Users/bob/a.mkv" << "ann" << "winOS" << "/Users/bob/a.mkv";
        QTest::newRow("empty") << "" << "ann" << k_home << "";
    }

    void complete_file_path()
    {
        QFETCH(QString, path);
        QFETCH(QString, user);
        QFETCH(QString, source_type);
        QFETCH(QString, expected);
        QCOMPARE(plugin_static_function::get_complete_file_path(path, user, source_type), expected);
    }

    void user_name_from_source_file_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<QString>("expected");
        const QString root = "/cases/7/root/";
        QTest::newRow("macOS home") << root + "Users/ann/Library/Preferences/vlcrc" << root << "ann";
        QTest::newRow("prefix without slash") << root + "Users/ann/Library/vlcrc" << "/cases/7/root" << "ann";
        QTest::newRow("Windows home") << root + "Users/bob/AppData/Roaming/vlc/vlcrc" << root << "bob";
        QTest::newRow("no users folder") << root + "home/ann/.config/vlc/vlcrc" << root << "ann";
        QTest::newRow("unknown account") << root + "Users/carol/Library/vlcrc" << root << "";
        QTest::newRow("other case") << root + "Users/Ann/Library/vlcrc" << root << "";
        QTest::newRow("account name elsewhere in the path") << root + "Users/Shared/ann/vlcrc" << root << "";
        QTest::newRow("too short") << root + "vlcrc" << root << "";
        QTest::newRow("users folder alone") << root + "Users/" << root << "";
        // The home folder is named after the account's second name; the name
        // returned is the folder's, even when the first name appears deeper.
        QTest::newRow("second name") << root + "Users/Administrator/Videos/admin/a.mkv" << root << "Administrator";
    }

    void user_name_from_source_file()
    {
        QFETCH(QString, path);
        QFETCH(QString, prefix);
        QFETCH(QString, expected);
        plugin_static_function::system_account_QList = {account("ann"), account("bob", "DESKTOP-1\\bob"),
                                                        account("admin", "Administrator")};
        QCOMPARE(plugin_static_function::extract_user_name_from_sourcefile(path, prefix), expected);
    }

    void user_name_without_accounts()
    {
        QCOMPARE(plugin_static_function::extract_user_name_from_sourcefile("/r/Users/ann/Library/vlcrc", "/r/"),
                 QString());
    }

    void remove_directory_stays_inside()
    {
        QTemporaryDir dir;
        const QString outside = dir.filePath("outside");
        QVERIFY(write_file(outside + "/canary.txt", "must survive"));
        QVERIFY(write_file(outside + "/folder/inner.txt", "must survive too"));

        const QString doomed = dir.filePath("scratch");
        QVERIFY(write_file(doomed + "/a.txt", "a"));
        QVERIFY(write_file(doomed + "/.hidden", "h"));
        QVERIFY(write_file(doomed + "/sub/deeper/b.txt", "b"));
        QVERIFY(write_file(doomed + "/.hidden_dir/c.txt", "c"));
        QVERIFY(QDir().mkpath(doomed + "/empty"));
        QVERIFY(QFile::link(outside, doomed + "/link_to_outside"));
        QVERIFY(QFile::link(outside + "/folder", doomed + "/sub/relative_looking"));
        QVERIFY(QFile::link(outside + "/canary.txt", doomed + "/link_to_canary"));
        QVERIFY(QFile::link(dir.filePath("nowhere"), doomed + "/dangling"));
        const auto outside_before = test_support::snapshot_tree(outside);

        plugin_static_function::remove_directory(doomed);

        QVERIFY(!QFileInfo::exists(doomed));
        QVERIFY(!QFileInfo(doomed).isSymLink());
        QCOMPARE(test_support::snapshot_tree(outside), outside_before);
        QCOMPARE(read_file(outside + "/canary.txt"), QByteArray("must survive"));
    }

    void remove_directory_given_a_link_removes_only_the_link()
    {
        QTemporaryDir dir;
        const QString outside = dir.filePath("outside");
        QVERIFY(write_file(outside + "/canary.txt", "must survive"));
        QVERIFY(QFile::link(outside, dir.filePath("link")));
        plugin_static_function::remove_directory(dir.filePath("link"));
        QVERIFY(!QFileInfo(dir.filePath("link")).isSymLink());
        QCOMPARE(read_file(outside + "/canary.txt"), QByteArray("must survive"));
    }

    void remove_directory_with_nothing_to_do()
    {
        QTemporaryDir dir;
        QVERIFY(write_file(dir.filePath("keep.txt"), "k"));
        plugin_static_function::remove_directory(dir.filePath("never_made"));

        // An empty path must never mean the current folder.
        const QString previous = QDir::currentPath();
        QVERIFY(QDir::setCurrent(dir.path()));
        plugin_static_function::remove_directory(QString());
        plugin_static_function::remove_directory("   ");
        QVERIFY(QDir::setCurrent(previous));
        QVERIFY(QFileInfo::exists(dir.filePath("keep.txt")));
    }

    void copy_directory_copies_files()
    {
        QTemporaryDir dir;
        const QString source = dir.filePath("art");
        QByteArray big(3 * 1024 * 1024 + 17, '\0');
        for (int i = 0; i < big.size(); ++i)
            big[i] = char((i * 31 + 7) & 0xff);
        QVERIFY(write_file(source + "/cover.jpg", big));
        QVERIFY(write_file(source + "/.hidden", "hidden"));
        QVERIFY(write_file(source + "/empty", ""));
        QVERIFY(write_file(source + "/sub/nested.txt", "nested"));

        // An older, longer file at the destination is replaced, not patched.
        const QString destination = dir.filePath("out/new/art");
        QVERIFY(write_file(destination + "/.hidden", QByteArray(500, 'z')));

        plugin_static_function::copy_directory(source, destination);

        QCOMPARE(read_file(destination + "/cover.jpg"), big);
        QCOMPARE(read_file(destination + "/.hidden"), QByteArray("hidden"));
        QVERIFY(QFileInfo::exists(destination + "/empty"));
        QCOMPARE(QFileInfo(destination + "/empty").size(), qint64(0));
        QCOMPARE(read_file(source + "/cover.jpg"), big);
    }

    void copy_directory_does_not_follow_links_out()
    {
        // A link in an evidence folder that points out of it must not bring
        // the examiner's own files into the results.
        QTemporaryDir dir;
        QVERIFY(write_file(dir.filePath("outside/canary.txt"), "examiner's file"));
        const QString source = dir.filePath("evidence/art");
        QVERIFY(write_file(source + "/cover.jpg", "jpg"));
        QVERIFY(QFile::link(dir.filePath("outside/canary.txt"), source + "/innocent.jpg"));

        const QString destination = dir.filePath("copy");
        plugin_static_function::copy_directory(source, destination);
        QCOMPARE(read_file(destination + "/cover.jpg"), QByteArray("jpg"));
        QVERIFY(read_file(destination + "/innocent.jpg") != QByteArray("examiner's file"));
    }

    void copy_directory_of_a_missing_source()
    {
        QTemporaryDir dir;
        debug_log_capture log(dir.filePath("debug.log"));
        const QString source = dir.filePath("not_there");
        plugin_static_function::copy_directory(source, dir.filePath("destination"));
        QVERIFY(!QFileInfo::exists(dir.filePath("destination")));
        QCOMPARE(log.messages(),
                 QStringList{"[copy_directory] source diectory does not exist ----FAILED---- :" + source});
        QCOMPARE(log.functions(), QStringList{"plugin_static_function::copy_directory"});
    }

    void unmatched_entries()
    {
        QCOMPARE(plugin_static_function::get_unmatched_varible_list_of_parentlist(
                     {"ann", "bob", "Ann", "carol", "bob"}, {"bob", "dave"}),
                 (QList<QString>{"ann", "Ann", "carol"}));
        QCOMPARE(plugin_static_function::get_unmatched_varible_list_of_parentlist({}, {"x"}), QList<QString>());
        QCOMPARE(plugin_static_function::get_unmatched_varible_list_of_parentlist({"x"}, {}), QList<QString>{"x"});
        plugin_static_function::bool_cancel_extraction = true;
        QCOMPARE(plugin_static_function::get_unmatched_varible_list_of_parentlist({"a", "b"}, {}), QList<QString>());
    }
};

QTEST_GUILESS_MAIN(test_plugin_static_function_paths)
#include "test_plugin_static_function_paths.moc"
