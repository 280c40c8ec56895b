// The compound-file reader on jump lists written by our own generator, on
// hostile and damaged files, and on the real samples in the shared fixtures.

#include <QDirIterator>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include "compound_file_writer.h"
#include "lnk_paser_class.h"
#include "olecf_file_parse.h"
#include "shell_link_writer.h"
#include "test_support.h"
#include "tree_writer.h"

namespace {

const QString k_jump_list = "9fda41b86ddcf1db.automaticDestinations-ms";

// Every file below a folder, relative to it, with its bytes.
QMap<QString, QByteArray> files_below(const QString& folder)
{
    QMap<QString, QByteArray> found;
    QDirIterator it(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        found.insert(QDir(folder).relativeFilePath(path), tree_writer::read_file(path));
    }
    return found;
}

QByteArray link_to(const QString& path)
{
    return shell_link_writer::build(shell_link_writer::media_link(path, 1650000000, 77));
}

}  // namespace

class test_olecf_file_parse : public QObject
{
    Q_OBJECT

    // Writes the file as <case>/evidence/Users/ann/<jump list> and splits it
    // into <case>/out/; returns the reader's result.
    QString split(QTemporaryDir& dir, const QByteArray& file, const QString& user = "ann")
    {
        const QString path = dir.filePath("evidence/Users/" + user + "/" + k_jump_list);
        tree_writer::write_file(path, file);
        olecf_file_parse reader;
        return reader.start_parsing_olecf(path, dir.filePath("out") + "/", user);
    }

private slots:
    void each_stream_lands_in_its_own_folder()
    {
        QTemporaryDir dir;
        // One link large enough for regular sectors, the others in the mini stream.
        auto big = shell_link_writer::media_link("C:\\Music\\big.mp3", 1650000000, 1);
        big.description = QString(3000, 'd');
        const QList<QByteArray> links = {link_to("C:\\Music\\one.mp3"), shell_link_writer::build(big),
                                         link_to("C:\\Music\\three.mp3")};
        const QByteArray file = compound_file_writer::build({{"1", links[0]},
                                                             {"1a", links[1]},
                                                             {"3", links[2]},
                                                             {"DestList", compound_file_writer::dest_list(3)},
                                                             {"empty", QByteArray()}});
        const QString folder = split(dir, file);
        QCOMPARE(folder, dir.filePath("out") + "/Files/ann_" + k_jump_list + "/");
        const auto written = files_below(folder);
        QCOMPARE(written.keys(), (QStringList{"1/file", "1a/file", "3/file", "DestList/file", "empty/file"}));
        QCOMPARE(written["1/file"], links[0]);
        QCOMPARE(written["1a/file"], links[1]);
        QCOMPARE(written["3/file"], links[2]);
        QVERIFY(written["empty/file"].isEmpty());

        // The link streams parse; the DestList does not.
        lnk_paser_class links_reader;
        for (const QString& name : written.keys())
            links_reader.start_parsing_lnk(folder + name);
        QCOMPARE(links_reader.lnk_info_list.size(), 3);
        QCOMPARE(links_reader.lnk_info_list.at(1).local_path, QString("C:\\Music\\big.mp3"));
    }

    void users_with_the_same_jump_list_get_separate_folders()
    {
        QTemporaryDir dir;
        const QByteArray file = compound_file_writer::jump_list({link_to("C:\\a.mp3")});
        const QString ann = split(dir, file, "ann");
        const QString bob = split(dir, file, "bob");
        QVERIFY(ann != bob);
        QVERIFY(QFileInfo::exists(ann + "1/file"));
        QVERIFY(QFileInfo::exists(bob + "1/file"));
    }

    void hostile_stream_names_stay_inside_the_output_folder()
    {
        QTemporaryDir dir;
        const QStringList hostile = {"../../../escape", "..",        ".",    "a/b",    "..\\up", "",
                                     QString("ctl\x01\x1f"), "%2E%2E", "%",   "new\nline"};
        QList<compound_file_writer::stream> streams;
        for (const QString& name : hostile)
            streams.append({name, "x"});
        for (const char* ordinary : {"1", "1a", "DestList", "é"})
            streams.append({QString::fromUtf8(ordinary), "ordinary"});
        const QString folder = split(dir, compound_file_writer::build(streams));

        // Nothing outside the jump list's folder: only the evidence and it.
        const auto everything = files_below(dir.path());
        for (const QString& path : everything.keys())
            QVERIFY2(path.startsWith("evidence/") || path.startsWith("out/Files/ann_" + k_jump_list + "/"),
                     qPrintable(path));
        const auto written = files_below(folder);
        for (const char* ordinary : {"1", "1a", "DestList"})
            QCOMPARE(written.value(QString(ordinary) + "/file"), QByteArray("ordinary"));
        // Each hostile name got a folder of its own, one level down.
        int hostile_files = 0;
        for (const QString& path : written.keys()) {
            QCOMPARE(path.count('/'), 1);
            hostile_files += written[path] == "x";
        }
        QCOMPARE(hostile_files, hostile.size());
    }

    void folder_names_are_kept_or_encoded_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("folder");
        QTest::newRow("number") << "1" << "1";
        QTest::newRow("DestList") << "DestList" << "DestList";
        QTest::newRow("dots inside") << "a.b" << "a.b";
        QTest::newRow("parent") << ".." << "%2E%2E";
        QTest::newRow("slash") << "a/b" << "a%2Fb";
        QTest::newRow("backslash") << "a\\b" << "a%5Cb";
        QTest::newRow("percent") << "%2F" << "%252F";
        QTest::newRow("empty") << "" << "%";
    }

    void folder_names_are_kept_or_encoded()
    {
        QFETCH(QString, name);
        QFETCH(QString, folder);
        QCOMPARE(olecf_file_parse::stream_folder_name(name), folder);
    }

    void a_size_beyond_the_file_is_capped()
    {
        QTemporaryDir dir;
        const QByteArray link = link_to("C:\\a.mp3");
        const QByteArray file =
            compound_file_writer::build({{"1", link, 0xFFFFFF00}, {"2", link}, {"3", QByteArray(5000, 'z'), 1LL << 31}});
        const QString folder = split(dir, file);
        // Whatever the library makes of the claim, no output exceeds the file.
        for (const QByteArray& data : files_below(folder))
            QVERIFY(data.size() <= file.size());
    }

    void entries_sharing_data_read_no_more_than_the_file()
    {
        namespace cfw = compound_file_writer;
        QTemporaryDir dir;
        QList<cfw::stream> streams{{"1", QByteArray(5000, 'a')}};
        for (int i = 2; i <= 8; ++i)
            streams.append({QString::number(i), QByteArray(10, 'b')});
        QByteArray file = cfw::build(streams);
        // Every entry now names the first stream's sectors and size.
        const int first = cfw::directory_entry_offset(file, 1);
        for (int entry = 2; entry <= 8; ++entry) {
            const int offset = cfw::directory_entry_offset(file, entry);
            cfw::set32(file, offset + 116, cfw::get32(file, first + 116));
            cfw::set32(file, offset + 120, 5000);
        }
        qint64 written = 0;
        for (const QByteArray& data : files_below(split(dir, file)))
            written += data.size();
        QVERIFY2(written <= file.size(), qPrintable(QString::number(written)));
    }

    void damaged_files_give_no_output()
    {
        QTemporaryDir dir;
        QCOMPARE(split(dir, "plain text, not a compound file"), QString());
        const QByteArray good = compound_file_writer::jump_list({link_to("C:\\a.mp3"), link_to("C:\\b.mp3")});
        QCOMPARE(split(dir, good.left(300)), QString());
        QVERIFY(!QFileInfo::exists(dir.filePath("out/Files")));
        // Cut or overwritten anywhere: no crash, and nothing outside the folder.
        for (int cut = 512; cut < good.size(); cut += 256) {
            split(dir, good.left(cut));
            QByteArray scribbled = good;
            scribbled.replace(cut, 64, QByteArray(64, '\xff'));
            split(dir, scribbled);
        }
        for (const QString& path : files_below(dir.path()).keys())
            QVERIFY(path.startsWith("evidence/") || path.startsWith("out/Files/ann_" + k_jump_list + "/"));
    }

    // Bookkeeping that contradicts the file: the library would keep memory
    // for these (and open some of them), so they are left unread.
    void inconsistent_bookkeeping_gives_no_output_data()
    {
        namespace cfw = compound_file_writer;
        namespace field = compound_file_writer::field;
        QTest::addColumn<QByteArray>("file");
        // Links 1 and DestList hang left and right of link 2 under the root.
        const QByteArray good = cfw::jump_list({link_to("C:\\a.mp3"), link_to("C:\\b.mp3")});
        const auto with = [&good](int offset, quint32 value) {
            QByteArray file = good;
            cfw::set32(file, offset, value);
            return file;
        };
        const int link_2 = cfw::directory_entry_offset(good, 2);
        const quint32 mini_fat = cfw::get32(good, field::mini_fat_start);

        QTest::newRow("sector size of 1024") << with(field::sector_shift, 10);
        QTest::newRow("sector size of 32 MiB") << with(field::sector_shift, 25);
        QTest::newRow("no allocation table") << with(field::fat_sectors, 0);
        QTest::newRow("allocation table larger than the file") << with(field::fat_sectors, 0x10000000);
        QTest::newRow("short-sector table past the end") << with(field::mini_fat_start, 1000);
        QTest::newRow("short-sector table at a special sector") << with(field::mini_fat_start, 0xFFFFFFFD);
        QTest::newRow("short-sector table larger than the file") << with(field::mini_fat_sectors, 0x3B000000);
        QByteArray runs_out = with(field::mini_fat_sectors, 2);
        cfw::set32(runs_out, cfw::fat_entry_offset(good, mini_fat), 1000);
        QTest::newRow("short-sector chain runs out of the file") << runs_out;
        QTest::newRow("short-sector table cut off") << good.left((mini_fat + 1) * 512 + 256);
        QTest::newRow("root's child out of range") << with(cfw::directory_entry_offset(good, 0) + field::entry_child, 0x38);
        QTest::newRow("root's child is the root") << with(cfw::directory_entry_offset(good, 0) + field::entry_child, 0);
        QTest::newRow("a link cut off from the tree") << with(link_2 + field::entry_left, 0x38);
        QTest::newRow("links below an unused entry") << with(link_2 + field::entry_type, 0);
    }

    void inconsistent_bookkeeping_gives_no_output()
    {
        QFETCH(QByteArray, file);
        QTemporaryDir dir;
        QCOMPARE(split(dir, file), QString());
        QVERIFY(!QFileInfo::exists(dir.filePath("out")));
        // The evidence is left as it was.
        QCOMPARE(tree_writer::read_file(dir.filePath("evidence/Users/ann/" + k_jump_list)), file);
    }

    void a_jump_list_without_streams_makes_no_folder()
    {
        QTemporaryDir dir;
        const QString folder = split(dir, compound_file_writer::build({}));
        QVERIFY(!folder.isEmpty());
        QVERIFY(!QFileInfo::exists(folder));
    }

    void real_samples_split_and_parse_data()
    {
        QTest::addColumn<QString>("subfolder");
        QTest::newRow("jump lists") << "jumplists";
        QTest::newRow("compound files") << "olecf";
    }

    void real_samples_split_and_parse()
    {
        QFETCH(QString, subfolder);
        const QString folder = test_support::shared_fixtures_dir() + "/windows/" + subfolder;
        if (!QFileInfo::exists(folder))
            QSKIP("shared compound-file samples are not present");
        QTemporaryDir out;
        QMap<QString, int> links_per_file;
        QDirIterator it(folder, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            if (path.endsWith(".md"))
                continue;
            olecf_file_parse reader;
            const QString written = reader.start_parsing_olecf(path, out.path() + "/", "u");
            lnk_paser_class links;
            for (const QString& name : files_below(written).keys())
                links.start_parsing_lnk(written + name);
            links_per_file[QDir(folder).relativeFilePath(path)] = links.lnk_info_list.size();
            if (!written.isEmpty())
                QDir(written).removeRecursively();
        }
        QVERIFY(!links_per_file.isEmpty());

        // The notes give each jump list's count of link streams ("lnkinfo parsed 9/9").
        const QRegularExpression parsed("lnkinfo parsed (\\d+)/");
        QString current;
        int checked = 0;
        for (const QString& line : QString::fromUtf8(tree_writer::read_file(folder + "/PROVENANCE.md")).split('\n')) {
            if (line.startsWith("### `"))
                current = line.mid(5, line.indexOf('`', 5) - 5);
            const auto match = parsed.match(line);
            if (!match.hasMatch() || !links_per_file.contains(current))
                continue;
            QVERIFY2(links_per_file[current] == match.captured(1).toInt(), qPrintable(current));
            ++checked;
        }
        if (subfolder == "jumplists")
            QVERIFY(checked >= 10);
    }

    void written_jump_list_agrees_with_olecfinfo()
    {
        const QString tool = QStandardPaths::findExecutable("olecfinfo");
        if (tool.isEmpty())
            QSKIP("olecfinfo is not installed");
        QTemporaryDir dir;
        const QString path = dir.filePath("jl");
        QList<QByteArray> links;
        for (int i = 0; i < 20; ++i)
            links << link_to("C:\\Music\\" + QString::number(i) + ".mp3");
        tree_writer::write_file(path, compound_file_writer::jump_list(links));
        QProcess run;
        run.start(tool, {path});
        QVERIFY(run.waitForFinished(30000));
        QCOMPARE(run.exitCode(), 0);
        const QString out = QString::fromUtf8(run.readAllStandardOutput());
        QVERIFY2(out.contains("Sector size\t\t: 512"), qPrintable(out));
        QVERIFY(out.contains("  DestList ("));
        QVERIFY(out.contains("  14 (" + QString::number(links[20 - 1].size())));
    }

};

QTEST_GUILESS_MAIN(test_olecf_file_parse)
#include "test_olecf_file_parse.moc"
