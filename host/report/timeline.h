#pragma once

// The timeline: every time value of every result row as one event, with what
// the time means. The meaning comes from a table of rules by table and column
// (optionally narrowed to rows from certain source files), so a new artifact
// that fills an existing column, or labelled times inside a text column, is
// one more rule, not new code.

#include <QHash>
#include <QList>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <functional>

namespace timeline {

struct meaning_rule
{
    const char* table;  // "*": any table
    const char* column;
    const char* source_file;  // wildcard on the source file's name; "" for any
    const char* meaning;
    // For a text column: the times written in it, found by a pattern whose
    // first capture is a UTC time in the given format.
    const char* text_pattern = nullptr;
    const char* text_format = nullptr;
};

// The rules, most specific first: the first that fits a value is taken.
const QList<meaning_rule>& meaning_rules();

// What a time means where no rule names its column: the column's own words.
QString default_meaning(const QString& column);

struct shown_event
{
    qint64 seconds = 0;
    QString meaning;
    QString table;
    QString column;
    QString row;  // the row's INT
    QString user;
    QString name;  // the file (or album, playlist, feed) the row is about
    QString source_file;
};

class builder
{
public:
    // Rows of one table follow, each with the table's columns in order.
    void begin_table(const QString& table, const QStringList& columns);
    void add_row(const QStringList& row);
    // Sorted by time, then table, row and column.
    void finish();

    qint64 size() const { return m_events.size(); }
    void for_each(const std::function<void(const shown_event&)>& visit) const;
    QStringList users() const { return m_strings_users; }
    // The tables that gave events, in table order.
    QStringList tables() const;

    // The CSV header and the fields of one event, in the order both the CSV
    // and the page use.
    static QStringList csv_header();
    static QStringList csv_fields(const shown_event& event);

private:
    struct column_plan
    {
        int column = -1;
        QList<int> rules;  // candidate rules, in rule order
    };
    struct event
    {
        qint64 seconds;
        qint32 table;
        qint32 column;
        qint32 meaning;
        qint32 row;  // index into m_rows
    };
    struct row_facts
    {
        QString row_id;
        QString name;
        qint32 user;
        qint32 source_file;
    };

    int meaning_of(const column_plan& plan, const QString& source_name);
    void add_time_events(const column_plan& plan, const QString& value, int meaning, int row);
    void add_text_events(const column_plan& plan, const QString& value, int rule, int meaning, int row);
    static int intern(QStringList& list, QHash<QString, int>& index, const QString& text);

    QStringList m_tables;
    QList<QStringList> m_columns;
    QList<column_plan> m_plans;
    int m_user_column = -1;
    int m_source_column = -1;
    int m_row_id_column = -1;
    QList<int> m_name_columns;
    qint64 m_ordinal = 0;

    QList<event> m_events;
    QList<row_facts> m_rows;
    QStringList m_meanings;
    QHash<QString, int> m_meaning_index;
    QStringList m_strings_users;
    QHash<QString, int> m_user_index;
    QStringList m_sources;
    QHash<QString, int> m_source_index;
    QHash<int, QRegularExpression> m_globs;
    QHash<int, QRegularExpression> m_patterns;
};

}  // namespace timeline
