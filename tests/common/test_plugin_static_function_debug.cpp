// The debug log: its switches, the line layout, the edition texts, and the
// enciphered form read back record by record.

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include "debug_log_capture.h"
#include "encryptor_string.h"

namespace {

QStringList g_terminal_lines;

void capture_terminal(QtMsgType, const QMessageLogContext&, const QString& message)
{
    g_terminal_lines << message;
}

struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info general(bool mode, bool terminal, bool file, bool encrypt,
                                                             const QString& path)
{
    struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info info;
    info.bool_debug_mode = mode;
    info.bool_debug_print_on_terminal = terminal;
    info.bool_debug_print_in_file = file;
    info.bool_debug_encryption = encrypt;
    info.debug_file_path = path;
    return info;
}

}  // namespace

class test_plugin_static_function_debug : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        plugin_static_function::close_debug_file();
        plugin_static_function::set_essentials();
        plugin_static_function::debug_encryption_status_bool = false;
        qInstallMessageHandler(nullptr);
        g_terminal_lines.clear();
    }

    void master_switch_off_writes_nothing()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("never.log");
        qInstallMessageHandler(capture_terminal);
        plugin_static_function::set_general_info(general(false, true, true, false, path));
        plugin_static_function::app_debug("message", "void vlc::f()");
        plugin_static_function::open_debug_file();
        plugin_static_function::app_debug("message", "void vlc::f()");
        QVERIFY(!QFile::exists(path));
        QVERIFY(g_terminal_lines.isEmpty());
    }

    void line_layout_and_edition_texts_data()
    {
        QTest::addColumn<int>("engine");
        QTest::addColumn<QString>("edition");
        QTest::newRow("desk") << 0 << "[QUARL_DESK]";
        QTest::newRow("sweep") << 1 << "[QUARL_SWEEP]";
        QTest::newRow("probe") << 2 << "[QUARL_PROBE]";
        QTest::newRow("unset") << -1 << "[ -----FAILED----- to find Engine Type ][-1]";
        QTest::newRow("unknown") << 7 << "[ -----FAILED----- to find Engine Type ][7]";
    }

    void line_layout_and_edition_texts()
    {
        QFETCH(int, engine);
        QFETCH(QString, edition);
        debug_log_capture log;
        log.start(engine);
        plugin_static_function::app_debug("[create_db_tables] STARTS", "void vlc::create_db_tables()");
        const QStringList lines = log.lines();
        QCOMPARE(lines.size(), 1);
        const QRegularExpression layout(
            "^\\[\\d{4}-[A-Z][a-z]{2}-\\d{2}T\\d{2}-\\d{2}-\\d{2}\\]"
            + QRegularExpression::escape(edition + "[Artifacts Extraction][vlc::create_db_tables]:-- [create_db_tables] STARTS")
            + "$");
        QVERIFY2(layout.match(lines.first()).hasMatch(), qPrintable(lines.first()));
    }

    void qualified_name_of_the_caller_data()
    {
        QTest::addColumn<QString>("function");
        QTest::addColumn<QString>("name");
        QTest::newRow("virtual") << "virtual void vlc::pub_extract_artifacts()" << "vlc::pub_extract_artifacts";
        QTest::newRow("static with arguments")
            << "static QStringList plugin_static_function::get_total_tables_list_by_dbpath(QString, QString)"
            << "plugin_static_function::get_total_tables_list_by_dbpath";
        QTest::newRow("padded") << "  void vlc_winos::extract_recents()  " << "vlc_winos::extract_recents";
        QTest::newRow("no return type") << "vlc::vlc(QWidget*)" << "vlc::vlc";
        QTest::newRow("empty") << "" << "FUNCTION INFO IS EMPTY ---FAILED--- debug!!!";
        QTest::newRow("blank") << "   " << "FUNCTION INFO IS EMPTY ---FAILED--- debug!!!";
    }

    void qualified_name_of_the_caller()
    {
        QFETCH(QString, function);
        QFETCH(QString, name);
        debug_log_capture log;
        log.start(0);
        plugin_static_function::app_debug("m", function);
        QVERIFY2(log.lines().value(0).endsWith("[" + name + "]:-- m"), qPrintable(log.lines().value(0)));
    }

    void terminal_lines_go_to_the_debug_stream()
    {
        qInstallMessageHandler(capture_terminal);
        plugin_static_function::set_general_info(general(true, true, false, false, QString()));
        plugin_static_function::type_engine_int = 0;
        plugin_static_function::app_debug("to the terminal", "void vlc::f()");
        QCOMPARE(g_terminal_lines.size(), 1);
        QVERIFY(g_terminal_lines.first().endsWith("[vlc::f]:-- to the terminal"));
    }

    void file_is_appended_not_replaced()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("append.log");
        QFile existing(path);
        QVERIFY(existing.open(QIODevice::WriteOnly));
        existing.write("earlier line\n");
        existing.close();
        plugin_static_function::set_general_info(general(true, false, true, false, path));
        plugin_static_function::app_debug("later line", "void vlc::f()");
        plugin_static_function::close_debug_file();
        const QStringList lines = test_support::read_lines(path);
        QCOMPARE(lines.size(), 2);
        QCOMPARE(lines.first(), QString("earlier line"));
        QVERIFY(lines.last().endsWith("later line"));
    }

    void enciphered_file_reads_back_record_by_record()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("sealed.log");
        plugin_static_function::set_general_info(general(true, false, true, true, path));
        plugin_static_function::type_engine_int = 2;
        const QStringList sent = {"first", QString(3000, 'r'), "ümlaut and \"quotes\" <[{ not a separator"};
        for (const QString& message : sent)
            plugin_static_function::app_debug(message, "void vlc_macos::extract_podcasts()");
        plugin_static_function::close_debug_file();

        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString text = QString::fromLocal8Bit(file.readAll());
        QVERIFY(!text.contains('\n'));
        QVERIFY(text.endsWith("<[{()}]>"));
        const QStringList records = text.split("<[{()}]>", Qt::SkipEmptyParts);
        QCOMPARE(records.size(), sent.size());
        for (int i = 0; i < records.size(); ++i) {
            encryptor_string cipher;
            const QString line = cipher.decryptToString(records.at(i));
            QCOMPARE(cipher.lastError(), encryptor_string::ErrorNoError);
            QVERIFY2(line.endsWith("[QUARL_PROBE][Artifacts Extraction][vlc_macos::extract_podcasts]:-- " + sent.at(i)),
                     qPrintable(line));
        }
    }

    void essentials_reset_all_but_the_cipher_switch()
    {
        QTemporaryDir dir;
        plugin_static_function::set_general_info(general(true, true, true, true, dir.filePath("x.log")));
        plugin_static_function::set_engine_type(1);
        plugin_static_function::set_source_count(5);
        plugin_static_function::set_cancel_extraction(true);
        plugin_static_function::close_debug_file();
        plugin_static_function::set_essentials();
        QVERIFY(!plugin_static_function::debug_mode_status_bool);
        QVERIFY(!plugin_static_function::debug_print_in_file_bool);
        QVERIFY(!plugin_static_function::debug_print_on_terminal_bool);
        QVERIFY(plugin_static_function::debug_encryption_status_bool);
        QVERIFY(plugin_static_function::debug_file_path_QString.isEmpty());
        QCOMPARE(plugin_static_function::type_engine_int, -1);
        QVERIFY(!plugin_static_function::bool_cancel_extraction);
        QCOMPARE(plugin_static_function::get_source_count_name(), QString("Source-1"));
    }

    void unopenable_file_is_silently_skipped()
    {
        plugin_static_function::set_general_info(
            general(true, false, true, false, "/nonexistent/dir/that/cannot/exist/debug.log"));
        plugin_static_function::app_debug("goes nowhere", "void vlc::f()");
        QVERIFY(!plugin_static_function::debug_file_regular_QFile.isOpen());
    }
};

QTEST_GUILESS_MAIN(test_plugin_static_function_debug)
#include "test_plugin_static_function_debug.moc"
