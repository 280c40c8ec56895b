#pragma once

// Points the plug-in's debug log at a file of its own for one test (of the
// core library) and reads back what was logged. A controller given general()
// logs into the same file, the way a host sets it up.

#include <QTemporaryDir>

#include "host_context_records.h"
#include "plugin_static_function.h"
#include "test_support.h"

class debug_log_capture
{
public:
    explicit debug_log_capture(int engine = 0)
    {
        plugin_static_function::close_debug_file();
        plugin_static_function::set_general_info(general());
        plugin_static_function::type_engine_int = engine;
    }
    ~debug_log_capture()
    {
        plugin_static_function::close_debug_file();
        plugin_static_function::set_essentials();
    }
    struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info general() const
    {
        struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info info;
        info.bool_debug_mode = info.bool_debug_print_in_file = true;
        info.debug_file_path = m_dir.filePath("debug.log");
        return info;
    }
    QStringList lines() const
    {
        plugin_static_function::debug_file_regular_QFile.flush();
        return test_support::read_lines(m_dir.filePath("debug.log"));
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
