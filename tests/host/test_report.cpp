// The examiner's report of every demo tree: its text outputs (run record,
// timeline) against one golden text per tree, its CSV files against the
// tables, and its pages in a real headless browser, driven over the WebDriver
// protocol: rows shown, search, the timeline's order, no request off the disk.

#include <QEventLoop>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTimer>
#include <QtTest>

#include "sample_trees.h"
#include "test_support.h"

namespace {

const QStringList k_tables
    = {"media_library", "podcasts", "recents", "recent_played", "playlists", "album_art", "album", "exportfilelist"};

// Records of a CSV file (RFC 4180: quoted fields may hold line breaks).
QList<QStringList> csv_records(const QString& path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    const QString text = QString::fromUtf8(file.readAll());
    QList<QStringList> records;
    QStringList record;
    QString field;
    bool quoted = false;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (quoted && c == '"' && i + 1 < text.size() && text.at(i + 1) == '"') {
            field += c;
            ++i;
        } else if (c == '"') {
            quoted = !quoted;
        } else if (!quoted && (c == ',' || c == '\n')) {
            record << field;
            field.clear();
            if (c == '\n')
                records << std::exchange(record, {});
        } else if (quoted || c != '\r') {
            field += c;
        }
    }
    return records;
}

// A headless Chromium through its driver, on a port of its own, with a fresh
// profile; stopped with this object.
class browser
{
public:
    QString start()
    {
        for (const char* program : {"/usr/bin/chromium", "/usr/bin/chromedriver"}) {
            if (!QFileInfo(program).isExecutable())
                return QString(program) + " is missing: scripts/install-deps.sh installs it";
        }
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost);
        const quint16 port = probe.serverPort();
        probe.close();
        m_base = QString("http://127.0.0.1:%1").arg(port);
        m_driver.start("/usr/bin/chromedriver", {QString("--port=%1").arg(port)});
        for (int i = 0; i < 100 && !call("GET", "/status").toObject().value("ready").toBool(); ++i)
            QTest::qWait(100);
        const QJsonArray args = {"--headless",
                                 "--no-sandbox",
                                 "--disable-gpu",
                                 "--disable-quic",
                                 "--no-first-run",
                                 "--disable-background-networking",
                                 "--disable-component-update",
                                 "--disable-sync",
                                 "--window-size=1400,1000",
                                 "--user-data-dir=" + m_profile.path()};
        const QJsonObject chrome{{"binary", "/usr/bin/chromium"}, {"args", args}};
        const QJsonObject capabilities{{"alwaysMatch", QJsonObject{{"goog:chromeOptions", chrome}}}};
        m_session = call("POST", "/session", {{"capabilities", capabilities}}).toObject().value("sessionId").toString();
        return m_session.isEmpty() ? "no browser session: " + m_last_error : QString();
    }

    ~browser()
    {
        if (!m_session.isEmpty())
            call("DELETE", "/session/" + m_session);
        m_driver.kill();
        m_driver.waitForFinished(5000);
    }

    void open(const QString& file) { call("POST", session("/url"), {{"url", QUrl::fromLocalFile(file).toString()}}); }
    QJsonValue run(const QString& script)
    {
        return call("POST", session("/execute/sync"), {{"script", script}, {"args", QJsonArray()}});
    }
    // Real key strokes into the element a selector names.
    void type(const QString& selector, const QString& text)
    {
        const QJsonObject found
            = call("POST", session("/element"), {{"using", "css selector"}, {"value", selector}}).toObject();
        const QString id = found.value(found.keys().value(0)).toString();
        call("POST", session("/element/" + id + "/value"), {{"text", text}});
    }
    QByteArray screenshot()
    {
        return QByteArray::fromBase64(call("GET", session("/screenshot")).toString().toLatin1());
    }

private:
    QString session(const QString& path) const { return "/session/" + m_session + path; }

    QJsonValue call(const QByteArray& verb, const QString& path, const QJsonObject& body = {})
    {
        QNetworkRequest request(QUrl(m_base + path));
        request.setHeader(QNetworkRequest::ContentTypeHeader, "application/json");
        QNetworkReply* reply = m_network.sendCustomRequest(request, verb, QJsonDocument(body).toJson());
        QEventLoop wait;
        QObject::connect(reply, &QNetworkReply::finished, &wait, &QEventLoop::quit);
        QTimer::singleShot(60000, &wait, &QEventLoop::quit);
        wait.exec();
        const QJsonValue value = QJsonDocument::fromJson(reply->readAll()).object().value("value");
        m_last_error = reply->errorString() + " " + value.toObject().value("message").toString();
        reply->deleteLater();
        return value;
    }

    QProcess m_driver;
    QNetworkAccessManager m_network;
    QTemporaryDir m_profile;
    QString m_base;
    QString m_session;
    QString m_last_error;
};

// What the page shows, read from the rendered document.
const QString k_rows_shown = "return [...document.querySelectorAll('#%1 tbody tr')]"
                             ".filter(r => !r.querySelector('td.dataTables_empty')).length;";
const QString k_show_all = "const s = document.querySelector('select[name=%1_length]'); s.value = '-1';"
                           "s.dispatchEvent(new Event('change'));";
const QString k_off_disk = "return [location.href, ...performance.getEntriesByType('resource').map(e => e.name)]"
                           ".filter(u => !u.startsWith('file://'));";

// A word of the first row that an examiner might look for: the account, or
// the first word of what the row is about.
QString search_word(const QString& database, const QString& table)
{
    const QStringList columns = {"system_user", "file_name", "album_name", "playlist_name", "podcasts"};
    for (const QString& column : columns) {
        const auto rows
            = test_support::query_rows(database, "SELECT " + column + " FROM " + table + " ORDER BY INT LIMIT 1");
        const auto word = QRegularExpression("[A-Za-z]{3,}").match(rows.value(0).value(0).toString());
        if (word.hasMatch())
            return word.captured(0);
    }
    return "zqzqzq";
}

qint64 rows_holding(const QString& database, const QString& table, const QString& word)
{
    QStringList any;
    for (const QVariantList& column :
         test_support::query_rows(database, "SELECT name FROM pragma_table_info('" + table + "')"))
        any << "\"" + column.value(0).toString() + "\" LIKE '%" + word + "%'";
    return test_support::query_rows(database, "SELECT count(*) FROM " + table + " WHERE " + any.join(" OR "))
        .value(0)
        .value(0)
        .toLongLong();
}

}  // namespace

class test_report : public QObject
{
    Q_OBJECT

    QTemporaryDir m_demo;
    QDateTime m_started = QDateTime::currentDateTimeUtc();

    QString result_of(const sample_tree& tree) const { return m_demo.filePath("results/" + tree.folder_name); }
    QString report_of(const sample_tree& tree) const { return result_of(tree) + "/report"; }
    QString database_of(const sample_tree& tree) const { return result_of(tree) + "/Artifacts_Result/VLC/VLC.sqlite"; }

    // The report's texts with what differs from run to run masked: times and
    // places of the run, and times of the files the generators wrote now.
    QString golden_text(const sample_tree& tree) const
    {
        QJsonObject run = QJsonDocument::fromJson([&] {
                              QFile f(report_of(tree) + "/run.json");
                              f.open(QIODevice::ReadOnly);
                              return f.readAll();
                          }())
                              .object();
        for (const char* key : {"started_utc", "ended_utc", "host", "command_line", "tool"})
            run.insert(key, "*");
        QJsonArray files;
        for (const QJsonValue& file : run.value("evidence_files").toArray()) {
            QJsonObject masked = file.toObject();
            masked.insert("modified_utc", "*");
            // A write-ahead log and its index carry random salts.
            if (masked.value("path").toString().contains(QRegularExpression("-(wal|shm)$"))) {
                masked.insert("md5", "*");
                masked.insert("sha256", "*");
            }
            files << masked;
        }
        run.insert("evidence_files", files);
        QString text = "== run.json\n" + QString::fromUtf8(QJsonDocument(run).toJson());
        text += "== timeline.csv\n";
        QStringList generated;
        for (const QStringList& event : csv_records(report_of(tree) + "/timeline.csv")) {
            const bool now = event.value(1).toLongLong() > m_started.toSecsSinceEpoch() - 86400;
            if (now)
                generated << "*,*," + event.mid(2).join(',');
            else
                text += event.join(',') + "\n";
        }
        generated.sort();
        text += generated.join('\n');
        return text.replace(m_demo.filePath("samples/" + tree.folder_name), "<source>")
            .replace(result_of(tree), "<out>");
    }

private slots:
    void initTestCase()
    {
        const auto demo = test_support::run_host({"demo", "--out", m_demo.path()});
        QVERIFY2(demo.exit_code == 0, qPrintable(demo.err));
        for (const sample_tree& tree : sample_trees())
            QVERIFY2(demo.out.contains(report_of(tree) + "/index.html"), qPrintable(demo.out));
    }

    void every_report_matches_its_golden_text_and_its_tables()
    {
        for (const sample_tree& tree : sample_trees()) {
            const QString difference
                = test_support::compare_with_golden("report/" + tree.folder_name + ".txt", golden_text(tree));
            QVERIFY2(difference.isEmpty(), qPrintable(difference));
            for (const QString& table : k_tables) {
                const auto records = csv_records(report_of(tree) + "/csv/" + table + ".csv");
                QVERIFY2(records.size() - 1 == test_support::count_rows(database_of(tree), table),
                         qPrintable(tree.folder_name + " " + table));
            }
        }
    }

    void the_report_of_an_existing_result_is_made_again()
    {
        const sample_tree tree = sample_trees().at(1);
        const auto before = csv_records(report_of(tree) + "/timeline.csv");
        const auto again = test_support::run_host({"report", "--out", result_of(tree)});
        QVERIFY2(again.exit_code == 0, qPrintable(again.err));
        QCOMPARE(csv_records(report_of(tree) + "/timeline.csv"), before);
        QVERIFY(QFile(report_of(tree) + "/run.json").open(QIODevice::ReadOnly));
    }

    void every_report_works_in_a_real_browser()
    {
        browser chromium;
        const QString problem = chromium.start();
        QVERIFY2(problem.isEmpty(), qPrintable(problem));
        const QString screenshots = QStringLiteral(VLC_TEST_BUILD_DIR) + "/report_screenshots";
        QDir().mkpath(screenshots);
        for (const sample_tree& tree : sample_trees()) {
            const QString where = tree.folder_name;
            chromium.open(report_of(tree) + "/index.html");
            QVERIFY2(chromium.run(k_off_disk).toArray().isEmpty(), qPrintable(where));
            QFile shot(screenshots + "/" + tree.folder_name + ".png");
            QVERIFY(shot.open(QIODevice::WriteOnly) && shot.write(chromium.screenshot()) > 0);

            for (const QString& table : k_tables) {
                const qint64 rows = test_support::count_rows(database_of(tree), table);
                if (rows == 0)
                    continue;
                const QString page = where + " " + table;
                chromium.open(report_of(tree) + "/table-" + table + ".html");
                chromium.run(k_show_all.arg("rows"));
                QVERIFY2(chromium.run(k_rows_shown.arg("rows")).toInt() == rows, qPrintable(page));
                const QString word = search_word(database_of(tree), table);
                chromium.type("div.dataTables_filter input", word);
                QVERIFY2(chromium.run(k_rows_shown.arg("rows")).toInt() == rows_holding(database_of(tree), table, word),
                         qPrintable(page + " searching " + word));
                QVERIFY2(chromium.run(k_off_disk).toArray().isEmpty(), qPrintable(page));
            }

            chromium.open(report_of(tree) + "/timeline.html");
            chromium.run(k_show_all.arg("timeline"));
            const QJsonArray times = chromium
                                         .run("return [...document.querySelectorAll('#timeline tbody span.time')]"
                                              ".map(s => Number(s.title));")
                                         .toArray();
            QVERIFY2(times.size() == csv_records(report_of(tree) + "/timeline.csv").size() - 1, qPrintable(where));
            for (int i = 1; i < times.size(); ++i)
                QVERIFY2(times.at(i - 1).toDouble() <= times.at(i).toDouble(), qPrintable(where));
            const QString user = tree.users.value(0);
            if (!user.isEmpty()) {
                chromium.run("const s = document.getElementById('filter-user'); s.value = '" + user
                             + "'; s.dispatchEvent(new Event('change'));");
                const QJsonArray shown = chromium
                                             .run("return [...document.querySelectorAll('#timeline tbody tr')]"
                                                  ".map(r => r.cells[5].textContent);")
                                             .toArray();
                const auto events = csv_records(report_of(tree) + "/timeline.csv");
                QVERIFY2(shown.size()
                             == std::count_if(events.begin(), events.end(),
                                              [&](const QStringList& e) { return e.value(6) == user; }),
                         qPrintable(where + " " + user));
                QVERIFY2(shown.toVariantList().count(user) == shown.size(), qPrintable(where + " " + user));
            }
            QVERIFY2(chromium.run(k_off_disk).toArray().isEmpty(), qPrintable(where));
        }
    }
};

QTEST_GUILESS_MAIN(test_report)
#include "test_report.moc"
