// The host's binary interface: the library exports create_object and nothing
// else of ours, and the pub_ operations sit in the virtual-table slots the
// host calls. The host-side declaration (host/vlc_plugin_interface.h) is the
// one the host program uses; if either side's order changes, this fails.

#include <QDir>
#include <QFileInfo>
#include <QLibrary>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>

#include "debug_log_capture.h"
#include "vlc.h"
#include "vlc_plugin_interface.h"

namespace {

// Itanium C++ ABI: a pointer to a virtual member function holds 1 + the
// byte offset of its slot in the virtual table.
template <typename Method>
std::ptrdiff_t slot_of(Method method)
{
    static_assert(sizeof(Method) == 2 * sizeof(std::ptrdiff_t), "Itanium member-function pointer expected");
    std::ptrdiff_t raw[2];
    std::memcpy(raw, &method, sizeof(raw));
    return (raw[0] & 1) ? (raw[0] - 1) / std::ptrdiff_t(sizeof(void*)) : -1;
}

struct loaded_plugin
{
    QLibrary library{test_support::plugin_library_path()};
    vlc_plugin_interface* controller = nullptr;

    bool load()
    {
        if (!library.load())
            return false;
        auto create = reinterpret_cast<create_object_function>(library.resolve("create_object"));
        controller = create ? static_cast<vlc_plugin_interface*>(create()) : nullptr;
        return controller != nullptr;
    }
    ~loaded_plugin() { delete controller; }
};

}  // namespace

class test_binary_interface : public QObject
{
    Q_OBJECT

private slots:
    void slots_match_the_host_declaration()
    {
#define SAME_SLOT(name) QCOMPARE(slot_of(&vlc::name), slot_of(&vlc_plugin_interface::name))
        SAME_SLOT(pub_set_engine_type);
        SAME_SLOT(pub_get_artifact_name);
        SAME_SLOT(pub_set_essentials);
        SAME_SLOT(pub_set_source_count);
        SAME_SLOT(pub_set_ios_uid_backup_pointer);
        SAME_SLOT(pub_set_desktop_info);
        SAME_SLOT(pub_set_general_info);
        SAME_SLOT(pub_set_source_info);
        SAME_SLOT(pub_set_essential_for_quarl_desk_extraction);
        SAME_SLOT(pub_set_result_directory);
        SAME_SLOT(pub_create_db_tables);
        SAME_SLOT(pub_set_clear_db);
        SAME_SLOT(pub_cancel_extraction);
        SAME_SLOT(pub_find_source_file);
        SAME_SLOT(pub_set_extended_attributes_list);
        SAME_SLOT(pub_extract_artifacts);
        SAME_SLOT(pub_generate_chat_html_pages);
        SAME_SLOT(pub_remove_temporary_asthetics);
#undef SAME_SLOT
        // The operations follow QFrame's own virtual functions, one slot each, in order.
        const std::ptrdiff_t first = slot_of(&vlc::pub_set_engine_type);
        QVERIFY(first > 0);
        QCOMPARE(slot_of(&vlc::pub_remove_temporary_asthetics), first + 17);
        QCOMPARE(slot_of(&vlc::pub_set_clear_db), first + 11);
    }

    void only_create_object_is_exported()
    {
        QLibrary library(test_support::plugin_library_path());
        QVERIFY2(library.load(), qPrintable(library.errorString()));
        QVERIFY(library.resolve("create_object"));
        // The controller's own symbols stay hidden behind the entry point.
        QVERIFY(!library.resolve("_ZN3vlcC1EP7QWidget"));
        QVERIFY(!library.resolve("_ZN22plugin_static_function9app_debugE7QStringS0_"));
        QVERIFY(!library.resolve("_ZN14encryptor_string18encryptToByteArrayE10QByteArray"));
    }

    // Drives the real library through the host's declaration, in the host's
    // order, and checks that every call lands on the operation it names.
    void every_operation_through_the_loaded_library()
    {
        loaded_plugin plugin;
        QVERIFY2(plugin.load(), qPrintable(plugin.library.errorString()));
        vlc_plugin_interface* c = plugin.controller;
        QCOMPARE(c->objectName(), QString("vlc"));

        QTemporaryDir out;
        QTemporaryDir source;
        QDir(source.path()).mkpath("Users/ann/AppData/Roaming/vlc");
        const QString log_path = out.filePath("debug.log");
        QSignalSpy records(c, vlc_plugin_interface::records_signal);
        QSignalSpy tabs(c, vlc_plugin_interface::tabs_signal);
        QVERIFY(records.isValid() && tabs.isValid());

        c->pub_set_engine_type(1);
        QCOMPARE(c->pub_get_artifact_name(), QString("VLC"));
        c->pub_set_essentials();
        c->pub_set_engine_type(1);

        struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info general;
        general.bool_debug_mode = true;
        general.bool_debug_print_in_file = true;
        general.debug_file_path = log_path;
        c->pub_set_general_info(general);
        QVERIFY(QFileInfo::exists(log_path));

        c->pub_set_desktop_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_desktop_info());
        c->pub_set_source_count(3);
        struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info info;
        info.source_path_1 = source.path() + "/";
        info.os_scheme_display = "Windows";
        info.os_scheme_internal = "winOS";
        info.system_account_QList = {{"ann", ""}};
        c->pub_set_source_info(info);
        c->pub_set_ios_uid_backup_pointer(nullptr);
        c->pub_set_essential_for_quarl_desk_extraction({"exportfilelist"}, {"second list"});
        c->pub_set_result_directory(out.path());
        const QString result_dir = out.path() + "/Artifacts_Result/VLC/";
        QVERIFY(QFileInfo(result_dir + "tmp").isDir());
        c->pub_create_db_tables();
        QVERIFY(QFileInfo(result_dir + "VLC.sqlite").isFile());
        c->pub_set_clear_db(true);
        c->pub_set_extended_attributes_list({"kMDItemAuthors"});
        c->pub_find_source_file();
        c->pub_extract_artifacts();
        c->pub_generate_chat_html_pages();
        c->pub_remove_temporary_asthetics();
        QVERIFY(!QFileInfo::exists(result_dir + "tmp"));

        const QStringList lines = test_support::read_lines(log_path);
        // Engine 1 set after the essentials: every line names that edition.
        QVERIFY(!lines.isEmpty());
        QCOMPARE(lines.filter("[QUARL_SWEEP][Artifacts Extraction]").size(), lines.size());
        const QStringList messages = test_support::log_messages(lines);
        const QStringList expected_order = {"[set_destination_location] starts",
                                            "[create_destination_database] starts",
                                            "[create_db_tables] ENDS",
                                            "[find_source_file]---STARTS---",
                                            "[pub_extract_artifacts] - START",
                                            "[extract_plugins_artifacts]---STARTS---",
                                            "[pub_extract_artifacts] - END"};
        int at = -1;
        for (const QString& message : expected_order) {
            const int next = messages.indexOf(message, at + 1);
            QVERIFY2(next > at, qPrintable("missing or out of order: " + message));
            at = next;
        }
        // The clear request ran against the existing database: no "not exists" line.
        QVERIFY(messages.filter("DB not exists").isEmpty());
        QCOMPARE(records.count(), 3);  // 0 at start, the extractor's count, the final count
        QCOMPARE(tabs.count(), 0);

        // Cancel reaches the controller through its own slot.
        c->pub_set_engine_type(0);
        c->pub_cancel_extraction();
        records.clear();
        c->pub_extract_artifacts();
        QCOMPARE(records.count(), 1);
    }
};

QTEST_MAIN(test_binary_interface)
#include "test_binary_interface.moc"
