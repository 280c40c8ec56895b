#pragma once

// Points the plug-in's debug log at a temporary file for one test and reads
// the messages back. For tests that link the core library.

#include <QStringList>
#include <QTemporaryDir>

#include "host_context_records.h"
#include "plugin_static_function.h"
#include "test_support.h"

class debug_log_capture
{
public:
    debug_log_capture() : m_path(m_dir.filePath("debug.log")) {}
    ~debug_log_capture() { plugin_static_function::close_debug_file(); }

    // The general record a host would send to log into this file.
    struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info general(bool encrypt = false) const
    {
        struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info info;
        info.bool_debug_mode = true;
        info.bool_debug_print_in_file = true;
        info.bool_debug_encryption = encrypt;
        info.debug_file_path = m_path;
        return info;
    }

    // Switches the log on directly, for tests without a controller.
    void start(int engine = 0) const
    {
        plugin_static_function::set_general_info(general());
        plugin_static_function::type_engine_int = engine;
    }

    QString path() const { return m_path; }
    QStringList lines() const
    {
        if (plugin_static_function::debug_file_regular_QFile.isOpen())
            plugin_static_function::debug_file_regular_QFile.flush();
        return test_support::read_lines(m_path);
    }
    QStringList messages() const { return test_support::log_messages(lines()); }

    // Messages that contain the text.
    QStringList messages_with(const QString& text) const { return messages().filter(text); }

private:
    QTemporaryDir m_dir;
    QString m_path;
};
