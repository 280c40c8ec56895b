#pragma once

// Hands an XML document to Qt's stream reader with its document type
// declaration replaced by one that declares nothing. Qt's reader expands the
// entities an internal subset declares (a few forged bytes can declare
// kilobytes, or make a title say anything) and stops at the first reference
// to one it does not know, so a playlist with a declaration gave no tracks.
// Behind an external identifier that nothing resolves, every entity reference
// stays unexpanded and the reading goes on: the tracks are read, no entity is
// expanded and no outside file is opened. Only the prolog is looked at; the
// document after it passes unchanged, and a declaration of any size costs no
// memory.

#include <QByteArray>
#include <QIODevice>

class xml_doctype_filter : public QIODevice
{
public:
    explicit xml_doctype_filter(QIODevice* source);
    bool isSequential() const override { return true; }

protected:
    qint64 readData(char* data, qint64 max_size) override;
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    enum class state { prolog, markup_start, declaration_start, comment, instruction, doctype, body };
    void take(char c);
    bool recent_ends_with(const char* text) const;

    QIODevice* m_source;
    state m_state = state::prolog;
    QByteArray m_held;     // a "<!" whose kind is not known yet
    QByteArray m_pending;  // filtered bytes not yet handed on
    quint32 m_recent = 0;  // the last four bytes taken, for the ends of comments and instructions
    char m_quote = 0;
    bool m_in_subset = false;
    bool m_in_comment = false;
};
