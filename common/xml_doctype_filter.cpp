#include "xml_doctype_filter.h"

#include <cstring>

namespace {

constexpr char k_doctype[] = "<!DOCTYPE";
constexpr char k_comment[] = "<!--";
// Declares nothing and names an external subset, which Qt's reader never
// fetches: references to undeclared entities then stay as they are.
constexpr char k_replacement[] = "<!DOCTYPE document SYSTEM \"\">";
constexpr qint64 k_chunk_bytes = 64 * 1024;

bool starts(const QByteArray& held, const char* text)
{
    return std::strncmp(text, held.constData(), size_t(held.size())) == 0;
}

}  // namespace

xml_doctype_filter::xml_doctype_filter(QIODevice* source) : m_source(source)
{
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

bool xml_doctype_filter::recent_ends_with(const char* text) const
{
    const size_t length = std::strlen(text);
    quint32 expected = 0;
    for (size_t i = 0; i < length; ++i)
        expected = (expected << 8) | quint8(text[i]);
    const quint32 mask = length >= 4 ? 0xFFFFFFFFu : (1u << (8 * length)) - 1;
    return (m_recent & mask) == expected;
}

qint64 xml_doctype_filter::readData(char* data, qint64 max_size)
{
    if (m_pending.isEmpty() && m_state == state::body)
        return qMax<qint64>(m_source->read(data, max_size), 0);
    char chunk[k_chunk_bytes];
    while (m_pending.isEmpty()) {
        const qint64 got = m_source->read(chunk, qMin(max_size, k_chunk_bytes));
        if (got <= 0) {
            m_pending += m_held;  // the end of the data: what was held back goes on as it is
            m_held.clear();
            break;
        }
        for (qint64 i = 0; i < got; ++i)
            take(chunk[i]);
    }
    const qint64 given = qMin<qint64>(max_size, m_pending.size());
    std::memcpy(data, m_pending.constData(), size_t(given));
    m_pending.remove(0, given);
    return given;
}

void xml_doctype_filter::take(char c)
{
    m_recent = (m_recent << 8) | quint8(c);
    switch (m_state) {
    case state::body:
        m_pending += c;
        return;
    case state::prolog:
        if (c == '<') {
            m_held = "<";
            m_state = state::markup_start;
            return;
        }
        m_pending += c;
        return;
    case state::markup_start:
        m_held += c;
        if (c == '!') {
            m_state = state::declaration_start;
            return;
        }
        m_pending += m_held;
        m_held.clear();
        m_state = c == '?' ? state::instruction : state::body;
        return;
    case state::declaration_start:
        m_held += c;
        if (m_held == k_doctype) {
            m_held.clear();
            m_state = state::doctype;
        } else if (m_held == k_comment) {
            m_pending += m_held;
            m_held.clear();
            m_state = state::comment;
        } else if (!starts(m_held, k_doctype) && !starts(m_held, k_comment)) {
            // Nothing else may stand in a prolog: the reader reports it.
            m_pending += m_held;
            m_held.clear();
            m_state = state::body;
        }
        return;
    case state::comment:
        m_pending += c;
        if (recent_ends_with("-->"))
            m_state = state::prolog;
        return;
    case state::instruction:
        m_pending += c;
        if (recent_ends_with("?>"))
            m_state = state::prolog;
        return;
    case state::doctype:
        break;
    }
    // Inside the declaration: nothing of it is handed on. Quoted texts and
    // comments may hold any bracket.
    if (m_in_comment) {
        m_in_comment = !recent_ends_with("-->");
    } else if (m_quote) {
        if (c == m_quote)
            m_quote = 0;
    } else if (c == '"' || c == '\'') {
        m_quote = c;
    } else if (m_in_subset) {
        if (recent_ends_with(k_comment))
            m_in_comment = true;
        else if (c == ']')
            m_in_subset = false;
    } else if (c == '[') {
        m_in_subset = true;
    } else if (c == '>') {
        m_pending += k_replacement;
        m_state = state::prolog;
    }
}
