// Bookmarks and the recent-document lists that carry them: the bookmark reader
// on real and corrupted blobs, and real lists of every generation put under
// the player's name in a home folder and read through the host program.
// Expected values of the real samples were read from their bytes by hand.

#include <QtTest>

#include "bookmark_reader.h"
#include "bookmark_writer.h"
#include "test_support.h"
#include "tree_writer.h"

namespace {

QByteArray sample(const QString& path)
{
    return tree_writer::read_file(test_support::shared_fixtures_dir() + "/macos/plist/" + path);
}

}  // namespace

class test_recent_bookmarks : public QObject
{
    Q_OBJECT

private slots:
    void bookmarks()
    {
        if (!QFileInfo::exists(test_support::shared_fixtures_dir() + "/macos/plist"))
            QSKIP("the shared samples are absent");
        const QByteArray plain = bookmark_writer::build("Users/eve/a.mp4", QDateTime(), "eve");
        const qint64 table = bookmark_writer::first_table_at(plain);
        const auto with_field = [&plain](qint64 at, qint64 value) {  // one 32-bit field corrupted
            QByteArray blob = plain;
            qToLittleEndian(quint32(value), blob.data() + at);
            return blob;
        };
        const QString book = "fq/bookmark/";
        // error|path|volume|drive type|created
        const struct { const char* name; QByteArray blob; QString expected; } cases[] = {
            {"sample1", sample(book + "sample1.book"), "|/Applications/Bitwarden.app|Macintosh HD|Internal|1666305568"},
            {"sample2", sample(book + "sample2.book"),
             "|/Users/davidmcdonald/hxstore|Macintosh HD|Internal|1667495814"},
            {"sample3", sample(book + "sample3.book"),
             "|/Users/davidmcdonald/Documents/Arduino/generated_examples/Blink|Macintosh HD|Internal|1651704642"},
            {"sample4", sample(book + "sample4.book"),
             "|/Users/davidmcdonald/go/src/thesis|Macintosh HD|Internal|1649342302"},
            {"path array holds itself", sample(book + "loop.book"), "array holds an array (a loop)||||"},
            {"truncated", plain.left(200), "shorter than its header says||||"},
            {"other magic", "alis" + plain.mid(4), "not a bookmark||||"},
            {"header size", with_field(12, 0x7FFFFFFF), "header size out of range||||"},
            {"table offset", with_field(48, 0xFFFFFF), "table of contents out of range||||"},
            {"table chain loops", with_field(table + 12, table - 48), "tables of contents loop||||"},
            {"entry count", with_field(table + 16, 0x10000000), "table of contents entries out of range||||"},
            {"item offset", with_field(table + 24, 0xFFFFFF), "item out of range||||"},
        };
        for (const auto& c : cases) {
            bookmark_record r;
            const QString error = bookmark_reader::read(c.blob, &r);
            const QString actual = QStringList{error, r.path(), r.volume_name, r.drive_type(),
                                               r.target_created ? QString::number(*r.target_created) : ""}
                                       .join('|');
            QVERIFY2(actual == c.expected, qPrintable(QString(c.name) + ": " + actual));
        }
    }

    void real_lists_under_the_players_name()
    {
        if (!QFileInfo::exists(test_support::shared_fixtures_dir() + "/macos/plist"))
            QSKIP("the shared samples are absent");
        const QString lists = "Library/Application Support/com.apple.sharedfilelist/"
                              "com.apple.LSSharedFileList.ApplicationRecentDocuments/";
        const QString player = lists + "org.videolan.vlc.";
        const QString blueprint = "blueprint/" + lists.section('/', 2);
        // rows|of the item given: path|volume|drive type|created|network path
        const struct { QString sample; QString list; QString item; QString expected; } cases[] = {
            {"fq/recentdocs.sfl2", player + "sfl2", "7 of 10",
             "10|/Volumes/Untitled/file1.txt|Untitled|Disk image|1657045555|"},
            {blueprint + "com.apple.imovieapp.sfl3", player + "sfl3", "2 of 3",
             "2|/Users/alexmiller/Movies/iMovie Library.imovielibrary|Macintosh HD|Internal|1516151539|"},
            {blueprint + "com.apple.iwork.pages.sfl3", player + "sfl3", "5 of 10",
             "1|/Users/alexmiller/Desktop/Career/Jobs/Apogee/Apogee/Counselor Traditions.pages|Macintosh HD|Internal|"
             "1744323023|"},
            {blueprint + "com.apple.quicktimeplayerx.sfl4", player + "sfl4", "6 of 10",
             "10|/Users/alexmiller/Documents/bu/Semester 2/WR152 The Brothers Coen Masters of American Film/"
             "LRP Video Project/The Man Who Wasn't There Analysis.mp4|Macintosh HD|Internal|1646198769|"},
            {"benfried-dotfiles/Library/Preferences/com.apple.QuickTimePlayerX.LSSharedFileList.plist",
             "Library/Preferences/org.videolan.vlc.LSSharedFileList.plist", "1 of 8",
             "8|/Volumes/media/Videos/movies/Apollo 13/Apollo_13_t00.m4v|media|Network|1383499559|"
             "afp://ben@ahab%20(AFP)._afpovertcp._tcp.local/media"},
        };
        for (const auto& c : cases) {
            test_support::tree_run run;
            QVERIFY(run.write([&c](const QString& root, QString* error) {
                return tree_writer::write_file(root + "/Users/eve/", c.list, sample(c.sample), error);
            }));
            QVERIFY2(run.run({"--os", "macOS", "--tables", "recents"}), qPrintable(c.sample));
            const auto rows = test_support::query_rows(
                run.database(), "select (select count(*) from recents), file_path, volume_label, drive_type, "
                                "creation_timestamp, network_path from recents where description like 'Recent item "
                                    + c.item + "%'");
            QStringList actual;
            for (const QVariant& value : rows.value(0))
                actual << value.toString();
            QVERIFY2(actual.join('|') == c.expected, qPrintable(c.sample + ": " + actual.join('|')));
        }
    }
};

QTEST_GUILESS_MAIN(test_recent_bookmarks)
#include "test_recent_bookmarks.moc"
