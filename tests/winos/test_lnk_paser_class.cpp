// The shell-link reader on links written by our own generator (every field
// under the test's control) and on the real samples in the shared fixtures.

#include <QDirIterator>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include "lnk_paser_class.h"
#include "shell_link_writer.h"
#include "test_support.h"
#include "tree_writer.h"

namespace {

// Parses one file; the record, or nothing when the reader refused it.
bool parse(const QString& path, struct_lnk_info* record)
{
    lnk_paser_class reader;
    if (reader.start_parsing_lnk(path) != 0)
        return false;
    if (reader.lnk_info_list.size() != 1)
        return false;
    *record = reader.lnk_info_list.first();
    return true;
}

shell_link_writer::link_fields full_link()
{
    shell_link_writer::link_fields f = shell_link_writer::media_link("C:\\Users\\ann\\Music\\a b.mp3", 1600000000, 4242);
    f.drive_serial = 0xF00DCAFE;  // above 2^31: must come back unsigned
    f.volume_label = "MEDIA";
    f.description = QString::fromUtf8("Crème – brûlée");
    f.relative_path = "..\\Music\\a b.mp3";
    f.arguments = "--fullscreen \"a b.mp3\"";
    f.icon_location = "%SystemRoot%\\system32\\imageres.dll";
    f.environment_path = "%USERPROFILE%\\Music\\a b.mp3";
    return f;
}

// Expected fields of a real sample, from the provenance notes ("check: lnkinfo ok: Key=Value; ...").
QMap<QString, QMap<QString, QString>> known_sample_values(const QString& provenance)
{
    QMap<QString, QMap<QString, QString>> known;
    QString current;
    for (const QString& line : QString::fromUtf8(tree_writer::read_file(provenance)).split('\n')) {
        if (line.startsWith("### `"))
            current = line.mid(5, line.indexOf('`', 5) - 5);
        const QString marker = "- check: lnkinfo ok: ";
        if (!line.startsWith(marker) || current.isEmpty())
            continue;
        for (const QString& pair : line.mid(marker.size()).split("; ")) {
            const int eq = pair.indexOf('=');
            if (eq > 0)
                known[current][pair.left(eq)] = pair.mid(eq + 1);
        }
    }
    return known;
}

}  // namespace

class test_lnk_paser_class : public QObject
{
    Q_OBJECT

    QTemporaryDir scratch;

    QString write(const QString& name, const QByteArray& bytes)
    {
        const QString path = scratch.filePath(name);
        tree_writer::write_file(path, bytes);
        return path;
    }

private slots:
    void every_field_of_a_written_link_comes_back()
    {
        const QString path = write("full.lnk", shell_link_writer::build(full_link()));
        struct_lnk_info r;
        QVERIFY(parse(path, &r));
        QCOMPARE(r.creation_time, QString("1600000000"));
        QCOMPARE(r.modification_time, QString("1600000060"));
        QCOMPARE(r.access_time, QString("1600000120"));
        QCOMPARE(r.file_size, QString("4242"));
        QCOMPARE(r.drive_type, QString("fixed drive"));
        QCOMPARE(r.drive_serial_number, QString("4027435774"));
        QCOMPARE(r.local_path, QString("C:\\Users\\ann\\Music\\a b.mp3"));
        QCOMPARE(r.volume_label, QString("MEDIA"));
        QCOMPARE(r.description, QString::fromUtf8("Crème – brûlée"));
        QCOMPARE(r.machine_identifier, QString("desktop-case01"));
        QCOMPARE(r.network_path, QString());
        QCOMPARE(r.relative_path, QString("..\\Music\\a b.mp3"));
        QCOMPARE(r.working_directory, QString("C:\\Users\\ann\\Music"));
        QCOMPARE(r.command_line_arguments, QString("--fullscreen \"a b.mp3\""));
        QCOMPARE(r.environment_variables_location, QString("%USERPROFILE%\\Music\\a b.mp3"));
        // The ID list as stored: item size, item, terminal.
        QCOMPARE(r.link_target, QString("14001f50e04fd020ea3a6910a2d808002b30309d0000"));
        QCOMPARE(r.icon_location, QString("%SystemRoot%\\system32\\imageres.dll"));
    }

    void drive_types_are_named_data()
    {
        QTest::addColumn<quint32>("type");
        QTest::addColumn<QString>("name");
        const char* names[] = {"unknown drive", "no root dir", "removable drive", "fixed drive",
                               "remote drive",  "cdrom drive", "ramdisk drive"};
        for (quint32 t = 0; t < 7; ++t)
            QTest::newRow(names[t]) << t << QString(names[t]);
        QTest::newRow("7") << 7u << QString();
        QTest::newRow("huge") << 0xFFFFFFFFu << QString();
    }

    void drive_types_are_named()
    {
        QFETCH(quint32, type);
        QFETCH(QString, name);
        auto f = full_link();
        f.drive_type = type;
        struct_lnk_info r;
        QVERIFY(parse(write("drive.lnk", shell_link_writer::build(f)), &r));
        QCOMPARE(r.drive_type, name);
    }

    void links_without_a_volume()
    {
        // A share only: the network path, no volume fields.
        shell_link_writer::link_fields share;
        share.network_share = "\\\\nas\\media";
        struct_lnk_info r;
        QVERIFY(parse(write("share.lnk", shell_link_writer::build(share)), &r));
        QCOMPARE(r.network_path, QString("\\\\nas\\media"));
        QCOMPARE(r.local_path, QString());
        QCOMPARE(r.volume_label, QString());
        QCOMPARE(r.drive_serial_number, QString("0"));

        // No link info at all, zero times: empty drive type, "0" serial and times.
        shell_link_writer::link_fields bare;
        bare.description = "bare";
        QVERIFY(parse(write("bare.lnk", shell_link_writer::build(bare)), &r));
        QCOMPARE(r.drive_type, QString());
        QCOMPARE(r.drive_serial_number, QString("0"));
        QCOMPARE(r.local_path, QString());
        QCOMPARE(r.creation_time, QString("0"));
        QCOMPARE(r.link_target, QString());
        QCOMPARE(r.description, QString("bare"));
    }

    void filetimes_truncate_toward_zero_data()
    {
        QTest::addColumn<QString>("filetime");
        QTest::addColumn<qint64>("seconds");
        QTest::newRow("epoch") << "116444736000000000" << qint64(0);
        QTest::newRow("one second") << "116444736010000000" << qint64(1);
        QTest::newRow("before 1970") << "116444735990000000" << qint64(-1);
        QTest::newRow("just under one") << "116444736009999999" << qint64(0);
        QTest::newRow("zero") << "0" << qint64(0);
        QTest::newRow("not a number") << "x" << qint64(0);
    }

    void filetimes_truncate_toward_zero()
    {
        QFETCH(QString, filetime);
        QFETCH(qint64, seconds);
        lnk_paser_class reader;
        QCOMPARE(reader.give_epoch_from_string(filetime), seconds);
    }

    void damaged_input_gives_no_record_and_no_crash()
    {
        const QByteArray link = shell_link_writer::build(full_link());
        lnk_paser_class reader;
        QCOMPARE(reader.start_parsing_lnk(write("text.lnk", "not a shell link at all")), -1);
        QCOMPARE(reader.start_parsing_lnk(scratch.filePath("missing.lnk")), -1);
        QCOMPARE(reader.start_parsing_lnk(write("header.lnk", link.left(40))), -1);
        QVERIFY(reader.lnk_info_list.isEmpty());
        // Cut anywhere after the header: a record with what could be read, or a refusal.
        for (int cut = 76; cut < link.size(); cut += 7)
            reader.start_parsing_lnk(write("cut.lnk", link.left(cut)));
        QVERIFY(reader.lnk_info_list.size() <= (link.size() - 76) / 7 + 1);
    }

    // A hostile link declares a block of gigabytes in a few bytes; the
    // library would allocate it before reading. The sanitizer run caps single
    // allocations at 1 GB, so there a link reaching the library would abort.
    void sizes_declared_beyond_the_file_are_refused()
    {
        const QByteArray link = shell_link_writer::build(full_link());
        const auto u32_at = [&](int at) { return qFromLittleEndian<quint32>(link.constData() + at); };
        const auto with_size = [&](int at) {
            QByteArray patched = link;
            qToLittleEndian<quint32>(0xFFFFFFF0u, patched.data() + at);
            return patched;
        };
        QVERIFY(u32_at(20) & 0x3);  // target identifiers and location information present
        const int location = 76 + 2 + qFromLittleEndian<quint16>(link.constData() + 76);
        QCOMPARE(u32_at(location + 4), 28u);  // the location block's header size: the walk found it
        const int environment = int(link.indexOf(QByteArray::fromHex("010000a0"))) - 4;
        QVERIFY(environment > location);

        lnk_paser_class reader;
        QCOMPARE(reader.start_parsing_lnk(write("location.lnk", with_size(location))), -1);
        QCOMPARE(reader.start_parsing_lnk(write("extra.lnk", with_size(environment))), -1);
        QVERIFY(reader.lnk_info_list.isEmpty());
        QCOMPARE(reader.start_parsing_lnk(write("intact.lnk", link)), 0);
        QCOMPARE(reader.lnk_info_list.size(), 1);
    }

    void real_samples_parse_with_their_known_values()
    {
        const QString folder = test_support::shared_fixtures_dir() + "/windows/lnk";
        if (!QFileInfo::exists(folder + "/PROVENANCE.md"))
            QSKIP("shared shell-link samples are not present");
        const auto known = known_sample_values(folder + "/PROVENANCE.md");
        int parsed = 0;
        int checked = 0;
        QDirIterator it(folder, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            if (path.endsWith(".md"))
                continue;
            struct_lnk_info r;
            const bool ok = parse(path, &r);
            parsed += ok;
            const QString relative = QDir(folder).relativeFilePath(path);
            if (!known.contains(relative))
                continue;
            QVERIFY2(ok, qPrintable(relative));
            const auto& values = known[relative];
            // The notes cut long values short, so a value must start with what they show.
            const auto expect = [&](const QString& key, const QString& got) {
                if (values.contains(key) && !values[key].contains(QChar(0xFFFD)))
                    QVERIFY2(got.startsWith(values[key]) && (got.isEmpty() == values[key].isEmpty()),
                             qPrintable(relative + " " + key + ": " + got));
            };
            expect("Local path", r.local_path);
            expect("Network path", r.network_path);
            expect("Machine identifier", r.machine_identifier);
            expect("Volume label", r.volume_label);
            // "Fixed (3)": the number in brackets is the type liblnk returned.
            const QString drive = values.value("Drive type");
            if (drive.contains("(3)"))
                QCOMPARE(r.drive_type, QString("fixed drive"));
            else if (drive.contains("(0)"))
                QCOMPARE(r.drive_type, QString("unknown drive"));
            ++checked;
        }
        QVERIFY(parsed > 0);
        QVERIFY(checked > 20);
    }

    void written_link_agrees_with_lnkinfo()
    {
        const QString tool = QStandardPaths::findExecutable("lnkinfo");
        if (tool.isEmpty())
            QSKIP("lnkinfo is not installed");
        const QString path = write("cross.lnk", shell_link_writer::build(full_link()));
        QProcess run;
        run.start(tool, {path});
        QVERIFY(run.waitForFinished(30000));
        const QString out = QString::fromUtf8(run.readAllStandardOutput());
        QCOMPARE(run.exitCode(), 0);
        for (const char* line : {"Local path\t\t\t: C:\\Users\\ann\\Music\\a b.mp3", "Volume label\t\t\t: MEDIA",
                                 "Drive serial number\t\t: 0xf00dcafe", "Machine identifier\t\t: desktop-case01",
                                 "Creation time\t\t\t: Sep 13, 2020 12:26:40", "File size\t\t\t: 4242 bytes"})
            QVERIFY2(out.contains(QString::fromUtf8(line)), line);
    }
};

QTEST_GUILESS_MAIN(test_lnk_paser_class)
#include "test_lnk_paser_class.moc"
