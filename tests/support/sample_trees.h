#pragma once

// The evidence trees our generators write. The sample trees, one per scheme,
// are the host program's demo and the end-to-end tests' reference; the
// hostile trees hold what an examiner meets in damaged or tampered images
// (links and paths that lead out of the source, named pipes, oversized and
// malformed files) and are for the tests only.

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

struct sample_tree
{
    QString os_scheme;    // "macOS", "winOS", "androidOS", "iOS_UID"
    QString folder_name;  // folder of the tree below the samples folder; the name of its golden file
    QStringList users;    // accounts the demo passes for this tree
    // Writes the tree below root (which exists and is empty); false with a
    // reason when something could not be written.
    std::function<bool(const QString& root, QString* error)> write;
    // Further host arguments of the tests' run (selected metadata keys, given accounts).
    QStringList arguments = {};
    // Where the evidence root lies in the written folder, for a tree that
    // keeps files beside its evidence; empty: the folder itself.
    QString root_below = {};
};

// Every scheme's sample, in a fixed order.
QList<sample_tree> sample_trees();
// The hostile trees of macOS and Windows; the evidence lies in "evidence",
// the files it must never reach in "outside" beside it.
QList<sample_tree> hostile_trees();

// Writers of each scheme's sample tree (one file each).
bool write_macos_sample_tree(const QString& root, QString* error);
bool write_windows_sample_tree(const QString& root, QString* error);
bool write_android_sample_tree(const QString& root, QString* error);
bool write_ios_sample_tree(const QString& root, QString* error);

// Where an Android image keeps the app's data: an unpacked backup, or a full
// file-system extraction with shared storage under data/media/0 or media/0.
enum class android_layout { backup, file_system_data_media, file_system_media };
// The same small library in the media database of any model the shared
// samples have a schema for, with the files it names, in the given layout.
bool write_android_model_tree(const QString& root, int model, android_layout layout, QString* error);
// The demo's second Android sample: the current model in a full extraction.
bool write_android_current_sample_tree(const QString& root, QString* error);
