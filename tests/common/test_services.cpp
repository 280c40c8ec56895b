// The shared services. Those that turn one text into another (durations,
// sizes, suffixes and times into the forms of the result tables, source paths
// into the relative paths and account names of the rows, file names into
// media kinds, property-list values into texts, the names the Windows readers
// give, the SQL helpers' rows and failure reports, the debug log's lines) as
// one table of inputs, pinned by tests/golden/services.txt; those that touch
// files (containment of paths from evidence, working copies, free names,
// folder utilities, capped reads, file times) on one real tree, pinned by
// tests/golden/files.txt. The process runs in a time zone with an offset and
// summer time, so that a conversion that slips through local time shows.

#include <QSqlDatabase>
#include <QtTest>

#include <ctime>
#include <fcntl.h>
#include <future>
#include <unistd.h>
#include <functional>

#include "android_media_db_writer.h"
#include "android_places.h"
#include "bookmark_reader.h"
#include "bookmark_writer.h"
#include "bounded_file_reader.h"
#include "debug_log_capture.h"
#include "encryptor_string.h"
#include "keyed_archive.h"
#include "lnk_paser_class.h"
#include "olecf_file_parse.h"
#include "plist_document.h"
#include "plist_writer.h"
#include "plugin_helper_functions.h"
#include "source_path_guard.h"
#include "sparse_file_copy.h"
#include "tree_writer.h"
#include "xml_doctype_filter.h"

namespace {

using psf = plugin_static_function;
using tree_writer::kind;
QTemporaryDir g_dir;
const QString k_caller = "void vlc_androidos::extract_media_library()";

QString plist_reader(plist_writer::format form, const QString& reader, const QString& key)
{
    static const QVariantMap values{
        {"text", "  padded  "}, {"real", 2.9}, {"negative", -3.7}, {"one", 1}, {"yes", true}, {"no", false},
        {"empty", ""}, {"list", QVariantList{"a", 7, true}},
        {"when", QDateTime(QDate(2020, 12, 31), QTime(23, 59, 59, 900), QTimeZone::utc())},
        {"before 2001", QDateTime(QDate(2000, 12, 31), QTime(23, 59, 59, 500), QTimeZone::utc())}};
    const plist_owner owner = plist_document::from_bytes(plist_writer::write(values, form));
    plist_t d = owner.get();
    if (reader == "string")
        return psf::get_nsstring_values(key, d);
    if (reader == "number")
        return psf::get_nsnumber_values(key, d);
    if (reader == "yes/no")
        return psf::get_nsnumber_values_yes_no(key, d) + "|" + psf::get_nsnumber_key_and_value_yes_no(key, d, "On");
    if (reader == "labelled")
        return psf::get_nsstring_key_and_values(key, d, "Name") + "|" + psf::get_nsnumber_key_and_values(key, d, "N")
               + "|" + psf::get_nsarray_key_and_values(key, d, "Items");
    return QString::number(psf::convert_nsdate_to_epoch(plist_document::dict_item(d, key)));
}

// Runs one SQL helper, named by its family: "exec" or "list", by "path" or by
// "reference" (a connection opened here, as the readers do), "bound" with
// values; "exists" asks for a value. The rows, or ok/failed, then the log.
QString sql(const QString& helper, const QString& command, const QStringList& values)
{
    const QString db_path = g_dir.filePath(helper.contains("missing") ? "no/db" : "people.db");
    const bool bound = helper.contains("bound");
    debug_log_capture log;
    QStringList rows;
    bool ok = false;
    QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "reference");
    db.setDatabaseName(db_path);
    const bool list = helper.startsWith("list");
    if (list && helper.contains("by path"))
        rows = bound ? psf::get_stringlist_from_db_with_addbindvalues_by_dbpath(command, values, 1, db_path, k_caller)
                     : psf::get_stringlist_from_db_by_dbpath(command, 1, db_path, k_caller);
    else if (helper.contains("by path"))
        ok = bound ? psf::execute_db_command_with_addbindvalue_by_dbpath(command, values, db_path, k_caller)
                   : psf::execute_db_command_by_dbpath(command, db_path, k_caller);
    else if (db.open() && list)
        rows = bound ? psf::get_stringlist_from_db_with_addbindvalues_by_dbreference(command, values, 1, db, k_caller)
                     : psf::get_stringlist_from_db_by_dbreference(command, 1, db, k_caller);
    else if (helper.startsWith("exists"))
        ok = psf::check_value_existence_in_db_by_dbreference(command, 0, values.value(0), db);
    else
        ok = bound ? psf::execute_db_command_with_addbindvalue_by_dbreference(command, values, db, k_caller)
                   : psf::execute_db_command_by_dbreference(command, db, k_caller);
    db.close();
    db = QSqlDatabase();
    QSqlDatabase::removeDatabase("reference");
    QString result = list ? "[" + rows.join(',') + "]" : ok ? "ok" : "failed";
    return QString(result + " / " + log.messages().join(" / ") + " / " + log.functions().value(0)).replace(g_dir.path(), "<dir>");
}

QString kinds(const QString& name)
{
    plugin_helper_functions helper;
    return QString(helper.check_is_image_by_extn(name) ? "i" : "-") + (helper.check_is_audio_by_extn(name) ? "a" : "-")
           + (helper.check_is_video_by_extn(name) ? "v" : "-");
}

QString user_of(const QString& path, const QString& prefix)
{
    psf::system_account_QList = {{"ann", ""}, {"bob", "DESKTOP-1\\bob"}, {"admin", "Administrator"}};
    const QString user = psf::extract_user_name_from_sourcefile(path, prefix);
    psf::system_account_QList.clear();
    return user;
}

// Where an mrl leads on an Android source of either layout ("backup" or
// "full"), below the root; the layouts are told from what the root holds.
QString android_place(const QString& layout, const QString& mrl)
{
    static QTemporaryDir backup, full;
    static const bool written = tree_writer::write_entries(backup.path(), {{"apps/org.videolan.vlc/r/app_db/vlc_media.db", "x"}}, nullptr)
                                && tree_writer::write_entries(full.path(), {{"data/media/0", {}, kind::folder}}, nullptr);
    const QString root = (layout == "full" ? full.path() : backup.path()) + "/";
    android_places places;
    places.find_layout(root);
    return written ? places.media_path(mrl).replace(root, "<root>/") : QString("not written");
}

QString log_line(int engine, const QString& function)
{
    debug_log_capture log(engine);
    psf::app_debug("m", function);
    return log.lines().value(0).remove(QRegularExpression("^\\[\\d{4}-[A-Z][a-z]{2}-\\d{2}T\\d{2}-\\d{2}-\\d{2}\\]"));
}

using arguments = const QStringList&;
const QMap<QString, std::function<QString(arguments)>> k_converters = {
    {"time", [](arguments a) { return psf::get_human_readable_time(a[0]); }},
    {"ms", [](arguments a) { return psf::duration_text_from_milliseconds(a[0]); }},
    {"pad", [](arguments a) { return psf::zero_padded_number(a[0], a.value(1).toInt()); }},
    {"size", [](arguments a) { return psf::human_readable_size(a[0]); }},
    {"suffix", [](arguments a) { return psf::mining_suffix(a[0]); }},
    {"apple", [](arguments a) { return psf::convert_apple_time_to_epoch(a[0]); }},
    {"google", [](arguments a) { return psf::convert_google_time_to_epoch(a[0]); }},
    {"iso", [](arguments a) {
         const QDateTime moment = psf::get_datetime_from_string_with_iso_date(a[0]);
         return moment.isValid() ? QString::number(moment.toSecsSinceEpoch()) : QString("invalid");
     }},
    {"utc", [](arguments a) { return psf::convert_timestamp_to_human_readable_in_UTC(a[0]) + "|" + psf::convert_timezone_to_seconds(a[0]); }},
    {"epochs", [](arguments a) { return QStringList{psf::convert_human_readable_to_epoch_1(a[0]), psf::convert_human_readable_to_epoch_2(a[0]),
                                                    psf::convert_human_readable_to_epoch_3(a[0]), psf::convert_T_Z_time_to_epoch(a[0])}.join('|'); }},
    {"source file", [](arguments a) { return QStringList{psf::get_final_artifact_source_file(a[0], a[1], a[2]).join('|'),
                                                         psf::get_relative_file_path(a[0], a[1], a[2]), psf::get_complete_file_path(a[0], "ann", a[2])}.join('|'); }},
    {"user", [](arguments a) { return user_of(a[0], a[1]); }},
    {"unmatched", [](arguments a) { return QStringList(psf::get_unmatched_varible_list_of_parentlist(a[0].split(',', Qt::SkipEmptyParts),
                                                                                                   a[1].split(',', Qt::SkipEmptyParts))).join(','); }},
    {"kind", [](arguments a) { return kinds(a[0]); }},
    {"stream folder", [](arguments a) { return olecf_file_parse::stream_folder_name(a[0]); }},
    {"filetime", [](arguments a) { return QString::number(lnk_paser_class().give_epoch_from_string(a[0])); }},
    {"bplist", [](arguments a) { return plist_reader(plist_writer::format::binary, a[0], a[1]); }},
    {"xplist", [](arguments a) { return plist_reader(plist_writer::format::xml, a[0], a[1]); }},
    {"log", [](arguments a) { return log_line(a[0].toInt(), a[1]); }},
    {"android place", [](arguments a) { return android_place(a[0], a[1]); }},
    {"scan version", [](arguments a) {
         psf::source_os_version_full = a[0];
         return psf::get_source_os_scan_version(a[1]);
     }},
    {"filtered", [](arguments a) { return QStringList{psf::get_filtered_number_value(a[0]), psf::get_filtered_boolean_value(a[0]),
                                                      psf::get_filtered_cfstring_value(a[0]), psf::get_filtered_wherefrom_value(a[0]),
                                                      psf::get_filtered_string_value(a[0]), psf::get_filtered_date_value(a[0])}.join('|'); }},
};

const QString H = "macOS_Home_Directory";

// The inputs of each converter, arguments separated by "|".
const struct
{
    const char* converter;
    QStringList inputs;
} k_inputs[] = {
    {"scan version", {"10.15.7|macOS", "13.2|macOS", "10|macOS", "10.0.19045|winOS", "17.1.2|iOS", "14.0.1|androidOS",
                      " . |macOS"}},
    {"filtered", {"(null)", " \"42\" ", "true", "NO", "\"It\\U2019s\"", "(\"http://a\", \"http://b\")",
                  "2023-07-22 04:26:40 +0000", "garbage", ""}},
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
    {"utc", {"0", "1553999400.75", "soon", "+05:30"}},
    {"epochs", {"May 4, 2019, 10:20:30 AM UTC", "2019-05-04 10:20:30", "2019-05-04 15:50:30 +05:30", "yesterday",
                "04 May 2019, 10:20:30", "2019-03-31T02:30:00Z", "20190331 023000", "20190504", "May"}},
    {"source file", {"/cases/7/home/Library/vlc.plist|/cases/7/home/|" + H, "/cases/7/home/Library/vlcrc|/cases/7/home|" + H,
                     "Library/vlcrc|/cases/7/home/|" + H, "/x/src/a/src/b.plist|/src/|" + H, "/Users/home|/x/|" + H,
                     "/Users/home/Movies/a.mkv|/x/|" + H, "/Volumes/USB/a.mkv|/x/|" + H, "|/x/|" + H,
                     "/cases/7/root/Users/ann/vlcrc|/cases/7/root/|macOS", "Users/ann/AppData/vlcrc|/cases/7/root/|winOS",
                     "  |/cases/|macOS"}},
    {"user", {"/r/Users/ann/Library/vlcrc|/r/", "/r/Users/ann/Library/vlcrc|/r", "/r/Users/bob/AppData/vlcrc|/r/",
              "/r/home/ann/.config/vlc/vlcrc|/r/", "/r/Users/Ann/Library/vlcrc|/r/", "/r/Users/Shared/ann/vlcrc|/r/",
              "/r/vlcrc|/r/", "/r/Users/|/r/", "/r/Users/Administrator/Videos/admin/a.mkv|/r/"}},
    {"unmatched", {"ann,bob,Ann,carol,bob|bob,dave", "|x", "x|"}},
    {"kind", {" Movie.Mp4 ", "/Users/ann/Movies/Holiday 2019.mov", "phone.3gp", "show.dvr-ms", "movie.", "movie.mp4.",
              "movie", "/Users/ann/music.d/track", "archive.tar.mp3", "song.mp3.part", ".mp3", "IMG_0001.JPG",
              "scan.cdr", "clip.bmc", "track.mp_", "track._mp3", "track.\u00e9mp3", "photo.\u212Adi", "track. mp3",
              "list.zpl", "old.wmv", "theora.ogv", "theora.ogg"}},
    {"stream folder", {"DestList", "a.b", "..", "a/b", "a\\b", "%2F", ""}},
    {"filetime", {"116444736010000000", "116444735990000000", "116444736009999999", "x"}},
    {"bplist", {"string|text", "string|real", "number|real", "number|text", "yes/no|yes", "yes/no|one", "yes/no|real",
                "labelled|text", "labelled|empty", "labelled|absent", "labelled|one", "date|when", "date|before 2001",
                "date|text"}},
    {"xplist", {"string|text", "number|negative", "yes/no|no", "labelled|list"}},
    {"log", {"0|void vlc::create_db_tables()", "1|virtual void vlc::pub_extract_artifacts()",
             "2|static QStringList plugin_static_function::f(QString, QString)", "-1|  vlc::vlc(QWidget*)  ", "7|   "}},
    // Shared storage under every name the phone gives it; a memory card, which a backup does not hold.
    {"android place", {"backup|file:///storage/emulated/0/Music/a%20b.mp3", "backup|file:///sdcard/Music/a.mp3",
                       "backup|file:///mnt/sdcard/Download/b.ogg", "backup|file:///storage/1A2B-3C4D/Music/c.mp3",
                       "full|file:///sdcard/Music/a.mp3", "full|/mnt/sdcard/Music/a.mp3",
                       "full|file:///data/user/0/org.videolan.vlc/app_vlc/t.jpg", "full|file:///storage/1A2B-3C4D/c.mp3",
                       "full|http://example.com/a.mp3"}},
    // Rows read through every family, values bound verbatim; failures
    // reported in lines that differ by family; nothing written then.
    {"exec by path", {"INSERT INTO people (id, name) VALUES (3, 'carl')", "INSERT INTO nowhere VALUES (1)"}},
    {"exec by path, missing", {"SELECT 1"}},
    {"exec bound by path", {"INSERT INTO people (id, name) VALUES (?, ?)|4|O'Brien\"; DROP TABLE people; --",
                            "INSERT INTO people (id, name, note) VALUES (?, ?, ?)|7|short"}},
    {"exec bound by path, missing", {"SELECT ?|1"}},
    {"list bound by path, missing", {"SELECT ?|1"}},
    {"exec by reference", {"UPDATE people SET note = 'seen' WHERE id = 2", "INSERT INTO people VALUES (1, 'again', 'x')"}},
    {"exec bound by reference", {"DELETE FROM people WHERE id = ?|3", "INSERT INTO people (id, name) VALUES (?, ?)|9|dan|surplus"}},
    {"list by path", {"SELECT id, note FROM people ORDER BY id", "SELECT abs(-9223372036854775807 - 1), 1 FROM people"}},
    {"list by path, missing", {"SELECT 1"}},
    {"list bound by path", {"SELECT id, name FROM people WHERE id >= ? ORDER BY id|2", "SELECT name FROM people WHERE id = ? AND name = ?|7"}},
    {"list by reference", {"SELECT id, name FROM people WHERE id = 1", "SELECT name FROM no_such_table"}},
    {"list bound by reference", {"SELECT id, name FROM people WHERE id = ?|4", "SELECT x FROM people WHERE id = ?|1"}},
    {"exists", {"SELECT name FROM people|  bob\t", "SELECT name FROM people|Bob", "SELECT title FROM people|ann"}},
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
    QByteArray table;
    for (int i = 0; i < n; ++i) {
        table += QByteArray(4, '\0');
        put_be(table, table.size() - 4, quint64(data.size()), 4);
        const bool last = i + 1 == n;
        data += last && !cyclic ? QByteArray(1, char(0xA0)) : char(0xA1) + QByteArray(4, '\0');
        if (!last || cyclic)
            put_be(data, data.size() - 4, last ? 0 : quint64(i + 1), 4);
    }
    QByteArray trailer(32, '\0');
    trailer[6] = 4;
    trailer[7] = 4;
    put_be(trailer, 8, quint64(n), 8);
    put_be(trailer, 24, quint64(data.size()), 8);
    return data + table + trailer;
}

QByteArray xml_list(const QByteArray& open, const QByteArray& filler, int depth = 300000)
{
    return "<?xml version=\"1.0\"?><plist version=\"1.0\">" + (open + filler).repeated(depth)
           + QByteArray("</array>").repeated(depth) + "</plist>";
}

// A database as a running player leaves it: its first row in the main file,
// its second only in the "-wal" companion beside it.
bool write_database_with_pending_log(const QString& path)
{
    QTemporaryDir staging;
    android_media_db_writer db("staging");
    const bool ok = db.create(staging.filePath("db"), 15, nullptr) && db.use_wal()
                    && db.add_media({{"title", "checkpointed"}}, {}) > 0 && db.checkpoint()
                    && db.add_media({{"title", "only in the log"}}, {}) > 0;
    return ok && db.snapshot_to(path, nullptr);  // the writer still open
}

// A working copy as text: its name, its companions, the rows it gives.
QString copy_text(const QString& copy)
{
    QString text = QFileInfo(copy).fileName();
    for (const char* companion : {"-wal", "-shm"})
        text += QFileInfo::exists(copy + companion) ? companion : "";
    text += " writable=" + QString::number(bool(QFileInfo(copy).permissions() & QFile::WriteOwner)) + " rows=";
    for (const QVariantList& row : test_support::query_rows(copy, "SELECT title FROM Media ORDER BY rowid"))
        text += row.value(0).toString() + ",";
    return text;
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
        for (const char* statement : {"CREATE TABLE people (id INTEGER PRIMARY KEY, name TEXT, note TEXT)",
                                      "INSERT INTO people VALUES (1, 'ann', 'first'), (2, 'bob', NULL)"})
            QVERIFY(psf::execute_db_command_by_dbpath(statement, g_dir.filePath("people.db"), k_caller));
    }

    void every_input_of_the_table()
    {
        QString text;
        for (const auto& c : k_inputs) {
            for (const QString& input : c.inputs)
                text += QString("%1(\"%2\") = \"%3\"\n")
                            .arg(c.converter, input, k_converters.value(c.converter, [&c](arguments a) { return sql(c.converter, a[0], a.mid(1)); })(input.split('|')));
        }
        const QString difference = test_support::compare_with_golden("services.txt", text);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

    // Lists that would exhaust the parser's stack, loop for ever or read
    // outside their bytes are refused before libplist sees them; ordinary
    // lists with the same constructs are read.
    void hostile_property_lists_are_refused()
    {
        const QByteArray valid = plist_writer::keyed_archive({"file:///Users/a/x.mp4", "srvr"});
        for (qsizetype size = 0; size < valid.size(); ++size)
            plist_document::from_bytes(valid.left(size));  // refused or read, never a crash
        QByteArray table_out = valid;
        put_be(table_out, valid.size() - 8, quint64(valid.size()) * 4, 8);
        QByteArray offset_out = valid;
        put_be(offset_out, qsizetype(qFromBigEndian<quint64>(valid.constData() + valid.size() - 8)), 0xFFFFFF,
               valid.at(valid.size() - 26));
        // Dictionary keys that are no strings, or hold a NUL, abort libplist (found by fuzzing).
        const QByteArray number_key = QByteArray(valid).replace("\x54$top", QByteArray("\x12\0\0\0\x01", 5));
        const QByteArray nul_key = QByteArray(valid).replace("$top", QByteArray("$t\0p", 4));
        const QByteArray ordinary = "<?xml version=\"1.0\"?><!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"x.dtd\">"
                                    "<plist version=\"1.0\"><dict><!-- </dict> --><key>k</key><string><![CDATA[</string>"
                                    "]]></string></dict></plist>";
        const QList<QPair<QByteArray, bool>> cases = {
            {valid, true}, {table_out, false}, {offset_out, false}, {nested_binary(50, false), true},
            {nested_binary(50, true), false}, {nested_binary(200000, false), false}, {xml_list("<array>", ""), false},
            {xml_list("<array>", "<!--</array>-->"), false}, {xml_list("<array>", "<![CDATA[</array>]]>"), false},
            {xml_list("<array>", "<?pi </array>?>"), false}, {xml_list("<array x=\"/>\">", ""), false},
            {xml_list("<array>", "<!DOCTYPE x [</array>]>"), false}, {ordinary, true},
            {"[core]\nintf=macosx\n", false}, {QByteArray(), false}, {number_key, false}, {nul_key, false}};
        for (int i = 0; i < cases.size(); ++i)
            QVERIFY2(bool(plist_document::from_bytes(cases[i].first)) == cases[i].second, qPrintable(QString::number(i)));
        QCOMPARE(psf::get_nsstring_values("k", plist_document::from_bytes(ordinary).get()), QString("</string>"));
    }

    // Archived objects resolve to plain values; a reference that cannot be
    // followed (out of the table, back to itself, too deep) resolves to null
    // and is named, while the rest of the archive still resolves.
    void keyed_archives_resolve()
    {
        const auto ref = [](quint64 index) { return QVariant::fromValue(plist_uid{index}); };
        QVariant deep = QVariantList{"bottom"};
        for (int i = 0; i < keyed_archive::k_max_depth; ++i)
            deep = QVariantList{deep};
        const struct { QVariant root; QString resolved; const char* problem; } cases[] = {
            {QVariantMap{{"a", QVariantList{"x", 1, true, 2.5}}}, "{a:[x,1,true,2.5]}", ""},
            {QVariantMap{{"$class", "NSMutableString"}, {"NS.string", "hi"}}, "hi", ""},
            {QVariantMap{{"$class", "NSMutableData"}, {"NS.data", QByteArray("\x01\x02")}}, "0102", ""},
            {QVariantMap{{"$class", "NSDate"}, {"NS.time", 0.5}}, "ms:978307200500", ""},
            {QVariantMap{{"$class", "NSDate"}, {"NS.time", 1e12}}, "null", ""},
            {QVariantMap{{"$class", "NSUUID"}, {"NS.uuidbytes", QByteArray(16, '\x11')}},
             "{11111111-1111-1111-1111-111111111111}", ""},
            {QVariantMap{{"$class", "NSUUID"}, {"NS.uuidbytes", QByteArray(3, '\x11')}}, "null", ""},
            {QVariantMap{{"$class", "Item"}, {"Name", "n"}}, "{$classname:Item,Name:n}", ""},
            {ref(99), "null", "reference 99 beyond the 1 objects"},
            // The writer stores the key "next" (1), the class (2), then the node (3).
            {QVariantMap{{"$class", "Node"}, {"next", ref(3)}}, "{$classname:Node,next:null}", "object 3 refers to itself"},
            // Each list is three steps of the depth count (its object, its members, their list).
            {deep, QString(21, '[') + "null" + QString(21, ']'), "references nested deeper than 64"},
        };
        std::function<QString(const QVariant&)> text = [&text](const QVariant& v) -> QString {
            QStringList parts;
            switch (v.typeId()) {
            case QMetaType::QVariantMap:
                for (auto it = v.toMap().constBegin(); it != v.toMap().constEnd(); ++it)
                    parts << it.key() + ":" + text(it.value());
                return "{" + parts.join(',') + "}";
            case QMetaType::QVariantList:
                for (const QVariant& item : v.toList())
                    parts << text(item);
                return "[" + parts.join(',') + "]";
            case QMetaType::QByteArray:
                return QString::fromLatin1(v.toByteArray().toHex());
            case QMetaType::QDateTime:
                return "ms:" + QString::number(v.toDateTime().toMSecsSinceEpoch());
            default:
                return v.isNull() ? QString("null") : v.toString();
            }
        };
        for (const auto& c : cases) {
            const auto list = plist_document::from_bytes(plist_writer::archive_of(c.root));
            keyed_archive archive(static_cast<plist_t>(list.get()));
            const QString got = text(archive.top("root"));
            QVERIFY2(got == c.resolved && archive.problem() == c.problem, qPrintable(got + " / " + archive.problem()));
        }
    }

    // The prolog's document type declaration is replaced by an empty one,
    // however its brackets, quotes and comments nest; everything else passes
    // byte for byte, read in pieces of any size.
    void document_type_declarations_are_emptied()
    {
        const QByteArray empty = "<!DOCTYPE document SYSTEM \"\">";
        const struct { QByteArray in; QByteArray out; } cases[] = {
            {"<?xml version=\"1.0\"?><p>&a;</p>", "<?xml version=\"1.0\"?><p>&a;</p>"},
            {"<?xml?>\n<!DOCTYPE p [<!ENTITY a \"x\">]><p>&a;</p>", "<?xml?>\n" + empty + "<p>&a;</p>"},
            {"<!-- <!DOCTYPE -->\n<!DOCTYPE p SYSTEM \"file:///etc/passwd\"><p/>", "<!-- <!DOCTYPE -->\n" + empty + "<p/>"},
            {"<!DOCTYPE p [<!ENTITY a \"]>\"><!-- ]> --><!ENTITY b ']>'>]><p/>", empty + "<p/>"},
            {"<?pi <!DOCTYPE x>?><!ELEMENT p><p/>", "<?pi <!DOCTYPE x>?><!ELEMENT p><p/>"},
            {"<p><!DOCTYPE x></p>", "<p><!DOCTYPE x></p>"},
            {"<!DOC", "<!DOC"},
            {"<!DOCTYPE p [<!ENTITY a", ""},
        };
        for (const auto& c : cases) {
            QBuffer source;
            source.setData(c.in);
            source.open(QIODevice::ReadOnly);
            xml_doctype_filter filter(&source);
            filter.open(QIODevice::ReadOnly);
            QByteArray got;
            for (QByteArray piece = filter.read(3); !piece.isEmpty(); piece = filter.read(3))
                got += piece;
            QVERIFY2(got == c.out, got.constData());
        }
    }

    // A bookmark with one field of a valid blob set out of bounds or into a
    // loop gives its reason and no values (real ones: macos_hostile.txt).
    void damaged_bookmarks_are_refused()
    {
        const QByteArray plain = bookmark_writer::build("Users/eve/a.mp4", QDateTime(), "eve");
        const qint64 table = bookmark_writer::first_table_at(plain);
        const struct { const char* error; qint64 at; qint64 value; qsizetype length; } cases[] = {
            {"", 0, 0x6b6f6f62, plain.size()},
            {"shorter than its header says", 0, 0x6b6f6f62, 200},
            {"not a bookmark", 0, 0x73696c61, plain.size()},
            {"header size out of range", 12, 0x7FFFFFFF, plain.size()},
            {"table of contents out of range", 48, 0xFFFFFF, plain.size()},
            {"tables of contents loop", table + 12, table - 48, plain.size()},
            {"table of contents entries out of range", table + 16, 0x10000000, plain.size()},
            {"item out of range", table + 24, 0xFFFFFF, plain.size()},
        };
        for (const auto& c : cases) {
            QByteArray blob = plain.left(c.length);
            qToLittleEndian(quint32(c.value), blob.data() + c.at);
            bookmark_record r;
            QCOMPARE(bookmark_reader::read(blob, &r), QString(c.error));
            QVERIFY2(r.path().isEmpty() == (*c.error != 0), c.error);
        }
    }

    // The debug log's cipher in every mode; a tampered record fails its check.
    void the_cipher_of_the_debug_log()
    {
        for (int mode = 0; mode < 9; ++mode) {
            encryptor_string cipher;
            cipher.setCompressionMode(encryptor_string::CompressionMode(mode / 3));
            cipher.setIntegrityProtectionMode(encryptor_string::IntegrityProtectionMode(mode % 3));
            for (const QString& line : {QString("a"), QString(5000, 'x') + "tail", QString()})
                QCOMPARE(encryptor_string().decryptToString(cipher.encryptToString(line)), line);
        }
        encryptor_string cipher;
        QCOMPARE(cipher.encryptToByteArray(QString("short")).left(2), QByteArray("\x03\x02"));
        cipher.setIntegrityProtectionMode(encryptor_string::ProtectionHash);
        QByteArray sealed = cipher.encryptToByteArray(QString("evidence line that must not be altered"));
        sealed[sealed.size() - 5] = char(sealed.at(sealed.size() - 5) ^ 0x10);
        QVERIFY(cipher.decryptToByteArray(sealed).isEmpty() && cipher.lastError() == encryptor_string::ErrorIntegrityFailed);
        // Key bytes are taken least significant first: position 8 of the body uses the first again.
        encryptor_string keyed(0x41);
        keyed.setCompressionMode(encryptor_string::CompressionNever);
        keyed.setIntegrityProtectionMode(encryptor_string::ProtectionNone);
        const QByteArray body = keyed.encryptToByteArray(QByteArray("AAAAAAAAA")).mid(2);
        QVERIFY(char(body.at(1) ^ body.at(0)) == 'A' && char(body.at(8) ^ body.at(7) ^ 'A') == 'A');
        QTest::ignoreMessage(QtWarningMsg, "Invalid version or not a cyphertext.");
        QVERIFY(cipher.decryptToByteArray(QByteArray("\x07\x02garbage")).isEmpty());
    }

    // The services that touch files, on a real tree; pinned by tests/golden/files.txt.
    void every_case_on_a_real_tree()
    {
        QTemporaryDir dir;
        const QString base = QFileInfo(dir.path()).canonicalFilePath();  // as a mounted source is addressed
        const QString evidence = base + "/evidence";
        QVERIFY(write_database_with_pending_log(evidence + "/vlc_media.db") && write_database_with_pending_log(evidence + "/other/db"));
        QByteArray big(3 * 1024 * 1024 + 17, '\0');
        for (int i = 0; i < big.size(); ++i)
            big[i] = char((i * 31 + 7) & 0xff);
        const QByteArray main_file = tree_writer::read_file(evidence + "/vlc_media.db");
        QString error;
        QVERIFY2(tree_writer::write_entries(base, {
            {"outside/canary.txt", "examiner's file"}, {"outside/deep/deeper", {}, kind::folder}, {"root_sibling/f.txt", "x"},
            {"root/Users/ann/Music/song.mp3", "mp3"}, {"root/absolute_out", (base + "/outside").toUtf8(), kind::link},
            {"root/relative_out", "../outside", kind::link}, {"root/Users/ann/parent_out", "../../../outside", kind::link},
            {"root/Users/ann/Music/cover.jpg", (base + "/outside/canary.txt").toUtf8(), kind::link},
            {"root/deep_out", (base + "/outside/deep/deeper").toUtf8(), kind::link},
            {"root/Users/ann/deep_out", (base + "/outside/deep/deeper").toUtf8(), kind::link},
            {"root/dangling_out", (base + "/outside/not_yet_there").toUtf8(), kind::link},
            {"root/sibling_out", "../root_sibling", kind::link}, {"root/relative_in", "Users/ann", kind::link},
            {"root/absolute_in", (base + "/root/Users/ann/Music").toUtf8(), kind::link},
            {"root/Users/ann/up_and_in", "../ann/Music", kind::link}, {"root/dangling_in", "nothing_here", kind::link},
            {"root/loop", "loop", kind::link}, {"root_link", (base + "/root").toUtf8(), kind::link},
            {"outside.db-wal", "outside bytes"}, {"evidence/in.db", tree_writer::read_file(evidence + "/other/db")},
            {"evidence/in.db-wal", "other/db-wal", kind::link}, {"evidence/out.db", main_file},
            {"evidence/out.db-wal", "../outside.db-wal", kind::link}, {"evidence/out.db-shm", {}, kind::pipe},
            {"evidence/pipe.db", {}, kind::pipe}, {"evidence/plain.db", main_file}, {"adhoc/plain.db-wal", "stale"},
            {"adhoc/x", "1"}, {"adhoc/1_x", {}, kind::folder}, {"adhoc/2_x", "nowhere", kind::link}, {"adhoc/sub/vlcrc", "x"},
            {"tree/a.bin", QByteArray(100, 'a')}, {"tree/.hidden", "h"}, {"tree/sub/b.bin", QByteArray(200, 'b')},
            {"tree/cover.jpg", big}, {"tree/empty", {}}, {"tree/pipe", {}, kind::pipe},
            {"tree/link_to_file", (base + "/outside/canary.txt").toUtf8(), kind::link},
            {"tree/sub/link_to_folder", (base + "/outside").toUtf8(), kind::link}, {"tree/dangling", "gone", kind::link},
            {"copy/.hidden", QByteArray(500, 'z')}, {"reads/4096", QByteArray(4096, 'a')},
            {"reads/4097", QByteArray(4097, 'a')}, {"reads/empty", {}}, {"reads/big", "[core]\n", kind::oversized},
            {"reads/link", "4096", kind::link}, {"reads/pipe", {}, kind::pipe}}, &error), qPrintable(error));
        const auto evidence_before = test_support::snapshot_tree(evidence);
        const auto outside_before = test_support::snapshot_tree(base + "/outside");
        QString text;

        // Inside the source root after cleaning and after resolving the links
        // that exist on the source, or else absent; the last ones name the
        // canary through a link followed by "..", though their text cleans to
        // a place inside the root.
        for (const QString& root : {base + "/root", base + "/root//", base + "/root_link"}) {
            for (const char* path :
                 {"/Users/ann/Music/song.mp3", "/Users/ann/Music/gone.mp3", "", "/Users/../Users/ann/Music/song.mp3",
                  "//Users/./ann//Music/..", "/Users/.../..a/.b/a..", "/absolute_in/song.mp3", "/relative_in/Music/song.mp3",
                  "/Users/ann/up_and_in/song.mp3", "/../outside/canary.txt", "/..", "/Users/ann/../../../outside/canary.txt",
                  "/../nowhere/x.mp3", "/absolute_out/canary.txt", "/absolute_out/none.txt", "/relative_out/canary.txt",
                  "/sibling_out/f.txt", "/Users/ann/parent_out/x/y.mp3", "/Users/ann/Music/cover.jpg", "/dangling_out/c.mp3",
                  "/dangling_in", "/loop/x.mp3", "/Users/ann/deep_out/../../canary.txt", "/deep_out/../deeper",
                  "/relative_in/../../deep_out/../../canary.txt"}) {
                const QString full = QDir::cleanPath(root) + path;
                text += QString("inside %1%2: %3 %4\n").arg(QString(root).remove(base), path)
                            .arg(source_path_guard::is_inside_root(full, root))
                            .arg(source_path_guard::exists_inside(full, root, "void t()"));
            }
        }
        for (const QString& other : {base + "/outside/canary.txt", base + "/root_sibling/f.txt", base, QString("/etc/passwd"),
                                     QString("Users/ann/song.mp3"), QString("C:\\Users"), QString()})
            text += "other " + QString(other).replace(base, "<base>") + ": "
                    + QString::number(source_path_guard::is_inside_root(other, base + "/root")) + "\n";
        for (const QString& bad_root : {QString(), QString("root"), base + "/root/Users/ann/Music/song.mp3/x", base + "/later"})
            text += "root " + QString(bad_root).replace(base, "<base>") + ": "
                    + QString::number(source_path_guard::is_inside_root(base + "/root/Users/ann/Music/song.mp3", bad_root)) + "\n";

        // Working copies: numbered, writable, with the rows still in the log; a
        // companion that links inside the source is copied, one leading out or
        // a pipe is left out (logged once) and the database read without it; a
        // stale log of an earlier run is not replayed; cancelled, the folder alone.
        debug_log_capture log;
        source_path_guard::reset_log();
        plugin_helper_functions helper;
        helper.set_adhoc_parent_path(base + "/adhoc/");
        for (const char* name : {"/vlc_media.db", "/vlc_media.db", "/in.db", "/out.db", "/pipe.db", "/plain.db "})
            text += "copy " + copy_text(helper.get_adhoc_path_for_database(evidence + name, evidence)) + "\n";
        text += "regular " + copy_text(helper.get_adhoc_path_for_regular_file(evidence + "/vlc_media.db")) + "\n";
        psf::bool_cancel_extraction = true;
        text += "cancelled [" + helper.get_adhoc_path_for_database(evidence + "/vlc_media.db").remove(base) + "] ["
                + psf::get_available_file("/e/x", base + "/adhoc/", "t") + "] [" + psf::mining_size(base + "/tree") + "]\n";
        psf::bool_cancel_extraction = false;
        for (const char* source : {"/e/x", "/e/vlc_media.db ", "/e/vlcrc"})
            text += "free name " + psf::get_available_file(source, base + "/adhoc/", "t") + "|\n";
        text += "log " + log.messages().join(" / ").remove(base) + "\n";

        // Sizes and copies take regular files only and never follow a link;
        // removal stays inside, removes a link given alone and never takes an
        // empty path for the current folder.
        text += "size " + psf::mining_size(base + "/tree") + " " + psf::mining_size(base + "/tree/dangling") + "\n";
        psf::copy_directory(base + "/tree", base + "/copy");
        psf::copy_directory(base + "/none", base + "/nothing");
        QVERIFY(tree_writer::read_file(base + "/copy/cover.jpg") == big && QFile::link(base + "/outside", base + "/link"));
        psf::remove_directory(base + "/link");
        psf::remove_directory(base + "/tree");
        QVERIFY(QDir::setCurrent(base + "/copy"));
        psf::remove_directory("   ");
        text += "after [" + test_support::listing(base + "/copy") + "] tree " + QString::number(QFileInfo::exists(base + "/tree"))
                + " link " + QString::number(QFileInfo(base + "/link").isSymLink()) + "\n";

        // Never more than the ceiling in memory, a flag when the file holds
        // more; a named pipe is not opened (it would wait for ever for a writer).
        for (const auto& [name, cap] : QList<QPair<QString, qint64>>{{"4096", 4096}, {"4097", 4096}, {"empty", 0},
                                                                     {"4096", 0}, {"big", 1 << 20}, {"link", 4096},
                                                                     {"missing", 4096}, {"", 4096}}) {
            const auto read = bounded_file_reader::read(base + "/reads/" + name, cap);
            text += QString("read %1 %2: %3 %4 %5\n").arg(name).arg(cap).arg(read.opened).arg(read.data.size()).arg(read.truncated);
        }
        QVERIFY(bounded_file_reader::read(base + "/reads/big").data.startsWith("[core]\n"));
        // A copy keeps the holes of a file that claims far more than it holds.
        const bool copied = sparse_file_copy::copy(base + "/reads/big", base + "/big_copy");
        text += QString("sparse copy %1: %2 bytes, below 1 MiB on disk %3\n").arg(copied).arg(QFileInfo(base + "/big_copy").size())
                    .arg(sparse_file_copy::allocated_size(base + "/big_copy") < (1 << 20));
        auto reading = std::async(std::launch::async, [&] { return bounded_file_reader::read(base + "/reads/pipe"); });
        const bool returned = reading.wait_for(std::chrono::seconds(30)) == std::future_status::ready;
        if (!returned)  // release the reader so that the test can report
            ::close(::open(QFile::encodeName(base + "/reads/pipe").constData(), O_WRONLY | O_NONBLOCK));
        QVERIFY2(returned && !reading.get().opened, "reading a named pipe blocked");

        // Times of files as seconds in UTC, whatever the zone's summer time does.
        for (const QDateTime& moment : {QDateTime(QDate(2020, 2, 29), QTime(12, 34, 56, 999), QTimeZone::utc()),
                                        QDateTime(QDate(2019, 3, 31), QTime(1, 30), QTimeZone::utc()),
                                        QDateTime(QDate(1960, 1, 1), QTime(0, 0), QTimeZone::utc())}) {
            QFile file(base + "/reads/4096");
            QVERIFY(file.open(QIODevice::ReadWrite) && file.setFileTime(moment, QFileDevice::FileModificationTime));
            file.close();
            text += "time " + psf::get_posix_timestamp(" " + base + "/reads/4096 ", "modification") + "\n";
        }
        text += "time of nothing [" + psf::get_posix_timestamp(base + "/gone", "modification") + "]\n";

        QCOMPARE(test_support::snapshot_tree(evidence), evidence_before);
        QCOMPARE(test_support::snapshot_tree(base + "/outside"), outside_before);
        const QString difference = test_support::compare_with_golden("files.txt", text);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }
};

QTEST_GUILESS_MAIN(test_services)
#include "test_services.moc"
