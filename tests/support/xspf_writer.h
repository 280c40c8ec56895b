#pragma once

// Writes media-library playlists (XSPF) in the form the player writes them:
// tracks with a location, optional tags, a duration in milliseconds and an
// extension block carrying the player's own id, then the playlist's closing
// extension with its folder nodes. Written as a stream, so libraries of any
// size are cheap to produce.

#include <QFile>
#include <QString>
#include <QStringList>
#include <QXmlStreamWriter>

// Tags left null are not written; an empty one is written empty.
struct xspf_entry
{
    QString location;     // written as given (percent-escaped or not)
    QStringList titles;   // every one is written; readers keep the first
    QString creator;
    QString album;
    QString track_num;
    QString annotation;
    QString image;
    QString duration;     // milliseconds
    int id = 0;           // the extension block with the player's id is left out when negative
};

class xspf_writer
{
public:
    // Starts the playlist at path (folders made); false when it cannot be written.
    bool open(const QString& path, const QString& title = "Media Library");
    void add(const xspf_entry& entry);
    // Closes the track list and the playlist; false when writing failed.
    bool close();
    // The whole playlist at once.
    static bool write(const QString& path, const QList<xspf_entry>& entries, const QString& title = "Media Library");

private:
    QFile m_file;
    QXmlStreamWriter m_xml;
    int m_count = 0;
};
