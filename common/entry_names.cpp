#include "entry_names.h"

#include <QFile>
#include <QStringDecoder>

#include <dirent.h>

#include <memory>

namespace entry_names {

namespace {

bool decodes(const QByteArray& bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = utf8(bytes);
    return !utf8.hasError();
}

// The length of the UTF-8 sequence a lead byte opens; 0 for a byte that
// cannot open one.
int sequence_length(quint8 lead)
{
    if (lead < 0x80)
        return 1;
    if (lead >= 0xC2 && lead <= 0xDF)
        return 2;
    if (lead >= 0xE0 && lead <= 0xEF)
        return 3;
    if (lead >= 0xF0 && lead <= 0xF4)
        return 4;
    return 0;
}

}  // namespace

QString escaped(const QByteArray& name)
{
    QString text;
    qsizetype at = 0;
    while (at < name.size()) {
        const int length = sequence_length(quint8(name.at(at)));
        const QByteArray sequence = name.mid(at, length);
        if (length > 0 && sequence.size() == length && decodes(sequence)) {
            text += QString::fromUtf8(sequence);
            at += length;
            continue;
        }
        text += QString::asprintf("\\x%02X", unsigned(quint8(name.at(at))));
        ++at;
    }
    return text;
}

QStringList undecodable(const QString& folder)
{
    QStringList names;
    const std::unique_ptr<DIR, int (*)(DIR*)> dir(opendir(QFile::encodeName(folder).constData()), closedir);
    if (!dir)
        return names;
    while (const dirent* entry = readdir(dir.get())) {
        const QByteArray name(entry->d_name);
        if (!decodes(name))
            names << escaped(name);
    }
    names.sort();
    return names;
}

}  // namespace entry_names
