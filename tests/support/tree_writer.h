#pragma once

// Small file-writing helpers shared by the fixture generators.

#include <QByteArray>
#include <QList>
#include <QString>

namespace tree_writer {

// Writes data to root/relative, making the folders on the way.
bool write_file(const QString& root, const QString& relative, const QByteArray& data, QString* error);

// Writes data to an absolute path, making its folder; false when it could not.
bool write_file(const QString& path, const QByteArray& data);
// The whole file, or nothing when it cannot be read.
QByteArray read_file(const QString& path);

// One entry of a tree below its root: a file of these bytes, a symbolic link
// to the target given as data, a named pipe, a folder, or a sparse file that
// begins with the data and holds 65 MiB (more than a reader takes of a
// player's text file).
enum class kind { file, link, pipe, folder, oversized };
struct entry
{
    QString path;
    QByteArray data;
    kind what = kind::file;
};
bool write_entries(const QString& root, const QList<entry>& entries, QString* error);

// The outside samples (shared/fixtures beside the source tree or one of its
// parents). VLC_SHARED_FIXTURES overrides it. Generators
// that start from a real sample file (an empty schema, say) read it there.
QString shared_fixtures_dir();

}  // namespace tree_writer
