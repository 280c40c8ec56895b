#pragma once

// What the host program's commands need for the report: a debug log to read
// back after a run, the record of a run just made, and the record of an
// existing result whose report is made again.

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QTemporaryFile>

#include <memory>

#include "plugin_session.h"
#include "run_record.h"

namespace report_commands {

// The debug log the plug-in writes during a run, read back for the report:
// the examiner's own file from its current end on (it may hold earlier runs),
// or a temporary file removed with this object.
struct debug_log_tap
{
    QString path;
    qint64 offset = 0;
    std::unique_ptr<QTemporaryFile> temporary;
};

// Points the options at a debug log when none is given.
void tap_debug_log(session_options* options, debug_log_tap* tap);

// The record of a run that started at the given moment and just ended.
run_record record_of_run(const session_options& options, const QStringList& command_line, const QDateTime& started,
                         bool cancelled);

// The record of an existing result: the one its report kept when there is
// one, else what the result and the source tell. source_root may be empty.
run_record record_of_result(const QString& out_dir, const QString& source_root, const QStringList& command_line);

}  // namespace report_commands
