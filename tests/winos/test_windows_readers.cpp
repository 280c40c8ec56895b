// The shell-link, compound-file, DestList and recent-list readers on files
// written by our own generators (every field under the test's control, then
// one field damaged at a time) and on the real samples of the shared
// fixtures, whose readings are pinned by a golden file or by values read
// from the files independently.

#include <QtTest>

#include "compound_file_writer.h"
#include "dest_list_parse.h"
#include "lnk_paser_class.h"
#include "olecf_file_parse.h"
#include "qt_interface_settings.h"
#include "shell_link_writer.h"
#include "test_support.h"
#include "tree_writer.h"

namespace {

namespace cfw = compound_file_writer;
const QString k_jump_list = "9fda41b86ddcf1db.automaticDestinations-ms";

shell_link_writer::link_fields full_link()
{
    auto f = shell_link_writer::media_link("C:\\Users\\ann\\Music\\a b.mp3", 1600000000, 4242);
    f.drive_serial = 0xF00DCAFE;  // above 2^31: must come back unsigned
    f.volume_label = "MEDIA";
    f.description = QString::fromUtf8("Crème – brûlée");
    return f;
}

QByteArray link_to(const QString& path)
{
    return shell_link_writer::build(shell_link_writer::media_link(path, 1650000000, 77));
}

// Every record the reader gives for the files, one line each; "refused" for
// a file it did not take.
QString links_in(const QStringList& paths)
{
    QString text;
    for (const QString& path : paths) {
        lnk_paser_class reader;
        if (reader.start_parsing_lnk(path) != 0 || reader.lnk_info_list.isEmpty())
            text += "refused\n";
        for (const struct_lnk_info& r : reader.lnk_info_list)
            text += QStringList{r.creation_time, r.modification_time, r.access_time, r.file_size, r.drive_type,
                                r.drive_serial_number, r.local_path, r.volume_label, r.description,
                                r.machine_identifier, r.network_path, r.relative_path, r.working_directory,
                                r.command_line_arguments, r.environment_variables_location, r.link_target,
                                r.icon_location}
                        .join('|')
                    + "\n";
    }
    return text;
}

// Writes the file as <dir>/evidence/<jump list> and splits it into <dir>/out/.
QString split(const QTemporaryDir& dir, const QByteArray& file, const QString& user = "ann")
{
    tree_writer::write_file(dir.filePath("evidence/" + k_jump_list), file);
    return olecf_file_parse().start_parsing_olecf(dir.filePath("evidence/" + k_jump_list), dir.filePath("out") + "/", user);
}

}  // namespace

class test_windows_readers : public QObject
{
    Q_OBJECT

    QTemporaryDir scratch;

    QString write(const QString& name, const QByteArray& bytes)
    {
        tree_writer::write_file(scratch.filePath(name), bytes);
        return scratch.filePath(name);
    }

private slots:
    void shell_links_field_by_field()
    {
        const QByteArray link = shell_link_writer::build(full_link());
        shell_link_writer::link_fields share;
        share.network_share = "\\\\nas\\media";
        shell_link_writer::link_fields bare;
        bare.description = "bare";
        QStringList paths = {write("full.lnk", link), write("share.lnk", shell_link_writer::build(share)),
                             write("bare.lnk", shell_link_writer::build(bare))};
        for (quint32 type : {0u, 1u, 2u, 4u, 5u, 6u, 7u, 0xFFFFFFFFu}) {
            auto f = full_link();
            f.drive_type = type;
            paths << write(QString("drive%1.lnk").arg(type), shell_link_writer::build(f));
        }
        // A block declaring gigabytes in a few bytes would be allocated by the
        // library before reading; such a link is refused.
        const auto with_size = [&link](int at) {
            QByteArray patched = link;
            qToLittleEndian<quint32>(0xFFFFFFF0u, patched.data() + at);
            return patched;
        };
        const int location = 76 + 2 + qFromLittleEndian<quint16>(link.constData() + 76);
        paths << write("location.lnk", with_size(location))
              << write("extra.lnk", with_size(int(link.indexOf(QByteArray::fromHex("030000a0"))) - 4))
              << write("text.lnk", "not a shell link at all") << write("header.lnk", link.left(40))
              << scratch.filePath("missing.lnk");
        const QString difference = test_support::compare_with_golden("shell_links.txt", links_in(paths));
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
        // Cut anywhere after the header: a record with what could be read, or a refusal.
        for (int cut = 76; cut < link.size(); cut += 7)
            links_in({write("cut.lnk", link.left(cut))});
    }

    // Streams land one folder each below the jump list's folder, whatever
    // their names; sizes beyond the file and entries sharing one stream's
    // sectors read no more than the file; bookkeeping that contradicts the
    // file (the library would keep memory for it or open it) leaves it
    // unread. The evidence is never changed.
    void compound_files_case_by_case()
    {
        namespace field = cfw::field;
        auto big = shell_link_writer::media_link("C:\\Music\\big.mp3", 1650000000, 1);
        big.description = QString(3000, 'd');  // in regular sectors, the others in the mini stream
        const QByteArray good = cfw::jump_list({link_to("C:\\a.mp3"), link_to("C:\\b.mp3")});
        const auto with = [&good](int offset, quint32 value) {
            QByteArray file = good;
            cfw::set32(file, offset, value);
            return file;
        };
        QList<cfw::stream> hostile;
        for (const char* name : {"../../../escape", "..", ".", "a/b", "..\\up", "", "ctl\x01\x1f", "%2E%2E", "%", "new\nline"})
            hostile.append({QString(name), "x"});
        QList<cfw::stream> sharing{{"1", QByteArray(5000, 'a')}, {"2", good.left(100), 0xFFFFFF00}, {"3", QByteArray(5000, 'z'), 1LL << 31}};
        for (int i = 4; i <= 8; ++i)
            sharing.append({QString::number(i), QByteArray(10, 'b')});
        QByteArray shared = cfw::build(sharing);
        for (int entry = 4; entry <= 8; ++entry) {
            cfw::set32(shared, cfw::directory_entry_offset(shared, entry) + 116, cfw::get32(shared, cfw::directory_entry_offset(shared, 1) + 116));
            cfw::set32(shared, cfw::directory_entry_offset(shared, entry) + 120, 5000);
        }
        const int link_2 = cfw::directory_entry_offset(good, 2);
        const int root = cfw::directory_entry_offset(good, 0);
        const quint32 mini_fat = cfw::get32(good, field::mini_fat_start);
        QByteArray runs_out = with(field::mini_fat_sectors, 2);
        cfw::set32(runs_out, cfw::fat_entry_offset(good, mini_fat), 1000);
        const QByteArray cases[] = {
            cfw::build({{"1", link_to("C:\\one.mp3")}, {"1a", shell_link_writer::build(big)}, {"DestList", cfw::dest_list(2)}, {"empty", {}}}),
            cfw::build(hostile), shared, cfw::build({}),
            "plain text, not a compound file", good.left(300), with(field::sector_shift, 10), with(field::sector_shift, 25),
            with(field::fat_sectors, 0), with(field::fat_sectors, 0x10000000), with(field::mini_fat_start, 1000),
            with(field::mini_fat_start, 0xFFFFFFFD), with(field::mini_fat_sectors, 0x3B000000), runs_out,
            good.left((mini_fat + 1) * 512 + 256), with(root + field::entry_child, 0x38), with(root + field::entry_child, 0),
            with(link_2 + field::entry_left, 0x38), with(link_2 + field::entry_type, 0),
        };
        QString text;
        for (const QByteArray& file : cases) {
            QTemporaryDir dir;
            const QString folder = split(dir, file).remove(dir.path());
            text += QString("%1 bytes: [%2] %3\n").arg(file.size()).arg(folder, test_support::listing(dir.path()));
            QCOMPARE(tree_writer::read_file(dir.filePath("evidence/" + k_jump_list)), file);
        }
        QTemporaryDir again;
        text += "the same jump list of another user: " + split(again, cases[0], "bob").remove(again.path()) + "\n";
        const QString difference = test_support::compare_with_golden("compound_files.txt", text);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
        // Cut or overwritten anywhere: no crash, and nothing outside the folder.
        QTemporaryDir dir;
        for (int cut = 512; cut < good.size(); cut += 256) {
            split(dir, good.left(cut));
            split(dir, QByteArray(good).replace(cut, 64, QByteArray(64, '\xff')));
        }
        const QRegularExpression inside("^(evidence/.*|out/|out/Files/|out/Files/ann_" + k_jump_list + "/.*)$");
        for (const QString& entry : test_support::listing(dir.path()).split(", "))
            QVERIFY2(inside.match(entry).hasMatch(), qPrintable(entry));
    }

    void real_samples_read_as_pinned()
    {
        const QString shared = test_support::shared_fixtures_dir() + "/windows";
        if (!QFileInfo::exists(shared + "/lnk"))
            QSKIP("the shared Windows samples are not present");
        QStringList samples;
        for (QDirIterator it(shared, QDir::Files, QDirIterator::Subdirectories); it.hasNext();) {
            const QString path = it.next();
            if (!path.endsWith(".md"))
                samples << path;
        }
        samples.sort();
        QString text;
        for (const QString& sample : samples) {
            text += "## " + QDir(shared).relativeFilePath(sample) + "\n";
            if (sample.contains("/lnk/")) {
                text += links_in({sample});
                continue;
            }
            QTemporaryDir out;
            const QString folder = olecf_file_parse().start_parsing_olecf(sample, out.path() + "/", "u");
            QStringList streams;
            for (QDirIterator it(folder, {"file"}, QDir::Files, QDirIterator::Subdirectories); it.hasNext();)
                streams << it.next();
            streams.sort();
            text += QString("%1 streams\n").arg(streams.size()) + links_in(streams).remove("refused\n");
        }
        const QString difference = test_support::compare_with_golden("windows_samples.txt", text);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

    // Expected values: the ini files read by eye.
    void real_recent_lists()
    {
        const struct
        {
            const char* file;
            qsizetype count, index;
            qint64 resume_ms;
            QString first, last;
        } cases[] = {
            {"vaggrippino-dotfiles/AppData/Roaming/vlc/vlc-qt-interface.ini", 30, 28, 1271623,
             "file:///C:/Users/yhqkt/Videos/Movies/Captain.Marvel.2019.HDTC.X264-AdsFree.mkv",
             "file:///C:/Users/yhqkt/Pictures/Screenshots/20191118_050731_Hamburger_Menu_-_CSS_only_Trim%20%282%29.mp4"},
            {"dax89-dotfiles/.config/vlc/vlc-qt-interface.conf", 1, 0, 0,
             "file:///run/media/davide/5384-D77A/Invasion.S02E05.ITA.WEBDL.1080p.mp4",
             "file:///run/media/davide/5384-D77A/Invasion.S02E05.ITA.WEBDL.1080p.mp4"},
        };
        QTemporaryDir work;
        // Values in Qt's serialised form with forged lengths (found by
        // fuzzing: they asked for gigabytes) are read as text.
        qt_interface_recents forged;
        QVERIFY(qt_interface_settings::read("[General]\nfiledialog-path=@Variant(\\0\\0\\0\x91" "11920 1080)\n"
                                            "filedialog-path=@Variant(\\0\\0\\0\\x11920 1080)\n[RecentsMRL]\n"
                                            "list=a.mp3, @Variant(\\0\\0\\0\\x11920 1080)\n",
                                            work.path(), &forged));
        QVERIFY(forged.recent.size() == 2 && forged.recent.first().location == "a.mp3");
        for (const auto& c : cases) {
            const QByteArray data = tree_writer::read_file(test_support::shared_fixtures_dir() + "/vlc/" + c.file);
            if (data.isEmpty())
                QSKIP("shared samples absent");
            qt_interface_recents read;
            QVERIFY2(qt_interface_settings::read(data, work.path(), &read) && QDir(work.path()).isEmpty(), c.file);
            QVERIFY2(read.recent.size() == c.count && read.recent.first().location == c.first
                         && read.recent.last().location == c.last && read.recent.at(c.index).resume_ms == c.resume_ms,
                     c.file);
        }
    }

    // Expected values: the DestList streams (versions 1, 3 and 4) exported by
    // olecfexport, hex-decoded: the computer and the facts of one link stream.
    void real_dest_lists()
    {
        const struct
        {
            const char* jump_list;
            quint64 stream;
            QString expected;
        } cases[] = {
            {"museum/Win7/1b4dd67f29cb1962", 4, "win7x64|Opened 2016-01-16 20:23:24 UTC; most recent 1 of 4"},
            {"ez-jumplist/Win10/f01b4d95cf55d32a", 1,
             "desktop-annfp9d|Opened 2015-11-24 18:31:14 UTC; most recent 4 of 9; opened 3 times; pinned"},
            {"plaso/9d1f905ce5044aee", 1, "|Opened 2015-12-27 20:10:04 UTC; most recent 2 of 2; opened 1 times"},
            {"museum/Win10/APTSimulatorVM/f01b4d95cf55d32a", 11,
             "desktop-tmku40h|Opened 2022-03-10 21:40:42 UTC; most recent 1 of 11; opened 1 times"},
            {"ez-jumplist/Win10/5f7b5f1e01b83767", 1, "no facts"},  // an empty DestList
        };
        for (const auto& c : cases) {
            QByteArray stream;
            const QString path = test_support::shared_fixtures_dir() + "/windows/jumplists/" + c.jump_list;
            if (!olecf_file_parse().read_streams(path + ".automaticDestinations-ms", [&](auto& name, auto& data) {
                    stream = name == "DestList" ? data : stream;
                }))
                QSKIP("shared samples absent");
            const auto list = dest_list_parse::parse(stream);
            const int at = list ? dest_list_parse::entry_of_stream(*list, QString::number(c.stream, 16)) : -1;
            const QString got = at < 0 ? "no facts" : list->entries.at(at).computer_name + "|" + dest_list_parse::describe(*list, at);
            QVERIFY2(got == c.expected, qPrintable(c.jump_list + (": " + got)));
        }
    }
};

QTEST_GUILESS_MAIN(test_windows_readers)
#include "test_windows_readers.moc"
