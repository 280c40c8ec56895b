#pragma once

// What every fuzz target shares: one headless application per process, a
// scratch folder that lives as long as the process, and evidence trees that
// are written once and then have some of their files replaced by each input
// before the extractor runs over them again through the controller.

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

class vlc;

namespace fuzz_support {

// Creates the application once (the extractors are widgets; a platform
// without a display is chosen) and silences Qt's own messages.
void start_application();

// A fresh folder, removed when its owner goes. In memory (/dev/shm) where
// there is one: the result database commits on every input, and syncing
// those to a disk would be most of an execution's time.
QString temporary_template();

// A folder for the process's lifetime, removed at exit.
QString scratch_dir();

// Writes the input to path (folders made on the way); aborts when it cannot,
// since a harness that cannot write its input tests nothing.
void write_input(const QString& path, const uint8_t* data, size_t size);

// Prints the reason and aborts: for set-up failures only, never for findings
// in the code under test.
[[noreturn]] void setup_failed(const QString& what);

struct sample_tree_choice
{
    QString os_scheme;  // "macOS", "winOS", "androidOS"
    std::function<bool(const QString& root, QString* error)> write;
    QStringList users;
    QStringList tables;
};

// One sample tree and one controller set up on it, as a host would, once.
class tree_run
{
public:
    explicit tree_run(const sample_tree_choice& tree);
    ~tree_run();

    QString root() const { return m_source.path() + "/"; }
    // Replaces each of the files (relative to the root) by the input, then
    // empties the result tables and extracts the selected tables again.
    void run_with(const QStringList& relative_paths, const uint8_t* data, size_t size);

private:
    QTemporaryDir m_source;
    QTemporaryDir m_out;
    std::unique_ptr<vlc> m_controller;
};

}  // namespace fuzz_support
