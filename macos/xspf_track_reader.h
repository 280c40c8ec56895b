#pragma once

// Streams the tracks of an XSPF playlist (the player's media library) one at
// a time, so a library of any size is read with bounded memory. Reading stops
// at the end of the document or at the first XML error; the tracks read
// before it stand.

#include <QIODevice>
#include <QString>
#include <QXmlStreamReader>

#include <functional>

struct xspf_track
{
    QString location;
    QString title;
    QString creator;
    QString album;
    QString track_num;
    QString annotation;
    QString image;
    QString duration;
    QString application;  // the "application" attribute of the track's extension
    QString id;
};

class xspf_track_reader
{
public:
    explicit xspf_track_reader(QIODevice* device) : m_xml(device) {}

    // The next complete track; false at the end, on an error, or when stop()
    // answers true (asked before every token).
    bool next(xspf_track* track, const std::function<bool()>& stop);
    bool reached_end_of_document() const { return m_end_of_document; }

private:
    bool read_track(xspf_track* track, const std::function<bool()>& stop);
    void read_child(xspf_track* track, QString* seen);

    QXmlStreamReader m_xml;
    bool m_end_of_document = false;
};
