// The player's recent list and the jump lists' DestList on the real samples
// (generated ones are in the Windows sample tree). Expected values: the ini
// files read by eye, the DestList streams exported by olecfexport, hex-decoded.

#include <QtTest>

#include "dest_list_parse.h"
#include "olecf_file_parse.h"
#include "qt_interface_settings.h"
#include "test_support.h"
#include "tree_writer.h"

class test_recent_lists : public QObject
{
    Q_OBJECT

private slots:
    void interface_settings()
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

    void dest_lists()
    {
        const struct
        {
            const char* jump_list;
            qsizetype count;  // -1: no facts
            int index;
            quint64 stream;
            QString computer, facts;
        } cases[] = {
            {"museum/Win7/1b4dd67f29cb1962", 4, 0, 4, "win7x64", "Opened 2016-01-16 20:23:24 UTC; most recent 1 of 4"},
            {"ez-jumplist/Win10/f01b4d95cf55d32a", 9, 3, 1, "desktop-annfp9d",
             "Opened 2015-11-24 18:31:14 UTC; most recent 4 of 9; opened 3 times; pinned"},
            {"plaso/9d1f905ce5044aee", 2, 1, 1, "", "Opened 2015-12-27 20:10:04 UTC; most recent 2 of 2; opened 1 times"},
            {"museum/Win10/APTSimulatorVM/f01b4d95cf55d32a", 11, 0, 11, "desktop-tmku40h",
             "Opened 2022-03-10 21:40:42 UTC; most recent 1 of 11; opened 1 times"},
            {"ez-jumplist/Win10/5f7b5f1e01b83767", -1, 0, 0, "", ""},  // an empty DestList
        };
        for (const auto& c : cases) {
            QByteArray stream;
            const QString path = test_support::shared_fixtures_dir() + "/windows/jumplists/" + c.jump_list;
            if (!olecf_file_parse().read_streams(path + ".automaticDestinations-ms", [&](auto& name, auto& data) {
                    stream = name == "DestList" ? data : stream;
                }))
                QSKIP("shared samples absent");
            const auto list = dest_list_parse::parse(stream);
            QVERIFY2(list.has_value() == (c.count >= 0), c.jump_list);
            if (!list)
                continue;
            const QString facts = dest_list_parse::describe(*list, c.index);
            QVERIFY2(list->entries.size() == c.count && facts == c.facts, qPrintable(c.jump_list + (": " + facts)));
            QVERIFY2(dest_list_parse::entry_of_stream(*list, QString::number(c.stream, 16)) == c.index
                         && list->entries.at(c.index).computer_name == c.computer,
                     c.jump_list);
        }
    }
};

QTEST_GUILESS_MAIN(test_recent_lists)
#include "test_recent_lists.moc"
