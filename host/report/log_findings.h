#pragma once

// What the plug-in's debug log says was not found, left out or cut off,
// turned into a list an examiner reads. The plug-in's texts are fixed; this
// table recognises them, one row per text, so a new text is one more row.

#include <QList>
#include <QString>
#include <QStringList>

namespace log_findings {

struct log_text
{
    const char* text;  // the message starts with this text
    const char* kind;  // what it means for the examiner
    const char* what;  // the artifact, for texts that name no path
    // The rest of the message: a path on the source, or a detail.
    enum class rest { nothing, path, detail, reason_of_previous } after = rest::nothing;
    // Where the text goes on between its start and the path: the path
    // follows the first occurrence of this marker.
    const char* path_after = nullptr;
};

const QList<log_text>& log_texts();

struct finding
{
    QString user;  // empty when the text does not tell
    QString kind;
    QString what;
    QString path;  // below the source root where it lies there
    QString detail;
    QString message;  // the log's own text
};

// The findings of the debug log from a byte offset on (a log given by the
// examiner may hold earlier runs), plain or enciphered, once each, in log
// order. The log is read as a stream; at most max_findings are kept.
QList<finding> findings_in_log(const QString& log_path, qint64 offset, const QString& source_root,
                               int max_findings = 50000);

// "/Users/<name>/..." names its account.
QString user_of(const QString& path_below_root);

// A path as the plug-in writes it, made relative to the source root
// ("/Users/..."); a path elsewhere stays as it is.
QString below_root(const QString& path, const QString& source_root);

}  // namespace log_findings
