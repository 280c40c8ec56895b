// The host program end to end: it loads the real plug-in by path, runs it on
// temporary evidence trees and reports; errors come as one line and an exit code.

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include "test_support.h"
#include "tree_writer.h"

namespace {

const QStringList k_all_tables = {"media_library", "podcasts",  "recents", "recent_played",
                                  "playlists",     "album_art", "album",   "exportfilelist"};

QStringList stderr_lines(const test_support::process_result& result)
{
    return result.err.split('\n', Qt::SkipEmptyParts);
}

}  // namespace

class test_host_program : public QObject
{
    Q_OBJECT

    QTemporaryDir scratch;  // lives as long as the test program

private slots:
    void usage_errors_give_one_line_and_status_2_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("says");
        QTemporaryDir* empty = &scratch;
        QFile file(empty->filePath("plain_file"));
        file.open(QIODevice::WriteOnly);
        file.close();
        QTest::newRow("nothing") << QStringList{} << "no source given";
        QTest::newRow("no source") << QStringList{"--out", empty->path()} << "--source DIR is required";
        QTest::newRow("missing source") << QStringList{"--source", empty->filePath("nope")} << "does not exist";
        QTest::newRow("source is a file") << QStringList{"--source", empty->filePath("plain_file")}
                                          << "is not a readable folder";
        QTest::newRow("unknown layout") << QStringList{"--source", empty->path(), "--out", empty->filePath("o")}
                                        << "cannot tell the system";
        QTest::newRow("bad os") << QStringList{"--source", empty->path(), "--os", "macos"} << "--os takes";
        QTest::newRow("bad table") << QStringList{"--source", empty->path(), "--tables", "recents,history"}
                                   << "unknown table 'history'";
        QTest::newRow("bad number") << QStringList{"--source", empty->path(), "--engine", "two"}
                                    << "--engine needs a whole number";
        QTest::newRow("missing value") << QStringList{"--source"} << "--source needs a value";
        QTest::newRow("unknown option") << QStringList{"--sauce", empty->path()} << "unknown argument '--sauce'";
        QTest::newRow("decipher without file") << QStringList{"decipher-log"} << "decipher-log takes one file";
        QTest::newRow("decipher missing file") << QStringList{"decipher-log", empty->filePath("nope.log")}
                                               << "cannot read";
    }

    void usage_errors_give_one_line_and_status_2()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, says);
        const auto result = test_support::run_host(arguments);
        QVERIFY(result.finished);
        QCOMPARE(result.exit_code, 2);
        const QStringList lines = stderr_lines(result);
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines.first().startsWith("vlc-artifacts: ") && lines.first().contains(says),
                 qPrintable(lines.first()));
    }

    void runs_on_a_windows_tree_and_reports_every_table()
    {
        QTemporaryDir source;
        QTemporaryDir out;
        QString error;
        for (const char* folder : {"Users/ann/AppData/Roaming", "Users/Public", "Users/Default/AppData",
                                      "Users/bob/AppData/Local"})
            QVERIFY(tree_writer::make_dir(source.path(), QString(folder), &error));
        QVERIFY(tree_writer::write_file(source.path(), "Users/ann/AppData/Roaming/vlc/vlcrc", "# empty\n", &error));
        const auto before = test_support::snapshot_tree(source.path());

        const auto result = test_support::run_host({"--source", source.path(), "--out", out.path(), "--debug-log",
                                                    out.filePath("debug.log")});
        QCOMPARE(result.exit_code, 0);
        QVERIFY2(result.err.isEmpty(), qPrintable(result.err));
        QVERIFY(result.out.contains("(winOS)"));
        QVERIFY(result.out.contains("users:    ann, bob\n"));
        const QString database = out.path() + "/Artifacts_Result/VLC/VLC.sqlite";
        QVERIFY(result.out.contains("result database: " + database));
        for (const QString& table : k_all_tables) {
            QVERIFY2(QRegularExpression("\\n" + table + " +0\\n").match(result.out).hasMatch(), qPrintable(table));
            QCOMPARE(test_support::count_rows(database, table), 0);
        }
        QVERIFY(!QFileInfo::exists(out.path() + "/Artifacts_Result/VLC/tmp"));
        QCOMPARE(test_support::snapshot_tree(source.path()), before);

        // The log went to the file and names the edition given.
        const QStringList log = test_support::read_lines(out.filePath("debug.log"));
        QVERIFY(!log.isEmpty());
        QCOMPARE(log.filter("[QUARL_DESK]").size(), log.size());
    }

    void recognises_each_layout_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("scheme");
        QTest::newRow("android backup") << "apps/org.videolan.vlc/r/app_db" << "androidOS";
        QTest::newRow("android file system") << "data/data/org.videolan.vlc/app_db" << "androidOS";
        QTest::newRow("windows") << "Users/ann/AppData/Roaming" << "winOS";
        QTest::newRow("macos") << "Users/ann/Library/Preferences" << "macOS";
    }

    void recognises_each_layout()
    {
        QFETCH(QString, folder);
        QFETCH(QString, scheme);
        QTemporaryDir source;
        QTemporaryDir out;
        QVERIFY(QDir(source.path()).mkpath(folder));
        const auto result = test_support::run_host({"--source", source.path(), "--out", out.path(), "--tables",
                                                    "recents,playlists"});
        QCOMPARE(result.exit_code, 0);
        QVERIFY2(result.out.contains("(" + scheme + ")"), qPrintable(result.out));
        QVERIFY(result.out.contains("tables:   recents, playlists\n"));
    }

    void an_output_folder_that_cannot_be_made_fails_in_one_line()
    {
        QTemporaryDir source;
        QTemporaryDir out;
        QVERIFY(QDir(source.path()).mkpath("Users/ann/Library"));
        QFile blocker(out.filePath("file"));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        const auto result = test_support::run_host({"--source", source.path(), "--out", out.filePath("file/sub")});
        QCOMPARE(result.exit_code, 1);
        const QStringList lines = stderr_lines(result);
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines.first().contains("no result database was written"), qPrintable(lines.first()));
    }

    void enciphered_log_is_deciphered_by_the_subcommand()
    {
        QTemporaryDir source;
        QTemporaryDir out;
        QVERIFY(QDir(source.path()).mkpath("apps/org.videolan.vlc"));
        const QString log = out.filePath("sealed.log");
        const auto run = test_support::run_host({"--source", source.path(), "--out", out.path(), "--engine", "2",
                                                 "--debug-log", log, "--debug-encrypt"});
        QCOMPARE(run.exit_code, 0);
        QFile sealed(log);
        QVERIFY(sealed.open(QIODevice::ReadOnly));
        const QByteArray raw = sealed.readAll();
        QVERIFY(raw.contains("<[{()}]>"));
        QVERIFY(!raw.contains("pub_extract_artifacts"));

        const auto plain = test_support::run_host({"decipher-log", log});
        QCOMPARE(plain.exit_code, 0);
        const QStringList lines = plain.out.split('\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), raw.count("<[{()}]>"));
        QCOMPARE(lines.filter("[QUARL_PROBE][Artifacts Extraction]").size(), lines.size());
        QVERIFY(lines.filter("[vlc::pub_extract_artifacts]:-- [pub_extract_artifacts] - END").size() == 1);

        // A damaged record is reported, the good ones still printed.
        QFile damaged(out.filePath("damaged.log"));
        QVERIFY(damaged.open(QIODevice::WriteOnly));
        damaged.write(raw + "bm90IGEgcmVjb3Jk<[{()}]>");
        damaged.close();
        const auto partly = test_support::run_host({"decipher-log", out.filePath("damaged.log")});
        QCOMPARE(partly.exit_code, 1);
        QCOMPARE(partly.out.split('\n', Qt::SkipEmptyParts).size(), lines.size());
        QVERIFY(partly.err.contains("1 record(s) could not be deciphered"));
    }

    void explicit_users_tables_and_scheme_are_honoured()
    {
        QTemporaryDir source;
        QTemporaryDir out;
        const auto result = test_support::run_host({"--source", source.path(), "--os", "iOS_UID", "--user", "x",
                                                    "--user", "y", "--out", out.path(), "--tables", "album",
                                                    "--source-number", "3", "--clear"});
        QCOMPARE(result.exit_code, 0);
        QVERIFY(result.out.contains("users:    x, y\n"));
        QVERIFY(result.out.contains("(iOS_UID)"));
        QVERIFY(QRegularExpression("\\nalbum +0\\n").match(result.out).hasMatch());
        QVERIFY(!result.out.contains("media_library"));
    }

    void demo_writes_samples_and_runs_on_each()
    {
        QTemporaryDir out;
        const auto result = test_support::run_host({"demo", "--out", out.path()});
        QCOMPARE(result.exit_code, 0);
        for (const char* scheme : {"macOS", "winOS", "androidOS", "iOS_UID"})
            QVERIFY2(result.out.contains(QString("== ") + scheme + " sample =="), scheme);
        for (const char* folder : {"macos", "windows", "android", "ios"})
            QVERIFY(QFileInfo::exists(out.path() + "/results/" + QString(folder) + "/Artifacts_Result/VLC/VLC.sqlite"));
    }
};

QTEST_GUILESS_MAIN(test_host_program)
#include "test_host_program.moc"
