#pragma once

// The host program's command line, read with Qt's parser: the options of each
// command, the help text and the exit codes every command answers with.

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

#include "plugin_session.h"

namespace exit_code {
constexpr int ok = 0;
constexpr int failed = 1;             // the output could not be written, or the plug-in not loaded
constexpr int usage = 2;              // a usage error, an unusable source, an output the run may not use
constexpr int nothing_extracted = 3;  // the run could not extract anything, for the reason given
constexpr int cancelled = 130;        // Ctrl-C, as a shell counts an interrupted program
}  // namespace exit_code

// What the run command was asked to do.
struct run_arguments
{
    session_options session;
    QString plugin_path;
    bool os_auto = true;
    bool append = false;  // add to the results an output folder already holds
};

namespace command_line {

// The outcome of reading a command's arguments: go on, or stop with the help
// or version already printed (exit 0), or a usage error in problem (exit 2).
enum class parsed { proceed, answered, usage_error };

// Parses args (without the program's name) with the command's options plus
// --help and --version; prints the help text or the version when asked.
// help_tail: what the help adds after the options.
parsed parse(QCommandLineParser& parser, const QStringList& args, const QString& usage, const QString& help_tail,
             QString* problem);

// The run command's options, read into arguments; source and tables checked
// for presence and spelling only.
parsed parse_run(const QStringList& args, run_arguments* arguments, QString* problem);

// The lines every help ends with: commands, tables, schemes and exit codes.
QString reference_text();

}  // namespace command_line
