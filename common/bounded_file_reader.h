#pragma once

// Reads evidence files into memory with a ceiling, so that a hostile or
// damaged file (a multi-gigabyte "vlcrc", a huge playlist) can never exhaust
// memory. Callers log when the ceiling was hit and work on what was read.

#include <QByteArray>
#include <QFile>
#include <QString>

namespace bounded_file_reader {

// Ceiling for text files the player writes itself (configuration, playlists,
// property lists): far above anything real, far below a machine's memory.
constexpr qint64 k_default_cap_bytes = 64LL * 1024 * 1024;

struct result
{
    QByteArray data;
    bool opened = false;
    bool truncated = false;  // the file holds more than the ceiling
};

result read(const QString& path, qint64 cap_bytes = k_default_cap_bytes);

// Opens the file read-only for streaming readers, only when it is a regular
// file (links to one included): a named pipe in the evidence has no writer,
// and opening it would wait for ever.
bool open_regular(QFile& file);

}  // namespace bounded_file_reader
