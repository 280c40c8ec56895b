#pragma once

// Small file-writing helpers shared by the fixture generators.

#include <QByteArray>
#include <QString>

namespace tree_writer {

// Writes data to root/relative, making the folders on the way.
bool write_file(const QString& root, const QString& relative, const QByteArray& data, QString* error);
bool make_dir(const QString& root, const QString& relative, QString* error);

// Writes data to an absolute path, making its folder; false when it could not.
bool write_file(const QString& path, const QByteArray& data);
// The whole file, or nothing when it cannot be read.
QByteArray read_file(const QString& path);

// The outside samples (shared/fixtures beside the source tree or one of its
// parents). VLC_SHARED_FIXTURES overrides it. Generators
// that start from a real sample file (an empty schema, say) read it there.
QString shared_fixtures_dir();

}  // namespace tree_writer
