// Conversions of values found in the player's files and in file-system
// metadata into the forms of the result tables: epoch seconds (UTC) for every
// time, display texts for durations and sizes, a file's suffix and size.

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTimeZone>

#include "apple_dates.h"
#include "plugin_static_function.h"

namespace {

constexpr qint64 k_seconds_1601_to_1970 = 11644473600LL;

// Hours, minutes or seconds as two digits at least, formatted without text
// patterns: durations are formatted for every row of the largest tables. A
// negative count reads as 0, as the number read back from its text would.
QString two_digits(qint64 value)
{
    if (value < 0)
        return QStringLiteral("00");
    if (value < 10)
        return QString(QChar('0')) + QChar(char16_t(u'0' + value));
    return QString::number(value);
}

QString epoch_text(const QDateTime& moment)
{
    if (!moment.isValid())
        return QString();
    return QString::number(moment.toMSecsSinceEpoch() / 1000);
}

// The texts are UTC, so they are parsed as UTC from the start: read as local
// time first, a moment inside the examiner's summer-time gap does not exist
// and would be lost.
QDateTime parse_as_utc(const QString& text, const QString& format)
{
    return QDateTime::fromString(text + " UTC", format + " t");
}

// An ISO 8601 text; one without a zone of its own is UTC.
QDateTime parse_iso_as_utc(const QString& iso)
{
    const QDateTime moment = QDateTime::fromString(iso, Qt::ISODate);
    if (moment.isValid() && moment.timeSpec() != Qt::LocalTime)
        return moment.toUTC();
    const QDateTime as_utc = QDateTime::fromString(iso + "Z", Qt::ISODate);
    if (as_utc.isValid())
        return as_utc;
    // A date alone ("2019-05-04") is the start of that day.
    const QDate day = iso.size() == 10 ? QDate::fromString(iso, Qt::ISODate) : QDate();
    return day.isValid() ? QDateTime(day, QTime(0, 0), QTimeZone::utc()) : QDateTime();
}

// "+05:30", "-0800", "+02" -> signed seconds east of UTC.
bool zone_offset_seconds(const QString& zone, qint64* seconds)
{
    static const QRegularExpression pattern(R"(^([+-])(\d{1,2}):?(\d{2})?$)");
    const QRegularExpressionMatch match = pattern.match(zone.trimmed());
    if (!match.hasMatch())
        return false;
    const qint64 hours = match.captured(2).toLongLong();
    const qint64 minutes = match.captured(3).toLongLong();
    *seconds = (minutes + hours * 60) * 60 * (match.captured(1) == "-" ? -1 : 1);
    return true;
}

// The whole-number part of a decimal text: trimmed, everything from the
// first "." dropped (fractions are cut, not rounded).
QString whole_part(const QString& value)
{
    const QString text = value.trimmed();
    const int dot = text.indexOf('.');
    return dot >= 0 ? text.left(dot) : text;
}

// Digits with an optional sign: a text that is no number at all gives no time,
// rather than the epoch of its converter.
bool is_decimal_number(const QString& text)
{
    static const QRegularExpression pattern("^[+-]?\\d+$");
    return pattern.match(text).hasMatch();
}

QString strip_list_syntax(QString value)
{
    value.remove('(');
    value.remove(')');
    value.remove('"');
    value.replace('\n', ' ');
    QStringList items;
    for (const QString& piece : value.split(',')) {
        const QString item = piece.trimmed();
        if (!item.isEmpty())
            items << item;
    }
    return items.join(";++::++;");
}

}  // namespace

QString plugin_static_function::get_human_readable_time(QString seconds)
{
    bool ok = false;
    const int total = whole_part(seconds).toInt(&ok);
    if (!ok || total < 0)
        return QString();

    const QString hours = two_digits(total / 3600);
    const QString minutes = two_digits((total % 3600) / 60);
    const QString secs = two_digits(total % 60);
    if (hours == "00")
        return minutes + ":" + secs + " Min";
    return hours + ":" + minutes + ":" + secs + " Hrs";
}

QString plugin_static_function::duration_text_from_milliseconds(const QString& milliseconds)
{
    bool ok = false;
    qint32 value = milliseconds.toInt(&ok);
    if (!ok)
        value = 0;
    const qint32 hours = value / 3600000;
    const qint32 remainder = (value / 1000) % 3600;
    const QString mm_ss = two_digits(remainder / 60) + ":" + two_digits(remainder % 60);
    const QString hh = two_digits(hours);
    if (hh != QLatin1String("00"))
        return hh + ":" + mm_ss + " Hrs";
    return mm_ss + " Min";
}

QString plugin_static_function::zero_padded_number(const QString& number, int width)
{
    // The text of QString("%1").arg(value, width, 10, '0') without its
    // format parsing.
    return QString::number(number.toULongLong(nullptr, 10)).rightJustified(width, QChar('0'));
}

QString plugin_static_function::clock_text_from_milliseconds(qint64 milliseconds)
{
    const qint64 seconds = qMax<qint64>(0, milliseconds) / 1000;
    return QString("%1:%2:%3")
        .arg(seconds / 3600, 2, 10, QChar('0'))
        .arg(seconds / 60 % 60, 2, 10, QChar('0'))
        .arg(seconds % 60, 2, 10, QChar('0'));
}

QString plugin_static_function::description_with(const QString& description, const QString& facts)
{
    if (facts.isEmpty())
        return description;
    return description.isEmpty() ? facts : description + ";++::++;" + facts;
}

QString plugin_static_function::human_readable_size(QString bytes)
{
    const QString text = bytes.trimmed();
    if (text.isEmpty())
        return QString();

    bool ok = false;
    const quint64 size = text.toULongLong(&ok);
    if (!ok)
        return "0 KB";  // a size that is not a number is shown as nothing measured

    if (size < 1024ULL)
        return QString::number(size) + " B";
    if (size < 1048576ULL)
        return QString::number(double(size) / 1024.0, 'f', 2) + " KB";
    if (size < 1073741824ULL)
        return QString::number(double(size) / 1048576.0, 'f', 2) + " MB";
    return QString::number(double(size) / 1073741824.0, 'f', 2) + " GB";
}

QString plugin_static_function::mining_suffix(QString path)
{
    const QString text = path.trimmed();
    if (text.isEmpty())
        return QString();

    QString name = text.mid(text.lastIndexOf('/') + 1);
    if (name.startsWith('.'))
        name = name.mid(1);  // a hidden file's name is not its suffix
    const int dot = name.lastIndexOf('.');
    if (dot < 0)
        return QString();
    return name.mid(dot + 1);
}

QString plugin_static_function::mining_size(QString path)
{
    const QFileInfo info(path);
    if (path.trimmed().isEmpty() || !info.exists())
        return QString();
    if (!info.isDir())
        return QString::number(info.size());

    qint64 total = 0;
    QDirIterator walk(path, QDir::Files | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        if (bool_cancel_extraction)
            break;
        walk.next();
        const QFileInfo entry = walk.fileInfo();
        if (entry.isSymLink() || !entry.isFile())
            continue;
        total += entry.size();
    }
    return QString::number(total);
}

QString plugin_static_function::get_posix_timestamp(QString path, QString which)
{
    const QString file_path = path.trimmed();
    const QFileInfo info(file_path);
    if (file_path.isEmpty() || !info.exists())
        return QString();

    const QString kind = which.trimmed().toLower();
    QDateTime moment;
    if (kind.startsWith('b') || kind.startsWith('c'))
        moment = info.birthTime();
    else if (kind.startsWith('m'))
        moment = info.lastModified();
    else if (kind.startsWith('a') || kind.startsWith('l'))
        moment = info.lastRead();
    return epoch_text(moment.toUTC());
}

QDateTime plugin_static_function::get_datetime_from_string_with_iso_date(QString text)
{
    const QString signature = "static QDateTime plugin_static_function::get_datetime_from_string_with_iso_date(QString)";
    app_debug("Start ", signature);

    // Input is a date description such as "2019-05-04 10:20:30 +0000".
    const QStringList pieces = text.trimmed().split(' ', Qt::SkipEmptyParts);
    QDateTime moment;
    if (pieces.size() >= 2) {
        const QString iso = pieces.at(0) + "T" + pieces.at(1);
        qint64 offset = 0;
        moment = parse_iso_as_utc(iso);
        if (moment.isValid() && pieces.size() >= 3 && zone_offset_seconds(pieces.at(2), &offset))
            moment = moment.addSecs(-offset);
    } else if (pieces.size() == 1) {
        moment = parse_iso_as_utc(pieces.at(0));
    }

    app_debug("End ", signature);
    return moment;
}

QString plugin_static_function::convert_apple_time_to_epoch(QString value)
{
    const QString text = value.trimmed();
    if (text.isEmpty() || text == "0" || !is_decimal_number(whole_part(text)))
        return QString();
    const qint64 seconds = whole_part(text).toInt();  // out of range reads as 0
    return QString::number(seconds + apple_dates::k_seconds_1970_to_2001);
}

QString plugin_static_function::convert_google_time_to_epoch(QString value)
{
    const QString text = value.trimmed();
    if (text.isEmpty() || text == "0")
        return QString();
    if (text.size() == 10)
        return text;  // already epoch seconds
    bool ok = false;
    const quint64 micros = text.toULongLong(&ok);
    if (!ok)
        return QString();
    return QString::number(qint64(micros / 1000000ULL) - k_seconds_1601_to_1970);
}

QString plugin_static_function::convert_timestamp_to_human_readable_in_UTC(QString value)
{
    bool ok = false;
    const qint64 seconds = whole_part(value).toLongLong(&ok);
    if (!ok)
        return QString();
    return QDateTime::fromSecsSinceEpoch(seconds, QTimeZone::utc()).toString("dd-MMM-yyyy hh:mm:ss");
}

QString plugin_static_function::convert_human_readable_to_epoch_1(QString value)
{
    // "Jan 5, 2019, 3:04:05 PM UTC" (the blank before AM/PM may be a narrow one)
    QString text = value;
    text.replace(QChar(0x202F), ' ');
    text.replace(QChar(0x00A0), ' ');
    text.remove("UTC");
    text = text.simplified();
    const QDateTime moment = parse_as_utc(text, "MMM d, yyyy, h:mm:ss AP");
    return moment.isValid() ? epoch_text(moment) : QString("0");
}

QString plugin_static_function::convert_human_readable_to_epoch_2(QString value)
{
    // "yyyy-MM-dd hh:mm:ss" with an optional zone offset such as "+05:30"
    QString text = value.trimmed();
    qint64 offset = 0;
    static const QRegularExpression zone_at_end(R"(\s*([+-]\d{1,2}:?\d{2})$)");
    const QRegularExpressionMatch zone = zone_at_end.match(text);
    if (zone.hasMatch() && text.size() > 19) {
        offset = convert_timezone_to_seconds(zone.captured(1)).toLongLong();
        text = text.left(zone.capturedStart(0));
    }
    const QDateTime moment = parse_as_utc(text.simplified(), "yyyy-MM-dd hh:mm:ss");
    if (!moment.isValid())
        return "0";
    return epoch_text(moment.addSecs(-offset));
}

QString plugin_static_function::convert_human_readable_to_epoch_3(QString value)
{
    // "04 May 2019, 10:20:30" or "04 May, 2019 10:20:30"
    QString text = value;
    text.replace(',', ' ');
    text = text.simplified();
    const QDateTime moment = parse_as_utc(text, "dd MMM yyyy hh:mm:ss");
    return moment.isValid() ? epoch_text(moment) : QString("0");
}

QString plugin_static_function::convert_timezone_to_seconds(QString value)
{
    qint64 seconds = 0;
    if (!zone_offset_seconds(value, &seconds))
        return "0";
    return QString::number(seconds);
}

QString plugin_static_function::convert_T_Z_time_to_epoch(QString value)
{
    QString text = value.trimmed();
    text.replace('T', ' ');
    static const QStringList formats = {"yyyy-MM-dd hh:mm:ss", "yyyy-MM-dd hh:mm:ss.zzz", "yyyyMMdd",
                                        "yyyyMMdd hhmmss", "yyyyMMdd hhmmss'Z'", "yyyy-MM-dd hh:mm:ss'Z'",
                                        "yyyy-MM-dd hh:mm:ss.zzz'Z'"};
    for (const QString& format : formats) {
        const QDateTime moment = parse_as_utc(text, format);
        if (moment.isValid())
            return epoch_text(moment);
    }
    return QString();
}

QString plugin_static_function::get_filtered_number_value(QString value)
{
    QString text = value.trimmed();
    text.remove('"');
    if (text == "(null)")
        return QString();
    return text.trimmed();
}

QString plugin_static_function::get_filtered_boolean_value(QString value)
{
    const QString text = get_filtered_string_value(value).toLower();
    if (text == "1" || text == "true" || text == "yes")
        return "YES";
    if (text == "0" || text == "false" || text == "no")
        return "NO";
    return QString();
}

QString plugin_static_function::get_filtered_cfstring_value(QString value)
{
    QString text = value.trimmed();
    if (text.size() >= 2 && text.startsWith('"') && text.endsWith('"'))
        text = text.mid(1, text.size() - 2);
    text.replace("\\U2019s", "'s");
    return text.trimmed();
}

QString plugin_static_function::get_filtered_wherefrom_value(QString value)
{
    QString text = value.trimmed();
    if (text == "(null)")
        return QString();
    text.replace("\\U2019s", "'s");
    return strip_list_syntax(text);
}

QString plugin_static_function::get_filtered_string_value(QString value)
{
    QString text = value.trimmed();
    if (text == "(null)")
        return QString();
    text.remove('"');
    return text.trimmed();
}

QString plugin_static_function::get_filtered_date_value(QString value)
{
    const QString text = get_filtered_string_value(value);
    if (text.isEmpty())
        return QString();
    return epoch_text(get_datetime_from_string_with_iso_date(text));
}
