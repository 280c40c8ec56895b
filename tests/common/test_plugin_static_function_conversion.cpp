// Conversions into the forms of the result tables: duration and size texts,
// a file's suffix, size and times, and the epoch converters. The process runs
// in a time zone with an offset and summer time, so that any conversion that
// slips through local time shows up.

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTimeZone>
#include <QtTest>

#include <ctime>

#include "debug_log_capture.h"
#include "plugin_static_function.h"

#include "tree_writer.h"

namespace {

using tree_writer::read_file;
using tree_writer::write_file;

bool set_file_time(const QString& path, const QDateTime& moment, QFileDevice::FileTime which)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite))
        return false;
    return file.setFileTime(moment, which);
}

QDateTime utc(int y, int mo, int d, int h, int mi, int s, int ms = 0)
{
    return QDateTime(QDate(y, mo, d), QTime(h, mi, s, ms), QTimeZone::utc());
}

}  // namespace

class test_plugin_static_function_conversion : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // Berlin: one hour ahead in winter, two in summer, with a gap at the
        // spring change.
        qputenv("TZ", "Europe/Berlin");
        tzset();
        plugin_static_function::bool_cancel_extraction = false;
    }

    void human_readable_time_data()
    {
        QTest::addColumn<QString>("seconds");
        QTest::addColumn<QString>("expected");
        QTest::newRow("zero") << "0" << "00:00 Min";
        QTest::newRow("59 seconds") << "59" << "00:59 Min";
        QTest::newRow("one minute") << "60" << "01:00 Min";
        QTest::newRow("just under an hour") << "3599" << "59:59 Min";
        QTest::newRow("one hour") << "3600" << "01:00:00 Hrs";
        QTest::newRow("fraction dropped, not rounded") << "3600.9" << "01:00:00 Hrs";
        QTest::newRow("59.999 stays below a minute") << "59.999" << "00:59 Min";
        QTest::newRow("trailing dot") << "7." << "00:07 Min";
        QTest::newRow("blanks around") << "  61 " << "01:01 Min";
        QTest::newRow("a day is not wrapped") << "86400" << "24:00:00 Hrs";
        QTest::newRow("100 hours") << "360000" << "100:00:00 Hrs";
        QTest::newRow("largest 32-bit value") << "2147483647" << "596523:14:07 Hrs";
        QTest::newRow("beyond 32 bits") << "2147483648" << "";
        QTest::newRow("negative") << "-1" << "";
        QTest::newRow("negative with fraction") << "-3600.5" << "";
        QTest::newRow("not a number") << "abc" << "";
        QTest::newRow("number then text") << "12abc" << "";
        QTest::newRow("exponent form") << "1e3" << "";
        QTest::newRow("fraction only") << ".5" << "";
        QTest::newRow("empty") << "" << "";
    }

    void human_readable_time()
    {
        QFETCH(QString, seconds);
        QFETCH(QString, expected);
        QCOMPARE(plugin_static_function::get_human_readable_time(seconds), expected);
    }

    // Durations the media libraries store as milliseconds; the Android and
    // macOS tables show them through this one formatter.
    void durations_from_milliseconds_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("shown");
        QTest::newRow("hours") << "5025000" << "01:23:45 Hrs";
        QTest::newRow("minutes") << "65000" << "01:05 Min";
        QTest::newRow("below a second") << "999" << "00:00 Min";
        QTest::newRow("just under an hour") << "3599999" << "59:59 Min";
        QTest::newRow("an hour") << "3600000" << "01:00:00 Hrs";
        QTest::newRow("hours wider than two digits") << "360000000" << "100:00:00 Hrs";
        QTest::newRow("empty") << "" << "00:00 Min";
        QTest::newRow("negative") << "-3605000" << "00:00 Min";
        QTest::newRow("beyond 32 bits") << "99999999999" << "00:00 Min";
        QTest::newRow("not a number") << "1h20" << "00:00 Min";
    }

    void durations_from_milliseconds()
    {
        QFETCH(QString, stored);
        QFETCH(QString, shown);
        QCOMPARE(plugin_static_function::duration_text_from_milliseconds(stored), shown);
    }

    void zero_padded_numbers()
    {
        QCOMPARE(plugin_static_function::zero_padded_number("7", 2), QString("07"));
        QCOMPARE(plugin_static_function::zero_padded_number("123", 2), QString("123"));
        QCOMPARE(plugin_static_function::zero_padded_number("18446744073709551615", 2),
                 QString("18446744073709551615"));
        QCOMPARE(plugin_static_function::zero_padded_number("-5", 3), QString("000"));
        QCOMPARE(plugin_static_function::zero_padded_number("x", 2), QString("00"));
    }

    void human_readable_size_data()
    {
        QTest::addColumn<QString>("bytes");
        QTest::addColumn<QString>("expected");
        QTest::newRow("zero") << "0" << "0 B";
        QTest::newRow("largest byte count") << "1023" << "1023 B";
        QTest::newRow("one KB") << "1024" << "1.00 KB";
        QTest::newRow("one and a half KB") << "1536" << "1.50 KB";
        QTest::newRow("largest KB count") << "1048575" << "1024.00 KB";
        QTest::newRow("one MB") << "1048576" << "1.00 MB";
        QTest::newRow("one and a half MB") << "1572864" << "1.50 MB";
        QTest::newRow("largest MB count") << "1073741823" << "1024.00 MB";
        QTest::newRow("one GB") << "1073741824" << "1.00 GB";
        QTest::newRow("beyond 32 bits") << "5368709120" << "5.00 GB";
        QTest::newRow("terabytes stay in GB") << "1099511627776" << "1024.00 GB";
        QTest::newRow("largest 64-bit value") << "18446744073709551615" << "17179869184.00 GB";
        QTest::newRow("blanks around") << " 2048 " << "2.00 KB";
        QTest::newRow("empty") << "" << "";
        QTest::newRow("blank") << "   " << "";
        // Whatever is not a byte count is shown as nothing measured.
        QTest::newRow("not a number") << "large" << "0 KB";
        QTest::newRow("negative") << "-1" << "0 KB";
        QTest::newRow("beyond 64 bits") << "18446744073709551616" << "0 KB";
    }

    void human_readable_size()
    {
        QFETCH(QString, bytes);
        QFETCH(QString, expected);
        QCOMPARE(plugin_static_function::human_readable_size(bytes), expected);
    }

    void suffix_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("expected");
        QTest::newRow("last dot wins, case kept") << "/a/b/Movie.Final.MKV" << "MKV";
        QTest::newRow("plain") << "/Users/ann/Music/song.mp3" << "mp3";
        QTest::newRow("hidden file") << ".bashrc" << "";
        QTest::newRow("hidden file in a folder") << "/Users/ann/.vlcrc" << "";
        QTest::newRow("hidden file with a suffix") << "/Users/ann/.config.json" << "json";
        QTest::newRow("no dot") << "/a/b/README" << "";
        QTest::newRow("dot only in a folder name") << "/a/music.d/track" << "";
        QTest::newRow("ends with a dot") << "/a/b/movie." << "";
        QTest::newRow("folder path") << "/a/b/" << "";
        QTest::newRow("blanks around") << "  /a/b/clip.avi  " << "avi";
        QTest::newRow("empty") << "" << "";
        QTest::newRow("blank") << "   " << "";
    }

    void suffix()
    {
        QFETCH(QString, path);
        QFETCH(QString, expected);
        QCOMPARE(plugin_static_function::mining_suffix(path), expected);
    }

    void size_of_files_and_folders()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QString tree = dir.filePath("tree");
        QVERIFY(write_file(tree + "/a.bin", QByteArray(100, 'a')));
        QVERIFY(write_file(tree + "/.hidden_file", QByteArray(50, 'h')));
        QVERIFY(write_file(tree + "/sub/b.bin", QByteArray(200, 'b')));
        QVERIFY(write_file(tree + "/.hidden_dir/c.bin", QByteArray(300, 'c')));
        QVERIFY(write_file(tree + "/empty.bin", QByteArray()));
        // Links are not followed: neither one to a big file nor one to a
        // folder full of files, nor a dangling one.
        QVERIFY(write_file(dir.filePath("outside/big.bin"), QByteArray(100000, 'x')));
        QVERIFY(write_file(dir.filePath("outside/more.bin"), QByteArray(70000, 'y')));
        QVERIFY(QFile::link(dir.filePath("outside/big.bin"), tree + "/link_to_file"));
        QVERIFY(QFile::link(dir.filePath("outside"), tree + "/sub/link_to_folder"));
        QVERIFY(QFile::link(dir.filePath("nowhere"), tree + "/dangling"));

        QCOMPARE(plugin_static_function::mining_size(tree + "/a.bin"), QString("100"));
        QCOMPARE(plugin_static_function::mining_size(tree + "/empty.bin"), QString("0"));
        QCOMPARE(plugin_static_function::mining_size(tree), QString("650"));
        QCOMPARE(plugin_static_function::mining_size(tree + "/sub"), QString("200"));
        QCOMPARE(plugin_static_function::mining_size(tree + "/missing.bin"), QString());
        QCOMPARE(plugin_static_function::mining_size(tree + "/dangling"), QString());
        QCOMPARE(plugin_static_function::mining_size(QString()), QString());

        QVERIFY(QDir().mkpath(dir.filePath("empty_dir")));
        QCOMPARE(plugin_static_function::mining_size(dir.filePath("empty_dir")), QString("0"));

        // A cancelled run stops the walk before it counts anything.
        plugin_static_function::bool_cancel_extraction = true;
        QCOMPARE(plugin_static_function::mining_size(tree), QString("0"));
        plugin_static_function::bool_cancel_extraction = false;
    }

    void posix_timestamp_of_a_file_data()
    {
        QTest::addColumn<QDateTime>("moment");
        QTest::addColumn<QString>("expected");
        QTest::newRow("leap day") << utc(2020, 2, 29, 12, 34, 56) << "1582979696";
        QTest::newRow("milliseconds truncated") << utc(2020, 2, 29, 12, 34, 56, 999) << "1582979696";
        // The hour the local clocks jump: must not move.
        QTest::newRow("at the summer-time change") << utc(2019, 3, 31, 1, 30, 0) << "1553995800";
        QTest::newRow("before 1970") << utc(1960, 1, 1, 0, 0, 0) << "-315619200";
        QTest::newRow("beyond 2038") << utc(2040, 1, 1, 0, 0, 0) << "2208988800";
    }

    void posix_timestamp_of_a_file()
    {
        QFETCH(QDateTime, moment);
        QFETCH(QString, expected);
        QTemporaryDir dir;
        const QString path = dir.filePath("media.mp4");
        QVERIFY(write_file(path, "data"));
        QVERIFY(set_file_time(path, moment, QFileDevice::FileModificationTime));
        QVERIFY(set_file_time(path, utc(2001, 9, 9, 1, 46, 40), QFileDevice::FileAccessTime));

        QCOMPARE(plugin_static_function::get_posix_timestamp(path, "modification"), expected);
        QCOMPARE(plugin_static_function::get_posix_timestamp("  " + path + " ", "modification"), expected);
        QCOMPARE(plugin_static_function::get_posix_timestamp(path, "access"), QString("1000000000"));
    }

    void posix_timestamp_of_a_missing_file()
    {
        QTemporaryDir dir;
        QCOMPARE(plugin_static_function::get_posix_timestamp(dir.filePath("gone.mp4"), "modification"), QString());
        QCOMPARE(plugin_static_function::get_posix_timestamp(QString(), "modification"), QString());
    }

    void posix_birth_time_is_seconds_or_empty()
    {
        // Not every file system records a birth time; when it does, it is a
        // plain count of seconds around now.
        QTemporaryDir dir;
        const QString path = dir.filePath("new.mp4");
        QVERIFY(write_file(path, "data"));
        const QString birth = plugin_static_function::get_posix_timestamp(path, "birth");
        if (birth.isEmpty())
            return;
        bool ok = false;
        const qint64 seconds = birth.toLongLong(&ok);
        QVERIFY(ok);
        QVERIFY(qAbs(seconds - QDateTime::currentSecsSinceEpoch()) < 3600);
    }

    void iso_date_text_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<qint64>("expected");
        QTest::newRow("UTC") << "2019-05-04 10:20:30 +0000" << qint64(1556965230);
        QTest::newRow("ahead of UTC") << "2019-05-04 12:20:30 +0200" << qint64(1556965230);
        QTest::newRow("behind UTC") << "2019-05-04 02:20:30 -0800" << qint64(1556965230);
        QTest::newRow("half hour ahead") << "2019-05-04 15:50:30 +0530" << qint64(1556965230);
        QTest::newRow("half hour behind") << "2019-05-04 06:50:30 -0330" << qint64(1556965230);
        QTest::newRow("offset with colon") << "2019-05-04 12:20:30 +02:00" << qint64(1556965230);
        QTest::newRow("offset crosses midnight") << "2019-05-05 01:20:30 +1500" << qint64(1556965230);
        QTest::newRow("blanks around") << "  2019-05-04 10:20:30 +0000  " << qint64(1556965230);
        // 02:30 does not exist on that day in the examiner's zone; the text
        // is in UTC and must be read as such.
        QTest::newRow("local gap, UTC text") << "2019-03-31 02:30:00 +0000" << qint64(1553999400);
        QTest::newRow("local gap, no offset") << "2019-03-31 02:30:00" << qint64(1553999400);
        QTest::newRow("local autumn repeat") << "2019-10-27 02:30:00 +0000" << qint64(1572143400);
        QTest::newRow("before 1970") << "1960-01-01 00:00:00 +0000" << qint64(-315619200);
        QTest::newRow("one ISO piece, UTC") << "2019-03-31T02:30:00Z" << qint64(1553999400);
        QTest::newRow("one ISO piece, offset") << "2019-05-04T12:20:30+02:00" << qint64(1556965230);
        QTest::newRow("one ISO piece, no zone") << "2019-05-04T10:20:30" << qint64(1556965230);
        QTest::newRow("date alone") << "2019-05-04" << qint64(1556928000);
    }

    void iso_date_text()
    {
        QFETCH(QString, text);
        QFETCH(qint64, expected);
        const QDateTime moment = plugin_static_function::get_datetime_from_string_with_iso_date(text);
        QVERIFY(moment.isValid());
        QCOMPARE(moment.toSecsSinceEpoch(), expected);
        QCOMPARE(moment.toUTC().toSecsSinceEpoch(), expected);
    }

    void iso_date_text_that_is_not_a_date_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << "";
        QTest::newRow("words") << "not a date";
        QTest::newRow("month 13") << "2019-13-04 10:20:30 +0000";
        QTest::newRow("hour 25") << "2019-05-04 25:20:30 +0000";
        QTest::newRow("null text") << "(null)";
    }

    void iso_date_text_that_is_not_a_date()
    {
        QFETCH(QString, text);
        QVERIFY(!plugin_static_function::get_datetime_from_string_with_iso_date(text).isValid());
    }

    void iso_date_conversion_is_logged()
    {
        QTemporaryDir dir;
        debug_log_capture log(dir.filePath("debug.log"));
        plugin_static_function::get_datetime_from_string_with_iso_date("2019-05-04 10:20:30 +0000");
        QCOMPARE(log.messages(), (QStringList{"Start ", "End "}));
        QCOMPARE(log.functions().value(0), QString("plugin_static_function::get_datetime_from_string_with_iso_date"));
    }

    void apple_time_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("expected");
        QTest::newRow("zero means unset") << "0" << "";
        QTest::newRow("blank zero") << " 0 " << "";
        QTest::newRow("empty") << "" << "";
        QTest::newRow("fraction dropped") << "1.5" << "978307201";
        QTest::newRow("blanks around") << "  1.5 " << "978307201";
        QTest::newRow("2020") << "600000000" << "1578307200";
        QTest::newRow("before 2001") << "-978307200" << "0";
        QTest::newRow("largest 32-bit value") << "2147483647" << "3125790847";
        QTest::newRow("beyond 32 bits reads as zero") << "2147483648" << "978307200";
        QTest::newRow("not a number") << "abc" << "";
    }

    void apple_time()
    {
        QFETCH(QString, value);
        QFETCH(QString, expected);
        QCOMPARE(plugin_static_function::convert_apple_time_to_epoch(value), expected);
    }

    void google_time_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("expected");
        QTest::newRow("zero means unset") << "0" << "";
        QTest::newRow("empty") << "" << "";
        QTest::newRow("ten characters are epoch seconds") << "1577748622" << "1577748622";
        QTest::newRow("microseconds since 1601") << "13222222222000000" << "1577748622";
        QTest::newRow("microseconds truncated") << "13222222222999999" << "1577748622";
        QTest::newRow("1970 itself") << "11644473600000000" << "0";
        QTest::newRow("not a number") << "not-a-time-value" << "";
    }

    void google_time()
    {
        QFETCH(QString, value);
        QFETCH(QString, expected);
        QCOMPARE(plugin_static_function::convert_google_time_to_epoch(value), expected);
    }

    void general_converters()
    {
        QCOMPARE(plugin_static_function::convert_timestamp_to_human_readable_in_UTC("0"),
                 QString("01-Jan-1970 00:00:00"));
        QCOMPARE(plugin_static_function::convert_timestamp_to_human_readable_in_UTC("1553999400.75"),
                 QString("31-Mar-2019 02:30:00"));
        QCOMPARE(plugin_static_function::convert_timestamp_to_human_readable_in_UTC("soon"), QString());

        QCOMPARE(plugin_static_function::convert_timezone_to_seconds("+05:30"), QString("19800"));
        QCOMPARE(plugin_static_function::convert_human_readable_to_epoch_2("2019-05-04 10:20:30"),
                 QString("1556965230"));
        QCOMPARE(plugin_static_function::convert_human_readable_to_epoch_2("2019-05-04 15:50:30 +05:30"),
                 QString("1556965230"));
        QCOMPARE(plugin_static_function::convert_human_readable_to_epoch_2("yesterday"), QString("0"));
        QCOMPARE(plugin_static_function::convert_human_readable_to_epoch_3("04 May 2019, 10:20:30"),
                 QString("1556965230"));
        QCOMPARE(plugin_static_function::convert_human_readable_to_epoch_3("nonsense"), QString("0"));
        QCOMPARE(plugin_static_function::convert_human_readable_to_epoch_1("May 4, 2019, 10:20:30 AM UTC"),
                 QString("1556965230"));
        QCOMPARE(plugin_static_function::convert_T_Z_time_to_epoch("2019-03-31T02:30:00Z"), QString("1553999400"));
        QCOMPARE(plugin_static_function::convert_T_Z_time_to_epoch("20190331 023000"), QString("1553999400"));
        QCOMPARE(plugin_static_function::convert_T_Z_time_to_epoch("20190504"), QString("1556928000"));
        QCOMPARE(plugin_static_function::convert_T_Z_time_to_epoch("May"), QString());
    }
};

QTEST_GUILESS_MAIN(test_plugin_static_function_conversion)
#include "test_plugin_static_function_conversion.moc"
