#include "xspf_track_reader.h"

namespace {

// The children kept, each from its first occurrence in a track; the letter
// marks it as seen.
struct child_field
{
    const char* name;
    QString xspf_track::*field;
    char mark;
};

const child_field k_children[] = {
    {"location", &xspf_track::location, 'l'},   {"title", &xspf_track::title, 't'},
    {"creator", &xspf_track::creator, 'c'},     {"album", &xspf_track::album, 'a'},
    {"trackNum", &xspf_track::track_num, 'n'},  {"annotation", &xspf_track::annotation, 'o'},
    {"image", &xspf_track::image, 'i'},         {"duration", &xspf_track::duration, 'd'},
    {"id", &xspf_track::id, 'x'},
};

}  // namespace

token_bounded_device::token_bounded_device(QIODevice* source, qint64 cap) : m_source(source), m_cap(cap)
{
    // Unbuffered: what the XML reader asks for is what is counted.
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

qint64 token_bounded_device::readData(char* data, qint64 max_size)
{
    if (m_since_token >= m_cap) {
        m_cap_reached = true;
        return 0;
    }
    const qint64 got = m_source->read(data, qMin(max_size, m_cap - m_since_token));
    if (got > 0)
        m_since_token += got;
    return got;
}

xspf_track_reader::xspf_track_reader(QIODevice* device, qint64 max_token_bytes)
    : m_filtered(device), m_input(&m_filtered, max_token_bytes), m_xml(&m_input)
{
}

QXmlStreamReader::TokenType xspf_track_reader::read_next()
{
    const QXmlStreamReader::TokenType token = m_xml.readNext();
    m_input.token_returned();
    return token;
}

bool xspf_track_reader::next(xspf_track* track, const std::function<bool()>& stop)
{
    while (!m_xml.atEnd() && !m_xml.hasError()) {
        if (stop())
            return false;
        const QXmlStreamReader::TokenType token = read_next();
        if (token == QXmlStreamReader::EndDocument) {
            m_end_of_document = true;
            return false;
        }
        if (token == QXmlStreamReader::StartElement && m_xml.name() == QLatin1String("track"))
            return read_track(track, stop);
    }
    return false;
}

bool xspf_track_reader::read_track(xspf_track* track, const std::function<bool()>& stop)
{
    *track = xspf_track();
    QString seen;
    // The track ends at the next token named "track", its own end tag.
    while (!m_xml.atEnd()) {
        if (stop())
            return false;
        const QXmlStreamReader::TokenType token = read_next();
        if (m_xml.hasError())
            return false;  // a damaged track is not a row
        if ((token == QXmlStreamReader::StartElement || token == QXmlStreamReader::EndElement)
            && m_xml.name() == QLatin1String("track"))
            return true;
        if (token == QXmlStreamReader::StartElement)
            read_child(track, &seen);
        if (m_xml.hasError())
            return false;
    }
    return false;
}

void xspf_track_reader::read_child(xspf_track* track, QString* seen)
{
    const QStringView name = m_xml.name();
    if (name == QLatin1String("extension")) {
        // Its children (the player's own id among them) are read as the walk goes on.
        if (!seen->contains('e')) {
            seen->append('e');
            track->application = m_xml.attributes().value("application").toString();
        }
        return;
    }
    for (const child_field& child : k_children) {
        if (name != QLatin1String(child.name))
            continue;
        if (seen->contains(QLatin1Char(child.mark)))
            return;
        seen->append(child.mark);
        track->*(child.field) = m_xml.readElementText(QXmlStreamReader::SkipChildElements);
        m_input.token_returned();
        return;
    }
}
