// The macOS extractor inside the controller, as a host drives it: discovery
// rules, tab counting, cancellation, portable file metadata, and damaged or
// foreign property lists in place of the player's.

#include <QDirIterator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>
#include <sys/xattr.h>

#include "controller_setup.h"
#include "debug_log_capture.h"
#include "plist_writer.h"
#include "sample_trees.h"
#include "test_support.h"
#include "tree_writer.h"
#include "vlc.h"

namespace {

const QString k_holiday = "Users/alice/Movies/Holiday Trip – Day 1.mp4";

struct macos_session
{
    QTemporaryDir source;
    QTemporaryDir out;
    debug_log_capture log;
    vlc controller;

    QString database() const { return out.path() + "/Artifacts_Result/VLC/VLC.sqlite"; }

    void prepare(const QStringList& accounts, const QStringList& tables, const QStringList& metadata_keys = {})
    {
        controller_setup setup;
        setup.source.source_path_1 = source.path() + "/";
        setup.source.os_scheme_display = "macOS";
        setup.source.os_scheme_internal = "macOS";
        for (const QString& name : accounts)
            setup.source.system_account_QList
                << struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_system_account{name, QString()};
        setup.general = log.general();
        setup.tables = tables;
        setup.result_dir = out.path();
        setup.metadata_keys = metadata_keys;
        prepare_controller(controller, setup);
    }
    void run()
    {
        controller.pub_find_source_file();
        controller.pub_extract_artifacts();
    }
    QList<QVariantList> rows(const QString& statement) const { return test_support::query_rows(database(), statement); }
};

bool set_attribute(const QString& path, const char* name, const QByteArray& value)
{
    return setxattr(path.toUtf8().constData(), name, value.constData(), size_t(value.size()), 0) == 0;
}

}  // namespace

class test_vlc_macos : public QObject
{
    Q_OBJECT

private slots:
    void discovery_prefers_the_older_list_and_scans_each_account_once()
    {
        macos_session session;
        QString error;
        QVERIFY2(write_macos_sample_tree(session.source.path(), &error), qPrintable(error));
        session.prepare({"alice", "", "alice", "bob", ""}, {"recents", "podcasts"});
        session.run();
        // alice has both forms: only the preference-folder list is read.
        QCOMPARE(session.rows("select file_name from recents where system_user='alice' order by INT"),
                 (QList<QVariantList>{{"Holiday Trip – Day 1.mp4"}, {"song one.mp3"}}));
        QCOMPARE(session.rows("select count(*) from recents where system_user='bob'").value(0).value(0), QVariant(2));
        // Duplicate and empty names: one scan per distinct name.
        QCOMPARE(test_support::count_rows(session.database(), "podcasts"), 3);
    }

    void selected_tables_without_files_still_count_a_tab()
    {
        macos_session session;
        QVERIFY(QDir().mkpath(session.source.filePath("Users/ann/Library/Preferences")));
        session.prepare({"ann"}, {"recent_played", "media_library", "playlists", "recents", "podcasts"});
        QSignalSpy tabs(&session.controller, &vlc::signal_tab_processed_of_plugin_overall);
        session.run();
        QCOMPARE(tabs.count(), 5);  // playlists too: the player 4's database fills it
        QCOMPARE(tabs.last().first().toInt(), 5);
        QVERIFY(!session.log.messages_with("[extract_plugin_artifacts] ends").isEmpty());
    }

    void cancel_during_recently_played_keeps_the_rows_written()
    {
        macos_session session;
        QString error;
        QVERIFY(write_macos_sample_tree(session.source.path(), &error));
        session.prepare({"alice", "bob"}, {"recent_played"});
        // The first report with rows comes after alice's list: the host cancels there.
        QObject::connect(&session.controller, &vlc::signal_extracted_records_of_plugin_overall, &session.controller,
                         [&session](qint64 count) {
                             if (count > 0)
                                 session.controller.pub_cancel_extraction();
                         });
        QSignalSpy tabs(&session.controller, &vlc::signal_tab_processed_of_plugin_overall);
        const auto before = test_support::snapshot_tree(session.source.path());
        session.run();
        QCOMPARE(session.rows("select distinct system_user from recent_played"), (QList<QVariantList>{{"alice"}}));
        QCOMPARE(test_support::count_rows(session.database(), "recent_played"), 4);
        QCOMPARE(tabs.count(), 0);
        QVERIFY(session.log.messages_with("[extract_plugin_artifacts] ends").isEmpty());
        QCOMPARE(test_support::snapshot_tree(session.source.path()), before);
    }

    void named_pipes_in_place_of_the_text_files_are_not_opened()
    {
        // A pipe without a writer would block a reader for ever.
        macos_session session;
        const QString home = session.source.filePath("Users/ann/Library/");
        QVERIFY(QDir().mkpath(home + "Application Support/org.videolan.vlc"));
        QVERIFY(QDir().mkpath(home + "Preferences/org.videolan.vlc"));
        QVERIFY(mkfifo(QFile::encodeName(home + "Application Support/org.videolan.vlc/ml.xspf").constData(), 0600) == 0);
        QVERIFY(mkfifo(QFile::encodeName(home + "Preferences/org.videolan.vlc/vlcrc").constData(), 0600) == 0);
        session.prepare({"ann"}, {"media_library", "podcasts"});
        session.run();
        QCOMPARE(session.log.messages_with("[extract_media_library] file open --------FAILED-------").size(), 1);
        QCOMPARE(session.log.messages_with("[extract_podcasts] file open -------FAILED-----------").size(), 1);
        QVERIFY(!session.log.messages_with("[extract_plugin_artifacts] ends").isEmpty());
    }

    void cancel_after_the_last_recent_list_counts_that_table_only()
    {
        macos_session session;
        QString error;
        QVERIFY(write_macos_sample_tree(session.source.path(), &error));
        session.prepare({"alice"}, {"recents", "recent_played"});
        QObject::connect(&session.controller, &vlc::signal_extracted_records_of_plugin_overall, &session.controller,
                         [&session](qint64 count) {
                             if (count > 0)
                                 session.controller.pub_cancel_extraction();
                         });
        QSignalSpy tabs(&session.controller, &vlc::signal_tab_processed_of_plugin_overall);
        session.run();
        // alice's only recent list was read whole, so that table is done;
        // the played list is never opened.
        QCOMPARE(test_support::count_rows(session.database(), "recents"), 2);
        QCOMPARE(tabs.count(), 1);
        QCOMPARE(test_support::count_rows(session.database(), "recent_played"), 0);
        QVERIFY(session.log.messages_with("[xcode_extract_recent_played_11_12] START").isEmpty());
        QVERIFY(session.log.messages_with("[extract_plugin_artifacts] ends").isEmpty());
    }

    void portable_metadata_reads_the_volume_and_its_extended_attributes()
    {
        macos_session session;
        QString error;
        QVERIFY(write_macos_sample_tree(session.source.path(), &error));
        const QString media = session.source.filePath(k_holiday);
        const QByteArray where_from = plist_writer::write(
            QVariantList{"https://downloads.example.org/holiday.mp4", "https://example.org/"},
            plist_writer::format::binary);
        if (!set_attribute(media, "user.com.apple.metadata:kMDItemWhereFroms", where_from))
            QSKIP("the temporary file system keeps no user extended attributes");
        QVERIFY(set_attribute(media, "user.com.apple.quarantine", "0083;5f1e2a3b;Safari;"));
        QByteArray last_used(16, '\0');
        last_used[1] = char(0xF1);
        last_used[2] = char(0x53);
        last_used[3] = char(0x65);  // 0x6553F100 seconds, little-endian
        QVERIFY(set_attribute(media, "user.com.apple.lastuseddate#PS", last_used));

        session.prepare({"alice"}, {"media_library"}, {"kMDItemWhereFroms", "com.apple.quarantine", "kMDItemFSName"});
        session.run();
        const auto rows = session.rows(
            "select file_exist, wherefrom, content_type, file_type, fs_name, fs_content_change_date, last_used_date, "
            "extended_attributes_key_value, extended_attributes_value_for_search from media_library order by INT");
        QCOMPARE(rows.size(), 4);
        const QVariantList& holiday = rows.at(0);
        QCOMPARE(holiday.value(0).toString(), QString("YES"));
        QCOMPARE(holiday.value(1).toString(),
                 QString("https://downloads.example.org/holiday.mp4;++::++;https://example.org/"));
        QCOMPARE(holiday.value(2).toString(), QString("video/mp4"));
        QVERIFY(!holiday.value(3).toString().isEmpty());
        QCOMPARE(holiday.value(4).toString(), QString("Holiday Trip – Day 1.mp4"));
        QCOMPARE(holiday.value(5).toLongLong(), QFileInfo(media).lastModified().toSecsSinceEpoch());
        QCOMPARE(holiday.value(6).toLongLong(), 0x6553F100LL);
        QVERIFY2(holiday.value(7).toString().contains("<com.apple.quarantine>0083;5f1e2a3b;Safari;</com.apple.quarantine>"),
                 qPrintable(holiday.value(7).toString()));
        QVERIFY(holiday.value(7).toString().contains("<File_Path>/" + k_holiday + "</File_Path>"));
        QCOMPARE(holiday.value(8).toString(), QString("0083;5f1e2a3b;Safari;"));
        // A missing file: no metadata columns, no source element.
        const QVariantList& missing = rows.at(2);
        QCOMPARE(missing.value(0).toString(), QString("NO"));
        for (int column = 1; column <= 6; ++column)
            QVERIFY(missing.value(column).isNull());
        QVERIFY(!missing.value(7).toString().contains("Extended_Attributes_Artifact_Source_Header"));
    }

    void foreign_and_damaged_property_lists_never_crash_the_readers()
    {
        QStringList samples;
        const QString shared = test_support::shared_fixtures_dir() + "/macos/plist";
        for (QDirIterator it(shared, QDir::Files, QDirIterator::Subdirectories); it.hasNext();)
            samples << it.next();
        if (samples.isEmpty())
            QSKIP("shared samples are not available");
        samples.removeIf([](const QString& path) { return path.endsWith(".md"); });
        const QByteArray valid = plist_writer::keyed_archive({"file:///Users/alice/a.mp4"});
        QByteArray truncated = valid.left(valid.size() / 2);

        for (const QString& sample : samples) {
            macos_session session;
            const QByteArray data = tree_writer::read_file(sample);
            const QString prefs = session.source.filePath("Users/alice/Library/Preferences/");
            QVERIFY(tree_writer::write_file(prefs + "org.videolan.vlc.LSSharedFileList.plist", data));
            QVERIFY(tree_writer::write_file(prefs + "org.videolan.vlc.plist", data));
            QVERIFY(tree_writer::write_file(
                session.source.filePath("Users/bob/Library/Application Support/com.apple.sharedfilelist/"
                                        "com.apple.LSSharedFileList.ApplicationRecentDocuments/org.videolan.vlc.sfl"),
                sample.contains(".sfl") ? data : truncated));
            session.prepare({"alice", "bob"}, {"recents", "recent_played"});
            session.run();
            QVERIFY2(!session.log.messages_with("[extract_plugin_artifacts] ends").isEmpty(), qPrintable(sample));
        }
    }
};

QTEST_MAIN(test_vlc_macos)
#include "test_vlc_macos.moc"
