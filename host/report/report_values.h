#pragma once

// How the report shows the values of result columns: times as ISO 8601 UTC
// beside the stored epoch seconds, volume serial numbers in their usual
// hexadecimal form beside the stored decimal, lists split at the separator.

#include <QDateTime>
#include <QString>
#include <QStringList>

namespace report_values {

// The separator that joins several values inside one column.
inline const QString k_list_separator = QStringLiteral(";++::++;");

// Columns that hold epoch seconds (a list of them where the name is plural).
bool is_time_column(const QString& column);

// Columns that hold a volume serial number in decimal.
bool is_serial_column(const QString& column);

// "2023-11-14T22:13:20Z" for whole seconds since 1970 in UTC; empty for a text
// that is not a whole number or lies outside the calendar.
QString iso_utc(const QString& epoch_seconds);
QString iso_utc(qint64 epoch_seconds);
QString iso_utc(const QDateTime& moment);

// The readable form of a stored time value, several joined by "; "; empty
// when no piece is a time.
QString readable_time(const QString& stored);

// "A1B2-C3D4" for a 32-bit decimal serial; empty otherwise.
QString serial_hex(const QString& stored);

// One field of a CSV record (RFC 4180): quoted when it holds a comma, a quote
// or a line break, quotes doubled.
QString csv_field(const QString& value);
QString csv_record(const QStringList& fields);

}  // namespace report_values
