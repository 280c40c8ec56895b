#pragma once

// The player keeps its podcast subscriptions in one preference line, the URLs
// separated by "|". A forged line of millions of separators would become as
// many rows and a database of gigabytes, so the parts taken from one line are
// capped far above any real subscription list.

#include <QString>
#include <QStringList>

namespace podcast_url_list {

constexpr qsizetype k_max_parts = 10000;

// The line split on "|", empty parts kept, at most max_parts of them; cut
// tells whether the line held more.
QStringList split(const QString& line, bool* cut, qsizetype max_parts = k_max_parts);

// The debug text of a line that was cut.
QString cut_message(const QString& file_path);

}  // namespace podcast_url_list
