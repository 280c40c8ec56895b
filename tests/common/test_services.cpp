// The shared services that turn one text into another: durations, sizes,
// suffixes and times into the forms of the result tables, source paths into
// the relative paths and account names of the rows, file names into media
// kinds, property-list values into texts, and the names the Windows readers
// give. One table of cases; the process runs in a time zone with an offset
// and summer time, so that a conversion that slips through local time shows.

#include <QtTest>

#include <ctime>
#include <functional>

#include "lnk_paser_class.h"
#include "olecf_file_parse.h"
#include "plist_document.h"
#include "plist_writer.h"
#include "plugin_helper_functions.h"
#include "plugin_static_function.h"
#include "test_support.h"

namespace {

using psf = plugin_static_function;
using converter = std::function<QString(const QStringList& arguments)>;

QString text(qint64 number)
{
    return QString::number(number);
}

// Reads one key of a dictionary written in the given form with a reader of
// the property-list family.
QString plist_reader(plist_writer::format form, const QStringList& a)
{
    static const QVariantMap values{
        {"text", "  padded  "}, {"real", 2.9}, {"negative", -3.7}, {"one", 1}, {"yes", true}, {"no", false},
        {"empty", ""}, {"list", QVariantList{"a", 7, true}},
        {"when", QDateTime(QDate(2020, 12, 31), QTime(23, 59, 59, 900), QTimeZone::utc())},
        {"before 2001", QDateTime(QDate(2000, 12, 31), QTime(23, 59, 59, 500), QTimeZone::utc())}};
    const plist_owner dict = plist_document::from_bytes(plist_writer::write(values, form));
    const QString& reader = a.value(0);
    const QString& key = a.value(1);
    plist_t d = dict.get();
    if (reader == "string")
        return psf::get_nsstring_values(key, d);
    if (reader == "number")
        return psf::get_nsnumber_values(key, d);
    if (reader == "yes/no")
        return psf::get_nsnumber_values_yes_no(key, d);
    if (reader == "labelled yes/no")
        return psf::get_nsnumber_key_and_value_yes_no(key, d, "Enabled");
    if (reader == "labelled string")
        return psf::get_nsstring_key_and_values(key, d, "Name");
    if (reader == "labelled number")
        return psf::get_nsnumber_key_and_values(key, d, "Count");
    if (reader == "labelled array")
        return psf::get_nsarray_key_and_values(key, d, "Items");
    return text(psf::convert_nsdate_to_epoch(plist_document::dict_item(d, key)));
}

QString kinds(const QString& name)
{
    plugin_helper_functions helper;
    return QString(helper.check_is_image_by_extn(name) ? "i" : "-") + (helper.check_is_audio_by_extn(name) ? "a" : "-")
           + (helper.check_is_video_by_extn(name) ? "v" : "-");
}

QString user_of(const QStringList& a)
{
    psf::system_account_QList = {{"ann", ""}, {"bob", "DESKTOP-1\\bob"}, {"admin", "Administrator"}};
    const QString user = psf::extract_user_name_from_sourcefile(a.value(0), a.value(1));
    psf::system_account_QList.clear();
    return user;
}

QString iso_seconds(const QString& value)
{
    const QDateTime moment = psf::get_datetime_from_string_with_iso_date(value);
    return moment.isValid() ? text(moment.toUTC().toSecsSinceEpoch()) : QString("invalid");
}

const QMap<QString, converter> k_converters = {
    {"time", [](const QStringList& a) { return psf::get_human_readable_time(a[0]); }},
    {"ms", [](const QStringList& a) { return psf::duration_text_from_milliseconds(a[0]); }},
    {"pad", [](const QStringList& a) { return psf::zero_padded_number(a[0], a.value(1).toInt()); }},
    {"size", [](const QStringList& a) { return psf::human_readable_size(a[0]); }},
    {"suffix", [](const QStringList& a) { return psf::mining_suffix(a[0]); }},
    {"apple", [](const QStringList& a) { return psf::convert_apple_time_to_epoch(a[0]); }},
    {"google", [](const QStringList& a) { return psf::convert_google_time_to_epoch(a[0]); }},
    {"iso", [](const QStringList& a) { return iso_seconds(a[0]); }},
    {"utc", [](const QStringList& a) { return psf::convert_timestamp_to_human_readable_in_UTC(a[0]); }},
    {"zone", [](const QStringList& a) { return psf::convert_timezone_to_seconds(a[0]); }},
    {"epoch1", [](const QStringList& a) { return psf::convert_human_readable_to_epoch_1(a[0]); }},
    {"epoch2", [](const QStringList& a) { return psf::convert_human_readable_to_epoch_2(a[0]); }},
    {"epoch3", [](const QStringList& a) { return psf::convert_human_readable_to_epoch_3(a[0]); }},
    {"T Z", [](const QStringList& a) { return psf::convert_T_Z_time_to_epoch(a[0]); }},
    {"source file",
     [](const QStringList& a) {
         const QStringList both = psf::get_final_artifact_source_file(a[0], a.value(1), a.value(2));
         const bool same = psf::get_relative_file_path(a[0], a.value(1), a.value(2)) == both.value(0);
         return same ? both.join('|') : QString("relative path differs");
     }},
    {"complete", [](const QStringList& a) { return psf::get_complete_file_path(a[0], a.value(1), a.value(2)); }},
    {"user", user_of},
    {"unmatched",
     [](const QStringList& a) {
         return QStringList(psf::get_unmatched_varible_list_of_parentlist(a[0].split(',', Qt::SkipEmptyParts),
                                                                          a.value(1).split(',', Qt::SkipEmptyParts)))
             .join(',');
     }},
    {"kind", [](const QStringList& a) { return kinds(a[0]); }},
    {"stream folder", [](const QStringList& a) { return olecf_file_parse::stream_folder_name(a[0]); }},
    {"filetime", [](const QStringList& a) { return text(lnk_paser_class().give_epoch_from_string(a[0])); }},
    {"bplist", [](const QStringList& a) { return plist_reader(plist_writer::format::binary, a); }},
    {"xplist", [](const QStringList& a) { return plist_reader(plist_writer::format::xml, a); }},
};

const QString H = "macOS_Home_Directory";

// The inputs of each converter, arguments separated by "|"; what each gives
// is pinned by tests/golden/services.txt.
const struct
{
    const char* converter;
    QStringList inputs;
} k_inputs[] = {
    {"time", {"0", "59.999", "3599", "3600.9", "7.", "  61 ", "86400", "2147483647", "2147483648", "-1", "12abc", "1e3",
              ".5", ""}},
    {"ms", {"5025000", "65000", "999", "3599999", "360000000", "", "-3605000", "99999999999", "1h20"}},
    {"pad", {"7|2", "123|2", "18446744073709551615|2", "-5|3", "x|2"}},
    {"size", {"0", "1023", "1536", "1048575", "1048576", "1073741824", "18446744073709551615", " 2048 ", "   ", "large",
              "-1", "18446744073709551616"}},
    {"suffix", {"/a/b/Movie.Final.MKV", "/Users/ann/.vlcrc", "/Users/ann/.config.json", "/a/music.d/track",
                "/a/b/movie.", "/a/b/", "  /a/b/clip.avi  ", ""}},
    {"apple", {" 0 ", "  1.5 ", "600000000", "-978307200", "2147483647", "2147483648", "abc"}},
    {"google", {"0", "1577748622", "13222222222999999", "11644473600000000", "not-a-time-value"}},
    // In Berlin 2019-03-31 02:30 does not exist and 2019-10-27 02:30 comes twice.
    {"iso", {"2019-05-04 12:20:30 +0200", "2019-05-04 02:20:30 -0800", "2019-05-04 15:50:30 +0530",
             "2019-05-04 06:50:30 -0330", "2019-05-04 12:20:30 +02:00", "2019-05-05 01:20:30 +1500",
             "  2019-05-04 10:20:30 +0000  ", "2019-03-31 02:30:00 +0000", "2019-03-31 02:30:00",
             "2019-10-27 02:30:00 +0000", "1960-01-01 00:00:00 +0000", "2019-03-31T02:30:00Z",
             "2019-05-04T12:20:30+02:00", "2019-05-04T10:20:30", "2019-05-04", "not a date",
             "2019-13-04 10:20:30 +0000", "2019-05-04 25:20:30 +0000", "(null)"}},
    {"utc", {"0", "1553999400.75", "soon"}},
    {"zone", {"+05:30"}},
    {"epoch1", {"May 4, 2019, 10:20:30 AM UTC"}},
    {"epoch2", {"2019-05-04 10:20:30", "2019-05-04 15:50:30 +05:30", "yesterday"}},
    {"epoch3", {"04 May 2019, 10:20:30", "nonsense"}},
    {"T Z", {"2019-03-31T02:30:00Z", "20190331 023000", "20190504", "May"}},
    {"source file", {"/cases/7/home/Library/vlc.plist|/cases/7/home/|" + H, "/cases/7/home/Library/vlcrc|/cases/7/home|" + H,
                     "Library/vlcrc|/cases/7/home/|" + H, "/x/src/a/src/b.plist|/src/|" + H,
                     "/cases/7/root/Users/ann/vlcrc|/cases/7/root/|macOS", "Users/ann/AppData/vlcrc|/cases/7/root/|winOS",
                     "  |/cases/|macOS"}},
    {"complete", {"/Users/home/Movies/a.mkv|ann|" + H, "/Users/home|ann|" + H, "/Volumes/USB/a.mkv|ann|" + H,
                  "Movies/a.mkv|ann|" + H, "/Users/home/Movies/a.mkv|ann|macOS", "Users/bob/a.mkv|ann|winOS", "|ann|" + H}},
    {"user", {"/r/Users/ann/Library/vlcrc|/r/", "/r/Users/ann/Library/vlcrc|/r", "/r/Users/bob/AppData/vlcrc|/r/",
              "/r/home/ann/.config/vlc/vlcrc|/r/", "/r/Users/Ann/Library/vlcrc|/r/", "/r/Users/Shared/ann/vlcrc|/r/",
              "/r/vlcrc|/r/", "/r/Users/|/r/", "/r/Users/Administrator/Videos/admin/a.mkv|/r/"}},
    {"unmatched", {"ann,bob,Ann,carol,bob|bob,dave", "|x", "x|"}},
    {"kind", {" Movie.Mp4 ", "/Users/ann/Movies/Holiday 2019.mov", "phone.3gp", "show.dvr-ms", "movie.", "movie.mp4.",
              "/Users/ann/music.d/track", "archive.tar.mp3", "song.mp3.part", ".mp3", "IMG_0001.JPG", "scan.cdr",
              "clip.bmc", "track.mp_", "track._mp3", "track.\u00e9mp3", "photo.\u212Adi", "track. mp3", "list.zpl",
              "old.wmv", "theora.ogv", "theora.ogg"}},
    {"stream folder", {"DestList", "a.b", "..", "a/b", "a\\b", "%2F", ""}},
    {"filetime", {"116444736010000000", "116444735990000000", "116444736009999999", "x"}},
    {"bplist", {"string|text", "string|real", "number|real", "number|text", "yes/no|yes", "yes/no|one",
                "labelled yes/no|one", "labelled yes/no|real", "labelled string|text", "labelled string|empty",
                "labelled string|absent", "labelled number|one", "date|when", "date|before 2001", "date|text"}},
    {"xplist", {"string|text", "number|negative", "yes/no|no", "labelled array|list"}},
};

void put_be(QByteArray& data, qsizetype at, quint64 value, int width)
{
    for (int i = width - 1; i >= 0; --i, value >>= 8)
        data[at + i] = char(value & 0xFF);
}

// n binary objects, each an array holding the next; the last holds the
// first when cyclic, else nothing.
QByteArray nested_binary(int n, bool cyclic)
{
    QByteArray data("bplist00");
    QList<qsizetype> offsets;
    for (int i = 0; i < n; ++i) {
        offsets << data.size();
        const bool last = i + 1 == n;
        data += last && !cyclic ? QByteArray(1, char(0xA0)) : char(0xA1) + QByteArray(4, '\0');
        if (!last || cyclic)
            put_be(data, data.size() - 4, last ? 0 : quint64(i + 1), 4);
    }
    const qsizetype table = data.size();
    for (qsizetype offset : offsets) {
        data += QByteArray(4, '\0');
        put_be(data, data.size() - 4, quint64(offset), 4);
    }
    QByteArray trailer(32, '\0');
    trailer[6] = 4;
    trailer[7] = 4;
    put_be(trailer, 8, quint64(n), 8);
    put_be(trailer, 24, quint64(table), 8);
    return data + trailer;
}

QByteArray xml_list(const QByteArray& open, const QByteArray& filler, int depth)
{
    return "<?xml version=\"1.0\"?><plist version=\"1.0\">" + (open + filler).repeated(depth)
           + QByteArray("</array>").repeated(depth) + "</plist>";
}

}  // namespace

class test_services : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // Berlin: one hour ahead in winter, two in summer, with a gap at the spring change.
        qputenv("TZ", "Europe/Berlin");
        tzset();
    }

    void every_converter_on_its_inputs()
    {
        QString text;
        for (const auto& c : k_inputs) {
            for (const QString& input : c.inputs)
                text += QString("%1(\"%2\") = \"%3\"\n").arg(c.converter, input, k_converters.value(c.converter)(input.split('|')));
        }
        const QString difference = test_support::compare_with_golden("services.txt", text);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

    // Each entry of the extension lists is found through its bucket, whatever
    // the case of the name and the blanks around it.
    void every_listed_extension_is_found()
    {
        plugin_helper_functions helper;
        const QList<QPair<QStringList, bool (plugin_helper_functions::*)(QString)>> lists = {
            {helper.image_extensions(), &plugin_helper_functions::check_is_image_by_extn},
            {helper.audio_extensions(), &plugin_helper_functions::check_is_audio_by_extn},
            {helper.video_extensions(), &plugin_helper_functions::check_is_video_by_extn}};
        for (const auto& [entries, check] : lists) {
            QVERIFY(entries.size() > 100);
            for (const QString& entry : entries)
                QVERIFY2((helper.*check)(" /Users/ann/FILE" + entry.toUpper() + " "), qPrintable(entry));
        }
        helper.set_cancel_extraction(true);
        QVERIFY(!helper.check_is_image_by_extn("a.jpg") && !helper.check_is_video_by_extn("a.mp3"));
    }

    // Lists that would exhaust the parser's stack, loop for ever or read
    // outside their bytes are refused before libplist sees them; ordinary
    // lists with the same constructs are read.
    void hostile_property_lists_are_refused()
    {
        const QByteArray valid = plist_writer::keyed_archive({"file:///Users/a/x.mp4", "srvr"});
        for (qsizetype size = 0; size < valid.size(); ++size)
            plist_document::from_bytes(valid.left(size));  // refused or read, never a crash
        QByteArray table_out_of_range = valid;
        put_be(table_out_of_range, valid.size() - 8, quint64(valid.size()) * 4, 8);
        QByteArray offset_out_of_range = valid;
        const quint64 table = qFromBigEndian<quint64>(valid.constData() + valid.size() - 8);
        put_be(offset_out_of_range, qsizetype(table), 0xFFFFFF, valid.at(valid.size() - 26));
        const int deep = 300000;
        const struct
        {
            const char* name;
            QByteArray bytes;
            bool read;
        } cases[] = {
            {"a keyed archive", valid, true},
            {"offset table beyond the file", table_out_of_range, false},
            {"object offset beyond the file", offset_out_of_range, false},
            {"50 nested arrays", nested_binary(50, false), true},
            {"arrays in a cycle", nested_binary(50, true), false},
            {"200000 nested arrays", nested_binary(200000, false), false},
            {"deep XML", xml_list("<array>", "", deep), false},
            {"closing tags in comments", xml_list("<array>", "<!--</array>-->", deep), false},
            {"closing tags in character data", xml_list("<array>", "<![CDATA[</array>]]>", deep), false},
            {"closing tags in instructions", xml_list("<array>", "<?pi </array>?>", deep), false},
            {"closing tags in attributes", xml_list("<array x=\"/>\">", "", deep), false},
            {"closing tags in a doctype", xml_list("<array>", "<!DOCTYPE x [</array>]>", deep), false},
            {"the same constructs in an ordinary list",
             "<?xml version=\"1.0\"?><!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"x.dtd\"><plist "
             "version=\"1.0\"><dict><!-- </dict> --><key>k</key><string><![CDATA[</string>]]></string></dict></plist>",
             true},
            {"a preference file", "[core]\nintf=macosx\n", false},
            {"nothing", QByteArray(), false},
        };
        for (const auto& c : cases)
            QVERIFY2(bool(plist_document::from_bytes(c.bytes)) == c.read, c.name);
        const plist_owner commented = plist_document::from_bytes(cases[12].bytes);
        QCOMPARE(psf::get_nsstring_values("k", commented.get()), QString("</string>"));
    }
};

QTEST_GUILESS_MAIN(test_services)
#include "test_services.moc"
