#pragma once

// Points the plug-in's debug log at a file for one test and reads back what
// was logged. For tests that link the core library. Either the test starts
// the log itself (the path constructor, or start()), or it hands general()
// to a controller the way a host does.

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include "host_context_records.h"
#include "plugin_static_function.h"
#include "test_support.h"

class debug_log_capture
{
public:
    // A log file in a private temporary folder, not yet switched on.
    debug_log_capture() : m_path(m_dir.filePath("debug.log")) {}

    // A log at the given path, switched on at once with edition 0.
    explicit debug_log_capture(const QString& file_path) : m_path(file_path) { start(0); }

    ~debug_log_capture()
    {
        plugin_static_function::close_debug_file();
        plugin_static_function::debug_mode_status_bool = false;
        plugin_static_function::debug_print_in_file_bool = false;
        plugin_static_function::debug_file_path_QString.clear();
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
        info.debug_file_path = m_path;
        return info;
    }

    // Switches the log on directly, for tests without a controller.
    void start(int engine = 0) const
    {
        plugin_static_function::close_debug_file();
        plugin_static_function::set_general_info(general());
        plugin_static_function::type_engine_int = engine;
    }

    QString path() const { return m_path; }
    bool is_open() const { return plugin_static_function::debug_file_regular_QFile.isOpen(); }

    QStringList lines() const
    {
        if (is_open())
            plugin_static_function::debug_file_regular_QFile.flush();
        return test_support::read_lines(m_path);
    }

    // The message part of every line written so far.
    QStringList messages() const { return test_support::log_messages(lines()); }

    // Messages that contain the text.
    QStringList messages_with(const QString& text) const { return messages().filter(text); }

    // The function part of every line ("[...][Artifacts Extraction][name]:-- ").
    QStringList functions() const
    {
        QStringList names;
        const QString marker = "[Artifacts Extraction][";
        for (const QString& line : lines()) {
            const int start = line.indexOf(marker);
            const int end = line.indexOf("]:-- ");
            names << ((start >= 0 && end > start) ? line.mid(start + marker.size(), end - start - marker.size())
                                                  : QString());
        }
        return names;
    }

    // Forgets what was logged so far.
    void clear() { plugin_static_function::debug_file_regular_QFile.resize(0); }

private:
    QTemporaryDir m_dir;
    QString m_path;
};
