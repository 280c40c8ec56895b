// Capped reads of evidence files: never more than the ceiling in memory, a
// flag when the file holds more, and no hang on files that are not regular
// files.

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <chrono>
#include <fcntl.h>
#include <future>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "bounded_file_reader.h"

namespace {

bool write_file(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    return file.write(content) == content.size();
}

QByteArray pattern(qint64 size)
{
    QByteArray bytes(size, '\0');
    for (qint64 i = 0; i < size; ++i)
        bytes[i] = char('a' + i % 26);
    return bytes;
}

}  // namespace

class test_bounded_file_reader : public QObject
{
    Q_OBJECT

private slots:
    void sizes_around_the_ceiling_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::addColumn<qint64>("cap");
        QTest::addColumn<bool>("truncated");
        QTest::newRow("well below") << qint64(100) << qint64(4096) << false;
        QTest::newRow("one below") << qint64(4095) << qint64(4096) << false;
        QTest::newRow("exactly the ceiling") << qint64(4096) << qint64(4096) << false;
        QTest::newRow("one above") << qint64(4097) << qint64(4096) << true;
        QTest::newRow("far above") << qint64(1 << 20) << qint64(4096) << true;
        QTest::newRow("empty file") << qint64(0) << qint64(4096) << false;
        QTest::newRow("zero ceiling, empty file") << qint64(0) << qint64(0) << false;
        QTest::newRow("zero ceiling") << qint64(10) << qint64(0) << true;
    }

    void sizes_around_the_ceiling()
    {
        QFETCH(qint64, size);
        QFETCH(qint64, cap);
        QFETCH(bool, truncated);
        QTemporaryDir dir;
        const QString path = dir.filePath("ml.xspf");
        const QByteArray content = pattern(size);
        QVERIFY(write_file(path, content));

        const bounded_file_reader::result read = bounded_file_reader::read(path, cap);
        QVERIFY(read.opened);
        QCOMPARE(read.truncated, truncated);
        QCOMPARE(read.data, content.left(cap));
    }

    void big_sparse_file_is_read_up_to_the_ceiling()
    {
        // Far beyond 32 bits and beyond any sensible memory use, yet cheap on
        // disk: only the head and the tail are written.
        QTemporaryDir dir;
        const QString path = dir.filePath("vlcrc");
        {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            QVERIFY(file.write("[core]\n") == 7);
            if (!file.resize(5LL * 1024 * 1024 * 1024 + 3))
                QSKIP("this file system does not hold sparse files");
            QVERIFY(file.seek(file.size() - 4));
            QVERIFY(file.write("tail") == 4);
        }

        const bounded_file_reader::result capped = bounded_file_reader::read(path, 1024 * 1024);
        QVERIFY(capped.opened);
        QVERIFY(capped.truncated);
        QCOMPARE(capped.data.size(), 1024 * 1024);
        QVERIFY(capped.data.startsWith("[core]\n"));

        const bounded_file_reader::result by_default = bounded_file_reader::read(path);
        QVERIFY(by_default.truncated);
        QCOMPARE(qint64(by_default.data.size()), bounded_file_reader::k_default_cap_bytes);
        QVERIFY(by_default.data.startsWith("[core]\n"));
        QVERIFY(!by_default.data.contains("tail"));
    }

    void file_that_reports_no_size()
    {
        // Files of virtual file systems report a size of 0 but have content;
        // the ceiling still holds and the excess is noticed.
        const QString path = "/proc/self/status";
        if (!QFileInfo(path).isFile() || QFileInfo(path).size() != 0)
            QSKIP("no virtual file of size 0 here");
        const bounded_file_reader::result read = bounded_file_reader::read(path, 16);
        QVERIFY(read.opened);
        QCOMPARE(read.data.size(), 16);
        QVERIFY(read.truncated);
    }

    void nothing_to_read()
    {
        QTemporaryDir dir;
        for (const QString& path : {dir.filePath("missing.xspf"), dir.path(), QString()}) {
            const bounded_file_reader::result read = bounded_file_reader::read(path, 4096);
            QVERIFY2(!read.opened, qPrintable(path));
            QVERIFY(read.data.isEmpty());
            QVERIFY(!read.truncated);
        }
    }

    void named_pipe_does_not_block()
    {
        // A named pipe in the evidence has no writer: opening it for reading
        // would wait for ever. It is not a file the player wrote; it is left
        // unread.
        QTemporaryDir dir;
        const QString path = dir.filePath("vlcrc");
        const QByteArray native = QFile::encodeName(path);
        QCOMPARE(::mkfifo(native.constData(), 0644), 0);

        std::promise<bounded_file_reader::result> promise;
        std::future<bounded_file_reader::result> future = promise.get_future();
        std::thread reader([&promise, path] { promise.set_value(bounded_file_reader::read(path, 4096)); });

        // Not a measurement: a generous bound after which the reader is
        // released so that the test can report instead of hanging.
        const bool returned = future.wait_for(std::chrono::seconds(30)) == std::future_status::ready;
        if (!returned) {
            const int writer = ::open(native.constData(), O_WRONLY | O_NONBLOCK);
            if (writer >= 0)
                ::close(writer);
        }
        reader.join();
        QVERIFY2(returned, "reading a named pipe blocked");
        const bounded_file_reader::result read = future.get();
        QVERIFY(!read.opened);
        QVERIFY(read.data.isEmpty());
    }

    void link_to_a_file_is_read()
    {
        QTemporaryDir dir;
        QVERIFY(write_file(dir.filePath("real.m3u"), "#EXTM3U\n"));
        QVERIFY(QFile::link(dir.filePath("real.m3u"), dir.filePath("link.m3u")));
        const bounded_file_reader::result read = bounded_file_reader::read(dir.filePath("link.m3u"), 4096);
        QVERIFY(read.opened);
        QCOMPARE(read.data, QByteArray("#EXTM3U\n"));

        QVERIFY(QFile::link(dir.filePath("gone.m3u"), dir.filePath("dangling.m3u")));
        QVERIFY(!bounded_file_reader::read(dir.filePath("dangling.m3u"), 4096).opened);
    }
};

QTEST_GUILESS_MAIN(test_bounded_file_reader)
#include "test_bounded_file_reader.moc"
