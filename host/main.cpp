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
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <csignal>
#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

#include "encryptor_string.h"
#include "plugin_session.h"
#include "report_commands.h"
#include "report_writer.h"
#include "result_summary.h"
#include "sample_trees.h"
#include "source_layout.h"

namespace {

constexpr int k_exit_ok = 0;
constexpr int k_exit_failed = 1;
constexpr int k_exit_usage = 2;

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

const char* k_usage =
    "usage: vlc-artifacts [run] --source DIR [--os auto|macOS|winOS|androidOS|iOS_UID]\n"
    "                     [--user NAME]... [--tables NAME,NAME] [--out DIR] [--engine N]\n"
    "                     [--source-number N] [--source-type TEXT] [--metadata-keys KEY,KEY]\n"
    "                     [--debug-log FILE] [--debug-terminal] [--debug-encrypt] [--clear]\n"
    "                     [--plugin PATH]\n"
    "       vlc-artifacts demo [--out DIR] [--plugin PATH]\n"
    "       vlc-artifacts decipher-log FILE\n"
    "       vlc-artifacts report --out DIR [--source DIR] [--debug-log FILE]\n";

struct run_arguments
{
    session_options session;
    QString plugin_path;
    bool os_auto = true;
};

// Reads "--name value" pairs and flags; false with a reason on a usage error.
bool parse_run_arguments(const QStringList& args, run_arguments* parsed, QString* problem)
{
    session_options& s = parsed->session;
    s.out_dir = "vlc_artifacts_result";
    bool users_given = false;
    for (int i = 0; i < args.size(); ++i) {
        const QString& a = args.at(i);
        auto value = [&](QString* into) {
            if (i + 1 >= args.size()) {
                *problem = a + " needs a value";
                return false;
            }
            *into = args.at(++i);
            return true;
        };
        auto number = [&](int* into) {
            QString text;
            if (!value(&text))
                return false;
            bool ok = false;
            *into = text.toInt(&ok);
            if (!ok)
                *problem = a + " needs a whole number, not '" + text + "'";
            return ok;
        };
        QString text;
        if (a == "--source") {
            if (!value(&s.source_root))
                return false;
        } else if (a == "--os") {
            if (!value(&text))
                return false;
            parsed->os_auto = (text == "auto");
            if (!parsed->os_auto) {
                if (!QStringList{"macOS", "winOS", "androidOS", "iOS_UID"}.contains(text)) {
                    *problem = "--os takes auto, macOS, winOS, androidOS or iOS_UID, not '" + text + "'";
                    return false;
                }
                s.os_scheme = text;
            }
        } else if (a == "--user") {
            if (!value(&text))
                return false;
            s.users << text;
            users_given = true;
        } else if (a == "--tables") {
            if (!value(&text))
                return false;
            for (const QString& t : text.split(',', Qt::SkipEmptyParts)) {
                if (!result_summary::all_tables().contains(t.trimmed())) {
                    *problem = "unknown table '" + t + "'; tables are " + result_summary::all_tables().join(",");
                    return false;
                }
                s.tables << t.trimmed();
            }
        } else if (a == "--metadata-keys") {
            if (!value(&text))
                return false;
            s.metadata_keys = text.split(',', Qt::SkipEmptyParts);
        } else if (a == "--out") {
            if (!value(&s.out_dir))
                return false;
        } else if (a == "--engine") {
            if (!number(&s.engine))
                return false;
        } else if (a == "--source-number") {
            if (!number(&s.source_number))
                return false;
        } else if (a == "--source-type") {
            if (!value(&s.source_type))
                return false;
        } else if (a == "--debug-log") {
            if (!value(&s.debug_log))
                return false;
        } else if (a == "--debug-terminal") {
            s.debug_terminal = true;
        } else if (a == "--debug-encrypt") {
            s.debug_encrypt = true;
        } else if (a == "--clear") {
            s.clear = true;
        } else if (a == "--plugin") {
            if (!value(&parsed->plugin_path))
                return false;
        } else {
            *problem = "unknown argument '" + a + "'";
            return false;
        }
    }

    if (s.source_root.isEmpty()) {
        *problem = "--source DIR is required";
        return false;
    }
    if (s.tables.isEmpty())
        s.tables = result_summary::all_tables();
    if (!users_given)
        s.users.clear();
    return true;
}

// Checks the source and fills in what the layout tells. Returns an exit code
// other than k_exit_ok on a problem, with one line on stderr.
int resolve_source(run_arguments* parsed)
{
    session_options& s = parsed->session;
    const QFileInfo root(s.source_root);
    if (!root.exists()) {
        err("the source " + s.source_root + " does not exist");
        return k_exit_usage;
    }
    if (!root.isDir() || !root.isReadable() || !root.isExecutable()) {
        err("the source " + s.source_root + " is not a readable folder");
        return k_exit_usage;
    }
    s.source_root = root.absoluteFilePath();
    if (parsed->os_auto) {
        s.os_scheme = source_layout::detect_os_scheme(s.source_root);
        if (s.os_scheme.isEmpty()) {
            err("cannot tell the system of " + s.source_root
                + " from its layout; pass --os macOS, winOS, androidOS or iOS_UID");
            return k_exit_usage;
        }
    }
    if (s.users.isEmpty())
        s.users = source_layout::default_users(s.source_root, s.os_scheme);
    s.out_dir = QFileInfo(s.out_dir).absoluteFilePath();
    if (parsed->plugin_path.isEmpty())
        parsed->plugin_path = plugin_session::default_plugin_path();
    return k_exit_ok;
}

// Live progress on a terminal; piped output gets only the final line.
void show_progress(qint64 records, int tabs)
{
    if (!isatty(fileno(stderr)))
        return;
    std::fprintf(stderr, "\rrecords found: %lld   tables done: %d   ", static_cast<long long>(records), tabs);
    std::fflush(stderr);
}

// Runs one extraction; prints progress and the summary, then writes the
// report beside the result.
int run_extraction(const run_arguments& parsed, QString* report_index = nullptr)
{
    session_options s = parsed.session;
    report_commands::debug_log_tap debug_log;
    report_commands::tap_debug_log(&s, &debug_log);
    const QDateTime started = QDateTime::currentDateTimeUtc();
    plugin_session session;
    QString problem;
    if (!session.load(parsed.plugin_path, &problem)) {
        err(problem);
        return k_exit_failed;
    }

    out("source:   " + QDir::toNativeSeparators(s.source_root) + " (" + s.os_scheme + ")\n");
    out("users:    " + (s.users.isEmpty() ? QString("(none)") : s.users.join(", ")) + "\n");
    out("tables:   " + s.tables.join(", ") + "\n");

    session.on_progress = [&session](qint64 records, int tabs) {
        if (g_interrupted)
            session.request_cancel();
        show_progress(records, tabs);
    };
    std::signal(SIGINT, on_interrupt);
    session.run(s);
    std::signal(SIGINT, SIG_DFL);
    if (isatty(fileno(stderr)))
        std::fputs("\n", stderr);
    out(QString("records found: %1, tables done: %2\n").arg(session.records()).arg(session.tabs()));

    const QString database = plugin_session::result_database_path(s.out_dir);
    if (!QFileInfo::exists(database)) {
        err("no result database was written at " + database + " (is the output folder writable?)");
        return k_exit_failed;
    }
    const auto counts = result_summary::count_rows(database, s.tables);
    out(result_summary::format_table(counts));
    out("result database: " + QDir::toNativeSeparators(database) + "\n");
    if (session.cancelled() || g_interrupted)
        out("the run was cancelled; rows written before the cancel are kept\n");
    for (const auto& entry : counts) {
        if (entry.second < 0) {
            err("the result table " + entry.first + " could not be read in " + database
                + " (is another program holding it locked?)");
            return k_exit_failed;
        }
    }
    report_request report{s.out_dir,
                          report_commands::record_of_run(parsed.session, g_command_line, started,
                                                         session.cancelled() || g_interrupted),
                          debug_log.path, debug_log.offset};
    QString index;
    if (!write_report(report, &index, &problem)) {
        err("the report could not be written: " + problem);
        return k_exit_failed;
    }
    out("report: " + QDir::toNativeSeparators(index) + "\n");
    if (report_index)
        *report_index = index;
    return k_exit_ok;
}

int command_run(const QStringList& args)
{
    run_arguments parsed;
    QString problem;
    if (!parse_run_arguments(args, &parsed, &problem)) {
        err(problem + " (see --help)");
        return k_exit_usage;
    }
    const int source_status = resolve_source(&parsed);
    if (source_status != k_exit_ok)
        return source_status;
    return run_extraction(parsed);
}

int command_demo(const QStringList& args)
{
    QString out_dir = "vlc_artifacts_demo";
    QString plugin_path;
    for (int i = 0; i < args.size(); ++i) {
        if (args.at(i) == "--out" && i + 1 < args.size()) {
            out_dir = args.at(++i);
        } else if (args.at(i) == "--plugin" && i + 1 < args.size()) {
            plugin_path = args.at(++i);
        } else {
            err("unknown demo argument '" + args.at(i) + "' (see --help)");
            return k_exit_usage;
        }
    }
    const QString base = QFileInfo(out_dir).absoluteFilePath();
    int status = k_exit_ok;
    QStringList reports;
    for (const sample_tree& sample : sample_trees()) {
        const QString root = base + "/samples/" + sample.folder_name;
        QDir(root).removeRecursively();
        QString problem;
        if (!QDir().mkpath(root) || !sample.write(root, &problem)) {
            err("cannot write the " + sample.os_scheme + " sample tree: " + problem);
            return k_exit_failed;
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
        if (source_status != k_exit_ok)
            return source_status;
        QString report;
        const int run_status = run_extraction(parsed, &report);
        if (run_status != k_exit_ok)
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
        {"out", "The output folder of the run: Artifacts_Result/ lies in it, report/ is written beside.", "DIR"},
        {"source", "The evidence root, to look for and hash its files where the run kept no record.", "DIR"},
        {"debug-log", "The plug-in's debug log of the run, for what was not found or left out.", "FILE"},
    });
    if (!parser.parse(QStringList{"vlc-artifacts report"} + args) || !parser.positionalArguments().isEmpty()
        || !parser.isSet("out")) {
        err((parser.errorText().isEmpty() ? QString("report takes --out DIR [--source DIR] [--debug-log FILE]")
                                          : parser.errorText())
            + " (see --help)");
        return k_exit_usage;
    }
    const QString out_dir = QFileInfo(parser.value("out")).absoluteFilePath();
    const QString source = parser.isSet("source") ? QFileInfo(parser.value("source")).absoluteFilePath() : QString();
    if (!source.isEmpty() && !QFileInfo(source).isDir()) {
        err("the source " + source + " is not a readable folder");
        return k_exit_usage;
    }
    report_request report{out_dir, report_commands::record_of_result(out_dir, source, g_command_line),
                          parser.value("debug-log"), 0};
    QString index;
    QString problem;
    if (!write_report(report, &index, &problem)) {
        err("the report could not be written: " + problem);
        return k_exit_failed;
    }
    out("report: " + QDir::toNativeSeparators(index) + "\n");
    return k_exit_ok;
}

int command_decipher(const QStringList& args)
{
    if (args.size() != 1) {
        err("decipher-log takes one file (see --help)");
        return k_exit_usage;
    }
    QFile file(args.first());
    if (!file.open(QIODevice::ReadOnly)) {
        err("cannot read " + args.first() + ": " + file.errorString());
        return k_exit_usage;
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
        return k_exit_failed;
    }
    return k_exit_ok;
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
        return k_exit_usage;
    }
    if (args.first() == "--help" || args.first() == "-h") {
        std::fputs(k_usage, stdout);
        return k_exit_ok;
    }
    const QString command = args.first();
    if (command == "demo")
        return command_demo(args.mid(1));
    if (command == "decipher-log")
        return command_decipher(args.mid(1));
    if (command == "report")
        return command_report(args.mid(1));
    if (command == "run")
        args.removeFirst();
    return command_run(args);
}
