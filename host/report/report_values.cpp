#include "report_values.h"

namespace report_values {

bool is_time_column(const QString& column)
{
    return column.endsWith("_date") || column.endsWith("_dates") || column.endsWith("_timestamp")
           || column == "exp_time";
}

bool is_serial_column(const QString& column)
{
    return column == "serial_no";
}

QString iso_utc(const QDateTime& moment)
{
    if (!moment.isValid())
        return QString();
    return moment.toUTC().toString("yyyy-MM-ddTHH:mm:ssZ");
}

QString iso_utc(qint64 epoch_seconds)
{
    // Beyond year 9999 the ISO form no longer holds four digits of year.
    constexpr qint64 k_year_10000 = 253402300800LL;
    if (epoch_seconds >= k_year_10000 || epoch_seconds < -62135596800LL)
        return QString();
    return iso_utc(QDateTime::fromSecsSinceEpoch(epoch_seconds, Qt::UTC));
}

QString iso_utc(const QString& epoch_seconds)
{
    bool ok = false;
    const qint64 seconds = epoch_seconds.trimmed().toLongLong(&ok);
    return ok ? iso_utc(seconds) : QString();
}

QString readable_time(const QString& stored)
{
    QStringList shown;
    bool any_time = false;
    for (const QString& piece : stored.split(k_list_separator)) {
        const QString iso = iso_utc(piece);
        any_time = any_time || !iso.isEmpty();
        shown << (iso.isEmpty() ? piece : iso);
    }
    return any_time ? shown.join("; ") : QString();
}

QString serial_hex(const QString& stored)
{
    bool ok = false;
    const qulonglong value = stored.trimmed().toULongLong(&ok);
    if (!ok || value > 0xFFFFFFFFULL)
        return QString();
    const QString hex = QString("%1").arg(value, 8, 16, QChar('0')).toUpper();
    return hex.left(4) + "-" + hex.mid(4);
}

QString csv_field(const QString& value)
{
    if (!value.contains(',') && !value.contains('"') && !value.contains('\n') && !value.contains('\r'))
        return value;
    return '"' + QString(value).replace('"', "\"\"") + '"';
}

QString csv_record(const QStringList& fields)
{
    QStringList quoted;
    quoted.reserve(fields.size());
    for (const QString& field : fields)
        quoted << csv_field(field);
    return quoted.join(',') + "\r\n";
}

}  // namespace report_values
