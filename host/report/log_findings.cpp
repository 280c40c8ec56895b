#include "log_findings.h"

#include <QFile>
#include <QSet>

#include "encryptor_string.h"

namespace log_findings {

const QList<log_text>& log_texts()
{
    using r = log_text::rest;
    static const QList<log_text> texts = {
        {"[find_source_file]----  FILE NOT EXISTS", "not found", "", r::path},
        {"path outside the source root ---FAILED--- treated as absent: ", "left out: outside the source", "", r::path},
        {"database companion is a link ---FAILED--- not copied: ", "left out: a link", "", r::path},
        {"file larger than the read limit, only its start is read: ", "cut off: over the size limit", "", r::path},
        {"file larger than the read limit, not read: ", "left out: over the size limit", "", r::path},
        {"podcast line larger than the read limit, only its start is read: ", "cut off: a line over the size limit", "",
         r::path},
        {"podcast line of more than ", "cut off: a line over the part limit", "", r::path, ": "},
        {"account folder name is not valid UTF-8, it cannot be read: ", "left out: a name that does not decode", "",
         r::path},
        {"playlist entries beyond the limit are not read, from: ", "cut off: over the entry limit", "", r::path},
        {"[extract_media_library] a single entry is larger than the read limit ---FAILED--- rest of the file left "
         "unread: ",
         "cut off: an entry over the size limit", "media library (ml.xspf)", r::path},
        {"damaged database, the table gives more rows than it holds; the rest of it is skipped: ",
         "cut off: damaged database", "media database", r::detail},
        {"not in this media database, its columns stay empty: ", "not found: database column", "media database",
         r::detail},
        {"[pub_registry_view]- file not opened: [File Path]", "left out: could not be read", "", r::path},
        {"[ERROR:]", "", "", r::reason_of_previous},
        {"[extract_media_library] file open --------FAILED-------", "left out: could not be read",
         "media library (ml.xspf)"},
        {"[extract_podcasts] file open -------FAILED-----------", "left out: could not be read", "preferences (vlcrc)"},
        {"[extract_recents_items] source file open ------------FAILED------", "left out: could not be read",
         "recent documents (plist)"},
        {"[extract_recents_items] source file open ---------FAILED-----", "left out: damaged",
         "recent documents (plist)"},
        {"[xcode_extract_recents_items_11_12] source file open ------FAILED------", "left out: damaged",
         "recent documents (sfl)"},
        {"target_file file open --------FAILED------", "left out: damaged", "recently played (plist)"},
        {" Unable to open the playlist file", "left out: could not be read", "playlist"},
        {"source db opening ------FAILED----- ", "left out: could not be read", "media database"},
    };
    return texts;
}

QString below_root(const QString& path, const QString& source_root)
{
    QString root = source_root;
    while (root.endsWith('/') && root.size() > 1)
        root.chop(1);
    if (root.isEmpty() || root == "/" || !path.startsWith(root))
        return path;
    const QString rest = path.mid(root.size());
    if (rest.isEmpty())
        return "/";
    return rest.startsWith('/') ? rest : path;
}

QString user_of(const QString& path_below_root)
{
    if (!path_below_root.startsWith("/Users/"))
        return QString();
    return path_below_root.section('/', 2, 2);
}

namespace {

const QByteArray k_record_end = "<[{()}]>";
constexpr qint64 k_chunk = 1 << 20;
constexpr qsizetype k_max_record = 16 << 20;

// Turns messages into findings, each once.
class finder
{
public:
    finder(const QString& source_root, int max_findings) : m_root(source_root), m_max(max_findings) {}

    void add_line(const QString& line)
    {
        const qsizetype at = line.indexOf("]:-- ");
        add(at >= 0 ? line.mid(at + 5) : line);
    }

    QList<finding> take()
    {
        if (m_dropped > 0)
            m_found.append({QString(), "not listed", QString(), QString(),
                            QString::number(m_dropped) + " more findings of the debug log", QString()});
        return std::move(m_found);
    }

private:
    void add(const QString& message)
    {
        for (const log_text& known : log_texts()) {
            if (!message.startsWith(QLatin1String(known.text)))
                continue;
            QString rest = message.mid(qstrlen(known.text)).trimmed();
            if (known.path_after) {
                const qsizetype at = rest.indexOf(QLatin1String(known.path_after));
                rest = at < 0 ? QString() : rest.mid(at + qstrlen(known.path_after)).trimmed();
            }
            if (known.after == log_text::rest::reason_of_previous) {
                if (m_last_kept && m_found.last().detail.isEmpty())
                    m_found.last().detail = rest;
                return;
            }
            m_last_kept = false;
            if (m_seen.contains(message))
                return;
            if (m_found.size() >= m_max) {
                ++m_dropped;
                return;
            }
            finding f;
            f.kind = QString::fromUtf8(known.kind);
            f.what = QString::fromUtf8(known.what);
            f.message = message;
            if (known.after == log_text::rest::path) {
                // "Users/<name>" of the account-folder text is already below the root.
                f.path = rest.startsWith("Users/") ? "/" + rest : below_root(rest, m_root);
                f.user = user_of(f.path);
            } else if (known.after == log_text::rest::detail) {
                f.detail = rest;
            }
            m_seen.insert(message);
            m_found << f;
            m_last_kept = true;
            return;
        }
    }

    QString m_root;
    int m_max;
    qint64 m_dropped = 0;
    bool m_last_kept = false;
    QSet<QString> m_seen;
    QList<finding> m_found;
};

// An enciphered log is one run of records, each ended by the separator;
// a plain one is lines. The first record tells which.
bool is_enciphered(QFile& file)
{
    const QByteArray head = file.peek(k_chunk);
    const qsizetype end = head.indexOf(k_record_end);
    if (end < 0)
        return false;
    encryptor_string cipher;
    cipher.decryptToString(QString::fromLatin1(head.left(end).trimmed()));
    return cipher.lastError() == encryptor_string::ErrorNoError;
}

}  // namespace

QList<finding> findings_in_log(const QString& log_path, qint64 offset, const QString& source_root, int max_findings)
{
    finder found(source_root, max_findings);
    QFile file(log_path);
    if (!file.open(QIODevice::ReadOnly) || !file.seek(offset))
        return {};
    if (!is_enciphered(file)) {
        while (!file.atEnd())
            found.add_line(QString::fromLocal8Bit(file.readLine(k_chunk)).trimmed());
        return found.take();
    }
    encryptor_string cipher;
    QByteArray pending;
    while (!file.atEnd()) {
        pending += file.read(k_chunk);
        qsizetype end;
        while ((end = pending.indexOf(k_record_end)) >= 0) {
            const QString line = cipher.decryptToString(QString::fromLatin1(pending.left(end).trimmed()));
            if (cipher.lastError() == encryptor_string::ErrorNoError)
                found.add_line(line);
            pending.remove(0, end + k_record_end.size());
        }
        if (pending.size() > k_max_record)
            pending.clear();  // not a record of ours
    }
    return found.take();
}

}  // namespace log_findings
