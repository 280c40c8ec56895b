#include "report_commands.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include "report_writer.h"
#include "result_reader.h"
#include "source_layout.h"

namespace report_commands {

void tap_debug_log(session_options* options, debug_log_tap* tap)
{
    if (!options->debug_log.isEmpty()) {
        tap->path = options->debug_log;
        tap->offset = QFileInfo(options->debug_log).size();
        return;
    }
    tap->temporary = std::make_unique<QTemporaryFile>(QDir::temp().filePath("vlc-artifacts-debug-XXXXXX.log"));
    if (!tap->temporary->open())
        return;  // no log to read: the report then names nothing from it
    tap->path = tap->temporary->fileName();
    tap->temporary->close();
    options->debug_log = tap->path;
}

run_record record_of_run(const session_options& options, const QStringList& command_line, const QDateTime& started,
                         bool cancelled)
{
    run_record record = run_record::for_this_build();
    record.started = started;
    record.ended = QDateTime::currentDateTimeUtc();
    record.command_line = command_line;
    record.source_root = options.source_root;
    record.os_scheme = options.os_scheme;
    record.users = options.users;
    record.tables = options.tables;
    record.engine = options.engine;
    record.cancelled = cancelled;
    return record;
}

namespace {

// The scheme a result's rows show, as the host program names schemes.
QString scheme_of_rows(const result_reader& db)
{
    for (const QString& table : db.tables()) {
        for (const auto& entry : db.rows_per_account(table)) {
            for (const char* scheme : {"macOS", "winOS", "androidOS", "iOS_UID"}) {
                if (!entry.scheme.isEmpty() && plugin_session::display_name_of(scheme) == entry.scheme)
                    return scheme;
            }
        }
    }
    return QString();
}

}  // namespace

run_record record_of_result(const QString& out_dir, const QString& source_root, const QStringList& command_line)
{
    QFile kept(report_folder(out_dir) + "/run.json");
    run_record record;
    const bool has_record = kept.open(QIODevice::ReadOnly);
    if (has_record) {
        record = run_record::from_json(QJsonDocument::fromJson(kept.readAll()).object());
    } else {
        record = run_record::for_this_build();
        result_reader db(plugin_session::result_database_path(out_dir));
        record.tables = db.tables();
        record.os_scheme = source_root.isEmpty() ? scheme_of_rows(db) : source_layout::detect_os_scheme(source_root);
        if (!source_root.isEmpty())
            record.users = source_layout::default_users(source_root, record.os_scheme);
    }
    if (!source_root.isEmpty() && record.source_root != source_root) {
        // Another place for the source: what was looked for is looked for there.
        record.source_root = source_root;
        record.looked_for.clear();
        record.evidence.clear();
    }
    record.report_made = QDateTime::currentDateTimeUtc();
    record.report_command_line = command_line;
    return record;
}

}  // namespace report_commands
