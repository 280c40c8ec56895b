#include "fuzz_support.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdio>
#include <cstdlib>

#include "controller_setup.h"
#include "tree_writer.h"
#include "vlc.h"

namespace fuzz_support {

void start_application()
{
    if (QCoreApplication::instance())
        return;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    // Never destroyed: at exit Qt's own clean-up would run after the SQL
    // module's globals are gone.
    static QApplication* application = new QApplication(argc, argv);
    (void)application;
}

QString temporary_template()
{
    const QFileInfo memory("/dev/shm");
    const QString base = memory.isDir() && memory.isWritable() ? memory.filePath() : QDir::tempPath();
    return base + "/vlc-fuzz-XXXXXX";
}

QString scratch_dir()
{
    static QTemporaryDir scratch(temporary_template());
    if (!scratch.isValid())
        setup_failed("no temporary folder");
    return scratch.path();
}

void write_input(const QString& path, const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    if (!tree_writer::write_file(path, bytes))
        setup_failed("cannot write " + path);
}

void setup_failed(const QString& what)
{
    std::fprintf(stderr, "fuzz set-up failed: %s\n", qPrintable(what));
    std::abort();
}

tree_run::tree_run(const sample_tree_choice& tree) : m_source(temporary_template()), m_out(temporary_template())
{
    start_application();
    QString error;
    if (!m_source.isValid() || !m_out.isValid() || !tree.write(m_source.path(), &error))
        setup_failed("sample tree: " + error);

    controller_setup setup;
    setup.source.source_path_1 = root();
    setup.source.os_scheme_display = tree.os_scheme;
    setup.source.os_scheme_internal = tree.os_scheme;
    for (const QString& name : tree.users)
        setup.source.system_account_QList << struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_system_account{name, QString()};
    setup.tables = tree.tables;
    setup.result_dir = m_out.path();
    m_controller = std::make_unique<vlc>();
    prepare_controller(*m_controller, setup);
}

tree_run::~tree_run() = default;

void tree_run::run_with(const QStringList& relative_paths, const uint8_t* data, size_t size)
{
    for (const QString& relative : relative_paths)
        write_input(root() + relative, data, size);
    // Each input starts from empty tables: the result database stays small
    // however long the run.
    m_controller->pub_set_clear_db(true);
    m_controller->pub_find_source_file();
    m_controller->pub_extract_artifacts();
}

}  // namespace fuzz_support
