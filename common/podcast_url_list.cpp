#include "podcast_url_list.h"

namespace podcast_url_list {

QStringList split(const QString& line, bool* cut, qsizetype max_parts)
{
    QStringList parts;
    qsizetype from = 0;
    while (parts.size() < max_parts) {
        const qsizetype bar = line.indexOf('|', from);
        if (bar < 0) {
            parts << line.mid(from);
            *cut = false;
            return parts;
        }
        parts << line.mid(from, bar - from);
        from = bar + 1;
    }
    *cut = true;
    return parts;
}

QString cut_message(const QString& file_path)
{
    return QString("podcast line of more than %1 parts, those beyond the limit are not read: ").arg(k_max_parts)
           + file_path;
}

}  // namespace podcast_url_list
