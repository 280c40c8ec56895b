// vlc-artifacts: runs the plug-in on an evidence tree without the forensic
// suite, the way the suite does, and reports what it found.
//
//   vlc-artifacts [run] --source DIR [options]   extract from an evidence tree
//   vlc-artifacts demo [--out DIR]                write sample trees and run on each
//   vlc-artifacts decipher-log FILE               print an enciphered debug log
//   vlc-artifacts report --out DIR                 make the report of an existing result again

#include <QApplication>
#include <QCommandLineParser>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <csignal>
#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

#include "command_line.h"
#include "encryptor_string.h"
#include "plugin_session.h"
#include "report_commands.h"
#include "report_writer.h"
#include "run_checks.h"
#include "result_summary.h"
#include "sample_trees.h"
#include "source_layout.h"

namespace {

volatile std::sig_atomic_t g_interrupted = 0;
QStringList g_command_line;  // as given, for the run record

void on_interrupt(int)
{
    g_interrupted = 1;
    // A second Ctrl-C ends the program at once.
    std::signal(SIGINT, SIG_DFL);
}

void out(const QString& text)
{
    std::fputs(text.toLocal8Bit().constData(), stdout);
    std::fflush(stdout);
}

void err(const QString& text)
{
    std::fputs(("vlc-artifacts: " + text + "\n").toLocal8Bit().constData(), stderr);
}

// Checks the source and fills in what the layout tells. Returns an exit code
// other than exit_code::ok on a problem, with one line on stderr.
int resolve_source(run_arguments* parsed)
{
    session_options& s = parsed->session;
    const QFileInfo root(s.source_root);
    if (!root.exists()) {
        err("the source " + s.source_root + " does not exist");
        return exit_code::usage;
    }
    if (!root.isDir() || !root.isReadable() || !root.isExecutable()) {
        err("the source " + s.source_root + " is not a readable folder");
        return exit_code::usage;
    }
    s.source_root = root.absoluteFilePath();
    if (parsed->os_auto) {
        s.os_scheme = source_layout::detect_os_scheme(s.source_root);
        if (s.os_scheme.isEmpty()) {
            err("cannot tell the system of " + s.source_root
                + " from its layout; pass --os macOS, winOS, androidOS or iOS_UID");
            return exit_code::usage;
        }
    }
    if (s.users.isEmpty())
        s.users = source_layout::default_users(s.source_root, s.os_scheme);
    s.out_dir = QFileInfo(s.out_dir).absoluteFilePath();
    if (parsed->plugin_path.isEmpty())
        parsed->plugin_path = plugin_session::default_plugin_path();
    return exit_code::ok;
}

// Live progress on a terminal; otherwise one line on stdout per table done,
// so that a log of the run shows how far it came.
class progress_display
{
public:
    explicit progress_display(int tables) : m_tables(tables), m_live(isatty(fileno(stderr))) {}

    void show(qint64 records, int tabs)
    {
        if (m_live) {
            std::fprintf(stderr, "\rrecords found: %lld   tables done: %d of %d   ", static_cast<long long>(records),
                         tabs, m_tables);
            std::fflush(stderr);
        } else if (tabs > m_tabs_shown) {
            out(QString("tables done: %1 of %2, records found: %3\n").arg(tabs).arg(m_tables).arg(records));
        }
        m_tabs_shown = qMax(m_tabs_shown, tabs);
    }
    void end() const
    {
        if (m_live)
            std::fputs("\n", stderr);
    }

private:
    int m_tables;
    bool m_live;
    int m_tabs_shown = 0;
};

int selected_tables_read(const session_options& s)
{
    int count = 0;
    for (const QString& table : source_layout::tables_read(s.os_scheme))
        count += s.tables.contains(table) ? 1 : 0;
    return count;
}

QString elapsed_text(qint64 ms)
{
    if (ms < 60000)
        return QString::number(ms / 1000.0, 'f', 1) + " s";
    return QString("%1 min %2 s").arg(ms / 60000).arg((ms / 1000) % 60);
}

// The summary after a run, and its exit code.
int report_run(const run_arguments& parsed, const plugin_session& session, const run_checks::survey& survey,
               qint64 elapsed_ms)
{
    const session_options& s = parsed.session;
    out(QString("records found: %1, tables done: %2 of %3\n")
            .arg(session.records())
            .arg(session.tabs())
            .arg(selected_tables_read(s)));
    const QString database = plugin_session::result_database_path(s.out_dir);
    if (!QFileInfo::exists(database)) {
        err("no result database was written at " + database + " (is the output folder writable?)");
        return exit_code::failed;
    }
    const auto counts = result_summary::count_rows(database, s.tables);
    out(result_summary::format_table(counts));
    const auto per_user = result_summary::rows_per_user(database, s.tables);
    if (!per_user.isEmpty()) {
        out("rows per user:\n");
        for (const auto& entry : per_user)
            out(QString("  %1  %2\n").arg(entry.first, -14).arg(entry.second, 8));
    }
    out("elapsed:  " + elapsed_text(elapsed_ms) + "\n");
    out("result database: " + QDir::toNativeSeparators(database) + "\n");

    for (const QString& cut_off : session.cut_offs())
        err("warning: cut off at a limit: " + cut_off);
    if (session.cut_offs_not_kept() > 0)
        err(QString("warning: %1 more cut-offs; the debug log names them").arg(session.cut_offs_not_kept()));
    for (const auto& entry : counts) {
        if (entry.second < 0) {
            err("the result table " + entry.first + " could not be read in " + database
                + " (is another program holding it locked?)");
            return exit_code::failed;
        }
    }
    if (session.cancelled() || g_interrupted) {
        out("the run was cancelled; rows written before the cancel are kept\n");
        err("cancelled; the rows written before the cancel are kept in " + database);
        return exit_code::cancelled;
    }
    if (!survey.nothing_to_extract.isEmpty() && session.records() == 0) {
        out("nothing was extracted: " + survey.nothing_to_extract + "\n");
        err("nothing was extracted: " + survey.nothing_to_extract);
        return exit_code::nothing_extracted;
    }
    if (!survey.nothing_to_extract.isEmpty())
        err("warning: " + survey.nothing_to_extract);
    return exit_code::ok;
}

// Writes the report beside a result and names its front page.
int write_report_of(const report_request& report, QString* report_index = nullptr)
{
    QString index;
    QString problem;
    if (!write_report(report, &index, &problem)) {
        err("the report could not be written: " + problem);
        return exit_code::failed;
    }
    out("report: " + QDir::toNativeSeparators(index) + "\n");
    if (report_index)
        *report_index = index;
    return exit_code::ok;
}

// Runs one extraction after the checks; prints progress and the summary,
// then writes the report beside the result.
int run_extraction(const run_arguments& parsed, QString* report_index = nullptr)
{
    session_options s = parsed.session;
    const run_checks::refusal refused = run_checks::check_output(parsed);
    if (refused.exit_code != exit_code::ok) {
        err(refused.text);
        return refused.exit_code;
    }
    const run_checks::survey survey = run_checks::survey_source(parsed);
    plugin_session session;
    QString problem;
    if (!session.load(parsed.plugin_path, &problem)) {
        err(problem);
        return exit_code::failed;
    }

    out("source:   " + QDir::toNativeSeparators(s.source_root) + " (" + s.os_scheme + ")\n");
    out("users:    " + (s.users.isEmpty() ? QString("(none)") : s.users.join(", ")) + "\n");
    out("tables:   " + s.tables.join(", ") + "\n");
    for (const QString& warning : survey.warnings)
        err("warning: " + warning);

    progress_display progress(selected_tables_read(s));
    session.on_progress = [&session, &progress](qint64 records, int tabs) {
        if (g_interrupted)
            session.request_cancel();
        progress.show(records, tabs);
    };
    report_commands::debug_log_tap debug_log;
    report_commands::tap_debug_log(&s, &debug_log);
    const QDateTime started = QDateTime::currentDateTimeUtc();
    QElapsedTimer clock;
    clock.start();
    std::signal(SIGINT, on_interrupt);
    session.run(s);
    std::signal(SIGINT, SIG_DFL);
    progress.end();
    const int status = report_run(parsed, session, survey, clock.elapsed());
    if (status == exit_code::failed)
        return status;
    // A cancelled run, or one that found nothing, has a report too: it says
    // what was kept and what was looked for.
    const bool cancelled = session.cancelled() || g_interrupted;
    const int report_status = write_report_of(
        {s.out_dir, report_commands::record_of_run(parsed.session, g_command_line, started, cancelled),
         debug_log.path, debug_log.offset},
        report_index);
    return report_status != exit_code::ok ? report_status : status;
}

int command_run(const QStringList& args)
{
    run_arguments parsed;
    QString problem;
    switch (command_line::parse_run(args, &parsed, &problem)) {
    case command_line::parsed::answered:
        return exit_code::ok;
    case command_line::parsed::usage_error:
        err(problem + " (see --help)");
        return exit_code::usage;
    case command_line::parsed::proceed:
        break;
    }
    const int source_status = resolve_source(&parsed);
    if (source_status != exit_code::ok)
        return source_status;
    return run_extraction(parsed);
}

int command_demo(const QStringList& args)
{
    QCommandLineParser parser;
    parser.addOptions({
        {"out", "Where the sample trees and their results go (default ./vlc_artifacts_demo).", "DIR",
         "vlc_artifacts_demo"},
        {"plugin", "The plug-in library (default: next to this program).", "PATH"},
    });
    QString problem;
    const auto outcome = command_line::parse(parser, args, "Usage: vlc-artifacts demo [--out DIR] [--plugin PATH]\n",
                                             command_line::reference_text(), &problem);
    if (outcome == command_line::parsed::answered)
        return exit_code::ok;
    if (outcome == command_line::parsed::usage_error || !parser.positionalArguments().isEmpty()) {
        err((problem.isEmpty() ? "unknown demo argument '" + parser.positionalArguments().first() + "'" : problem)
            + " (see --help)");
        return exit_code::usage;
    }
    const QString out_dir = parser.value("out");
    const QString plugin_path = parser.value("plugin");
    const QString base = QFileInfo(out_dir).absoluteFilePath();
    int status = exit_code::ok;
    QStringList reports;
    for (const sample_tree& sample : sample_trees()) {
        const QString root = base + "/samples/" + sample.folder_name;
        QDir(root).removeRecursively();
        QString problem;
        if (!QDir().mkpath(root) || !sample.write(root, &problem)) {
            err("cannot write the " + sample.os_scheme + " sample tree: " + problem);
            return exit_code::failed;
        }
        out("\n== " + sample.os_scheme + " sample ==\n");
        run_arguments parsed;
        parsed.session.source_root = root;
        parsed.session.os_scheme = sample.os_scheme;
        parsed.session.users = sample.users;
        parsed.session.tables = result_summary::all_tables();
        parsed.session.out_dir = base + "/results/" + sample.folder_name;
        parsed.session.clear = true;
        parsed.os_auto = false;
        parsed.plugin_path = plugin_path;
        QDir(parsed.session.out_dir).removeRecursively();
        const int source_status = resolve_source(&parsed);
        if (source_status != exit_code::ok)
            return source_status;
        QString report;
        const int run_status = run_extraction(parsed, &report);
        if (run_status != exit_code::ok)
            status = run_status;
        if (!report.isEmpty())
            reports << QDir::toNativeSeparators(report);
    }
    out("\nreports (open in a browser):\n  " + reports.join("\n  ") + "\n");
    return status;
}

int command_report(const QStringList& args)
{
    QCommandLineParser parser;
    parser.addOptions({
        {"out", "The output folder of a run: its Artifacts_Result/ is read, report/ is written beside it.", "DIR"},
        {"source", "The evidence root, to look for and hash its files where the run kept no record of them.",
         "DIR"},
        {"debug-log", "The plug-in's debug log of the run, for what was not found or left out.", "FILE"},
    });
    QString problem;
    const auto outcome =
        command_line::parse(parser, args, "Usage: vlc-artifacts report --out DIR [--source DIR] [--debug-log FILE]\n",
                            command_line::reference_text(), &problem);
    if (outcome == command_line::parsed::answered)
        return exit_code::ok;
    if (outcome == command_line::parsed::usage_error || !parser.positionalArguments().isEmpty() || !parser.isSet("out")) {
        err((problem.isEmpty() ? QString("report takes --out DIR") : problem) + " (see --help)");
        return exit_code::usage;
    }
    const QString source = parser.isSet("source") ? QFileInfo(parser.value("source")).absoluteFilePath() : QString();
    if (!source.isEmpty() && !QFileInfo(source).isDir()) {
        err("the source " + source + " is not a readable folder");
        return exit_code::usage;
    }
    const QString out_dir = QFileInfo(parser.value("out")).absoluteFilePath();
    return write_report_of(
        {out_dir, report_commands::record_of_result(out_dir, source, g_command_line), parser.value("debug-log"), 0});
}

int command_decipher(const QStringList& args)
{
    QCommandLineParser parser;
    parser.addPositionalArgument("FILE", "An enciphered debug log.");
    QString problem;
    const auto outcome = command_line::parse(parser, args, "Usage: vlc-artifacts decipher-log FILE\n",
                                             command_line::reference_text(), &problem);
    if (outcome == command_line::parsed::answered)
        return exit_code::ok;
    if (outcome == command_line::parsed::usage_error) {
        err(problem + " (see --help)");
        return exit_code::usage;
    }
    if (parser.positionalArguments().size() != 1) {
        err("decipher-log takes one file (see --help)");
        return exit_code::usage;
    }
    const QString path = parser.positionalArguments().first();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        err("cannot read " + path + ": " + file.errorString());
        return exit_code::usage;
    }
    encryptor_string cipher;
    int bad_records = 0;
    // Records are Base64 texts, each ended by the separator. Debug logs are
    // written by us and stay small, so the file is read in one go.
    const QString text = QString::fromLocal8Bit(file.readAll());
    for (const QString& record : text.split("<[{()}]>", Qt::SkipEmptyParts)) {
        const QString trimmed = record.trimmed();
        if (trimmed.isEmpty())
            continue;
        const QString line = cipher.decryptToString(trimmed);
        if (cipher.lastError() != encryptor_string::ErrorNoError) {
            ++bad_records;
            continue;
        }
        out(line + "\n");
    }
    if (bad_records > 0) {
        err(QString::number(bad_records) + " record(s) could not be deciphered");
        return exit_code::failed;
    }
    return exit_code::ok;
}

}  // namespace

// Headless Qt wants a private runtime folder; without one it warns on every
// start, which would clutter the one-line error contract of this program.
void ensure_runtime_dir()
{
    if (!qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
        return;
    const QByteArray dir = QDir::tempPath().toLocal8Bit() + "/runtime-" + QByteArray::number(uint(getuid()));
    mkdir(dir.constData(), 0700);
    chmod(dir.constData(), 0700);
    qputenv("XDG_RUNTIME_DIR", dir);
}

int main(int argc, char** argv)
{
    // The controller is a widget, so a QApplication is needed, but nothing is
    // ever shown: run without a display.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    ensure_runtime_dir();
    // Qt reads options such as -plugin and -platform from the command line it
    // is given; ours are not for it, so it sees only the program's name.
    QStringList args;
    for (int i = 1; i < argc; ++i)
        args << QString::fromLocal8Bit(argv[i]);
    g_command_line = QStringList{QString::fromLocal8Bit(argv[0])} + args;
    int qt_argc = 1;
    QApplication app(qt_argc, argv);

    if (args.isEmpty()) {
        err("no source given (see --help)");
        return exit_code::usage;
    }
    // The first word may name a command; without one the run is meant.
    const struct
    {
        const char* name;
        int (*run)(const QStringList& args);
    } commands[] = {
        {"run", command_run},
        {"demo", command_demo},
        {"decipher-log", command_decipher},
        {"report", command_report},
    };
    for (const auto& command : commands) {
        if (args.first() == QLatin1String(command.name))
            return command.run(args.mid(1));
    }
    return command_run(args);
}
