// The host program and the real plug-in on every tree: the host's report,
// all result tables and the debug log against a golden file. The sample and
// hostile trees have one golden file each, with the evidence made read-only
// during the run and unchanged after it, and the system and accounts told
// from the layout; the variants of a sample tree (damaged in the ways met in
// the field, other host arguments, the Android library in every model and
// layout) one section each of a shared one. Then what the host program does
// itself: its errors, the deciphering of an enciphered log, the demo.

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QtTest>

#include <csignal>
#include <functional>
#include <sys/stat.h>

#include "android_media_db_writer.h"
#include "compound_file_writer.h"
#include "plist_writer.h"
#include "sample_trees.h"
#include "shell_link_writer.h"
#include "test_support.h"
#include "tree_writer.h"
#include "xspf_writer.h"

namespace {

// Values that change with every checkout or machine: times and kinds of the
// generated files on disk (times taken from inside evidence files stay).
const QStringList k_volatile = {"date_added", "fs_creation_date", "fs_content_change_date", "file_type",
                                "playlists.creation_timestamp", "playlists.modification_timestamp",
                                "playlists.last_access_timestamp", "album_art.creation_timestamp",
                                "album_art.modification_timestamp", "album_art.last_access_timestamp"};
// What only the files beside the hostile trees hold: a row showing one of
// these read something outside the source.
const QStringList k_outside_only = {"271828", "1234567890", "canary_entry", "canary-podcast",
                                    "canary_jump", "canary_library", "canary_art"};
const QString k_backup_db = "evidence/apps/org.videolan.vlc/r/app_db/vlc_media.db";
// The databases a variant's SQL changes, by the kind of change.
const QMap<QString, QString> k_databases = {
    {"sql", k_backup_db},
    {"sql38", "evidence/data/data/org.videolan.vlc/app_db/vlc_media.db"},
    {"sql store", "evidence/private/var/mobile/Containers/Shared/AppGroup/0F6E2B9C-3A1D-4C7E-8B5F-2D9A4E6C1B83/"
                  "MediaLibrary.sqlite"}};

void set_writable(const QString& root, bool writable)
{
    const auto write = QFile::WriteOwner | QFile::WriteUser | QFile::WriteGroup | QFile::WriteOther;
    for (QDirIterator walk(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                           QDirIterator::Subdirectories);
         walk.hasNext();) {
        const QString path = walk.next();
        if (!walk.fileInfo().isSymLink())
            QFile::setPermissions(path, writable ? QFile::permissions(path) | QFile::WriteOwner : QFile::permissions(path) & ~write);
    }
}

void check_tree(const sample_tree& tree)
{
    test_support::tree_run run;
    run.below = tree.root_below;
    QVERIFY2(run.write(tree.write), qPrintable(tree.folder_name + ": " + run.result.err));
    // A run that was killed left the streams of another evidence behind.
    QVERIFY(tree_writer::write_file(
        run.out.filePath("Artifacts_Result/VLC/Files/mallory_9fda41b86ddcf1db.automaticDestinations-ms/7f/file"),
        shell_link_writer::build(shell_link_writer::media_link("C:\\left_over.mp3", 1, 1))));
    set_writable(run.root(), false);
    const auto before = test_support::snapshot_tree(run.source.path());
    const bool ran = run.run(tree.arguments);  // the system told from the layout
    const auto after = test_support::snapshot_tree(run.source.path());
    set_writable(run.root(), true);
    QVERIFY2(ran && after == before, qPrintable(tree.folder_name + ": " + run.result.err));
    const QString text = run.golden_text(k_volatile);
    for (const QString& marker : k_outside_only)
        QVERIFY2(!text.left(text.indexOf("== debug log")).contains(marker), qPrintable(tree.folder_name + ": " + marker));
    const QString difference = test_support::compare_with_golden(tree.folder_name + ".txt", text);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

bool run_sql(const QString& database, const QStringList& statements)
{
    bool ok = true;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "damage");
        db.setDatabaseName(database);
        QSqlQuery query(db.open() ? db : QSqlDatabase());
        for (const QString& statement : statements)
            ok = query.exec(statement) && ok;
    }
    QSqlDatabase::removeDatabase("damage");
    return ok;
}

// The last album's row number becomes 0, out of order, and AlbumTrack's page
// no b-tree page: each album's track lookup fails, after which SQLite seeks
// the scan of Album back to row 0 and finds the albums again from the start
// (as a long fuzzing run found); the reader must stop the circle.
bool put_albums_out_of_order(const QString& database)
{
    constexpr int k_page = 4096;  // the schema samples' page size
    const auto root_page = [&](const QString& table) {
        return test_support::query_rows(database, "select rootpage from sqlite_master where name='" + table + "'")
            .value(0).value(0).toInt();
    };
    const int album = root_page("Album");
    const int tracks = root_page("AlbumTrack");
    QByteArray file = tree_writer::read_file(database);
    const qsizetype page = qsizetype(album - 1) * k_page;
    if (album < 2 || tracks < 2 || file.size() < qMax(album, tracks) * k_page || file[page] != 0x0D)
        return false;
    const int cells = qFromBigEndian<quint16>(file.constData() + page + 3);
    const int last_cell = qFromBigEndian<quint16>(file.constData() + page + 8 + 2 * (cells - 1));
    file[page + last_cell + 1] = 0;  // one byte of payload size, then the one-byte row number
    file[qsizetype(tracks - 1) * k_page] = 0;
    return tree_writer::write_file(database, file);
}

// Damages the written tree; base is the folder that holds "evidence" and "outside".
bool damage(const QString& base, const QString& what)
{
    const QString db = base + "/" + k_backup_db;
    const QString kind = what.section(':', 0, 0);
    const QString detail = what.section(':', 1);
    if (k_databases.contains(kind))
        return run_sql(base + "/" + k_databases.value(kind), detail.split(';'));
    if (kind == "out of order")
        return run_sql(db, {"PRAGMA journal_mode=DELETE"}) && put_albums_out_of_order(db);
    if (kind == "truncate")
        return run_sql(db, {"PRAGMA journal_mode=DELETE"}) && tree_writer::write_file(db, tree_writer::read_file(db).left(3 * 4096 + 100));
    QByteArray noise(64 * 1024, '\0');
    for (int i = 0; i < noise.size(); ++i)
        noise[i] = char((i * 7919 + 13) % 251);
    if (kind == "replace" || kind == "noise")
        return QFile::remove(db + "-wal") && QFile::remove(db + "-shm")
               && tree_writer::write_file(db, kind == "noise" ? noise : detail.toUtf8());
    // An iOS backup whose manifest is noise, told a backup by that file alone; one enciphered.
    if (kind == "manifest noise")
        return QFile::remove(base + "/evidence/Manifest.plist") && tree_writer::write_file(base + "/evidence/Manifest.db", noise);
    if (kind == "encrypted")
        return tree_writer::write_file(base + "/evidence/Manifest.plist",
                                       plist_writer::write(QVariantMap{{"IsEncrypted", true}}, plist_writer::format::xml));
    // Media and a thumbnail whose files are links out of the image, absolute
    // and relative, to a file and to a folder.
    if (kind == "links") {
        const QString music = base + "/evidence/shared/0/Music/";
        return QFile::link(base + "/outside/canary.mp3", music + "abs_link.mp3")
               && QFile::link("../../../../outside/canary.mp3", music + "rel_link.mp3")
               && QFile::link(base + "/outside", music + "outdir")
               && QFile::link(base + "/outside/canary.mp3", base + "/evidence/apps/org.videolan.vlc/ef/thumbs/link.jpg")
               && run_sql(db, {"INSERT INTO Thumbnail(id_thumbnail,mrl,origin,is_generated) VALUES(90,"
                               "'file:///storage/emulated/0/Android/data/org.videolan.vlc/files/thumbs/link.jpg',0,1)",
                               "INSERT INTO Media(id_media,type,title,thumbnail_id,is_present) VALUES(90,2,'Abs',90,1),"
                               "(91,2,'Rel',NULL,1),(92,2,'Dir',NULL,1)",
                               "INSERT INTO File(media_id,mrl,type,is_removable,is_external,is_network) VALUES(90,"
                               "'file:///storage/emulated/0/Music/abs_link.mp3',1,0,0,0),(91,'file:///storage/emulated/0/"
                               "Music/rel_link.mp3',1,0,0,0),(92,'file:///storage/emulated/0/Music/outdir/canary.mp3',1,0,0,0)"});
    }
    // "outside:SUFFIXES" moves files of the database beside the evidence and
    // links them back; "inside:" moves them to another folder of the evidence.
    const QString folder = base + (kind == "outside" ? "/outside/" : "/evidence/elsewhere/");
    QDir().mkpath(folder);
    for (const QString& suffix : detail.split(',')) {
        if (!QFile::rename(db + suffix, folder + "db" + suffix) || !QFile::link(folder + "db" + suffix, db + suffix))
            return false;
    }
    return true;
}

const struct
{
    const char* tree;
    const char* name;
    const char* change;  // see damage(); empty: none
    QStringList arguments;
} k_variants[] = {
    {"android", "not sqlite", "replace:this is a playlist, not a database\n", {}},
    {"android", "enciphered", "noise", {}},
    {"android", "truncated", "truncate", {}},
    {"android", "no Media table", "sql:DROP TABLE Media", {}},
    {"android", "no File.size", "sql:ALTER TABLE File DROP COLUMN size", {}},
    {"android", "no AudioTrack table", "sql:DROP TABLE AudioTrack", {}},
    {"android", "text where numbers belong",
     "sql:UPDATE Media SET duration='long', type='video', play_count='many', is_favorite='';UPDATE Album SET "
     "duration=x'00ff'", {}},
    {"android", "a number too large for an integer column", "sql:UPDATE Media SET play_count=1e20 WHERE title='Intro'", {}},
    {"android", "a lookup that never ends",
     "sql:DROP TABLE AudioTrack;CREATE VIEW AudioTrack AS WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL SELECT x + 1 "
     "FROM n) SELECT x AS id_track, '' AS codec, 0 AS bitrate, 0 AS samplerate, 0 AS nb_channels, '' AS language, "
     "'' AS description, x AS media_id FROM n WHERE random() = 0.5", {}},
    {"android", "the members of one playlist fail to read",
     "sql:ALTER TABLE PlaylistMediaRelation RENAME TO original;CREATE VIEW PlaylistMediaRelation AS SELECT CASE WHEN "
     "playlist_id = 2 THEN abs(-9223372036854775808) ELSE media_id END AS media_id, playlist_id, position FROM "
     "original", {}},
    {"android", "the name of one playlist fails to read",
     "sql:ALTER TABLE Playlist RENAME TO original;CREATE VIEW Playlist AS SELECT CASE WHEN id_playlist = 2 THEN "
     "abs(-9223372036854775808) ELSE name END AS name, id_playlist, creation_date FROM original", {}},
    {"android", "albums out of order", "out of order", {}},
    {"android", "media and a thumbnail linked out of the image", "links", {}},
    {"android", "shared storage named /sdcard, and a memory card",
     "sql:INSERT INTO Media(id_media,type,title,filename,is_present) VALUES(93,2,'Sdcard','late.ogg',1),(94,1,'Mnt',"
     "'clip.mp4',1),(95,2,'Card','card.mp3',1);INSERT INTO File(media_id,mrl,type,is_removable,is_external,is_network) "
     "VALUES(93,'file:///sdcard/Download/late.ogg',1,0,0,0),(94,'file:///mnt/sdcard/Movies/clip.mp4',1,0,0,0),"
     "(95,'file:///storage/1A2B-3C4D/Music/card.mp3',1,1,1,0)", {}},
    {"android", "the database linked from outside", "outside:,-wal,-shm", {}},
    {"android", "its -wal linked from outside", "outside:-wal", {}},
    {"android", "its -wal and -shm linked inside", "inside:-wal,-shm", {}},
    {"android", "edition 3 extracts nothing", "", {"--engine", "3"}},
    {"android", "an empty table selection", "", {"--tables", "exportfilelist"}},
    {"android_current", "mrls that climb out or name a stream",
     "sql38:INSERT INTO Media(id_media,type,title,import_type) VALUES(90,1,'Climbing',0),(91,4,'Radio',0);INSERT INTO "
     "File(media_id,mrl,is_removable,is_external,is_network) VALUES(90,'file:///storage/emulated/0/../../../outside/"
     "canary.mp3',0,0,0),(91,'http://radio.example/0/live.mp3',0,0,1)", {}},
    {"windows", "playlists without the recents of the same run", "", {"--tables", "playlists"}},
    {"ios", "a Core Data store whose files kept only their address",
     "sql store:DROP TABLE ZFILE;CREATE TABLE ZFILE (Z_PK INTEGER, ZURL TEXT);INSERT INTO ZFILE VALUES (1, "
     "'file:///var/mobile/x.mp4')", {}},
    {"ios", "only the album table selected", "", {"--tables", "album"}},
    {"ios_backup", "an encrypted backup", "encrypted", {}},
    {"ios_backup", "a manifest that is no database", "manifest noise", {}},
};

// One variant's section: its name, then its golden text.
QString section(const QString& name, const sample_tree& tree, const QString& change, const QStringList& arguments)
{
    test_support::tree_run run;
    run.below = "evidence";
    const auto writer = [&](const QString& base, QString* error) {
        if (!tree.write(base + "/evidence", error) || !tree_writer::write_file(base + "/outside/canary.mp3", "canary"))
            return false;
        if (!change.isEmpty() && !damage(base, change))
            *error = "cannot damage the tree: " + change;
        return error->isEmpty();
    };
    if (!run.write(writer))
        return "#### " + name + ": " + run.result.err + "\n";
    // A run that ends with a status other than 0 still shows what it wrote.
    const QString status = run.run(QStringList{"--os", tree.os_scheme} + arguments)
                               ? QString()
                               : QString(" (exit %1) ").arg(run.result.exit_code) + run.result.err.trimmed();
    return "#### " + name + status + "\n" + run.golden_text(k_volatile);
}

// A tree for a host case: written into source, with out prepared if need be.
using preparation = std::function<bool(const QString& source, const QString& out)>;

bool windows(const QString& source, const QString&)
{
    return write_windows_sample_tree(source, nullptr);
}

bool macos(const QString& source, const QString&)
{
    return write_macos_sample_tree(source, nullptr);
}

// The tree, then one of its files rewritten.
preparation edited(const preparation& tree, const QString& relative, const std::function<QByteArray(QByteArray)>& edit)
{
    return [=](const QString& source, const QString& out) {
        const QString path = source + "/" + relative;
        return tree(source, out) && tree_writer::write_file(path, edit(tree_writer::read_file(path)));
    };
}

// A declaration whose entities would expand a thousandfold, or read a file of
// the examiner's machine, placed after the XML declaration.
QByteArray with_doctype(QByteArray xml)
{
    return xml.replace("?>", "?>\n<!DOCTYPE playlist [\n<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;"
                             "&a;&a;&a;\"><!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\">\n<!ENTITY outside SYSTEM "
                             "\"file:///etc/hostname\"><!-- ] ' -->\n]>")
        .replace("<title>Holiday Trip</title>", "<title>Holiday &c;Trip&outside;</title>")
        .replace("/a.mp3</location>", "/a&undeclared;.mp3</location>");
}

const QString k_carol_vlcrc = "Users/carol/AppData/Roaming/vlc/vlcrc";
const QString k_alice_vlcrc = "Users/alice/Library/Preferences/org.videolan.vlc/vlcrc";

}  // namespace

class test_sample_trees : public QObject
{
    Q_OBJECT

    QTemporaryDir m_scratch;  // lives as long as the test program

private slots:
    void every_tree_matches_its_golden_dump()
    {
        for (const sample_tree& tree : sample_trees() + hostile_trees()) {
            check_tree(tree);
            if (QTest::currentTestFailed())
                return;
        }
    }

    void variants_of_the_sample_trees()
    {
        QMap<QString, sample_tree> samples;
        for (const sample_tree& tree : sample_trees())
            samples.insert(tree.folder_name, tree);
        QString text;
        for (const auto& v : k_variants)
            text += section(QString(v.tree) + ": " + v.name, samples.value(v.tree), v.change, v.arguments);
        QList<int> models;
        const QDir schemas(QFileInfo(android_media_db_writer::schema_path(15)).absolutePath());
        for (const QString& name : schemas.entryList({"vlc_media_model*.db"}, QDir::Files))
            models << name.mid(15, name.size() - 18).toInt();
        std::sort(models.begin(), models.end());
        QVERIFY2(models.contains(8) && models.contains(38), "the shared schema samples are missing");
        for (int model : models) {
            for (android_layout layout : {android_layout::backup, android_layout::file_system_data_media}) {
                const auto writer = [model, layout](const QString& root, QString* error) {
                    return write_android_model_tree(root, model, layout, error);
                };
                text += section(QString("android: model %1, %2").arg(model).arg(layout == android_layout::backup ? "backup" : "data/media"),
                                {"androidOS", "", {}, writer}, QString(), {});
            }
        }
        const QString difference = test_support::compare_with_golden("variants.txt", text);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

    // Far more entries than any real playlist collection: the reader stops at
    // its limit, with one log line, instead of filling memory.
    void a_playlist_named_again_and_again_stops_at_the_entry_limit()
    {
        test_support::tree_run run;
        const QString recent = "Users/ivy/AppData/Roaming/Microsoft/Windows/Recent/AutomaticDestinations/";
        const QByteArray link = shell_link_writer::build(shell_link_writer::media_link("C:\\Users\\ivy\\big.m3u", 1, 1));
        QVERIFY(tree_writer::write_file(run.source.filePath("Users/ivy/big.m3u"),
                                        QByteArray("#EXTINF:1,t\r\nD:\\x.mp3\r\n").repeated(150000)));
        QVERIFY(tree_writer::write_file(run.source.filePath(recent + "9fda41b86ddcf1db.automaticDestinations-ms"),
                                        compound_file_writer::jump_list({link, link})));
        QVERIFY2(run.run({"--tables", "recents,playlists"}), qPrintable(run.result.err));
        QCOMPARE(test_support::count_rows(run.database(), "playlists"), qint64(200000));
        QCOMPARE(test_support::log_messages(test_support::read_lines(run.debug_log()))
                     .filter("playlist entries beyond the limit are not read").size(), 1);
    }
    // What the host program does with its arguments and its output folder:
    // the exit status, then checks: "err: text" and "out: text" on its
    // streams, "log: text" in the debug log, "statement => value" on the
    // result. A refusal (status 1 or 2) is one line on stderr; a clean run
    // none. Rows without a tree run on a scratch folder ("<dir>") as given,
    // the others on their tree with --source, --out and --debug-log.
    void each_host_case_exits_and_says_as_expected()
    {
        const QString dir = m_scratch.path();
        QVERIFY(tree_writer::write_file(m_scratch.filePath("plain_file"), "x")
                && QDir(dir).mkpath("tree/Users/ann/Library"));
        const auto rerun = [](const preparation& tree) {
            return [=](const QString& source, const QString& out) {
                return tree(source, out) && test_support::run_host({"--source", source, "--out", out}).exit_code == 0;
            };
        };
        const struct
        {
            preparation tree;
            QStringList arguments;
            int exit_code;
            QStringList checks;
        } cases[] = {
            {{}, {}, 2, {"err: no source given"}},
            {{}, {"--out", "<dir>"}, 2, {"err: --source DIR is required"}},
            {{}, {"--source", "<dir>/nope"}, 2, {"err: does not exist"}},
            {{}, {"--source", "<dir>/plain_file"}, 2, {"err: is not a readable folder"}},
            {{}, {"--source", "<dir>", "--out", "<dir>/o"}, 2, {"err: cannot tell the system"}},
            {{}, {"--source", "<dir>", "--os", "macos"}, 2, {"err: --os takes"}},
            {{}, {"--source", "<dir>", "--tables", "recents,history"}, 2, {"err: unknown table 'history'"}},
            {{}, {"--source", "<dir>", "--engine", "two"}, 2, {"err: --engine needs a whole number"}},
            {{}, {"--source"}, 2, {"err: --source needs a value"}},
            {{}, {"--sauce", "<dir>"}, 2, {"err: unknown argument '--sauce'"}},
            {{}, {"--source", "<dir>/tree", "--clear", "--append"}, 2, {"err: exclude each other"}},
            {{}, {"decipher-log"}, 2, {"err: decipher-log takes one file"}},
            {{}, {"decipher-log", "<dir>/nope.log"}, 2, {"err: cannot read"}},
            {{}, {"demo", "--fast"}, 2, {"err: unknown argument '--fast'"}},
            {{}, {"report", "--out", "<dir>/nope"}, 1, {"err: the report could not be written"}},
            {{}, {"--source", "<dir>/tree", "--out", "<dir>/plain_file/sub"}, 1, {"err: cannot create the output folder"}},
            {{}, {"--help"}, 0, {"out: --append", "out: album_art", "out: iOS_UID", "out: 130"}},
            {{}, {"--version"}, 0, {"out: vlc-artifacts 0.1.0"}},
            {windows, {}, 0,
             {"out: tables done: 1 of 6,", "out: tables done: 6 of 6", "out: rows per user:", "out: elapsed:",
              "SELECT count(*) FROM podcasts => 4"}},
            // The evidence is never written to, however the output is named.
            {windows, {"--out", "<source>/Users/results"}, 2, {"err: lies inside the source"}},
            {[](const QString& source, const QString& out) {
                 return windows(source, out) && QFile::link(source + "/Users", out + "/link");
             },
             {"--out", "<out>/link/results"}, 2, {"err: lies inside the source"}},
            {windows, {"--debug-log", "<source>/debug.log"}, 2, {"err: lies inside the source"}},
            {windows, {"--debug-log", "<out>/none/debug.log"}, 1, {"err: cannot write the debug log"}},
            // A second run into the same output neither doubles nor loses rows unasked.
            {rerun(windows), {}, 2, {"err: --clear", "err: --append"}},
            {rerun(windows), {"--append"}, 0, {"SELECT count(*) FROM podcasts => 8"}},
            {rerun(windows), {"--clear"}, 0, {"SELECT count(*) FROM podcasts => 4"}},
            // Runs that extract nothing say why.
            {windows, {"--engine", "7"}, 3, {"err: engine code 7", "out: nothing was extracted"}},
            {windows, {"--user", "nobody"}, 3, {"err: Users/nobody", "err: none of"}},
            {windows, {"--os", "macOS"}, 3, {"err: it looks like winOS (--os winOS)"}},
            {[](const QString& source, const QString& out) {
                 return windows(source, out)
                        && mkdir((QFile::encodeName(source) + "/Users/caf\xE9").constData(), 0755) == 0;
             },
             {}, 0,
             {"err: warning: the account folder Users/caf\\xE9 has a name that is not valid UTF-8",
              "log: not valid UTF-8, it cannot be read: Users/caf\\xE9", "SELECT count(*) FROM podcasts => 4"}},
            // Hostile files cost bounded work, and every cut is named.
            {edited(windows, k_carol_vlcrc, [](QByteArray) { return "podcast-urls=" + QByteArray(1000000, '|') + "\n"; }), {}, 0,
             {"err: warning: cut off at a limit: podcast line of more than 10000 parts",
              "SELECT count(*) FROM podcasts WHERE podcasts = '' => 9999"}},
            {edited(macos, k_alice_vlcrc, [](QByteArray) { return "podcast-urls=" + QByteArray("http://a/|").repeated(110000) + "\n"; }),
             {}, 0, {"err: podcast line of more than 10000 parts", "log: podcast line larger than the read limit",
                     "SELECT count(*) FROM podcasts => 10000"}},
            {[](const QString& source, const QString& out) {
                 QFile vlcrc(source + "/" + k_carol_vlcrc);  // sparse: its holes cost no disk
                 return windows(source, out) && vlcrc.open(QIODevice::Append) && vlcrc.resize(65 << 20);
             },
             {}, 0, {"err: warning: cut off at a limit: file larger than the read limit"}},
            {edited(windows, "Users/carol/Music/party.xspf", with_doctype), {}, 0,
             {"SELECT count(*) FROM playlists WHERE playlist_name = 'party.xspf' => 3"}},
            {edited(macos, "Users/alice/Library/Application Support/org.videolan.vlc/ml.xspf", with_doctype), {}, 0,
             {"SELECT count(*) FROM media_library WHERE title = 'Holiday Trip' => 1"}},
        };
        for (const auto& c : cases) {
            test_support::tree_run run;
            QStringList arguments = c.arguments;
            arguments.replaceInStrings("<dir>", dir).replaceInStrings("<source>", run.source.path())
                .replaceInStrings("<out>", run.out.path());
            const QString name = arguments.join(' ');
            QVERIFY2(!c.tree || c.tree(run.source.path(), run.out.path()), qPrintable(name));
            const auto before = test_support::snapshot_tree(run.source.path());
            if (c.tree)
                run.run(arguments);
            else
                run.result = test_support::run_host(arguments);
            const auto& r = run.result;
            const QString seen = name + "\n" + r.out + r.err;
            const bool refused = c.exit_code == 1 || c.exit_code == 2;
            QVERIFY2(r.finished && r.exit_code == c.exit_code, qPrintable(seen));
            QVERIFY2(test_support::snapshot_tree(run.source.path()) == before, qPrintable(seen));
            ::rmdir((QFile::encodeName(run.source.path()) + "/Users/caf\xE9").constData());  // Qt cannot name it
            if (refused || c.checks.filter(QRegularExpression("^err: ")).isEmpty())
                QVERIFY2(r.err.count('\n') == (refused ? 1 : 0) && r.err.startsWith("vlc-artifacts: ") == refused,
                         qPrintable(seen));
            for (const QString& check : c.checks) {
                const QString kind = check.left(5);
                QString wanted = check.mid(5);
                QString got;
                if (kind == "err: " || kind == "out: ")
                    got = (kind == "err: " ? r.err : r.out).contains(wanted) ? wanted : QString();
                else if (kind == "log: ")
                    got = test_support::read_lines(run.debug_log()).filter(wanted).isEmpty() ? QString() : wanted;
                else {
                    wanted = check.section(" => ", 1);
                    got = test_support::query_rows(run.database(), check.section(" => ", 0, 0)).value(0).value(0).toString();
                }
                QVERIFY2(got == wanted, qPrintable(seen + check + "\ngot: " + got));
            }
        }
    }

    // Ctrl-C stops the run, keeps what was written and exits 130; a second one
    // ends the program at once, and the table it was writing keeps every batch
    // committed before. Rows show in the result only once a batch is
    // committed, so rows seen while the table runs are such a batch.
    void ctrl_c_keeps_the_rows_written()
    {
        QTemporaryDir source;
        xspf_writer library;
        QVERIFY(library.open(source.filePath("Users/ann/Library/Application Support/org.videolan.vlc/ml.xspf")));
        const int tracks = 200000;
        for (int i = 0; i < tracks; ++i)
            library.add({QString("file:///Users/ann/Music/%1.mp3").arg(i), {}, {}, {}, {}, {}, {}, {}, i});
        QVERIFY(library.close());
        for (const int interrupts : {1, 2}) {
            QTemporaryDir out;
            const QString database = out.filePath("Artifacts_Result/VLC/VLC.sqlite");
            QProcess host;
            QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
            environment.insert("VLC_ARTIFACTS_PLUGIN", test_support::plugin_library_path());
            host.setProcessEnvironment(environment);
            host.start(test_support::host_program_path(), {"--source", source.path(), "--out", out.path()});
            qint64 seen = 0;
            while (seen <= 0 && host.state() != QProcess::NotRunning && !host.waitForFinished(20))
                seen = test_support::count_rows(database, "media_library");
            QVERIFY2(seen > 0 && seen < tracks, "no batch was committed while the table ran");
            for (int i = 0; i < interrupts; ++i, QThread::msleep(200))
                ::kill(host.processId(), SIGINT);
            QVERIFY(host.waitForFinished(60000));
            QVERIFY(interrupts == 2 ? host.exitStatus() == QProcess::CrashExit
                                    : host.exitCode() == 130 && host.readAllStandardError().contains(
                                          "cancelled; the rows written before the cancel are kept"));
            // Read-write: a killed run leaves a journal to roll back.
            QVERIFY(run_sql(database, {"PRAGMA user_version"}));
            const qint64 kept = test_support::count_rows(database, "media_library");
            QVERIFY2(kept >= seen && kept < tracks, qPrintable(QString("%1 seen, %2 kept").arg(seen).arg(kept)));
        }
    }

    // An enciphered log reads back through the host's subcommand, a damaged
    // record reported and the good ones still printed; the demo runs every sample.
    void deciphered_logs_and_the_demo()
    {
        test_support::tree_run run;  // an iOS extraction without the app
        QVERIFY(QDir().mkpath(run.root() + "/private/var/mobile/Containers"));
        QVERIFY(run.run({"--os", "iOS_UID", "--engine", "2", "--debug-encrypt"}));
        const QByteArray raw = tree_writer::read_file(run.debug_log());
        QVERIFY(tree_writer::write_file(run.out.filePath("damaged.log"), raw + "bm90IGEgcmVjb3Jk<[{()}]>"));
        const auto plain = test_support::run_host({"decipher-log", run.debug_log()});
        const auto partly = test_support::run_host({"decipher-log", run.out.filePath("damaged.log")});
        const QStringList lines = plain.out.split('\n', Qt::SkipEmptyParts);
        QVERIFY(!raw.contains("pub_extract_artifacts") && lines.size() == raw.count("<[{()}]>") && plain.exit_code == 0);
        QCOMPARE(lines.filter("[QUARL_PROBE][Artifacts Extraction]").size(), lines.size());
        QVERIFY(partly.exit_code == 1 && partly.out == plain.out && partly.err.contains("1 record(s) could not be deciphered"));
        const auto demo = test_support::run_host({"demo", "--out", m_scratch.filePath("demo")});
        QVERIFY(demo.exit_code == 0 && demo.out.count(" sample ==") == sample_trees().size());
        for (const sample_tree& tree : sample_trees())
            QVERIFY(QFileInfo::exists(m_scratch.filePath("demo/results/") + tree.folder_name + "/Artifacts_Result/VLC/VLC.sqlite"));
    }
};

QTEST_GUILESS_MAIN(test_sample_trees)
#include "test_sample_trees.moc"
