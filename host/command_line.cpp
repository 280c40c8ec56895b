#include "command_line.h"

#include <cstdio>

#include "build_version.h"
#include "result_summary.h"

namespace command_line {

namespace {

const QStringList k_schemes = {"macOS", "winOS", "androidOS", "iOS_UID"};

void print(const QString& text)
{
    std::fputs(text.toLocal8Bit().constData(), stdout);
    std::fflush(stdout);
}

// Qt's parser reports an unknown option or a missing value in its own words;
// ours name the argument as the examiner typed it.
QString usage_problem(const QCommandLineParser& parser, const QStringList& args)
{
    const QStringList unknown = parser.unknownOptionNames();
    if (!unknown.isEmpty())
        return "unknown argument '" + QString(unknown.first().size() == 1 ? "-" : "--") + unknown.first() + "'";
    // The only other failure is an option that takes a value standing last.
    if (!args.isEmpty() && args.last().startsWith('-'))
        return args.last() + " needs a value";
    return parser.errorText();
}

bool whole_number(const QCommandLineParser& parser, const QString& name, int* into, QString* problem)
{
    if (!parser.isSet(name))
        return true;
    const QString text = parser.value(name);
    bool ok = false;
    *into = text.toInt(&ok);
    if (!ok)
        *problem = "--" + name + " needs a whole number, not '" + text + "'";
    return ok;
}

// Names given once as "a,b" or in several options, in the order given.
QStringList listed(const QCommandLineParser& parser, const QString& name)
{
    QStringList names;
    for (const QString& value : parser.values(name)) {
        for (const QString& part : value.split(',', Qt::SkipEmptyParts))
            names << part.trimmed();
    }
    return names;
}

}  // namespace

parsed parse(QCommandLineParser& parser, const QStringList& args, const QString& usage, const QString& help_tail,
             QString* problem)
{
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsOptions);
    const QCommandLineOption help({"h", "help"}, "Show this help.");
    const QCommandLineOption version("version", "Show the program's version.");
    parser.addOption(help);
    parser.addOption(version);
    if (!parser.parse(QStringList{"vlc-artifacts"} + args)) {
        *problem = usage_problem(parser, args);
        return parsed::usage_error;
    }
    if (parser.isSet(help)) {
        // Qt's own text opens with a usage line of its making; ours names the commands.
        const QString own = parser.helpText();
        const qsizetype options = own.indexOf("Options:");
        print(usage + "\n" + (options < 0 ? own : own.mid(options)) + help_tail);
        return parsed::answered;
    }
    if (parser.isSet(version)) {
        print("vlc-artifacts " VLC_ARTIFACTS_VERSION "\n");
        return parsed::answered;
    }
    return parsed::proceed;
}

parsed parse_run(const QStringList& args, run_arguments* arguments, QString* problem)
{
    QCommandLineParser parser;
    parser.addOptions({
        {"source", "The evidence root (required); it is only ever read.", "DIR"},
        {"os", "The source's system: auto (the default) tells it from the layout; or " + k_schemes.join(", ") + ".",
         "SCHEME", "auto"},
        {"user", "An account to scan; repeat it for several. Default: the account folders under Users/.", "NAME"},
        {"tables", "The result tables to fill, comma-separated. Default: all of them.", "A,B"},
        {"out",
         "Where Artifacts_Result/VLC/VLC.sqlite is written (default ./vlc_artifacts_result). It may not lie inside "
         "the source.",
         "DIR", "vlc_artifacts_result"},
        {"engine", "The engine edition code; the plug-in extracts for 0, 1 and 2 (default 0).", "N", "0"},
        {"source-number", "The source's number, shown as SourceN in every row (default 1).", "N", "1"},
        {"source-type", "The source's second text, as the forensic suite passes it.", "TEXT"},
        {"metadata-keys", "macOS: further metadata attributes to report, comma-separated.", "KEY,KEY"},
        {"debug-log", "Write the plug-in's debug log to this file.", "FILE"},
        {"debug-terminal", "Print the plug-in's debug log on stderr."},
        {"debug-encrypt", "Encipher each line of the debug-log file (read it with decipher-log)."},
        {"clear", "Empty the selected tables of the result database the output folder holds, then extract."},
        {"append", "Add to the results the output folder already holds. An output folder with results needs "
                   "--clear or --append."},
        {"plugin", "The plug-in library (default: next to this program, or $VLC_ARTIFACTS_PLUGIN).", "PATH"},
    });
    const QString usage = "Usage: vlc-artifacts [run] --source DIR [options]\n"
                          "       vlc-artifacts demo [--out DIR] [--plugin PATH]\n"
                          "       vlc-artifacts decipher-log FILE\n"
                          "       vlc-artifacts report --out DIR [--source DIR] [--debug-log FILE]\n";
    const parsed outcome = parse(parser, args, usage, reference_text(), problem);
    if (outcome != parsed::proceed)
        return outcome;

    if (!parser.positionalArguments().isEmpty()) {
        *problem = "unknown argument '" + parser.positionalArguments().first() + "'";
        return parsed::usage_error;
    }
    session_options& s = arguments->session;
    s.source_root = parser.value("source");
    const QString os = parser.value("os");
    arguments->os_auto = (os == "auto");
    if (!arguments->os_auto) {
        if (!k_schemes.contains(os)) {
            *problem = "--os takes auto, macOS, winOS, androidOS or iOS_UID, not '" + os + "'";
            return parsed::usage_error;
        }
        s.os_scheme = os;
    }
    s.users = parser.values("user");
    s.tables = listed(parser, "tables");
    for (const QString& table : s.tables) {
        if (!result_summary::all_tables().contains(table)) {
            *problem = "unknown table '" + table + "'; tables are " + result_summary::all_tables().join(",");
            return parsed::usage_error;
        }
    }
    if (s.tables.isEmpty())
        s.tables = result_summary::all_tables();
    s.metadata_keys = listed(parser, "metadata-keys");
    s.out_dir = parser.value("out");
    if (!whole_number(parser, "engine", &s.engine, problem)
        || !whole_number(parser, "source-number", &s.source_number, problem))
        return parsed::usage_error;
    s.source_type = parser.value("source-type");
    s.debug_log = parser.value("debug-log");
    s.debug_terminal = parser.isSet("debug-terminal");
    s.debug_encrypt = parser.isSet("debug-encrypt");
    s.clear = parser.isSet("clear");
    arguments->append = parser.isSet("append");
    arguments->plugin_path = parser.value("plugin");

    if (s.source_root.isEmpty()) {
        *problem = "--source DIR is required";
        return parsed::usage_error;
    }
    return parsed::proceed;
}

QString reference_text()
{
    return "\nCommands:\n"
           "  run            extract from an evidence tree (the default command)\n"
           "  demo           write one sample tree per system and run on each\n"
           "  decipher-log   print an enciphered debug log as plain lines\n"
           "  report         make the report of an existing result again (every run writes one)\n"
           "\nTables:\n  "
           + result_summary::all_tables().join(", ") + "\n"
           + "\nSchemes:\n  " + k_schemes.join(", ") + "\n"
           + "\nExit status:\n"
             "  0    the run ended and wrote its results\n"
             "  1    the output could not be written, or the plug-in could not be loaded\n"
             "  2    a usage error, a source that does not exist or cannot be read, an output inside\n"
             "       the source, or an output that holds results without --clear or --append\n"
             "  3    nothing could be extracted, for the reason given on stderr\n"
             "  130  cancelled with Ctrl-C; the rows written before the cancel are kept\n";
}

}  // namespace command_line
