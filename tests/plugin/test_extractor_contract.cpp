// The contract every extractor keeps: prefixed setters, one final records
// signal from extract_artifacts, nothing extracted for editions above 2, and
// a cancel that the next run's essentials clear.

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include "debug_log_capture.h"
#include "plugin_helper_functions.h"
#include "vlc_androidos.h"
#include "vlc_ios_uid.h"
#include "vlc_macos.h"
#include "vlc_winos.h"

namespace {

// The same steps for each extractor, through its own prefixed operations.
#define CONFIGURE(obj, prefix, engine, tables, root, out)                                       \
    do {                                                                                        \
        struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info info;                               \
        info.source_path_1 = (root);                                                            \
        info.os_scheme_display = "display";                                                     \
        info.system_account_QList = {{"ann", "ANN"}, {"ann", ""}, {"", "x"}};                   \
        (obj).prefix##_set_plugin_helper_obj(&helper);                                          \
        (obj).prefix##_set_destination_location((out) + "/", (out) + "/tmp/", (out) + "/r.sqlite"); \
        (obj).prefix##_set_source_info(info);                                                   \
        (obj).prefix##_set_desktop_info({});                                                    \
        (obj).prefix##_set_general_info({});                                                    \
        (obj).prefix##_set_engine_type(engine);                                                 \
        (obj).prefix##_set_source_count(1);                                                     \
        (obj).prefix##_set_essential_for_quarl_desk_extraction(tables);                         \
        (obj).prefix##_set_plugin_name("  VLC ");                                               \
        (obj).prefix##_set_record_count(41);                                                    \
        (obj).prefix##_set_tab_processed_count(2);                                              \
        (obj).prefix##_set_essentials();                                                        \
    } while (0)

}  // namespace

class test_extractor_contract : public QObject
{
    Q_OBJECT

    plugin_helper_functions helper;

    template <typename Extractor, typename RecordsSignal, typename TabsSignal, typename Run>
    void expect_one_final_signal(Extractor& extractor, RecordsSignal records_signal, TabsSignal tabs_signal, Run run)
    {
        QSignalSpy records(&extractor, records_signal);
        QSignalSpy tabs(&extractor, tabs_signal);
        run();
        QCOMPARE(records.count(), 1);
        QCOMPARE(records.first().first().toLongLong(), 41);
        QCOMPARE(tabs.count(), 0);
    }

private slots:
    void ios_stub_reports_its_count_and_touches_nothing()
    {
        QTemporaryDir root;
        QTemporaryDir out;
        vlc_ios_uid ios;
        CONFIGURE(ios, ios_uid, 0, (QList<QString>{"media_library", "recents"}), root.path() + "/", out.path());
        ios.ios_uid_set_ios_backup_pointer(nullptr);
        const auto root_before = test_support::snapshot_tree(root.path());
        const auto out_before = test_support::snapshot_tree(out.path());
        // Without the app on the source each selected table is counted and nothing is written.
        QSignalSpy records(&ios, &vlc_ios_uid::signal_extracted_records_of_plugin_ios_uid);
        QSignalSpy tabs(&ios, &vlc_ios_uid::signal_total_tabs_processed_ios_uid);
        ios.ios_uid_find_artifacts_source();
        ios.ios_uid_extract_artifacts();
        QCOMPARE(records.count(), 3);
        QCOMPARE(records.last().first().toLongLong(), 41);
        QCOMPARE(tabs.last().first().toInt(), 4);
        QCOMPARE(test_support::snapshot_tree(root.path()), root_before);
        QCOMPARE(test_support::snapshot_tree(out.path()), out_before);
    }

    void editions_above_2_extract_nothing_data()
    {
        QTest::addColumn<int>("engine");
        QTest::newRow("3") << 3;
        QTest::newRow("negative") << -1;
    }

    void editions_above_2_extract_nothing()
    {
        QFETCH(int, engine);
        QTemporaryDir root;
        QTemporaryDir out;
        const QList<QString> all = {"media_library", "podcasts", "recents", "recent_played",
                                    "playlists",     "album_art", "album"};
        vlc_macos macos;
        CONFIGURE(macos, macos, engine, all, root.path() + "/", out.path());
        expect_one_final_signal(macos, &vlc_macos::signal_extracted_records_of_plugin_macos,
                                &vlc_macos::signal_total_tabs_processed_macos, [&] {
                                    macos.macos_find_artifacts_source();
                                    macos.macos_extract_artifacts();
                                });
        vlc_winos winos;
        CONFIGURE(winos, winos, engine, all, root.path() + "/", out.path());
        expect_one_final_signal(winos, &vlc_winos::signal_extracted_records_of_plugin_winos,
                                &vlc_winos::signal_total_tabs_processed_winos, [&] {
                                    winos.winos_find_artifacts_source();
                                    winos.winos_extract_artifacts();
                                });
        vlc_androidos android;
        CONFIGURE(android, androidos, engine, all, root.path() + "/", out.path());
        expect_one_final_signal(android, &vlc_androidos::signal_extracted_records_of_plugin_androidos,
                                &vlc_androidos::signal_total_tabs_processed_androidos, [&] {
                                    android.androidos_find_artifacts_source();
                                    android.androidos_extract_artifacts();
                                });
    }

    void an_empty_selection_extracts_nothing()
    {
        QTemporaryDir root;
        QTemporaryDir out;
        vlc_winos winos;
        CONFIGURE(winos, winos, 0, QList<QString>(), root.path() + "/", out.path());
        debug_log_capture log;
        log.start(0);
        expect_one_final_signal(winos, &vlc_winos::signal_extracted_records_of_plugin_winos,
                                &vlc_winos::signal_total_tabs_processed_winos,
                                [&] { winos.winos_extract_artifacts(); });
        QCOMPARE(log.messages(),
                 (QStringList{"[extract_plugins_artifacts]---STARTS---", "[extract_plugins_artifacts]---ENDS---"}));
    }
};

QTEST_MAIN(test_extractor_contract)
#include "test_extractor_contract.moc"
