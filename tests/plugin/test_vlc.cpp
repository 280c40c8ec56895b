// The controller: its form, the fan-out of host context, signal relaying,
// scheme dispatch, cancellation and the result-directory layout.

#include <QDir>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include "debug_log_capture.h"
#include "plugin_helper_functions.h"
#include "vlc.h"
#include "vlc_androidos.h"
#include "vlc_ios_uid.h"
#include "vlc_macos.h"
#include "vlc_winos.h"

namespace {

struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info source_with_scheme(const QString& scheme,
                                                                       const QString& root = "/nonexistent/root/")
{
    struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info info;
    info.source_path_1 = root;
    info.os_scheme_display = "display";
    info.os_scheme_internal = scheme;
    return info;
}

// A controller set up the way a host does before discovery.
void prepare(vlc& controller, const debug_log_capture& log, const QString& scheme, const QString& out_dir)
{
    controller.pub_set_engine_type(0);
    controller.pub_set_essentials();
    controller.pub_set_engine_type(0);
    controller.pub_set_general_info(log.general());
    controller.pub_set_source_count(1);
    controller.pub_set_source_info(source_with_scheme(scheme));
    controller.pub_set_essential_for_quarl_desk_extraction({"recents"}, {});
    controller.pub_set_result_directory(out_dir);
}

QList<qint64> values_of(const QSignalSpy& spy)
{
    QList<qint64> values;
    for (const QList<QVariant>& call : spy)
        values << call.first().toLongLong();
    return values;
}

}  // namespace

class test_vlc : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        plugin_static_function::close_debug_file();
        plugin_static_function::set_essentials();
    }

    void form_and_children()
    {
        vlc controller;
        QCOMPARE(controller.objectName(), QString("vlc"));
        QCOMPARE(controller.frameShape(), QFrame::StyledPanel);
        QCOMPARE(controller.frameShadow(), QFrame::Raised);
        QCOMPARE(controller.size(), QSize(400, 300));
        QCOMPARE(controller.windowTitle(), QString("Frame"));
        QCOMPARE(controller.pub_get_artifact_name(), QString("VLC"));
        QCOMPARE(controller.findChildren<vlc_macos*>().size(), 1);
        QCOMPARE(controller.findChildren<vlc_ios_uid*>().size(), 1);
        QCOMPARE(controller.findChildren<vlc_winos*>().size(), 1);
        QCOMPARE(controller.findChildren<vlc_androidos*>().size(), 1);
        QCOMPARE(controller.findChildren<plugin_helper_functions*>().size(), 1);
        QVERIFY(!controller.isVisible());
    }

    void relays_every_extractors_signals_unchanged()
    {
        vlc controller;
        QSignalSpy records(&controller, &vlc::signal_extracted_records_of_plugin_overall);
        QSignalSpy tabs(&controller, &vlc::signal_tab_processed_of_plugin_overall);

        emit controller.findChild<vlc_macos*>()->signal_extracted_records_of_plugin_macos(11);
        emit controller.findChild<vlc_ios_uid*>()->signal_extracted_records_of_plugin_ios_uid(22);
        emit controller.findChild<vlc_winos*>()->signal_extracted_records_of_plugin_winos(Q_INT64_C(5000000000));
        emit controller.findChild<vlc_androidos*>()->signal_extracted_records_of_plugin_androidos(-1);
        QCOMPARE(values_of(records), (QList<qint64>{11, 22, Q_INT64_C(5000000000), -1}));

        emit controller.findChild<vlc_macos*>()->signal_total_tabs_processed_macos(1);
        emit controller.findChild<vlc_ios_uid*>()->signal_total_tabs_processed_ios_uid(2);
        emit controller.findChild<vlc_winos*>()->signal_total_tabs_processed_winos(3);
        emit controller.findChild<vlc_androidos*>()->signal_total_tabs_processed_androidos(4);
        QCOMPARE(values_of(tabs), (QList<qint64>{1, 2, 3, 4}));
    }

    void unknown_or_wrong_case_scheme_runs_no_extractor_data()
    {
        QTest::addColumn<QString>("scheme");
        QTest::newRow("wrong case") << "macos";
        QTest::newRow("empty") << "";
        QTest::newRow("windows") << "WinOS";
        QTest::newRow("padded") << " androidOS";
    }

    void unknown_or_wrong_case_scheme_runs_no_extractor()
    {
        QFETCH(QString, scheme);
        QTemporaryDir out;
        debug_log_capture log;
        vlc controller;
        prepare(controller, log, scheme, out.path());
        QSignalSpy records(&controller, &vlc::signal_extracted_records_of_plugin_overall);

        controller.pub_find_source_file();
        const QStringList failed = log.messages_with("FAILED");
        QCOMPARE(failed.size(), 1);
        QCOMPARE(failed.first(), "------FAILED------- supported os scheme not matched, received os scheme =  " + scheme
                                     + ", plugin name is VLC");

        controller.pub_extract_artifacts();
        QStringList messages = log.messages();
        const int start = messages.indexOf("[pub_extract_artifacts] - START");
        QVERIFY(start >= 0);
        QCOMPARE(messages.mid(start),
                 (QStringList{"[pub_extract_artifacts] - START",
                              "------FAILED------- supported os scheme internal not matched, received os scheme "
                              "internal =  " + scheme + ", plugin name is VLC",
                              "[pub_extract_artifacts] - END"}));
        QCOMPARE(values_of(records), (QList<qint64>{0, 0}));
        QVERIFY(log.messages_with("find_source_file").isEmpty());
    }

    void dispatches_to_the_matching_extractor_only()
    {
        QTemporaryDir out;
        debug_log_capture log;
        vlc controller;
        prepare(controller, log, "winOS", out.path());
        controller.pub_find_source_file();
        controller.pub_extract_artifacts();
        const QStringList lines = log.lines();
        QCOMPARE(lines.filter("[vlc_winos::find_source_file]").size(), 2);
        QCOMPARE(lines.filter("[vlc_winos::extract_plugin_artifacts]").size(), 2);
        QVERIFY(lines.filter("vlc_macos::").isEmpty());
        QVERIFY(lines.filter("vlc_androidos::").isEmpty());
    }

    void cancel_before_extraction_returns_early()
    {
        QTemporaryDir out;
        debug_log_capture log;
        vlc controller;
        prepare(controller, log, "androidOS", out.path());
        QSignalSpy records(&controller, &vlc::signal_extracted_records_of_plugin_overall);

        controller.pub_cancel_extraction();
        QVERIFY(plugin_static_function::bool_cancel_extraction);
        controller.pub_extract_artifacts();

        QCOMPARE(values_of(records), QList<qint64>{0});
        QCOMPARE(log.messages_with("[pub_extract_artifacts]"), QStringList{"[pub_extract_artifacts] - START"});
        QVERIFY(log.lines().filter("vlc_androidos::extract_plugin_artifacts").isEmpty());
    }

    void essentials_after_a_cancelled_run_make_it_usable_again()
    {
        QTemporaryDir out;
        debug_log_capture log;
        vlc controller;
        prepare(controller, log, "androidOS", out.path());
        emit controller.findChild<vlc_androidos*>()->signal_extracted_records_of_plugin_androidos(9);
        controller.pub_cancel_extraction();
        controller.pub_extract_artifacts();

        prepare(controller, log, "androidOS", out.path());
        QVERIFY(!plugin_static_function::bool_cancel_extraction);
        QSignalSpy records(&controller, &vlc::signal_extracted_records_of_plugin_overall);
        controller.pub_extract_artifacts();
        // Counters were reset: the run starts from 0 and the extractor reports 0.
        QCOMPARE(values_of(records), (QList<qint64>{0, 0, 0}));
        QCOMPARE(log.messages().last(), QString("[pub_extract_artifacts] - END"));
    }

    void ios_run_reports_the_count_it_was_handed()
    {
        QTemporaryDir out;
        debug_log_capture log;
        vlc controller;
        prepare(controller, log, "iOS_UID", out.path());
        controller.pub_set_ios_uid_backup_pointer(reinterpret_cast<ios_uid_backup_parser*>(0x1));
        emit controller.findChild<vlc_ios_uid*>()->signal_extracted_records_of_plugin_ios_uid(7);

        const auto before = test_support::snapshot_tree(out.path());
        QSignalSpy records(&controller, &vlc::signal_extracted_records_of_plugin_overall);
        QSignalSpy tabs(&controller, &vlc::signal_tab_processed_of_plugin_overall);
        controller.pub_find_source_file();
        controller.pub_extract_artifacts();
        // A source without the app: the selected table is counted, nothing is written.
        QCOMPARE(values_of(records), (QList<qint64>{0, 7, 7, 7}));
        QCOMPARE(tabs.count(), 1);
        QCOMPARE(test_support::snapshot_tree(out.path()), before);
    }

    void result_directory_layout_data()
    {
        QTest::addColumn<bool>("trailing_slash");
        QTest::newRow("without /") << false;
        QTest::newRow("with /") << true;
    }

    void result_directory_layout()
    {
        QFETCH(bool, trailing_slash);
        QTemporaryDir out;
        debug_log_capture log;
        vlc controller;
        prepare(controller, log, "winOS", out.path() + (trailing_slash ? "/" : ""));
        const QString result_dir = out.path() + "/Artifacts_Result/VLC/";
        QVERIFY(QFileInfo(result_dir).isDir());
        QVERIFY(QFileInfo(result_dir + "tmp/").isDir());
        QCOMPARE(controller.findChild<plugin_helper_functions*>()->get_adhoc_parent_path(), result_dir + "tmp/");
        QCOMPARE(log.messages_with("[set_destination_location]"),
                 (QStringList{"[set_destination_location] starts", "[set_destination_location] ends"}));

        controller.pub_create_db_tables();
        QVERIFY(QFileInfo(result_dir + "VLC.sqlite").isFile());

        controller.pub_remove_temporary_asthetics();
        QVERIFY(!QFileInfo::exists(result_dir + "tmp/"));
        QVERIFY(QFileInfo(result_dir + "VLC.sqlite").isFile());
        QVERIFY(!plugin_static_function::debug_file_regular_QFile.isOpen());
    }

    void clear_false_and_chat_pages_touch_nothing()
    {
        QTemporaryDir out;
        debug_log_capture log;
        vlc controller;
        prepare(controller, log, "winOS", out.path());
        controller.pub_create_db_tables();
        const auto files_before = test_support::snapshot_tree(out.path());
        const int lines_before = log.lines().size();
        QSignalSpy records(&controller, &vlc::signal_extracted_records_of_plugin_overall);

        controller.pub_set_clear_db(false);
        controller.pub_generate_chat_html_pages();
        QCOMPARE(test_support::snapshot_tree(out.path()), files_before);
        QCOMPARE(log.lines().size(), lines_before);
        QCOMPARE(records.count(), 0);
    }

    void context_reaches_the_shared_state()
    {
        QTemporaryDir out;
        debug_log_capture log;
        vlc controller;
        prepare(controller, log, "macOS", out.path());
        struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info info = source_with_scheme("macOS");
        info.os_version_full = "10.15.7";
        info.system_account_QList = {{"ann", "ANN-PC"}, {"bob", ""}};
        controller.pub_set_source_count(4);
        controller.pub_set_source_info(info);
        QCOMPARE(plugin_static_function::get_source_count_name(), QString("Source4"));
        QCOMPARE(plugin_static_function::source_os_version_full, QString("10.15.7"));
        QCOMPARE(plugin_static_function::system_account_QList.size(), 2);

        controller.pub_set_essentials();
        QCOMPARE(plugin_static_function::get_source_count_name(), QString("Source-1"));
        QVERIFY(plugin_static_function::system_account_QList.isEmpty());
        QCOMPARE(plugin_static_function::type_engine_int, -1);
    }
};

QTEST_MAIN(test_vlc)
#include "test_vlc.moc"
