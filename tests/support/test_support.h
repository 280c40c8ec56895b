#pragma once

// Helpers for tests: where the built artifacts and shared samples are, running
// the host program, reading result databases, and snapshots of evidence trees.

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>

#include <functional>

namespace test_support {

// ../shared/fixtures beside the source tree (CI has shared/ beside the clone).
QString shared_fixtures_dir();
QString plugin_library_path();
QString host_program_path();
QString source_dir();

struct process_result
{
    int exit_code = -1;
    QString out;
    QString err;
    bool finished = false;
};

// Runs the host program with arguments; waits at most timeout_ms.
process_result run_host(const QStringList& arguments, int timeout_ms = 300000);

// Every row of a statement on a database opened read-only, values as text
// (NULL as an empty QVariant).
QList<QVariantList> query_rows(const QString& database_path, const QString& statement);
qint64 count_rows(const QString& database_path, const QString& table);

// One line per row: "col=value|col=value", columns in table order, the row
// id and the columns in `masked` shown as "*", line feeds in values as "\n".
// Rows in row-id order.
QString dump_table(const QString& database_path, const QString& table, const QStringList& masked = {});

// Compares text with tests/golden/<name>; with VLC_UPDATE_GOLDEN=1 in the
// environment it rewrites the golden file instead. Returns an empty string on
// a match, otherwise a readable difference.
QString compare_with_golden(const QString& name, const QString& text);

// Content hash, size, modification time and mode of every entry below root
// (links not followed), keyed by relative path.
QMap<QString, QByteArray> snapshot_tree(const QString& root);

// One evidence tree written by a generator into a temporary folder and the host
// program run on it: the shared frame of every end-to-end test.
struct tree_run
{
    QTemporaryDir source;
    QTemporaryDir out;
    process_result result;
    // The evidence root's folder inside source, for a tree that keeps files
    // beside its evidence (outside the root); empty: source itself. Set it
    // before write().
    QString below;

    QString root() const { return below.isEmpty() ? source.path() : source.filePath(below); }
    // Writes the tree into source; false (with the reason in result.err) when it could not.
    bool write(const std::function<bool(const QString& folder, QString* error)>& writer);
    // Runs the host with --source root(), --out and a plain --debug-log, then
    // extra; true when it exited 0.
    bool run(const QStringList& extra = {});
    QString database() const { return out.path() + "/Artifacts_Result/VLC/VLC.sqlite"; }
    QString debug_log() const { return out.filePath("debug.log"); }
    // The host's report, every table's rows (sorted within the table, NULL
    // columns left out), then the debug log's messages, with the evidence
    // root shown as "<source>", the folder beside it as "<beside>", the
    // output folder as "<out>" and the masked columns as "*" (a mask
    // "column" applies to every table, "table.column" to one): the text a
    // golden file holds.
    QString golden_text(const QStringList& masked = {}) const;
};

// Every entry below a folder, sorted: its relative path with its size, or
// "/" after a folder, or " link" after a link; joined by ", ".
QString listing(const QString& folder);

// Lines of a plain debug log file.
QStringList read_lines(const QString& path);

// The message part of debug lines ("...]:-- message").
QStringList log_messages(const QStringList& lines);

}  // namespace test_support
