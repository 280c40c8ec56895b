#pragma once

// Small file-writing helpers shared by the fixture generators.

#include <QByteArray>
#include <QString>

namespace tree_writer {

// Writes data to root/relative, making the folders on the way.
bool write_file(const QString& root, const QString& relative, const QByteArray& data, QString* error);
bool make_dir(const QString& root, const QString& relative, QString* error);

}  // namespace tree_writer
