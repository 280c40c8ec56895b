#include "timeline.h"

#include <QDateTime>
#include <QFileInfo>

#include <algorithm>

#include "report_values.h"

namespace timeline {

const QList<meaning_rule>& meaning_rules()
{
    static const QList<meaning_rule> rules = {
        // Media libraries (the player's own, or the app's database).
        {"media_library", "last_played_date", "", "last played"},
        {"media_library", "insertion_date", "", "added to library"},
        {"media_library", "release_date", "", "released (tag)"},
        {"media_library", "last_modification_date", "", "media file modified (per library)"},
        {"media_library", "date_added", "", "media file created (on the source)"},
        {"recent_played", "date_added", "", "added (metadata)"},
        // What the system's metadata says of a media file.
        {"*", "content_creation_date", "", "content created (metadata)"},
        {"*", "content_modification_date", "", "content modified (metadata)"},
        {"*", "fs_creation_date", "", "file created (file system)"},
        {"*", "fs_content_change_date", "", "file modified (file system)"},
        {"*", "last_used_date", "", "last opened (metadata)"},
        {"*", "used_dates", "", "opened (metadata)"},
        {"*", "all_used_dates", "", "opened (metadata)"},
        {"*", "first_date", "", "first used (metadata)"},
        {"*", "last_date", "", "last used (metadata)"},
        // Jump lists: a shell link carries its target's times; the list's own
        // record of when an item was opened is written into the description.
        {"recents", "creation_timestamp", "*.automaticDestinations-ms", "link target created"},
        {"recents", "modification_timestamp", "*.automaticDestinations-ms", "link target modified"},
        {"recents", "last_access_timestamp", "*.automaticDestinations-ms", "link target accessed"},
        {"recents", "description", "*.automaticDestinations-ms", "opened (jump list)",
         "Opened (\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d) UTC", "yyyy-MM-dd HH:mm:ss"},
        // Shared-file lists keep bookmarks, which carry the target's birth.
        {"recents", "creation_timestamp", "*.sfl*", "bookmark target created"},
        {"recents", "creation_timestamp", "", "target created"},
        {"recents", "modification_timestamp", "", "target modified"},
        {"recents", "last_access_timestamp", "", "target accessed"},
        // Looked up on the source for each entry of a playlist.
        {"playlists", "creation_timestamp", "", "media file created (on the source)"},
        {"playlists", "modification_timestamp", "", "media file modified (on the source)"},
        {"playlists", "last_access_timestamp", "", "media file accessed (on the source)"},
        {"album_art", "creation_timestamp", "", "art file created"},
        {"album_art", "modification_timestamp", "", "art file modified"},
        {"album_art", "last_access_timestamp", "", "art file accessed"},
        {"exportfilelist", "exp_time", "", "exported"},
    };
    return rules;
}

QString default_meaning(const QString& column)
{
    return QString(column).replace('_', ' ');
}

namespace {

// What the row is about, first filled first.
const QStringList k_name_columns
    = {"file_name",    "title",        "album_name", "playlist_name", "podcasts", "art_file_name",
       "windows_path", "network_path", "file_path",  "filepath",      "file_url", "location"};

bool rule_fits_column(const meaning_rule& rule, const QString& table, const QString& column)
{
    return (qstrcmp(rule.table, "*") == 0 || table == QLatin1String(rule.table))
           && column == QLatin1String(rule.column);
}

}  // namespace

int builder::intern(QStringList& list, QHash<QString, int>& index, const QString& text)
{
    const auto known = index.constFind(text);
    if (known != index.constEnd())
        return *known;
    list << text;
    index.insert(text, int(list.size() - 1));
    return int(list.size() - 1);
}

void builder::begin_table(const QString& table, const QStringList& columns)
{
    m_tables << table;
    m_columns << columns;
    m_plans.clear();
    m_name_columns.clear();
    m_user_column = int(columns.indexOf("system_user"));
    m_source_column = int(columns.indexOf("source_file"));
    m_row_id_column = int(columns.indexOf("INT"));
    m_ordinal = 0;
    for (const QString& name : k_name_columns) {
        const int at = int(columns.indexOf(name));
        if (at >= 0)
            m_name_columns << at;
    }
    const QList<meaning_rule>& rules = meaning_rules();
    for (int c = 0; c < columns.size(); ++c) {
        column_plan plan;
        plan.column = c;
        for (int r = 0; r < rules.size(); ++r) {
            if (rule_fits_column(rules.at(r), table, columns.at(c)))
                plan.rules << r;
        }
        if (report_values::is_time_column(columns.at(c)) || !plan.rules.isEmpty())
            m_plans << plan;
    }
}

int builder::meaning_of(const column_plan& plan, const QString& source_name)
{
    const QList<meaning_rule>& rules = meaning_rules();
    for (int r : plan.rules) {
        const char* glob = rules.at(r).source_file;
        if (*glob == '\0')
            return r;
        auto known = m_globs.find(r);
        if (known == m_globs.end())
            known = m_globs.insert(
                r, QRegularExpression(QRegularExpression::wildcardToRegularExpression(QString::fromUtf8(glob)),
                                      QRegularExpression::CaseInsensitiveOption));
        if (known->match(source_name).hasMatch())
            return r;
    }
    return -1;
}

void builder::add_row(const QStringList& row)
{
    ++m_ordinal;
    if (m_plans.isEmpty())
        return;
    const QString source = m_source_column >= 0 ? row.value(m_source_column) : QString();
    const QString source_name = QFileInfo(source).fileName();
    const qsizetype before = m_events.size();
    const int row_index = int(m_rows.size());
    for (const column_plan& plan : m_plans) {
        const QString value = row.value(plan.column);
        if (value.isEmpty())
            continue;
        const int rule = meaning_of(plan, source_name);
        const QString column = m_columns.last().at(plan.column);
        if (rule < 0 && !report_values::is_time_column(column))
            continue;  // a text column whose rules fit other sources
        const QString meaning
            = rule < 0 ? default_meaning(column) : QString::fromUtf8(meaning_rules().at(rule).meaning);
        const int meaning_index = intern(m_meanings, m_meaning_index, meaning);
        if (rule >= 0 && meaning_rules().at(rule).text_pattern)
            add_text_events(plan, value, rule, meaning_index, row_index);
        else
            add_time_events(plan, value, meaning_index, row_index);
    }
    if (m_events.size() == before)
        return;
    row_facts facts;
    facts.row_id = m_row_id_column >= 0 ? row.value(m_row_id_column) : QString::number(m_ordinal);
    for (int at : m_name_columns) {
        if (!row.value(at).isEmpty()) {
            facts.name = row.value(at);
            break;
        }
    }
    facts.user = intern(m_strings_users, m_user_index, m_user_column >= 0 ? row.value(m_user_column) : QString());
    facts.source_file = intern(m_sources, m_source_index, source);
    m_rows << facts;
}

void builder::add_time_events(const column_plan& plan, const QString& value, int meaning, int row)
{
    for (const QString& piece : value.split(report_values::k_list_separator)) {
        bool ok = false;
        const qint64 seconds = piece.trimmed().toLongLong(&ok);
        // Zero is what a file writes where it has no time.
        if (!ok || seconds == 0 || report_values::iso_utc(seconds).isEmpty())
            continue;
        m_events.append({seconds, qint32(m_tables.size() - 1), qint32(plan.column), qint32(meaning), qint32(row)});
    }
}

void builder::add_text_events(const column_plan& plan, const QString& value, int rule, int meaning, int row)
{
    const meaning_rule& r = meaning_rules().at(rule);
    auto pattern = m_patterns.find(rule);
    if (pattern == m_patterns.end())
        pattern = m_patterns.insert(rule, QRegularExpression(QString::fromUtf8(r.text_pattern)));
    auto matches = pattern->globalMatch(value);
    while (matches.hasNext()) {
        QDateTime moment = QDateTime::fromString(matches.next().captured(1), QString::fromUtf8(r.text_format));
        if (!moment.isValid())
            continue;
        moment.setTimeSpec(Qt::UTC);
        m_events.append({moment.toSecsSinceEpoch(), qint32(m_tables.size() - 1), qint32(plan.column), qint32(meaning),
                         qint32(row)});
    }
}

void builder::finish()
{
    std::stable_sort(m_events.begin(), m_events.end(), [](const event& a, const event& b) {
        if (a.seconds != b.seconds)
            return a.seconds < b.seconds;
        if (a.row != b.row)
            return a.row < b.row;
        return a.column < b.column;
    });
}

void builder::for_each(const std::function<void(const shown_event&)>& visit) const
{
    shown_event shown;
    for (const event& e : m_events) {
        const row_facts& facts = m_rows.at(e.row);
        shown.seconds = e.seconds;
        shown.meaning = m_meanings.at(e.meaning);
        shown.table = m_tables.at(e.table);
        shown.column = m_columns.at(e.table).at(e.column);
        shown.row = facts.row_id;
        shown.user = m_strings_users.at(facts.user);
        shown.name = facts.name;
        shown.source_file = m_sources.at(facts.source_file);
        visit(shown);
    }
}

QStringList builder::tables() const
{
    QList<bool> used(m_tables.size(), false);
    for (const event& e : m_events)
        used[e.table] = true;
    QStringList named;
    for (int i = 0; i < m_tables.size(); ++i) {
        if (used.at(i))
            named << m_tables.at(i);
    }
    return named;
}

QStringList builder::csv_header()
{
    return {"time_utc", "epoch_seconds", "meaning", "table", "column", "row", "user", "name", "source_file"};
}

QStringList builder::csv_fields(const shown_event& event)
{
    return {report_values::iso_utc(event.seconds),
            QString::number(event.seconds),
            event.meaning,
            event.table,
            event.column,
            event.row,
            event.user,
            event.name,
            event.source_file};
}

}  // namespace timeline
