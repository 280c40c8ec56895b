// Property lists as the macOS readers see them: the value readers on lists
// written by our generator, the duration texts of the media library, and
// damaged binary and XML lists that must be refused without crashing or
// hanging.

#include <QtTest>

#include "plist_document.h"
#include "plist_writer.h"
#include "plugin_static_function.h"
#include "vlc_macos.h"

namespace {

plist_owner parsed(const QVariant& value, plist_writer::format form = plist_writer::format::binary)
{
    return plist_document::from_bytes(plist_writer::write(value, form));
}

void put_be(QByteArray& data, qsizetype at, quint64 value, int width)
{
    for (int i = width - 1; i >= 0; --i, value >>= 8)
        data[at + i] = char(value & 0xFF);
}

// n objects, each an array holding the next; the last holds the first when
// cyclic, else nothing.
QByteArray nested_binary(int n, bool cyclic)
{
    const int ref = 4;
    QByteArray data("bplist00");
    QList<qsizetype> offsets;
    for (int i = 0; i < n; ++i) {
        offsets << data.size();
        const bool last = i + 1 == n;
        if (last && !cyclic) {
            data += char(0xA0);
            continue;
        }
        data += char(0xA1);
        data += QByteArray(ref, '\0');
        put_be(data, data.size() - ref, last ? 0 : quint64(i + 1), ref);
    }
    const qsizetype table = data.size();
    for (qsizetype offset : offsets) {
        data += QByteArray(4, '\0');
        put_be(data, data.size() - 4, quint64(offset), 4);
    }
    QByteArray trailer(32, '\0');
    trailer[6] = 4;
    trailer[7] = char(ref);
    put_be(trailer, 8, quint64(n), 8);
    put_be(trailer, 24, quint64(table), 8);
    return data + trailer;
}

}  // namespace

class test_plist_readers : public QObject
{
    Q_OBJECT

private slots:
    void value_readers_data()
    {
        QTest::addColumn<int>("form");
        QTest::newRow("binary") << int(plist_writer::format::binary);
        QTest::newRow("xml") << int(plist_writer::format::xml);
    }

    void value_readers()
    {
        QFETCH(int, form);
        const QVariantMap values{{"text", "  padded  "},  {"real", 2.9},     {"negative", -3.7},
                                 {"one", 1},               {"yes", true},     {"no", false},
                                 {"empty", ""},            {"list", QVariantList{"a", 7, true}},
                                 {"when", QDateTime(QDate(2020, 12, 31), QTime(23, 59, 59, 900), QTimeZone::utc())}};
        const plist_owner dict = parsed(values, plist_writer::format(form));
        QVERIFY(plist_document::is_dict(dict.get()));
        plist_t d = dict.get();
        using p = plugin_static_function;
        QCOMPARE(p::get_nsstring_values("text", d), QString("padded"));
        QCOMPARE(p::get_nsstring_values("real", d), QString());
        QCOMPARE(p::get_nsnumber_values("real", d), QString("2"));
        QCOMPARE(p::get_nsnumber_values("negative", d), QString("-3"));
        QCOMPARE(p::get_nsnumber_values("text", d), QString());
        // Only a true boolean is a switch: an integer 1 is not "YES".
        QCOMPARE(p::get_nsnumber_values_yes_no("yes", d), QString("YES"));
        QCOMPARE(p::get_nsnumber_values_yes_no("no", d), QString("NO"));
        QCOMPARE(p::get_nsnumber_values_yes_no("one", d), QString());
        QCOMPARE(p::get_nsnumber_key_and_value_yes_no("one", d, "Enabled"), QString("Enabled:+:YES"));
        QCOMPARE(p::get_nsnumber_key_and_value_yes_no("real", d, "Enabled"), QString());
        QCOMPARE(p::get_nsstring_key_and_values("text", d, "Name"), QString("Name:+:padded"));
        QCOMPARE(p::get_nsstring_key_and_values("empty", d, "Name"), QString());
        QCOMPARE(p::get_nsstring_key_and_values("absent", d, "Name"), QString());
        QCOMPARE(p::get_nsnumber_key_and_values("one", d, "Count"), QString("Count:+:1"));
        QCOMPARE(p::get_nsarray_key_and_values("list", d, "Items"), QString("Items:+:a;++::++;7;++::++;YES"));
        QCOMPARE(p::convert_nsdate_to_epoch(plist_document::dict_item(d, "when")), 1609459199LL);
        QCOMPARE(p::convert_nsdate_to_epoch(plist_document::dict_item(d, "text")), 0LL);
        QCOMPARE(p::convert_nsdate_to_epoch(nullptr), 0LL);
    }

    void damaged_binary_lists_are_refused()
    {
        const QByteArray valid = plist_writer::keyed_archive({"file:///Users/a/x.mp4", "srvr"});
        QVERIFY(plist_document::from_bytes(valid));
        // Every truncation of a real list: refused or read, never a crash.
        for (qsizetype size = 0; size < valid.size(); ++size)
            plist_document::from_bytes(valid.left(size));

        QByteArray table_out_of_range = valid;
        put_be(table_out_of_range, valid.size() - 8, quint64(valid.size()) * 4, 8);
        QVERIFY(!plist_document::from_bytes(table_out_of_range));
        QByteArray offset_out_of_range = valid;
        const quint64 table = quint64(qFromBigEndian<quint64>(valid.constData() + valid.size() - 8));
        put_be(offset_out_of_range, qsizetype(table), 0xFFFFFF, valid.at(valid.size() - 26));
        QVERIFY(!plist_document::from_bytes(offset_out_of_range));

        plist_document::load_failure why = plist_document::load_failure::none;
        QVERIFY(plist_document::from_bytes(nested_binary(50, false), &why));
        QVERIFY(!plist_document::from_bytes(nested_binary(50, true), &why));
        QVERIFY(why == plist_document::load_failure::not_a_plist);
        // Deep enough to exhaust the parser's stack if it were handed over.
        QVERIFY(!plist_document::from_bytes(nested_binary(200000, false)));
    }

    void deeply_nested_xml_and_foreign_text_are_refused()
    {
        plist_document::load_failure why = plist_document::load_failure::none;
        const int depth = 300000;
        const QByteArray deep = "<?xml version=\"1.0\"?><plist version=\"1.0\">" + QByteArray("<array>").repeated(depth)
            + QByteArray("</array>").repeated(depth) + "</plist>";
        QVERIFY(!plist_document::from_bytes(deep, &why));
        QVERIFY(why == plist_document::load_failure::too_deep);
        // Closing tags hidden in comments, character data, instructions or
        // quoted attribute values must not cancel the real nesting around them.
        const QList<QPair<QByteArray, QByteArray>> disguised = {{"<array>", "<!--</array>-->"},
                                                               {"<array>", "<![CDATA[</array>]]>"},
                                                               {"<array>", "<?pi </array>?>"},
                                                               {"<array x=\"/>\">", ""},
                                                               {"<array>", "<!DOCTYPE x [</array>]>"}};
        for (const auto& [open, filler] : disguised) {
            const QByteArray hostile = "<?xml version=\"1.0\"?><plist version=\"1.0\">" + (open + filler).repeated(depth)
                + QByteArray("</array>").repeated(depth) + "</plist>";
            QVERIFY2(!plist_document::from_bytes(hostile), filler.isEmpty() ? open.constData() : filler.constData());
        }
        // The same constructs in an ordinary list are read as before.
        const plist_owner commented = plist_document::from_bytes(
            "<?xml version=\"1.0\"?><!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"x.dtd\">"
            "<plist version=\"1.0\"><dict><!-- </dict> --><key>k</key><string><![CDATA[</string>]]></string></dict></plist>");
        QVERIFY(plist_document::is_dict(commented.get()));
        QCOMPARE(plugin_static_function::get_nsstring_values("k", commented.get()), QString("</string>"));
        QVERIFY(!plist_document::from_bytes("[core]\nintf=macosx\n", &why));
        QVERIFY(why == plist_document::load_failure::not_a_plist);
        QVERIFY(!plist_document::from_bytes(QByteArray(), &why));
        QVERIFY(!plist_document::load_file("/nonexistent/list.plist", &why));
        QVERIFY(why == plist_document::load_failure::unreadable);
    }
};

QTEST_GUILESS_MAIN(test_plist_readers)
#include "test_plist_readers.moc"
