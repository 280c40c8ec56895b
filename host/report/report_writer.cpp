#include "report_writer.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>

#include <sys/stat.h>

#include "plugin_session.h"
#include "report_values.h"
#include "result_reader.h"
#include "timeline.h"

namespace {

using report_values::csv_record;

QString html(const QString& text)
{
    return text.toHtmlEscaped();
}

// Columns whose values name pictures found on the source: shown small beside
// their rows and copied into the report (never linked into the evidence).
const struct
{
    const char* table;
    const char* column;
} k_picture_columns[] = {
    {"album_art", "file_path"},
    {"media_library", "image"},
};

QString picture_column_of(const QString& table)
{
    for (const auto& p : k_picture_columns) {
        if (table == QLatin1String(p.table))
            return QString::fromLatin1(p.column);
    }
    return QString();
}

QString shell_quoted(const QStringList& arguments)
{
    static const QRegularExpression plain("^[A-Za-z0-9_./=:,+@%-]+$");
    QStringList quoted;
    for (const QString& a : arguments)
        quoted << (plain.match(a).hasMatch() ? a : "'" + QString(a).replace("'", "'\\''") + "'");
    return quoted.join(' ');
}

QString duration_text(const QDateTime& from, const QDateTime& to)
{
    if (!from.isValid() || !to.isValid())
        return QString();
    const qint64 s = from.secsTo(to);
    return QString("%1:%2:%3").arg(s / 3600).arg(s / 60 % 60, 2, 10, QChar('0')).arg(s % 60, 2, 10, QChar('0'));
}

QString status_class(const QString& status)
{
    if (status.startsWith("found"))
        return "status-found";
    return status.startsWith("not found") ? "status-missing" : "status-left-out";
}

// A data file calls the page's script with one object whose rows follow
// one per line, written as they are read.
QByteArray data_file_head(const char* call, const QJsonObject& without_rows)
{
    QByteArray object = QJsonDocument(without_rows).toJson(QJsonDocument::Compact);
    object.chop(1);
    return "vlcReport." + QByteArray(call) + "(" + object + ",\"rows\":[\n";
}

QByteArray data_file_row(const QJsonArray& cells, bool first)
{
    return (first ? QByteArray() : QByteArray(",\n")) + QJsonDocument(cells).toJson(QJsonDocument::Compact);
}

// rwxr-xr-x and the like: a folder's permissions under the process's umask,
// in Qt's flags (owner, user, group, other).
int permissions_for_mask(mode_t mask)
{
    int flags = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner | QFileDevice::ReadUser
                | QFileDevice::WriteUser | QFileDevice::ExeUser;
    const struct
    {
        mode_t bit;
        QFileDevice::Permission flag;
    } others[]
        = {{S_IRGRP, QFileDevice::ReadGroup}, {S_IWGRP, QFileDevice::WriteGroup}, {S_IXGRP, QFileDevice::ExeGroup},
           {S_IROTH, QFileDevice::ReadOther}, {S_IWOTH, QFileDevice::WriteOther}, {S_IXOTH, QFileDevice::ExeOther}};
    for (const auto& o : others) {
        if (!(mask & o.bit))
            flags |= o.flag;
    }
    return flags;
}

// One cell of an overview table, its text escaped.
QString cell(const QString& text, const QString& css_class = QString())
{
    return (css_class.isEmpty() ? QString("<td>") : "<td class=\"" + css_class + "\">") + html(text) + "</td>";
}

// A sortable table of the overview, from its headers and rows of cells.
QString grid(const QStringList& headers, const QList<QStringList>& rows)
{
    QString text = "<table class=\"grid sortable\">\n<thead><tr><th>"
                   + html(headers.join("\n")).replace("\n", "</th><th>") + "</th></tr></thead>\n<tbody>\n";
    for (const QStringList& row : rows)
        text += "<tr>" + row.join(QString()) + "</tr>\n";
    return text + "</tbody>\n</table>\n";
}

QString account_text(const QString& user)
{
    return user.isEmpty() ? QString("(no account)") : user;
}

// A file of the report, written through a buffer; the first failure is kept.
class output_file
{
public:
    explicit output_file(const QString& path) : m_file(path)
    {
        if (!m_file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            m_error = m_file.fileName() + ": " + m_file.errorString();
    }
    ~output_file() { close(); }

    void write(const QString& text) { write(text.toUtf8()); }
    void write(const QByteArray& bytes)
    {
        m_buffer += bytes;
        if (m_buffer.size() >= (1 << 20))
            flush();
    }
    // The first error, or empty.
    QString close()
    {
        if (m_file.isOpen()) {
            flush();
            m_file.close();
        }
        return m_error;
    }

private:
    void flush()
    {
        if (m_error.isEmpty() && m_file.write(m_buffer) != m_buffer.size())
            m_error = m_file.fileName() + ": " + m_file.errorString();
        m_buffer.clear();
    }

    QFile m_file;
    QByteArray m_buffer;
    QString m_error;
};

struct table_summary
{
    QString name;
    qint64 rows = 0;
    QStringList empty_columns;
    bool has_page = false;
    bool unreadable = false;
};

struct picture_copy
{
    QString file;    // below the report folder
    QString source;  // below the source root
    qint64 size = 0;
    QString md5;
    QString sha256;
    QStringList rows;  // "table #INT", the first few
    qint64 row_count = 0;
};

class report_builder
{
public:
    report_builder(const QString& folder, const run_record& run, const result_reader& db)
        : m_folder(folder), m_run(run), m_db(db),
          m_has_source(!run.source_root.isEmpty() && QFileInfo(run.source_root).isDir())
    {
    }

    bool write(QString* problem);

private:
    bool write_assets();
    void write_table(const QString& table);
    void write_table_page(const table_summary& summary);
    void write_timeline();
    void write_media_page();
    void write_index();
    void write_run_json();
    void write_text(const QString& relative, const QString& text);
    void keep_error(const QString& error)
    {
        if (m_error.isEmpty() && !error.isEmpty())
            m_error = error;
    }

    QJsonValue shown_cell(const QString& column, const QString& value) const;
    QString picture_for(const QString& stored, const QString& row_label);
    QString page(const QString& title, const QString& current, const QString& body,
                 const QStringList& data_scripts = {}) const;
    QString navigation(const QString& current) const;

    qint64 rows_from(const QString& place) const;
    QString index_found() const;
    QString index_looked_for() const;
    QString index_findings() const;
    QString index_evidence() const;
    QString index_run_facts() const;

    QString m_folder;
    run_record m_run;
    const result_reader& m_db;
    bool m_has_source;
    QString m_error;

    QList<table_summary> m_tables;
    timeline::builder m_timeline;
    QMap<QString, qint64> m_rows_per_source;  // below the source root
    QStringList m_stored_sources;
    QMap<QString, picture_copy> m_pictures;     // by SHA-256
    QHash<QString, QString> m_picture_of_path;  // absolute source path -> SHA-256 ("" when not a picture)
};

bool report_builder::write(QString* problem)
{
    for (const char* sub : {"csv", "data", "media"}) {
        if (!QDir(m_folder).mkpath(sub)) {
            *problem = "cannot create " + QDir(m_folder).filePath(sub);
            return false;
        }
    }
    if (!write_assets()) {
        *problem = m_error;
        return false;
    }
    if (m_has_source && m_run.looked_for.isEmpty())
        m_run.looked_for = evidence_files::look_for(m_run.source_root, m_run.os_scheme, m_run.users);
    for (const QString& table : m_db.tables())
        write_table(table);
    m_timeline.finish();
    write_timeline();
    if (m_has_source && m_run.evidence.isEmpty())
        m_run.evidence = evidence_files::files_read(m_run.source_root, m_run.looked_for, m_stored_sources);
    write_media_page();
    write_index();
    write_run_json();
    *problem = m_error;
    return m_error.isEmpty();
}

bool report_builder::write_assets()
{
    QDirIterator assets(":/report", QDir::Files, QDirIterator::Subdirectories);
    while (assets.hasNext()) {
        const QString from = assets.next();
        const QString to = m_folder + "/assets" + from.mid(QString(":/report").size());
        QDir().mkpath(QFileInfo(to).path());
        QFile in(from);
        if (!in.open(QIODevice::ReadOnly)) {
            keep_error("cannot read the report asset " + from);
            continue;
        }
        QByteArray bytes = in.readAll();
        // A source-map note would make a browser's developer tools ask for a
        // file that is not there.
        if (from.endsWith(".js"))
            bytes.replace(QByteArray("//# sourceMappingURL="), QByteArray("// map: "));
        output_file out(to);
        out.write(bytes);
        keep_error(out.close());
    }
    return m_error.isEmpty();
}

QJsonValue report_builder::shown_cell(const QString& column, const QString& value) const
{
    if (value.isEmpty())
        return QString();
    if (report_values::is_time_column(column)) {
        const QString readable = report_values::readable_time(value);
        if (!readable.isEmpty())
            return QJsonArray{readable, value};
    } else if (report_values::is_serial_column(column)) {
        const QString hex = report_values::serial_hex(value);
        if (!hex.isEmpty())
            return hex + " (" + value + ")";
    }
    return value;
}

QString report_builder::picture_for(const QString& stored, const QString& row_label)
{
    if (!m_has_source)
        return QString();
    for (const QString& piece : stored.split(report_values::k_list_separator)) {
        const QString absolute = evidence_files::absolute_in_source(piece, m_run.source_root);
        if (absolute.isEmpty())
            continue;
        auto known = m_picture_of_path.constFind(absolute);
        if (known == m_picture_of_path.constEnd()) {
            const evidence_files::picture found = evidence_files::read_picture(absolute, m_run.source_root);
            QString sha;
            if (!found.kind.isEmpty()) {
                sha = QString::fromLatin1(QCryptographicHash::hash(found.bytes, QCryptographicHash::Sha256).toHex());
                if (!m_pictures.contains(sha)) {
                    picture_copy copy;
                    copy.file = "media/" + sha + "." + found.kind;
                    copy.source = log_findings::below_root(absolute, m_run.source_root);
                    copy.size = found.bytes.size();
                    copy.md5
                        = QString::fromLatin1(QCryptographicHash::hash(found.bytes, QCryptographicHash::Md5).toHex());
                    copy.sha256 = sha;
                    output_file out(m_folder + "/" + copy.file);
                    out.write(found.bytes);
                    keep_error(out.close());
                    m_pictures.insert(sha, copy);
                }
            }
            known = m_picture_of_path.insert(absolute, sha);
        }
        if (!known->isEmpty()) {
            picture_copy& copy = m_pictures[*known];
            // A cover shared by a whole library names its first rows only.
            if (copy.rows.size() < 10)
                copy.rows << row_label;
            ++copy.row_count;
            return copy.file;
        }
    }
    return QString();
}

void report_builder::write_table(const QString& table)
{
    static const QRegularExpression plain_name("^[A-Za-z0-9_]+$");
    if (!plain_name.match(table).hasMatch())
        return;  // a name that cannot be a file name of ours
    const QStringList columns = m_db.columns(table);
    const QList<bool> filled = m_db.columns_with_values(table);
    table_summary summary;
    summary.name = table;
    QList<int> shown_at;
    QStringList shown;
    for (int i = 0; i < columns.size(); ++i) {
        if (filled.value(i)) {
            shown_at << i;
            shown << columns.at(i);
        } else {
            summary.empty_columns << columns.at(i);
        }
    }
    const int picture_at = int(columns.indexOf(picture_column_of(table)));
    const int source_at = int(columns.indexOf("source_file"));
    const int row_id_at = int(columns.indexOf("INT"));

    output_file csv(m_folder + "/csv/" + table + ".csv");
    csv.write(csv_record(columns));
    QJsonArray shown_columns;
    if (picture_at >= 0)
        shown_columns.append(QJsonObject{{"title", "picture"}, {"kind", "image"}});
    for (const QString& name : shown)
        shown_columns.append(
            QJsonObject{{"title", name}, {"kind", report_values::is_time_column(name) ? "time" : "text"}});
    const QString data_path = m_folder + "/data/" + table + ".js";
    output_file data(data_path);
    data.write(data_file_head("table", QJsonObject{{"name", table}, {"columns", shown_columns}}));
    m_timeline.begin_table(table, columns);
    const bool read = m_db.for_each_row(table, [&](const QStringList& row) {
        csv.write(csv_record(row));
        m_timeline.add_row(row);
        if (source_at >= 0 && !row.at(source_at).isEmpty()) {
            const QString stored = row.at(source_at);
            const QString below = log_findings::below_root(stored, m_run.source_root);
            if (!m_rows_per_source.contains(below))
                m_stored_sources << stored;
            ++m_rows_per_source[below];
        }
        QJsonArray cells;
        if (picture_at >= 0) {
            const QString row_id = row_id_at >= 0 ? row.at(row_id_at) : QString::number(summary.rows + 1);
            cells.append(picture_for(row.at(picture_at), table + " #" + row_id));
        }
        for (int at : shown_at)
            cells.append(shown_cell(columns.at(at), row.at(at)));
        data.write(data_file_row(cells, summary.rows == 0));
        ++summary.rows;
        return true;
    });
    // A damaged result keeps the report of what could be read.
    summary.unreadable = !read;
    keep_error(csv.close());
    data.write(QByteArray("]});\n"));
    keep_error(data.close());
    summary.has_page = summary.rows > 0;
    m_tables << summary;
    if (summary.has_page)
        write_table_page(summary);
    else
        QFile::remove(data_path);
}

void report_builder::write_table_page(const table_summary& summary)
{
    QString body = "<h1>" + html(summary.name) + "</h1>\n<p class=\"note\">" + QString::number(summary.rows)
                   + (summary.rows == 1 ? " row" : " rows")
                   + ". Times are shown in UTC (ISO 8601); the stored value, seconds since 1970, shows on hover. "
                     "All columns as stored: <a href=\"csv/"
                   + html(summary.name) + ".csv\">csv/" + html(summary.name) + ".csv</a>.</p>\n"
                   + "<table id=\"rows\" class=\"display compact nowrap\" style=\"width:100%\"></table>\n";
    if (!summary.empty_columns.isEmpty())
        body += "<p class=\"empty-columns\">Columns empty in every row: " + html(summary.empty_columns.join(", "))
                + ".</p>\n";
    write_text("table-" + summary.name + ".html",
               page(summary.name, summary.name, body, {"data/" + summary.name + ".js"}));
}

void report_builder::write_timeline()
{
    output_file csv(m_folder + "/timeline.csv");
    csv.write(csv_record(timeline::builder::csv_header()));
    output_file data(m_folder + "/data/timeline.js");
    const QJsonArray columns = {
        QJsonObject{{"title", "time (UTC)"}, {"kind", "time"}, {"key", "time"}},
        QJsonObject{{"title", "what the time means"}, {"kind", "text"}, {"key", "meaning"}},
        QJsonObject{{"title", "table"}, {"kind", "table"}, {"key", "table"}},
        QJsonObject{{"title", "column"}, {"kind", "text"}, {"key", "column"}},
        QJsonObject{{"title", "row"}, {"kind", "text"}, {"key", "row"}},
        QJsonObject{{"title", "user"}, {"kind", "text"}, {"key", "user"}},
        QJsonObject{{"title", "file name"}, {"kind", "text"}, {"key", "name"}},
        QJsonObject{{"title", "source file"}, {"kind", "text"}, {"key", "source"}},
    };
    QStringList users = m_timeline.users();
    users.sort();
    data.write(data_file_head("timeline", QJsonObject{{"columns", columns},
                                                      {"users", QJsonArray::fromStringList(users)},
                                                      {"tables", QJsonArray::fromStringList(m_timeline.tables())}}));
    bool first = true;
    m_timeline.for_each([&](const timeline::shown_event& e) {
        const QStringList fields = timeline::builder::csv_fields(e);
        csv.write(csv_record(fields));
        const QJsonArray cells = {
            QJsonArray{fields.at(0), fields.at(1)}, e.meaning, e.table, e.column, e.row, e.user, e.name, e.source_file};
        data.write(data_file_row(cells, first));
        first = false;
    });
    data.write(QByteArray("]});\n"));
    keep_error(csv.close());
    keep_error(data.close());

    const QString body
        = "<h1>Timeline</h1>\n<p class=\"note\">" + QString::number(m_timeline.size())
          + " events: every time value of every row, oldest first. A time of 0 (a file that recorded none) is "
            "left out. Also as <a href=\"timeline.csv\">timeline.csv</a>.</p>\n"
            "<div class=\"filters\">\n"
            "<label>User <select id=\"filter-user\"><option value=\"*\">all</option></select></label>\n"
            "<label>Table <select id=\"filter-table\"><option value=\"*\">all</option></select></label>\n"
            "<label>From <input id=\"filter-from\" type=\"date\"></label>\n"
            "<label>To <input id=\"filter-to\" type=\"date\"></label>\n"
            "</div>\n"
            "<table id=\"timeline\" class=\"display compact\" style=\"width:100%\"></table>\n";
    write_text("timeline.html", page("Timeline", "timeline", body, {"data/timeline.js"}));
}

void report_builder::write_media_page()
{
    if (m_pictures.isEmpty())
        return;
    QString body = "<h1>Pictures</h1>\n<p class=\"note\">Album art and thumbnails found on the source, copied into "
                   "<code>media/</code> under the name of their SHA-256. The evidence itself is never linked.</p>\n"
                   "<div class=\"media\">\n";
    for (const picture_copy& p : m_pictures) {
        body += "<figure><a href=\"" + html(p.file) + "\"><img src=\"" + html(p.file) + "\" alt=\"\"></a>"
                + "<figcaption>" + html(p.source) + "<br>" + QString::number(p.size)
                + " bytes<br>MD5 <span class=\"hash\">" + p.md5 + "</span><br>SHA-256 <span class=\"hash\">" + p.sha256
                + "</span><br>rows: " + html(p.rows.join(", "))
                + (p.row_count > p.rows.size() ? QString(" and %1 more").arg(p.row_count - p.rows.size()) : QString())
                + "</figcaption></figure>\n";
    }
    body += "</div>\n";
    write_text("media.html", page("Pictures", "media", body));
}

QString report_builder::index_run_facts() const
{
    const run_record& r = m_run;
    QList<QPair<QString, QString>> facts = {
        {"Tool",
         "vlc-artifacts " + r.tool_version + (r.tool_commit.isEmpty() ? QString() : " (commit " + r.tool_commit + ")")},
        {"Started (UTC)", report_values::iso_utc(r.started)},
        {"Ended (UTC)", report_values::iso_utc(r.ended)},
        {"Duration", duration_text(r.started, r.ended)},
        {"Host", r.host_name},
        {"Command line", shell_quoted(r.command_line)},
        {"Source root", r.source_root},
        {"Scheme",
         r.os_scheme.isEmpty() ? QString() : r.os_scheme + " (" + plugin_session::display_name_of(r.os_scheme) + ")"},
        {"Users", r.users.join(", ")},
        {"Tables", r.tables.join(", ")},
        {"Engine edition", QString::number(r.engine)},
        {"Result database", r.result_database},
    };
    if (r.cancelled)
        facts.append({QString("Cancelled"), QString("yes: the rows written before the cancel are kept")});
    if (r.report_made.isValid()) {
        facts.append({QString("Report made (UTC)"), report_values::iso_utc(r.report_made)});
        facts.append({QString("Report command line"), shell_quoted(r.report_command_line)});
    }
    QString text = "<table class=\"facts\">\n";
    for (const auto& fact : facts) {
        if (!fact.second.isEmpty())
            text += "<tr><th>" + html(fact.first) + "</th><td>" + html(fact.second) + "</td></tr>\n";
    }
    return text + "</table>\n";
}

QString report_builder::index_found() const
{
    // Rows per scheme and account, one column per table.
    QMap<QPair<QString, QString>, QHash<QString, qint64>> counts;
    for (const table_summary& t : m_tables) {
        for (const auto& entry : m_db.rows_per_account(t.name))
            counts[{entry.scheme, entry.user}][t.name] += entry.rows;
    }
    QString text = "<table class=\"grid\">\n<thead><tr><th>scheme</th><th>user</th>";
    for (const table_summary& t : m_tables)
        text += "<th>"
                + (t.has_page ? "<a href=\"table-" + html(t.name) + ".html\">" + html(t.name) + "</a>" : html(t.name))
                + "</th>";
    text += "</tr></thead>\n<tbody>\n";
    for (auto it = counts.constBegin(); it != counts.constEnd(); ++it) {
        text
            += "<tr><td>" + html(it.key().first) + "</td><td>"
               + html(it.key().first.isEmpty() && it.key().second.isEmpty() ? QString() : account_text(it.key().second))
               + "</td>";
        for (const table_summary& t : m_tables) {
            const qint64 n = it.value().value(t.name);
            text += QString("<td class=\"count%1\">%2</td>").arg(n == 0 ? " zero" : "").arg(n);
        }
        text += "</tr>\n";
    }
    text += "<tr><th colspan=\"2\">all rows</th>";
    for (const table_summary& t : m_tables)
        text += t.unreadable ? QString("<td class=\"status-left-out\">could not be read</td>")
                             : QString("<td class=\"count%1\">%2</td>").arg(t.rows == 0 ? " zero" : "").arg(t.rows);
    return text + "</tr>\n</tbody>\n</table>\n";
}

// Rows whose source file is the place, or lies below it (a folder).
qint64 report_builder::rows_from(const QString& place) const
{
    qint64 rows = 0;
    for (auto it = m_rows_per_source.constBegin(); it != m_rows_per_source.constEnd(); ++it) {
        if (it.key() == place || it.key().startsWith(place + "/"))
            rows += it.value();
    }
    return rows;
}

QString report_builder::index_looked_for() const
{
    if (m_run.looked_for.isEmpty())
        return "<p class=\"note\">No places to look for are known for this source"
               + QString(m_has_source ? "." : " (the source was not at hand when the report was made).") + "</p>\n";
    QList<QStringList> rows;
    for (const auto& place : m_run.looked_for)
        rows << QStringList{cell(account_text(place.user)), cell(place.what), cell(place.path),
                            cell(place.status, status_class(place.status)),
                            cell(QString::number(rows_from(place.path)), "count")};
    return grid({"user", "what", "where (below the source root)", "status", "rows from it"}, rows);
}

QString report_builder::index_findings() const
{
    // Per account, what was not found or left out, from the places looked
    // for and from the debug log of the run.
    QMap<QString, QList<log_findings::finding>> by_user;
    QSet<QString> listed;
    for (const auto& place : m_run.looked_for) {
        if (place.status == "found")
            continue;
        by_user[place.user].append({place.user, place.status, place.what, place.path, QString(), QString()});
        listed.insert(place.status + '\n' + place.path);
    }
    for (const auto& f : m_run.findings) {
        if (!f.path.isEmpty() && listed.contains(f.kind + '\n' + f.path))
            continue;
        by_user[f.user].append(f);
    }
    if (by_user.isEmpty())
        return "<p class=\"note\">Everything looked for was found, and the debug log names nothing left out or cut "
               "off.</p>\n";
    QString text;
    for (auto it = by_user.constBegin(); it != by_user.constEnd(); ++it) {
        QList<QStringList> rows;
        for (const auto& f : it.value())
            rows << QStringList{cell(f.kind, status_class(f.kind)), cell(f.what), cell(f.path),
                                cell(f.detail.isEmpty() ? f.message : f.detail)};
        text += "<h3>" + html(it.key().isEmpty() ? QString("Not tied to an account") : it.key()) + "</h3>\n"
                + grid({"what happened", "what", "path", "detail"}, rows);
    }
    return text;
}

QString report_builder::index_evidence() const
{
    if (m_run.evidence.isEmpty())
        return "<p class=\"note\">No evidence file was read"
               + QString(m_has_source ? "." : ", or the source was not at hand when the report was made.") + "</p>\n";
    QList<QStringList> rows;
    for (const auto& f : m_run.evidence)
        rows << QStringList{cell(f.path),           cell(f.size >= 0 ? QString::number(f.size) : QString(), "count"),
                            cell(f.modified_utc),   cell(f.md5.isEmpty() ? f.note : f.md5, "hash"),
                            cell(f.sha256, "hash"), cell(QString::number(m_rows_per_source.value(f.path)), "count")};
    return grid({"path (below the source root)", "size", "modified (UTC)", "MD5", "SHA-256", "rows"}, rows);
}

void report_builder::write_index()
{
    QString downloads;
    for (const table_summary& t : m_tables)
        downloads += "<a href=\"csv/" + html(t.name) + ".csv\">" + html(t.name) + ".csv</a> ";
    const QString scheme
        = m_run.os_scheme.isEmpty() ? QString() : plugin_session::display_name_of(m_run.os_scheme) + " ";
    QString body = "<h1>VLC traces on the " + html(scheme) + "source</h1>\n";
    body += "<h2>The run</h2>\n" + index_run_facts();
    body += "<h2>Found: rows per account</h2>\n" + index_found();
    body += "<h2>Looked for</h2>\n" + index_looked_for();
    body += "<h2>Not found, left out, cut off</h2>\n" + index_findings();
    body += "<h2>Evidence files read</h2>\n"
            "<p class=\"note\">Hashed read-only at the end of the run; sizes in bytes.</p>\n"
            + index_evidence();
    body += "<h2>Files</h2>\n<p>Every table as stored (UTF-8, RFC 4180): " + downloads
            + "<br>The timeline: <a href=\"timeline.csv\">timeline.csv</a>. "
              "The run record: <a href=\"run.json\">run.json</a>.</p>\n";
    write_text("index.html", page("VLC traces: report", "index", body));
}

void report_builder::write_run_json()
{
    write_text("run.json", QString::fromUtf8(QJsonDocument(m_run.to_json()).toJson(QJsonDocument::Indented)));
}

void report_builder::write_text(const QString& relative, const QString& text)
{
    output_file out(m_folder + "/" + relative);
    out.write(text);
    keep_error(out.close());
}

QString report_builder::navigation(const QString& current) const
{
    auto link = [&](const QString& target, const QString& file, const QString& label) {
        return "<a href=\"" + html(file) + "\"" + (target == current ? " class=\"current\"" : "") + ">" + html(label)
               + "</a>";
    };
    QString nav = link("index", "index.html", "Overview") + link("timeline", "timeline.html", "Timeline");
    for (const table_summary& t : m_tables) {
        if (t.has_page)
            nav += link(t.name, "table-" + t.name + ".html", t.name);
    }
    if (!m_pictures.isEmpty())
        nav += link("media", "media.html", "Pictures");
    return nav;
}

QString report_builder::page(const QString& title, const QString& current, const QString& body,
                             const QStringList& data_scripts) const
{
    QString scripts;
    for (const QString& script : data_scripts)
        scripts += "<script src=\"" + html(script) + "\"></script>\n";
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
           // Nothing of the page may reach past the report's own files.
           "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; script-src file:; "
           "style-src file: 'unsafe-inline'; img-src file:; connect-src 'none'\">\n"
           "<title>"
           + html(title)
           + "</title>\n"
             "<link rel=\"stylesheet\" href=\"assets/css/jquery.dataTables.min.css\">\n"
             "<link rel=\"stylesheet\" href=\"assets/report.css\">\n</head>\n<body>\n<header>"
           + navigation(current) + "</header>\n<main>\n" + body
           + "</main>\n<script src=\"assets/jquery.min.js\"></script>\n"
             "<script src=\"assets/jquery.dataTables.min.js\"></script>\n"
             "<script src=\"assets/report.js\"></script>\n"
           + scripts + "</body>\n</html>\n";
}

}  // namespace

QString report_folder(const QString& out_dir)
{
    return QDir(out_dir).filePath("report");
}

bool write_report(const report_request& request, QString* index_path, QString* problem)
{
    const QString database = plugin_session::result_database_path(request.out_dir);
    if (!QFileInfo(database).isFile()) {
        *problem = "no result database at " + database;
        return false;
    }
    result_reader db(database);
    if (!db.is_open()) {
        *problem = "cannot read the result database " + database + ": " + db.error();
        return false;
    }
    const QString final_folder = report_folder(request.out_dir);
    const QFileInfo existing(final_folder);
    if (existing.exists() && !(existing.isDir() && QFileInfo(final_folder + "/run.json").isFile())) {
        *problem = final_folder + " exists and is not a report of this program; move it away first";
        return false;
    }

    run_record run = request.run;
    run.result_database = database;
    if (run.findings.isEmpty() && !request.debug_log.isEmpty())
        run.findings = log_findings::findings_in_log(request.debug_log, request.debug_log_offset, run.source_root);

    // Written aside and put in place at the end, so that a failed report
    // never leaves half a page set where a whole one was.
    QTemporaryDir staging(QDir(request.out_dir).filePath("report-XXXXXX"));
    if (!staging.isValid()) {
        *problem = "cannot write into " + request.out_dir + ": " + staging.errorString();
        return false;
    }
    // A temporary folder is private to its maker; the report is as readable
    // as any folder the examiner makes.
    const mode_t mask = umask(0);
    umask(mask);
    QFile::setPermissions(staging.path(), QFileDevice::Permissions(permissions_for_mask(mask)));
    report_builder builder(staging.path(), run, db);
    if (!builder.write(problem))
        return false;
    const QString old_folder = final_folder + ".old";
    QDir(old_folder).removeRecursively();
    if (existing.exists() && !QDir().rename(final_folder, old_folder)) {
        *problem = "cannot replace " + final_folder;
        return false;
    }
    if (!QDir().rename(staging.path(), final_folder)) {
        *problem = "cannot move the report into " + final_folder;
        return false;
    }
    QDir(old_folder).removeRecursively();
    *index_path = final_folder + "/index.html";
    return true;
}
