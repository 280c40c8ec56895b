#pragma once

// Points the plug-in's debug log at a file of its own for one test, for tests
// that link the core library, and reads back what was logged. A controller
// given general() logs into the same file, the way a host sets it up.

#include <QTemporaryDir>

#include "host_context_records.h"
#include "plugin_static_function.h"
#include "test_support.h"

class debug_log_capture
{
public:
    explicit debug_log_capture(int engine = 0) { start(engine); }
    ~debug_log_capture()
    {
        plugin_static_function::close_debug_file();
        plugin_static_function::set_essentials();
    }
    debug_log_capture(const debug_log_capture&) = delete;
    debug_log_capture& operator=(const debug_log_capture&) = delete;

    // The general record a host would send to log into this file.
    struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info general(bool encrypt = false) const
    {
        struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info info;
        info.bool_debug_mode = true;
        info.bool_debug_print_in_file = true;
        info.bool_debug_encryption = encrypt;
        info.debug_file_path = path();
        return info;
    }
    void start(int engine) const
    {
        plugin_static_function::close_debug_file();
        plugin_static_function::set_general_info(general());
        plugin_static_function::type_engine_int = engine;
    }
    QString path() const { return m_dir.filePath("debug.log"); }
    QStringList lines() const
    {
        plugin_static_function::debug_file_regular_QFile.flush();
        return test_support::read_lines(path());
    }
    QStringList messages() const { return test_support::log_messages(lines()); }
    QStringList messages_with(const QString& text) const { return messages().filter(text); }
    // The function part of every line ("[...][Artifacts Extraction][name]:-- ").
    QStringList functions() const
    {
        QStringList names;
        for (const QString& line : lines())
            names << line.section("[Artifacts Extraction][", 1).section("]:-- ", 0, 0);
        return names;
    }

private:
    QTemporaryDir m_dir;
};
