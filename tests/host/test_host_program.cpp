// The host program's own work: its errors (one line and a status), the
// system and accounts it reads from a tree's layout, the deciphering of an
// enciphered log and the demo. What it does with the plug-in's results is in
// the golden dumps of the sample trees.

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include "test_support.h"
#include "tree_writer.h"

class test_host_program : public QObject
{
    Q_OBJECT

    QTemporaryDir scratch;  // lives as long as the test program

private slots:
    // Usage errors and faults the host meets itself: one line on stderr, status 2 (usage) or 1.
    void errors_give_one_line_and_a_status()
    {
        const QString dir = scratch.path();
        QVERIFY(tree_writer::write_file(scratch.filePath("plain_file"), "x")
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
            const int status = says.startsWith("1: ") ? 1 : 2;
            QVERIFY2(result.exit_code == status && result.err.count('\n') == 1 && result.err.startsWith("vlc-artifacts: ")
                         && result.err.contains(QString(says).remove("1: ")),
                     qPrintable(arguments.join(' ') + ": " + result.err));
        }
    }

    // The accounts scanned by default: every folder under Users/ but the
    // shared one and hidden ones, the guest's included.
    void system_and_accounts_from_the_layout()
    {
        const struct
        {
            QStringList folders;
            const char* report;
        } cases[] = {
            {{"apps/org.videolan.vlc/r/app_db"}, "(androidOS)\nusers:    (none)\n"},
            {{"data/data/org.videolan.vlc/app_db"}, "(androidOS)\nusers:    (none)\n"},
            {{"Users/ann/AppData/Roaming", "Users/Public", "Users/Default/AppData", "Users/Guest/AppData",
              "Users/.hidden/AppData"},
             "(winOS)\nusers:    Default, Guest, Public, ann\n"},
            {{"Users/ann/Library/Preferences", "Users/Guest/Library", "Users/Shared/Library", "Users/.localized"},
             "(macOS)\nusers:    Guest, ann\n"},
        };
        for (const auto& c : cases) {
            QTemporaryDir source;
            for (const QString& folder : c.folders)
                QVERIFY(QDir(source.path()).mkpath(folder));
            const auto result = test_support::run_host(
                {"--source", source.path(), "--out", scratch.filePath("layouts"), "--tables", "recents"});
            QVERIFY2(result.exit_code == 0 && result.out.contains(c.report), qPrintable(result.out + result.err));
        }
    }

    void enciphered_log_is_deciphered_by_the_subcommand()
    {
        QTemporaryDir source;
        QVERIFY(QDir(source.path()).mkpath("apps/org.videolan.vlc"));
        const QString log = scratch.filePath("sealed.log");
        QCOMPARE(test_support::run_host({"--source", source.path(), "--out", scratch.filePath("sealed"), "--engine",
                                         "2", "--debug-log", log, "--debug-encrypt"})
                     .exit_code,
                 0);
        const QByteArray raw = tree_writer::read_file(log);
        QVERIFY(raw.contains("<[{()}]>") && !raw.contains("pub_extract_artifacts"));
        const auto plain = test_support::run_host({"decipher-log", log});
        QCOMPARE(plain.exit_code, 0);
        const QStringList lines = plain.out.split('\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), raw.count("<[{()}]>"));
        QCOMPARE(lines.filter("[QUARL_PROBE][Artifacts Extraction]").size(), lines.size());
        QCOMPARE(lines.filter("[vlc::pub_extract_artifacts]:-- [pub_extract_artifacts] - END").size(), 1);

        // A damaged record is reported, the good ones still printed.
        QVERIFY(tree_writer::write_file(scratch.filePath("damaged.log"), raw + "bm90IGEgcmVjb3Jk<[{()}]>"));
        const auto partly = test_support::run_host({"decipher-log", scratch.filePath("damaged.log")});
        QCOMPARE(partly.exit_code, 1);
        QCOMPARE(partly.out.split('\n', Qt::SkipEmptyParts).size(), lines.size());
        QVERIFY(partly.err.contains("1 record(s) could not be deciphered"));
    }

    void demo_writes_samples_and_runs_on_each()
    {
        const auto result = test_support::run_host({"demo", "--out", scratch.filePath("demo")});
        QCOMPARE(result.exit_code, 0);
        for (const char* scheme : {"macOS", "winOS", "androidOS", "iOS_UID"})
            QVERIFY2(result.out.contains(QString("== ") + scheme + " sample =="), scheme);
        for (const char* folder : {"macos", "windows", "android", "android_current", "ios"})
            QVERIFY(QFileInfo::exists(scratch.filePath("demo/results/") + folder + "/Artifacts_Result/VLC/VLC.sqlite"));
    }
};

QTEST_GUILESS_MAIN(test_host_program)
#include "test_host_program.moc"
