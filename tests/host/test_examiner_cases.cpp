// The host program as an examiner meets it: where it may write, what it
// refuses and with which exit code, what it says on stderr, and what hostile
// evidence costs. Each case is a tree, arguments, and the expected exit code,
// stderr texts and result rows; the evidence must be unchanged after every one.

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QtTest>

#include <csignal>
#include <functional>
#include <sys/stat.h>

#include "sample_trees.h"
#include "test_support.h"
#include "tree_writer.h"
#include "xspf_writer.h"

namespace {

using preparation = std::function<bool(const QString& source, const QString& out)>;

bool windows(const QString& source, const QString&)
{
    QString error;
    return write_windows_sample_tree(source, &error);
}

bool macos(const QString& source, const QString&)
{
    QString error;
    return write_macos_sample_tree(source, &error);
}

// The sample tree, then one of its files replaced or edited.
preparation windows_with(const QString& relative, const std::function<QByteArray(QByteArray)>& edit)
{
    return [=](const QString& source, const QString& out) {
        const QString path = source + "/" + relative;
        return windows(source, out) && tree_writer::write_file(path, edit(tree_writer::read_file(path)));
    };
}

preparation macos_with(const QString& relative, const std::function<QByteArray(QByteArray)>& edit)
{
    return [=](const QString& source, const QString& out) {
        const QString path = source + "/" + relative;
        return macos(source, out) && tree_writer::write_file(path, edit(tree_writer::read_file(path)));
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

class test_examiner_cases : public QObject
{
    Q_OBJECT

private slots:
    void each_case_exits_and_says_as_expected()
    {
        const auto run_before = [](const preparation& tree) {
            return [=](const QString& source, const QString& out) {
                return tree(source, out) && test_support::run_host({"--source", source, "--out", out}).exit_code == 0;
            };
        };
        const struct
        {
            const char* name;
            preparation tree;
            QStringList arguments;  // after --source, --out and --debug-log; "<source>" and "<out>" filled in
            int exit_code;
            QStringList says;    // on stderr
            QStringList prints;  // on stdout
            QStringList checks;  // "statement => value" on the result database, "log: text" in the debug log
        } cases[] = {
            {"a plain run", windows, {}, 0, {},
             {"tables done: 1 of 4,", "tables done: 4 of 4", "rows per user:", "carol", "elapsed:"},
             {"SELECT count(*) FROM podcasts => 3"}},
            {"output inside the source", windows, {"--out", "<source>/Users/results"}, 2,
             {"lies inside the source"}, {}, {}},
            {"output through a link into the source",
             [](const QString& source, const QString& out) {
                 return windows(source, out) && QFile::link(source + "/Users", out + "/link");
             },
             {"--out", "<out>/link/results"}, 2, {"lies inside the source"}, {}, {}},
            {"debug log inside the source", windows, {"--debug-log", "<source>/debug.log"}, 2,
             {"lies inside the source"}, {}, {}},
            {"output holding results", run_before(windows), {}, 2, {"--clear", "--append"}, {}, {}},
            {"--append adds to them", run_before(windows), {"--append"}, 0, {}, {},
             {"SELECT count(*) FROM podcasts => 6"}},
            {"--clear empties them first", run_before(windows), {"--clear"}, 0, {}, {},
             {"SELECT count(*) FROM podcasts => 3"}},
            {"--clear with --append", windows, {"--clear", "--append"}, 2, {"exclude each other"}, {}, {}},
            {"output folder that cannot be made",
             [](const QString& source, const QString& out) {
                 return windows(source, out) && tree_writer::write_file(out + "/file", "x");
             },
             {"--out", "<out>/file/sub"}, 1,
             {"cannot create the output folder"}, {}, {}},
            {"debug log that cannot be written", windows, {"--debug-log", "<out>/none/debug.log"}, 1,
             {"cannot write the debug log"}, {}, {}},
            {"engine code without extraction", windows, {"--engine", "7"}, 3, {"engine code 7"},
             {"nothing was extracted"}, {"SELECT count(*) FROM recents => 0"}},
            {"--user without a profile folder", windows, {"--user", "nobody"}, 3, {"Users/nobody", "none of"}, {},
             {}},
            {"scheme against the layout", windows, {"--os", "macOS"}, 3, {"it looks like winOS (--os winOS)"}, {},
             {}},
            {"account folder named in Latin-1",
             [](const QString& source, const QString& out) {
                 return windows(source, out)
                        && mkdir((QFile::encodeName(source) + "/Users/caf\xE9").constData(), 0755) == 0;
             },
             {}, 0, {"warning: the account folder Users/caf\\xE9 has a name that is not valid UTF-8"}, {},
             {"SELECT count(*) FROM podcasts => 3", "log: not valid UTF-8, it cannot be read: Users/caf\\xE9"}},
            {"a million bars on a Windows podcast line",
             windows_with(k_carol_vlcrc, [](QByteArray) { return "podcast-urls=" + QByteArray(1000000, '|') + "\n"; }),
             {}, 0, {"warning: cut off at a limit: podcast line of more than 10000 parts"}, {},
             {"SELECT count(*) FROM podcasts => 10000",
              "SELECT count(*) FROM podcasts WHERE podcasts = '' => 9999"}},
            {"twenty thousand URLs on a macOS podcast line",
             macos_with(k_alice_vlcrc,
                        [](QByteArray) { return "podcast-urls=" + QByteArray("http://a/|").repeated(20000) + "\n"; }),
             {}, 0, {"podcast line of more than 10000 parts"}, {}, {"SELECT count(*) FROM podcasts => 10000"}},
            {"a Windows preference file over the read limit",
             [](const QString& source, const QString& out) {
                 QFile vlcrc(source + "/" + k_carol_vlcrc);  // sparse: its holes cost no disk
                 return windows(source, out) && vlcrc.open(QIODevice::Append) && vlcrc.resize(65 << 20);
             },
             {}, 0, {"warning: cut off at a limit: file larger than the read limit"}, {}, {}},
            {"a Windows playlist with a DOCTYPE", windows_with("Users/carol/Music/party.xspf", with_doctype), {}, 0,
             {}, {}, {"SELECT count(*) FROM playlists WHERE playlist_name = 'party.xspf' => 3"}},
            {"a macOS library with a DOCTYPE",
             macos_with("Users/alice/Library/Application Support/org.videolan.vlc/ml.xspf", with_doctype), {}, 0, {},
             {}, {"SELECT count(*) FROM media_library => 5",
                  "SELECT count(*) FROM media_library WHERE title = 'Holiday Trip' => 1"}},
            {"help", windows, {"--help"}, 0, {}, {"--append", "album_art", "iOS_UID", "130"}, {}},
            {"version", windows, {"--version"}, 0, {}, {"vlc-artifacts 0.1.0"}, {}},
        };
        for (const auto& c : cases) {
            test_support::tree_run run;
            QVERIFY2(c.tree(run.source.path(), run.out.path()), c.name);
            const auto before = test_support::snapshot_tree(run.source.path());
            QStringList arguments = c.arguments;
            arguments.replaceInStrings("<source>", run.source.path()).replaceInStrings("<out>", run.out.path());
            run.run(arguments);
            const auto& r = run.result;
            const QString seen = QString(c.name) + "\n" + r.out + r.err;
            QVERIFY2(r.finished && r.exit_code == c.exit_code, qPrintable(seen));
            QVERIFY2(test_support::snapshot_tree(run.source.path()) == before, c.name);
            ::rmdir((QFile::encodeName(run.source.path()) + "/Users/caf\xE9").constData());  // Qt cannot name it
            for (const QString& text : c.says)
                QVERIFY2(r.err.contains(text), qPrintable(seen));
            for (const QString& text : c.prints)
                QVERIFY2(r.out.contains(text), qPrintable(seen));
            if (c.exit_code == 1 || c.exit_code == 2 || (c.exit_code == 0 && c.says.isEmpty()))
                QVERIFY2(r.err.count('\n') == (c.exit_code == 0 ? 0 : 1), qPrintable(seen));
            for (const QString& check : c.checks) {
                if (check.startsWith("log: ")) {
                    const QStringList log = test_support::read_lines(run.debug_log());
                    QVERIFY2(!log.filter(check.mid(5)).isEmpty(), qPrintable(check));
                    continue;
                }
                const auto rows = test_support::query_rows(run.database(), check.section(" => ", 0, 0));
                const QString value = rows.isEmpty() ? QString("(no row)") : rows.first().value(0).toString();
                QVERIFY2(value == check.section(" => ", 1), qPrintable(seen + check + "\ngot: " + value));
            }
        }
    }

    // Ctrl-C stops the run, keeps what was written and exits 130; a second one
    // ends the program at once, and the table it was writing keeps every
    // batch committed before. Rows show in the result database only once a
    // batch is committed, so rows seen while the table runs are such a batch.
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
            if (interrupts == 1) {
                QCOMPARE(host.exitCode(), 130);
                QVERIFY(host.readAllStandardError().contains("cancelled; the rows written before the cancel are kept"));
            } else {
                QCOMPARE(host.exitStatus(), QProcess::CrashExit);
            }
            qint64 kept = -1;
            {
                // Read-write: a killed run leaves a journal to roll back.
                QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "kept");
                db.setDatabaseName(database);
                QSqlQuery count(db.open() ? db : QSqlDatabase());
                if (count.exec("SELECT count(*) FROM media_library") && count.next())
                    kept = count.value(0).toLongLong();
            }
            QSqlDatabase::removeDatabase("kept");
            QVERIFY2(kept >= seen && kept < tracks, qPrintable(QString("%1 seen, %2 kept").arg(seen).arg(kept)));
        }
    }
};

QTEST_GUILESS_MAIN(test_examiner_cases)
#include "test_examiner_cases.moc"
