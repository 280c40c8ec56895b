#pragma once

// Points the plug-in's debug log at a plain file for the length of a scope, so
// that a test can read back exactly what the shared services logged.

#include <QString>
#include <QStringList>

#include "plugin_static_function.h"
#include "test_support.h"

class debug_log_capture
{
public:
    explicit debug_log_capture(const QString& file_path) : m_path(file_path)
    {
        plugin_static_function::close_debug_file();
        plugin_static_function::type_engine_int = 0;
        plugin_static_function::debug_mode_status_bool = true;
        plugin_static_function::debug_print_in_file_bool = true;
        plugin_static_function::debug_print_on_terminal_bool = false;
        plugin_static_function::debug_encryption_status_bool = false;
        plugin_static_function::debug_file_path_QString = file_path;
        plugin_static_function::open_debug_file();
    }

    ~debug_log_capture()
    {
        plugin_static_function::close_debug_file();
        plugin_static_function::debug_mode_status_bool = false;
        plugin_static_function::debug_print_in_file_bool = false;
        plugin_static_function::debug_file_path_QString.clear();
    }

    debug_log_capture(const debug_log_capture&) = delete;
    debug_log_capture& operator=(const debug_log_capture&) = delete;

    bool is_open() const { return plugin_static_function::debug_file_regular_QFile.isOpen(); }

    QStringList lines() const { return test_support::read_lines(m_path); }

    // The message part of every line written so far.
    QStringList messages() const { return test_support::log_messages(lines()); }

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
    void clear()
    {
        plugin_static_function::debug_file_regular_QFile.resize(0);
    }

private:
    QString m_path;
};
