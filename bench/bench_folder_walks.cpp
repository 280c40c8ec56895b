// Memory of the folder walks: one user whose cover-art cache holds N pictures
// in one folder and whose jump-list folder holds N other entries beside the
// player's two jump lists, run end to end through the real plug-in (Windows
// album_art and recents); and, read as a macOS home, a media library naming
// that folder, whose size and entry count are walked (macOS media_library).
// Each run is a fresh process so that its peak memory is its own; with walks
// that stream, the peak must not grow with N.
// Usage: bench_folder_walks [--sizes 10000,1000000] [--parent DIR] [--plugin PATH]
// The trees go below --parent (default /dev/shm: creating a million inodes on
// a disk-backed temporary folder takes far longer than the run measured).

#include "bench_support.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

#include "compound_file_writer.h"
#include "bench_session.h"
#include "shell_link_writer.h"
#include "test_support.h"
#include "tree_writer.h"
#include "xspf_writer.h"

namespace {

const QString k_user = "walker";
const QString k_art = "Users/walker/AppData/Roaming/vlc/art/artistalbum/one";
const QString k_recent = "Users/walker/AppData/Roaming/Microsoft/Windows/Recent/AutomaticDestinations";

// Empty files, made with the system calls alone: a million of them.
bool make_empty_files(const QString& folder, const QString& pattern, int count)
{
    if (!QDir().mkpath(folder))
        return false;
    const QByteArray base = QFile::encodeName(folder) + "/";
    for (int i = 0; i < count; ++i) {
        const QByteArray path = base + pattern.arg(i, 7, 10, QChar('0')).toUtf8();
        const int fd = ::open(path.constData(), O_CREAT | O_WRONLY, 0644);
        if (fd < 0)
            return false;
        ::close(fd);
    }
    return true;
}

bool write_tree(const QString& root, int entries)
{
    QList<QByteArray> links;
    for (int i = 0; i < 20; ++i)
        links << shell_link_writer::build(
            shell_link_writer::media_link(QString("C:\\Users\\walker\\Music\\%1.mp3").arg(i), 1700000000 + i, 1000));
    xspf_writer library;
    xspf_entry folder;
    folder.location = "file:///" + k_art;
    if (!library.open(root + "/Users/walker/Library/Application Support/org.videolan.vlc/ml.xspf"))
        return false;
    library.add(folder);
    QString error;
    return library.close() && make_empty_files(root + "/" + k_art, "cover%1.png", entries)
           && make_empty_files(root + "/" + k_recent, "%1.customDestinations-ms", entries)
           && tree_writer::write_file(root, k_recent + "/9fda41b86ddcf1db.automaticDestinations-ms",
                                      compound_file_writer::jump_list(links), &error);
}

struct scheme_run
{
    QString scheme;
    QStringList tables;
};

const scheme_run k_runs[] = {{"winOS", {"album_art", "recents"}}, {"macOS", {"media_library"}}};

// Child: one extraction; prints seconds, the rows of each table, peak KiB.
int child_run(const QString& plugin, const QString& source, const QString& out, int which)
{
    const scheme_run& run = k_runs[which];
    session_options options;
    options.source_root = source;
    options.os_scheme = run.scheme;
    options.out_dir = out;
    options.users = {k_user};
    options.tables = run.tables;
    const double seconds = bench_session::timed_run(plugin, options);
    if (seconds < 0)
        return 1;
    const QString database = plugin_session::result_database_path(out);
    QStringList rows;
    for (const QString& table : run.tables)
        rows << QString("%1 %2 rows").arg(test_support::count_rows(database, table)).arg(table);
    std::printf("%.3f s, %s, peak memory %.1f MB\n", seconds, qPrintable(rows.join(", ")),
                bench_support::peak_memory_kb() / 1024.0);
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    bench_support::headless_application headless(argc, argv);
    const QStringList args = headless.arguments();
    QString plugin = QStringLiteral(VLC_BENCH_PLUGIN_PATH);
    QString parent = "/dev/shm";
    QStringList sizes = {"10000", "1000000"};
    for (int i = 1; i < args.size(); ++i) {
        const QString a = args.at(i);
        if (a == "--child-run" && i + 3 < args.size())
            return child_run(plugin, args.at(i + 1), args.at(i + 2), args.at(i + 3).toInt() % 2);
        if (i + 1 >= args.size())
            break;
        if (a == "--sizes")
            sizes = args.at(++i).split(',');
        else if (a == "--parent")
            parent = args.at(++i);
        else if (a == "--plugin")
            plugin = args.at(++i);
    }

    for (const QString& size : sizes) {
        const int entries = size.toInt();
        QTemporaryDir scratch(parent + "/bench_folder_walks_XXXXXX");
        const QString source = scratch.filePath("source");
        QElapsedTimer writing;
        writing.start();
        if (!write_tree(source, entries)) {
            std::fprintf(stderr, "could not write the tree below %s\n", qPrintable(parent));
            return 1;
        }
        std::printf("%d entries in each folder written in %.1f s\n", entries, writing.elapsed() / 1000.0);
        std::fflush(stdout);
        for (int which = 0; which < 2; ++which) {
            QProcess child;
            child.start(QCoreApplication::applicationFilePath(),
                        {"--plugin", plugin, "--child-run", source, scratch.filePath(QString("out%1").arg(which)),
                         QString::number(which)});
            if (!child.waitForFinished(-1) || child.exitCode() != 0) {
                std::fprintf(stderr, "run failed: %s\n", child.readAllStandardError().constData());
                return 1;
            }
            std::printf("%d entries, %s: %s", entries, qPrintable(k_runs[which].scheme),
                        child.readAllStandardOutput().constData());
            std::fflush(stdout);
        }
    }
    return 0;
}
