// Times the plug-in's start-up as the host sees it, over repeated runs:
//  - loading the library and calling create_object (a fresh process per
//    sample, so the dynamic loader really loads it each time);
//  - laying out the result directory and creating the database with its
//    eight tables.
// Usage: bench_spine [--runs N] [--plugin PATH]

#include "bench_support.h"

#include <QElapsedTimer>
#include <QLibrary>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

#include "vlc_plugin_interface.h"

namespace {

struct summary
{
    double min_ms = 0, median_ms = 0, max_ms = 0;
};

summary summarise(QList<double> samples)
{
    std::sort(samples.begin(), samples.end());
    summary s;
    if (samples.isEmpty())
        return s;
    s.min_ms = samples.first();
    s.max_ms = samples.last();
    s.median_ms = samples.at(samples.size() / 2);
    return s;
}

void report(const char* what, const summary& s, int runs)
{
    std::printf("%-44s runs %3d  min %8.2f ms  median %8.2f ms  max %8.2f ms  %s\n", what, runs, s.min_ms,
                s.median_ms, s.max_ms, s.median_ms < 100.0 ? "(under 100 ms)" : "(OVER 100 ms)");
}

// Child mode: one load and one create_object, time printed in ms.
int child_load(const QString& plugin)
{
    QElapsedTimer timer;
    timer.start();
    QLibrary library(plugin);
    if (!library.load())
        return 1;
    auto create = reinterpret_cast<create_object_function>(library.resolve("create_object"));
    auto* controller = create ? static_cast<vlc_plugin_interface*>(create()) : nullptr;
    const double ms = double(timer.nsecsElapsed()) / 1e6;
    if (!controller)
        return 1;
    std::printf("%.4f\n", ms);
    delete controller;
    return 0;
}

QList<double> time_loading(const QString& self, const QString& plugin, int runs)
{
    QList<double> samples;
    for (int i = 0; i < runs; ++i) {
        QProcess child;
        child.start(self, {"--child-load", plugin});
        if (!child.waitForFinished(60000) || child.exitCode() != 0) {
            std::fprintf(stderr, "child run failed: %s\n", child.readAllStandardError().constData());
            continue;
        }
        samples << child.readAllStandardOutput().trimmed().toDouble();
    }
    return samples;
}

QList<double> time_database_creation(const QString& plugin, int runs)
{
    QLibrary library(plugin);
    if (!library.load())
        return {};
    auto create = reinterpret_cast<create_object_function>(library.resolve("create_object"));
    auto* controller = static_cast<vlc_plugin_interface*>(create());
    controller->pub_set_engine_type(0);
    controller->pub_set_essentials();
    QList<double> samples;
    for (int i = 0; i < runs; ++i) {
        QTemporaryDir out;
        QElapsedTimer timer;
        timer.start();
        controller->pub_set_result_directory(out.path());
        controller->pub_create_db_tables();
        samples << double(timer.nsecsElapsed()) / 1e6;
    }
    delete controller;
    return samples;
}

}  // namespace

int main(int argc, char** argv)
{
    bench_support::headless_application headless(argc, argv);
    const QStringList args = headless.arguments();

    QString plugin = QStringLiteral(VLC_BENCH_PLUGIN_PATH);
    int runs = 30;
    for (int i = 1; i < args.size(); ++i) {
        if (args.at(i) == "--child-load" && i + 1 < args.size())
            return child_load(args.at(i + 1));
        if (args.at(i) == "--runs" && i + 1 < args.size())
            runs = qMax(1, args.at(++i).toInt());
        else if (args.at(i) == "--plugin" && i + 1 < args.size())
            plugin = args.at(++i);
    }

    std::printf("plug-in: %s\n", qPrintable(plugin));
    const QList<double> loading = time_loading(QCoreApplication::applicationFilePath(), plugin, runs);
    report("load library + create_object (fresh process)", summarise(loading), loading.size());
    const QList<double> creation = time_database_creation(plugin, runs);
    report("result directory + database with 8 tables", summarise(creation), creation.size());
    return loading.isEmpty() || creation.isEmpty() ? 1 : 0;
}
