// Nothing outside the source is read or reported as evidence. Each scheme's
// tree holds traps: media paths that climb out with "..", absolute and
// relative links to files and folders outside, a link followed by "..", and
// player files that are themselves links out. Outside the root lies a canary
// (a file of a known size and time, and player files of known content);
// after a run through the host program no cell of any result table may show
// the canary's size, time, resolved path or content, and no row naming it
// may call it present.

#include <QDateTime>
#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>

#include "android_media_db_writer.h"
#include "compound_file_writer.h"
#include "plist_writer.h"
#include "sample_trees.h"
#include "shell_link_writer.h"
#include "test_support.h"
#include "tree_writer.h"
#include "xspf_writer.h"

namespace {

const QString k_canary = "canary_7f3a";
const qint64 k_canary_size = 271828;
const qint64 k_canary_time = 1234567890;
// Texts only the outside player files hold: seeing one means one was read.
const QStringList k_outside_only = {"canary-podcast-7f3a", "canary_entry_7f3a", "canary_jump_7f3a",
                                    "canary_library_7f3a", "canary_art_7f3a"};

// The folder beside the source with the canary and the outside player files.
class outside_zone
{
public:
    bool write(const QString& folder)
    {
        m_folder = folder;
        QFile media(folder + "/" + k_canary + ".mp3");
        if (!QDir().mkpath(folder) || !media.open(QIODevice::WriteOnly) || !media.resize(k_canary_size))
            return false;
        media.close();
        const QDateTime when = QDateTime::fromSecsSinceEpoch(k_canary_time);
        return set_time(media.fileName(), when)
               && tree_writer::write_file(folder + "/" + k_canary + ".jpg", QByteArray(int(k_canary_size), 'j'))
               && set_time(folder + "/" + k_canary + ".jpg", when)
               && tree_writer::write_file(folder + "/" + k_canary + ".m3u", "C:\\canary_entry_7f3a.mp3\r\n")
               && tree_writer::write_file(folder + "/vlcrc", "podcast-urls=http://canary-podcast-7f3a.example/\n")
               && tree_writer::write_file(folder + "/jump.ms", compound_file_writer::jump_list({shell_link_writer::build(
                      shell_link_writer::media_link("C:\\canary_jump_7f3a.mp3", k_canary_time, 1))}))
               && tree_writer::write_file(folder + "/art/canary_art_7f3a.png", QByteArray::fromHex("89504e47"))
               && write_outside_home(folder + "/home");
    }
    QString path() const { return m_folder; }

private:
    static bool set_time(const QString& path, const QDateTime& when)
    {
        QFile file(path);
        return file.open(QIODevice::ReadWrite) && file.setFileTime(when, QFileDevice::FileModificationTime);
    }
    // A whole macOS home outside, for a user folder that is a link.
    static bool write_outside_home(const QString& home)
    {
        xspf_writer library;
        xspf_entry entry;
        entry.location = "file:///canary_library_7f3a.mp3";
        if (!library.open(home + "/Library/Application Support/org.videolan.vlc/ml.xspf"))
            return false;
        library.add(entry);
        return library.close()
               && tree_writer::write_file(home + "/Library/Preferences/org.videolan.vlc/vlcrc",
                                          "podcast-urls=http://canary-podcast-7f3a.example/\n");
    }
    QString m_folder;
};

bool link(const QString& target, const QString& root, const QString& relative)
{
    const QString at = root + "/" + relative;
    return QDir().mkpath(QFileInfo(at).path()) && QFile::link(target, at);
}

// Links below a media folder of the source, four levels below the folder
// that holds both the source and the outside zone.
bool write_media_links(const QString& root, const QString& folder, const QString& outside)
{
    return link(outside + "/" + k_canary + ".mp3", root, folder + "/abs_link.mp3")
           && link("../../../../outside_zone/" + k_canary + ".mp3", root, folder + "/rel_link.mp3")
           && link(outside, root, folder + "/outdir") && link("../../../../outside_zone", root, folder + "/reldir");
}

// The trap paths below a media folder, as the player would write them.
QStringList trap_paths(const QString& folder, const QString& separator)
{
    QStringList paths = {folder + "/../../../../outside_zone/" + k_canary + ".mp3",
                         folder + "/abs_link.mp3",
                         folder + "/rel_link.mp3",
                         folder + "/outdir/" + k_canary + ".mp3",
                         folder + "/reldir/" + k_canary + ".mp3",
                         folder + "/outdir/../outside_zone/" + k_canary + ".mp3",
                         folder + "/outdir"};
    for (QString& path : paths)
        path.replace("/", separator);
    return paths;
}

int g_traps_tried = 0;

bool write_macos_traps(const QString& root, const QString& outside)
{
    QStringList urls;
    for (const QString& path : trap_paths("/Users/mallory/Music", "/"))
        urls << "file://" + path;
    urls << "file:///Users/mallory/Music/%2E%2E/%2E%2E/%2E%2E/%2E%2E/outside_zone/" + k_canary + ".mp3";
    xspf_writer library;
    if (!write_media_links(root, "Users/mallory/Music", outside)
        || !library.open(root + "/Users/mallory/Library/Application Support/org.videolan.vlc/ml.xspf"))
        return false;
    for (const QString& url : urls) {
        xspf_entry entry;
        entry.location = url;
        library.add(entry);
    }
    QVariantList played;
    for (const QString& url : urls)
        played << url;
    QString error;
    g_traps_tried += 3 * urls.size() + 2;
    return library.close()
           && tree_writer::write_file(root, "Users/mallory/Library/Preferences/org.videolan.vlc.plist",
                                      plist_writer::write(QVariantMap{{"recentlyPlayedMediaList", played}},
                                                          plist_writer::format::binary),
                                      &error)
           && tree_writer::write_file(root,
                                      "Users/mallory/Library/Application Support/com.apple.sharedfilelist/"
                                      "com.apple.LSSharedFileList.ApplicationRecentDocuments/org.videolan.vlc.sfl",
                                      plist_writer::keyed_archive(urls), &error)
           && link(outside + "/vlcrc", root, "Users/mallory/Library/Preferences/org.videolan.vlc/vlcrc")
           && link(outside + "/home", root, "Users/eve");
}

bool write_windows_traps(const QString& root, const QString& outside)
{
    const QString home = "Users/mallory";
    const QString recent = home + "/AppData/Roaming/Microsoft/Windows/Recent/AutomaticDestinations/";
    QStringList targets = trap_paths("C:/Users/mallory/Music", "\\");
    targets << "C:\\..\\outside_zone\\" + k_canary + ".mp3";
    const QStringList playlists = {"C:\\Users\\mallory\\Music\\trap.m3u", "C:\\Users\\mallory\\Music\\out.m3u",
                                   "C:\\Users\\mallory\\Music\\outdir\\" + k_canary + ".m3u",
                                   "C:\\..\\outside_zone\\" + k_canary + ".m3u",
                                   "C:\\Users\\mallory\\Music\\trap.xspf"};
    QList<QByteArray> links;
    for (const QString& target : targets + playlists)
        links << shell_link_writer::build(shell_link_writer::media_link(target, 1700000000, 100));
    QString xspf = "<?xml version=\"1.0\"?><playlist xmlns=\"http://xspf.org/ns/0/\"><trackList>";
    for (QString target : targets)
        xspf += "<track><location>file:///" + target.replace('\\', '/').toHtmlEscaped() + "</location></track>";
    xspf += "</trackList></playlist>";
    QString error;
    g_traps_tried += 3 * targets.size() + playlists.size() + 5;
    return write_media_links(root, home + "/Music", outside)
           && tree_writer::write_file(root, recent + "9fda41b86ddcf1db.automaticDestinations-ms",
                                      compound_file_writer::jump_list(links), &error)
           && link(outside + "/jump.ms", root, recent + "faef7def55a1d4b.automaticDestinations-ms")
           && tree_writer::write_file(root, home + "/Music/trap.m3u", targets.join("\r\n").toUtf8(), &error)
           && tree_writer::write_file(root, home + "/Music/trap.xspf", xspf.toUtf8(), &error)
           && link(outside + "/" + k_canary + ".m3u", root, home + "/Music/out.m3u")
           && link(outside + "/vlcrc", root, home + "/AppData/Roaming/vlc/vlcrc")
           && link(outside + "/art/canary_art_7f3a.png", root, home + "/AppData/Roaming/vlc/art/a/b/canary_art_7f3a.png")
           && link(outside + "/art", root, home + "/AppData/Roaming/vlc/art/outdir")
           && link(outside + "/art", root, "Users/trudy/AppData/Roaming/vlc/art");
}

bool write_android_traps(const QString& root, const QString& outside, QString* error)
{
    const QString storage = "file:///storage/emulated/0/";
    const QString thumbs = "apps/org.videolan.vlc/ef/thumbs";
    if (!write_media_links(root, "shared/0/Music", outside) || !link(outside + "/" + k_canary + ".jpg", root, thumbs + "/abs_link.jpg")
        || !link(outside, root, thumbs + "/outdir"))
        return false;
    QTemporaryDir scratch;
    android_media_db_writer db("write_android_traps");
    if (!db.create(scratch.filePath("vlc_media.db"), 15, error))
        return false;
    QStringList mrls;
    for (const QString& path : trap_paths("Music", "/"))
        mrls << storage + path;
    mrls << storage + "../../../outside_zone/" + k_canary + ".mp3";
    const QStringList thumbnails = {
        "file:///storage/emulated/0/Android/data/org.videolan.vlc/files/thumbs/../../../../../outside_zone/"
            + k_canary + ".jpg",
        "file:///storage/emulated/0/Android/data/org.videolan.vlc/files/thumbs/abs_link.jpg",
        "file:///storage/emulated/0/Android/data/org.videolan.vlc/files/thumbs/outdir/" + k_canary + ".jpg",
        "file:///data/user/0/org.videolan.vlc/app_vlc/thumbs/../../../../../../outside_zone/" + k_canary + ".jpg"};
    const qint64 playlist = db.add_playlist("Traps", 1700000000);
    for (int i = 0; i < mrls.size(); ++i) {
        const qint64 thumbnail = db.add_thumbnail(thumbnails.at(i % thumbnails.size()));
        const qint64 album = db.add_album(QString("Album %1").arg(i), QVariant(), thumbnail, 1, 1000);
        const qint64 media = db.insert("Media", {{"type", 2},
                                                 {"subtype", 0},
                                                 {"filename", QString("trap%1.mp3").arg(i)},
                                                 {"title", QString("Trap %1").arg(i)},
                                                 {"duration", 1000},
                                                 {"thumbnail_id", thumbnail},
                                                 {"is_present", 1},
                                                 {"device_id", 1}});
        db.add_file(media, mrls.at(i), 5555, 1700000000, false, false);
        db.add_album_track(media, album, 1, 1000);
        db.add_playlist_item(playlist, media, i);
    }
    g_traps_tried += 3 * mrls.size() + thumbnails.size() + 2;
    if (!db.last_error().isEmpty()) {
        *error = db.last_error();
        return false;
    }
    return db.snapshot_to(root + "/apps/org.videolan.vlc/r/app_db/vlc_media.db", error);
}

// Every cell of every table of the result, as text, with its column name.
struct result_cell
{
    QString table;
    QString column;
    QString value;
    int row = 0;
};

QList<result_cell> every_cell(const QString& database)
{
    QList<result_cell> cells;
    const auto tables = test_support::query_rows(database, "SELECT name FROM sqlite_master WHERE type='table'");
    for (const QVariantList& table : tables) {
        const QString name = table.value(0).toString();
        const auto columns = test_support::query_rows(database, "SELECT name FROM pragma_table_info('" + name + "')");
        const auto rows = test_support::query_rows(database, "SELECT * FROM \"" + name + "\"");
        for (int r = 0; r < rows.size(); ++r) {
            for (int c = 0; c < rows.at(r).size(); ++c)
                cells.append({name, columns.value(c).value(0).toString(), rows.at(r).at(c).toString(), r});
        }
    }
    return cells;
}

}  // namespace

class test_containment : public QObject
{
    Q_OBJECT

private slots:
    void cleanupTestCase() { qInfo("trap paths tried: %d", g_traps_tried); }

    void no_row_shows_anything_from_outside_the_source_data()
    {
        QTest::addColumn<QString>("scheme");
        QTest::addColumn<QStringList>("users");
        // Tables whose rows show only what was found: a trap may not be named there at all.
        QTest::addColumn<QStringList>("found_only");
        // Where the media traps lie below the root.
        QTest::addColumn<QString>("media_folder");
        QTest::newRow("macOS") << "macOS" << QStringList{"alice", "bob", "mallory", "eve"} << QStringList{}
                               << "Users/mallory/Music";
        QTest::newRow("winOS") << "winOS" << QStringList{"carol", "dave", "mallory", "trudy"} << QStringList{}
                               << "Users/mallory/Music";
        QTest::newRow("androidOS") << "androidOS" << QStringList{} << QStringList{"album_art"} << "shared/0/Music";
    }

    void no_row_shows_anything_from_outside_the_source()
    {
        QFETCH(QString, scheme);
        QFETCH(QStringList, users);
        QFETCH(QStringList, found_only);
        QFETCH(QString, media_folder);
        QTemporaryDir base;
        const QString root = base.filePath("evidence");
        outside_zone outside;
        QVERIFY(QDir().mkpath(root));
        QVERIFY(outside.write(base.filePath("outside_zone")));
        QString error;
        bool written = false;
        if (scheme == "macOS")
            written = write_macos_sample_tree(root, &error) && write_macos_traps(root, outside.path());
        else if (scheme == "winOS")
            written = write_windows_sample_tree(root, &error) && write_windows_traps(root, outside.path());
        else
            written = write_android_traps(root, outside.path(), &error);
        QVERIFY2(written, qPrintable(error));

        const QString out = base.filePath("out");
        const QString log = base.filePath("debug.log");
        QStringList arguments = {"--source", root, "--os", scheme, "--out", out, "--debug-log", log};
        for (const QString& user : users)
            arguments << "--user" << user;
        const auto result = test_support::run_host(arguments);
        QVERIFY2(result.exit_code == 0, qPrintable(result.err));

        const QList<result_cell> cells = every_cell(out + "/Artifacts_Result/VLC/VLC.sqlite");
        QVERIFY(cells.size() > 100);
        QSet<QPair<QString, int>> canary_rows;
        for (const result_cell& cell : cells) {
            const QString where = cell.table + "." + cell.column + " = " + cell.value;
            QVERIFY2(!cell.value.contains(QString::number(k_canary_size)), qPrintable(where));
            QVERIFY2(!cell.value.contains(QString::number(k_canary_time)), qPrintable(where));
            QVERIFY2(!cell.value.contains(outside.path()), qPrintable(where));
            for (const QString& text : k_outside_only)
                QVERIFY2(!cell.value.contains(text), qPrintable(where));
            if (cell.value.contains(k_canary) || cell.value.contains("_link") || cell.value.contains("outdir")) {
                QVERIFY2(!found_only.contains(cell.table), qPrintable(where));
                canary_rows.insert({cell.table, cell.row});
            }
        }
        QVERIFY(!canary_rows.isEmpty());
        for (const result_cell& cell : cells) {
            if (cell.column == "file_exist" && canary_rows.contains({cell.table, cell.row}))
                QVERIFY2(cell.value != "YES", qPrintable(cell.table + " row " + QString::number(cell.row)));
        }
        const QStringList refusals =
            test_support::log_messages(test_support::read_lines(log)).filter("path outside the source root");
        // Every media trap was looked at and refused, not merely missed.
        for (const QString& trap : trap_paths(media_folder, "/")) {
            const QString expected = "treated as absent: " + root + "/" + trap;
            const auto refused = [&expected](const QString& message) { return message.endsWith(expected); };
            QVERIFY2(std::any_of(refusals.begin(), refusals.end(), refused), qPrintable(trap));
        }
        qInfo("%s: %lld distinct paths refused", qPrintable(scheme), static_cast<long long>(refusals.size()));
        // Each refused path is logged once.
        QCOMPARE(QSet<QString>(refusals.begin(), refusals.end()).size(), refusals.size());
    }
};

QTEST_MAIN(test_containment)
#include "test_containment.moc"
