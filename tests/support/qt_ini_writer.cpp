#include "qt_ini_writer.h"

namespace {

QString escaped(const QString& value)
{
    bool quoted = value.startsWith(' ') || value.endsWith(' ');
    bool after_hex = false;  // a hex digit right after \x escapes would join it
    QString out;
    for (const QChar c : value) {
        const ushort u = c.unicode();
        quoted = quoted || u == ',' || u == ';' || u == '=';
        if (u < 0x20 || u >= 0x7F || (after_hex && QString("0123456789abcdefABCDEF").contains(c))) {
            out += "\\x" + QString::number(u, 16);
            after_hex = true;
            continue;
        }
        after_hex = false;
        out += (c == '\\' || c == '"') ? QString('\\') + c : QString(c);
    }
    return quoted ? '"' + out + '"' : out;
}

QString list_value(const QStringList& items)
{
    QStringList parts;
    for (const QString& item : items)
        parts << escaped(item);
    return items.isEmpty() ? QString("@Invalid()") : parts.join(", ");
}

}  // namespace

namespace qt_ini_writer {

QByteArray interface_settings(const QStringList& recent, const QStringList& times, const QStringList& typed)
{
    QString out = "[General]\nqt-version=5.15.2\n\n[RecentsMRL]\nlist=" + list_value(recent) + "\n";
    if (!times.isEmpty())
        out += "times=" + list_value(times) + "\n";
    if (!typed.isEmpty())
        out += "\n[OpenDialog]\nnetMRL=" + list_value(typed) + "\n";
    return out.toLatin1();
}

}  // namespace qt_ini_writer
