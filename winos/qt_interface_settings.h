#pragma once

// Reads the player's interface settings file (vlc-qt-interface.ini): its own
// list of recently played media with the position where each was left, and
// the network addresses typed into its open dialog. The file is in the INI
// format of the toolkit the player is built on, and is read with that
// toolkit's own reader.

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

struct qt_interface_recents
{
    struct item
    {
        QString location;         // a media location (a URL, or a plain path in old versions)
        qint64 resume_ms = 0;     // where playback stopped; 0 when not kept
    };
    QList<item> recent;                     // newest first
    QStringList typed_network_addresses;    // newest first
};

namespace qt_interface_settings {

// Far above any real file (30 recent items take a few kilobytes).
constexpr qint64 k_max_bytes = 1024 * 1024;

// Reads the file's bytes through a working copy made in working_folder and
// removed at once (the reader may leave a lock file beside what it reads, so
// it never sees the evidence itself). False when no working copy could be
// made; a damaged file gives what the reader made of it.
bool read(const QByteArray& data, const QString& working_folder, qt_interface_recents* result);

}  // namespace qt_interface_settings
