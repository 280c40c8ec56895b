#pragma once

// Extended attributes of a file on a mounted source. A volume that carries
// macOS metadata shows it under different names depending on how it is
// mounted: "com.apple.metadata:kMDItemWhereFroms" natively,
// "user.com.apple.metadata:kMDItemWhereFroms" through Linux file-system
// drivers, "user.metadata:kMDItemWhereFroms" through some file servers. The
// names are brought to one form so callers ask for "kMDItemWhereFroms".
// Callers pass only paths that the source-path guard allowed.

#include <QByteArray>
#include <QHash>
#include <QString>

namespace extended_attribute_reader {

// "user." and then "com.apple.metadata:" or "metadata:" removed.
QString normalised_name(const QString& raw_name);

// Every attribute of the file (following a final link, as the guard already
// resolved it), by normalised name; empty when there are none or the file
// system keeps none. Bounded in count and size per value.
QHash<QString, QByteArray> read_all(const QString& path);

}  // namespace extended_attribute_reader
