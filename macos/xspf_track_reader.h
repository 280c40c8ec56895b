#pragma once

// Streams the tracks of an XSPF playlist (the player's media library) one at
// a time, so a library of any size is read with bounded memory. Reading stops
// at the end of the document or at the first XML error; the tracks read
// before it stand. The XML reader keeps a single token (a text node, a tag, a
// comment) whole, so the bytes it may take in for one token are capped too: a
// token past the cap ends the reading as an error would.

#include <QIODevice>
#include <QString>
#include <QXmlStreamReader>

#include <functional>

#include "xml_doctype_filter.h"

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

// Hands the file to the XML reader and counts what it took in since the
// reader last gave a token back; past the cap it reports the end of the data.
class token_bounded_device : public QIODevice
{
public:
    token_bounded_device(QIODevice* source, qint64 cap);
    void token_returned() { m_since_token = 0; }
    bool cap_reached() const { return m_cap_reached; }
    bool isSequential() const override { return true; }

protected:
    qint64 readData(char* data, qint64 max_size) override;
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    QIODevice* m_source;
    qint64 m_cap;
    qint64 m_since_token = 0;
    bool m_cap_reached = false;
};

class xspf_track_reader
{
public:
    // Far above any location, title or note a library holds.
    static constexpr qint64 k_max_token_bytes = 4LL * 1024 * 1024;

    explicit xspf_track_reader(QIODevice* device, qint64 max_token_bytes = k_max_token_bytes);

    // The next complete track; false at the end, on an error, or when stop()
    // answers true (asked before every token).
    bool next(xspf_track* track, const std::function<bool()>& stop);
    bool reached_end_of_document() const { return m_end_of_document; }
    // Whether reading ended at a token larger than the cap.
    bool token_too_large() const { return m_input.cap_reached(); }

private:
    QXmlStreamReader::TokenType read_next();

    bool read_track(xspf_track* track, const std::function<bool()>& stop);
    void read_child(xspf_track* track, QString* seen);

    xml_doctype_filter m_filtered;
    token_bounded_device m_input;
    QXmlStreamReader m_xml;
    bool m_end_of_document = false;
};
