#include "xspf_writer.h"

#include <QDir>
#include <QFileInfo>

namespace {
const QString k_vlc_namespace = "http://www.videolan.org/vlc/playlist/ns/0/";
const QString k_application = "http://www.videolan.org/vlc/playlist/0";
}  // namespace

bool xspf_writer::open(const QString& path, const QString& title)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    m_file.setFileName(path);
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    m_xml.setDevice(&m_file);
    m_xml.setAutoFormatting(true);
    m_xml.setAutoFormattingIndent(-1);  // tabs, as the player writes
    m_xml.writeStartDocument();
    m_xml.writeDefaultNamespace("http://xspf.org/ns/0/");
    m_xml.writeNamespace(k_vlc_namespace, "vlc");
    m_xml.writeStartElement("playlist");
    m_xml.writeAttribute("version", "1");
    m_xml.writeTextElement("title", title);
    m_xml.writeStartElement("trackList");
    m_count = 0;
    return true;
}

void xspf_writer::add(const xspf_entry& entry)
{
    m_xml.writeStartElement("track");
    m_xml.writeTextElement("location", entry.location);
    for (const QString& title : entry.titles)
        m_xml.writeTextElement("title", title);
    const QList<QPair<QString, QString>> tags = {{"creator", entry.creator},     {"album", entry.album},
                                                 {"trackNum", entry.track_num}, {"annotation", entry.annotation},
                                                 {"image", entry.image},        {"duration", entry.duration}};
    for (const auto& tag : tags) {
        if (!tag.second.isNull())
            m_xml.writeTextElement(tag.first, tag.second);
    }
    if (entry.id >= 0) {
        m_xml.writeStartElement("extension");
        m_xml.writeAttribute("application", k_application);
        m_xml.writeTextElement(k_vlc_namespace, "id", QString::number(entry.id));
        m_xml.writeEndElement();
    }
    m_xml.writeEndElement();
    ++m_count;
}

bool xspf_writer::write(const QString& path, const QList<xspf_entry>& entries, const QString& title)
{
    xspf_writer writer;
    if (!writer.open(path, title))
        return false;
    for (const xspf_entry& entry : entries)
        writer.add(entry);
    return writer.close();
}

bool xspf_writer::close()
{
    m_xml.writeEndElement();  // trackList
    // The player's folder view of the library: items refer to track ids.
    m_xml.writeStartElement("extension");
    m_xml.writeAttribute("application", k_application);
    m_xml.writeStartElement(k_vlc_namespace, "node");
    m_xml.writeAttribute("title", "Library");
    for (int i = 0; i < m_count; ++i) {
        m_xml.writeEmptyElement(k_vlc_namespace, "item");
        m_xml.writeAttribute("tid", QString::number(i));
    }
    m_xml.writeEndElement();
    m_xml.writeEndElement();
    m_xml.writeEndElement();  // playlist
    m_xml.writeEndDocument();
    const bool ok = !m_xml.hasError();
    m_file.close();
    return ok && m_file.error() == QFileDevice::NoError;
}
