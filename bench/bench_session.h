#pragma once

// One extraction through the loaded plug-in, timed: the part the end-to-end
// benchmarks' child runs share.

#include <QElapsedTimer>

#include <cstdio>

#include "plugin_session.h"

namespace bench_session {

// The seconds the run took, or a negative number (with a line on stderr)
// when the plug-in could not be loaded.
inline double timed_run(const QString& plugin, const session_options& options)
{
    plugin_session session;
    QString problem;
    if (!session.load(plugin, &problem)) {
        std::fprintf(stderr, "%s\n", qPrintable(problem));
        return -1;
    }
    QElapsedTimer timer;
    timer.start();
    session.run(options);
    return double(timer.nsecsElapsed()) / 1e9;
}

}  // namespace bench_session
