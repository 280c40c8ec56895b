#pragma once

// What every benchmark measures the same way: processor time and peak memory
// of its process; and how it starts Qt without a display while keeping its
// own command line (Qt would take options such as -plugin for itself).

#include <QApplication>
#include <QStringList>

#include <sys/resource.h>

namespace bench_support {

// Processor time of this process so far (user and system), in seconds.
inline double cpu_seconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
           + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// The largest resident size this process has had, in KiB.
inline long peak_memory_kb()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

// The controller is a widget: a QApplication is needed, but nothing is shown.
class headless_application
{
public:
    headless_application(int argc, char** argv) : m_app((prepare(), m_qt_argc), argv)
    {
        for (int i = 0; i < argc; ++i)
            m_arguments << QString::fromLocal8Bit(argv[i]);
    }
    // The whole command line, the program first.
    const QStringList& arguments() const { return m_arguments; }
    QApplication& app() { return m_app; }

private:
    static void prepare()
    {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    int m_qt_argc = 1;
    QApplication m_app;
    QStringList m_arguments;
};

}  // namespace bench_support
