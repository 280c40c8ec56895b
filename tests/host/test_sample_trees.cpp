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

#include "android_media_db_writer.h"
#include "compound_file_writer.h"
#include "sample_trees.h"
#include "shell_link_writer.h"
#include "test_support.h"
#include "tree_writer.h"

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
    if (kind == "sql")
        return run_sql(db, detail.split(';'));
    if (kind == "sql38")
        return run_sql(base + "/evidence/data/data/org.videolan.vlc/app_db/vlc_media.db", detail.split(';'));
    if (kind == "out of order")
        return run_sql(db, {"PRAGMA journal_mode=DELETE"}) && put_albums_out_of_order(db);
    if (kind == "truncate")
        return run_sql(db, {"PRAGMA journal_mode=DELETE"}) && tree_writer::write_file(db, tree_writer::read_file(db).left(3 * 4096 + 100));
    if (kind == "replace" || kind == "noise") {
        QByteArray noise(64 * 1024, '\0');
        for (int i = 0; i < noise.size(); ++i)
            noise[i] = char((i * 7919 + 13) % 251);
        return QFile::remove(db + "-wal") && QFile::remove(db + "-shm")
               && tree_writer::write_file(db, kind == "noise" ? noise : detail.toUtf8());
    }
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
    if (!run.write(writer) || !run.run(QStringList{"--os", tree.os_scheme} + arguments))
        return "#### " + name + ": " + run.result.err + "\n";
    return "#### " + name + "\n" + run.golden_text(k_volatile);
}

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
    // Usage errors and faults the host meets itself: one line on stderr, status 2 (usage) or 1.
    void errors_give_one_line_and_a_status()
    {
        const QString dir = m_scratch.path();
        QVERIFY(tree_writer::write_file(m_scratch.filePath("plain_file"), "x")
                && QDir(dir).mkpath("tree/Users/ann/Library"));
        const QList<QPair<QStringList, QString>> cases = {
            {{}, "no source given"},
            {{"--out", dir}, "--source DIR is required"},
            {{"--source", dir + "/nope"}, "does not exist"},
            {{"--source", dir + "/plain_file"}, "is not a readable folder"},
            {{"--source", dir, "--out", dir + "/o"}, "cannot tell the system"},
            {{"--source", dir, "--os", "macos"}, "--os takes"},
            {{"--source", dir, "--tables", "recents,history"}, "unknown table 'history'"},
            {{"--source", dir, "--engine", "two"}, "--engine needs a whole number"},
            {{"--source"}, "--source needs a value"},
            {{"--sauce", dir}, "unknown argument '--sauce'"},
            {{"decipher-log"}, "decipher-log takes one file"},
            {{"decipher-log", dir + "/nope.log"}, "cannot read"},
            {{"demo", "--fast"}, "unknown demo argument '--fast'"},
            {{"--source", dir + "/tree", "--out", dir + "/plain_file/sub"}, "1: no result database was written"},
        };
        for (const auto& [arguments, says] : cases) {
            const auto result = test_support::run_host(arguments);
            const QStringList lines = result.err.split('\n').filter(QRegularExpression("^vlc-artifacts: "));
            QVERIFY2(result.exit_code == (says.startsWith("1: ") ? 1 : 2) && lines.size() == 1
                         && lines.first().contains(QString(says).remove("1: ")),
                     qPrintable(arguments.join(' ') + ": " + result.err));
        }
    }

    // An enciphered log reads back through the host's subcommand, a damaged
    // record reported and the good ones still printed; the demo runs every sample.
    void deciphered_logs_and_the_demo()
    {
        test_support::tree_run run;
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
