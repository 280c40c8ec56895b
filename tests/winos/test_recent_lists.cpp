// The player's own recent list and the jump lists' DestList, from generated
// files and from the real samples read in place. The real files' expected
// values were read without these readers: the ini files by eye, the DestList
// streams exported with olecfexport and decoded from their hex.

#include <QtTest>

#include <optional>

#include "compound_file_writer.h"
#include "dest_list_parse.h"
#include "olecf_file_parse.h"
#include "qt_ini_writer.h"
#include "qt_interface_settings.h"
#include "test_support.h"
#include "tree_writer.h"

namespace {

QByteArray real(const QString& relative)
{
    return tree_writer::read_file(test_support::shared_fixtures_dir() + "/" + relative);
}

std::optional<dest_list> dest_list_in(const QByteArray& jump_list)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("jump.automaticDestinations-ms");
    QByteArray stream;
    if (tree_writer::write_file(path, jump_list))
        olecf_file_parse().read_streams(path, [&](const QString& name, const QByteArray& data) {
            if (name == "DestList")
                stream = data;
        });
    return dest_list_parse::parse(stream);
}

}  // namespace

class test_recent_lists : public QObject
{
    Q_OBJECT

private slots:
    void interface_settings()
    {
        const QString odd = QString::fromUtf8("C:\\Users\\zoë\\ça;va=1 \"x\".mp3");
        const struct
        {
            const char* name;
            QByteArray data;
            qsizetype count;
            QString first, last;
            qsizetype index;
            qint64 resume_ms;
            QString typed;
        } cases[] = {
            {"real Windows ini, 30 items", real("vlc/vaggrippino-dotfiles/AppData/Roaming/vlc/vlc-qt-interface.ini"),
             30, "file:///C:/Users/yhqkt/Videos/Movies/Captain.Marvel.2019.HDTC.X264-AdsFree.mkv",
             "file:///C:/Users/yhqkt/Pictures/Screenshots/20191118_050731_Hamburger_Menu_-_CSS_only_Trim%20%282%29.mp4",
             28, 1271623, ""},
            {"real Linux conf, one item", real("vlc/dax89-dotfiles/.config/vlc/vlc-qt-interface.conf"), 1,
             "file:///run/media/davide/5384-D77A/Invasion.S02E05.ITA.WEBDL.1080p.mp4",
             "file:///run/media/davide/5384-D77A/Invasion.S02E05.ITA.WEBDL.1080p.mp4", 0, 0, ""},
            {"quoted, escaped, -1 is no position",
             qt_ini_writer::interface_settings({"file:///C:/a,b.mp3", odd, " edge blanks "}, {"0", "-1", "42000"},
                                               {"http://x.example/?a=1;b=2"}),
             3, "file:///C:/a,b.mp3", " edge blanks ", 2, 42000, "http://x.example/?a=1;b=2"},
            {"one item, no positions", qt_ini_writer::interface_settings({odd}, {}, {}), 1, odd, odd, 0, 0, ""},
            {"empty list", qt_ini_writer::interface_settings({}, {}, {}), 0, "", "", 0, 0, ""},
            {"not an ini file", QByteArray("\0\xff[[[=\n@Invalid(", 16), 0, "", "", 0, 0, ""},
        };
        QTemporaryDir work;
        for (const auto& c : cases) {
            if (c.data.isEmpty())
                QSKIP("shared samples absent");
            qt_interface_recents read;
            QVERIFY2(qt_interface_settings::read(c.data, work.path(), &read), c.name);
            QVERIFY2(read.recent.size() == c.count, c.name);
            QVERIFY2(QDir(work.path()).isEmpty(), c.name);  // the working copy is gone
            QVERIFY2(read.typed_network_addresses.value(0) == c.typed, c.name);
            if (c.count == 0)
                continue;
            QVERIFY2(read.recent.first().location == c.first && read.recent.last().location == c.last, c.name);
            QVERIFY2(read.recent.at(c.index).resume_ms == c.resume_ms, c.name);
        }
    }

    void dest_lists()
    {
        namespace cfw = compound_file_writer;
        const auto generated = [](quint32 version) {
            return cfw::jump_list({}, cfw::dest_list(version, {{3, 133589461530000000, 7, true, "pc-9", "props"},
                                                               {0x1a, 0, 1, false, "", ""}}));
        };
        QByteArray huge_count = cfw::dest_list(3, {{1}});
        cfw::set32(huge_count, 4, 0xFFFFFFFF);
        const QString museum = "windows/jumplists/museum/";
        const struct
        {
            const char* name;
            QByteArray jump_list;
            qsizetype count;  // -1: no facts
            int index;
            quint64 stream;
            QString facts, computer, path;
        } cases[] = {
            {"Windows 7, version 1", real(museum + "Win7/1b4dd67f29cb1962.automaticDestinations-ms"), 4, 0, 4,
             "Opened 2016-01-16 20:23:24 UTC; most recent 1 of 4", "win7x64",
             "::{031E4825-7B94-4DC3-B131-E946B44C8DD5}\\Videos.library-ms"},
            {"Server 2012 R2, version 1",
             real(museum + "Win2012R2/StolenSzechuan/9b9cdc69c1c24e2b.automaticDestinations-ms"), 5, 4, 1,
             "Opened 2020-09-19 03:31:50 UTC; most recent 5 of 5", "citadel-dc01",
             "C:\\FileShare\\Secret\\NoJerry.txt"},
            {"Windows 10, version 3, pinned",
             real("windows/jumplists/ez-jumplist/Win10/f01b4d95cf55d32a.automaticDestinations-ms"), 9, 3, 1,
             "Opened 2015-11-24 18:31:14 UTC; most recent 4 of 9; opened 3 times; pinned", "desktop-annfp9d",
             "C:\\Users\\e\\Desktop"},
            {"Windows 10, version 3, no computer",
             real("windows/jumplists/plaso/9d1f905ce5044aee.automaticDestinations-ms"), 2, 0, 2,
             "Opened 2016-01-17 13:08:08 UTC; most recent 1 of 2; opened 1 times", "",
             "http://support.microsoft.com/kb/3124263"},
            {"Windows 10, version 4, stream b",
             real(museum + "Win10/APTSimulatorVM/f01b4d95cf55d32a.automaticDestinations-ms"), 11, 0, 11,
             "Opened 2022-03-10 21:40:42 UTC; most recent 1 of 11; opened 1 times", "desktop-tmku40h",
             "C:\\Users\\TestUser\\Desktop\\Targets"},
            {"Windows 10, empty DestList",
             real("windows/jumplists/ez-jumplist/Win10/5f7b5f1e01b83767.automaticDestinations-ms"), -1, 0, 0, "", "",
             ""},
            {"version 6 with property stores", generated(6), 2, 0, 3,
             "Opened 2024-04-30 10:22:33 UTC; most recent 1 of 2; opened 7 times; pinned", "pc-9", "C:\\item3"},
            {"version 2 read as 3, undated", generated(2), 2, 1, 0x1a, "most recent 2 of 2; opened 1 times", "",
             "C:\\item26"},
            {"version 1, undated", cfw::jump_list({}, cfw::dest_list(1, {{1}, {2}})), 2, 1, 2, "most recent 2 of 2",
             "desktop-case01", "C:\\item2"},
            {"truncated path", cfw::jump_list({}, cfw::dest_list(3, {{1}}).chopped(3)),
             -1, 0, 0, "", "", ""},
            {"entry count beyond the stream", cfw::jump_list({}, huge_count), -1, 0, 0, "", "", ""},
            {"version 0", cfw::jump_list({}, QByteArray(40, '\0')), -1, 0, 0, "", "", ""},
        };
        for (const auto& c : cases) {
            if (c.jump_list.isEmpty())
                QSKIP("shared samples absent");
            const auto list = dest_list_in(c.jump_list);
            QVERIFY2(list.has_value() == (c.count >= 0), c.name);
            if (!list)
                continue;
            QVERIFY2(list->entries.size() == c.count, c.name);
            const dest_list_entry& entry = list->entries.at(c.index);
            QVERIFY2(dest_list_parse::entry_of_stream(*list, QString::number(c.stream, 16)) == c.index, c.name);
            const QString facts = dest_list_parse::describe(*list, c.index);
            QVERIFY2(facts == c.facts, qPrintable(QString(c.name) + ": " + facts));
            QVERIFY2(entry.computer_name == c.computer && entry.path == c.path, c.name);
        }
    }
};

QTEST_GUILESS_MAIN(test_recent_lists)
#include "test_recent_lists.moc"
