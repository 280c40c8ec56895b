// Speed and memory of the macOS media library end to end: a generated macOS
// tree whose library holds many tracks (half of their media files present)
// is extracted by the real plug-in, loaded by path as a host does.
// Reports tracks per second and the process's peak memory (ru_maxrss).
// Usage: bench_macos [--tracks N] [--plugin PATH] [--keep DIR (reused when it holds a tree)]

#include "bench_support.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QUrl>


#include <cstdio>

#include "plugin_session.h"
#include "tree_writer.h"
#include "xspf_writer.h"

namespace {

const char* const k_suffixes[] = {"mp4", "mkv", "mp3", "flac", "mov", "avi"};

// The library and, for every even track, its media file.
bool write_tree(const QString& root, int tracks)
{
    const QString home = root + "/Users/alice/";
    xspf_writer writer;
    if (!writer.open(home + "Library/Application Support/org.videolan.vlc/ml.xspf"))
        return false;
    for (int i = 0; i < tracks; ++i) {
        const QString relative = QString("Media/folder %1/track %2.%3")
                                     .arg(i % 100, 3, 10, QChar('0'))
                                     .arg(i, 6, 10, QChar('0'))
                                     .arg(k_suffixes[i % 6]);
        xspf_entry entry;
        entry.location = "file:///Users/alice/" + QString::fromUtf8(QUrl::toPercentEncoding(relative, "/"));
        entry.titles = {QString("Track %1").arg(i)};
        entry.creator = "Artist " + QString::number(i % 50);
        entry.duration = QString::number(60000 + i);
        entry.id = i;
        writer.add(entry);
        if (i % 2 == 0 && !tree_writer::write_file(home + relative, QByteArray()))
            return false;
    }
    return writer.close();
}

qint64 rows_in(const QString& database)
{
    qint64 rows = -1;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "bench_macos_count");
        db.setDatabaseName(database);
        if (db.open()) {
            QSqlQuery query("select count(*), sum(file_exist='YES') from media_library", db);
            if (query.next())
                rows = query.value(0).toLongLong();
        }
    }
    QSqlDatabase::removeDatabase("bench_macos_count");
    return rows;
}

}  // namespace

int main(int argc, char** argv)
{
    bench_support::headless_application headless(argc, argv);
    int tracks = 100000;
    QString plugin = VLC_BENCH_PLUGIN_PATH;
    QString keep;
    const QStringList args = headless.arguments();
    for (int i = 1; i + 1 < args.size(); i += 2) {
        if (args.at(i) == "--tracks")
            tracks = args.at(i + 1).toInt();
        else if (args.at(i) == "--plugin")
            plugin = args.at(i + 1);
        else if (args.at(i) == "--keep")
            keep = args.at(i + 1);
    }

    QTemporaryDir scratch;
    const QString base = keep.isEmpty() ? scratch.path() : keep;
    const QString source = base + "/source";
    QElapsedTimer timer;
    timer.start();
    // A kept tree is reused, so a profiler can watch the extraction alone.
    const bool reuse = !keep.isEmpty() && QFileInfo::exists(source);
    if (!reuse && !write_tree(source, tracks)) {
        std::fprintf(stderr, "bench_macos: cannot write the tree below %s\n", qPrintable(source));
        return 1;
    }
    std::printf("generated %d tracks (%d media files) in %.1f s, peak memory so far %ld KB\n", tracks,
                (tracks + 1) / 2, double(timer.elapsed()) / 1000.0, bench_support::peak_memory_kb());

    plugin_session session;
    QString error;
    if (!session.load(plugin, &error)) {
        std::fprintf(stderr, "bench_macos: %s\n", qPrintable(error));
        return 1;
    }
    session_options options;
    options.source_root = source + "/";
    options.os_scheme = "macOS";
    options.out_dir = base + "/out";
    QDir(options.out_dir).removeRecursively();
    options.users = {"alice"};
    options.tables = {"media_library"};
    timer.restart();
    const double cpu_before = bench_support::cpu_seconds();
    session.run(options);
    const double seconds = double(timer.nsecsElapsed()) / 1e9;
    const double cpu = bench_support::cpu_seconds() - cpu_before;
    const qint64 rows = rows_in(plugin_session::result_database_path(options.out_dir));
    const double rate = seconds > 0 ? double(rows) / seconds : 0;
    const long peak_kb = bench_support::peak_memory_kb();
    std::printf("media_library: %lld rows in %.2f s = %.0f tracks/s (target >= 20000) %s\n",
                static_cast<long long>(rows), seconds, rate, rate >= 20000 ? "ok" : "BELOW TARGET");
    // Other work on a shared machine stretches the wall time; the processor
    // time this run used does not depend on it.
    std::printf("processor time: %.2f s = %.0f tracks per processor second\n", cpu, cpu > 0 ? double(rows) / cpu : 0);
    std::printf("peak memory: %.1f MB (target < 150 MB) %s\n", double(peak_kb) / 1024.0,
                peak_kb < 150 * 1024 ? "ok" : "OVER TARGET");
    return rows == tracks ? 0 : 1;
}
