// The evidence is never altered: every table of every scheme runs on the
// scheme's sample tree, through the host program and the real plug-in, and
// every entry below the source root keeps its content hash, size,
// modification time and mode. The same runs happen with the tree made
// read-only by its mode bits, and on a read-only bind mount of it where the
// system allows mounting: the tests run as root, whom mode bits do not stop,
// so the hashes are the proof, and the mount makes any write attempt fail
// outright.

#include <QDirIterator>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include "sample_trees.h"
#include "test_support.h"

namespace {

enum class protection { none, mode_bits, read_only_mount };

void remove_write_bits(const QString& root)
{
    const auto strip = [](const QString& path) {
        QFile::setPermissions(path, QFile::permissions(path)
                                        & ~(QFile::WriteOwner | QFile::WriteUser | QFile::WriteGroup | QFile::WriteOther));
    };
    QDirIterator walk(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        walk.next();
        if (!walk.fileInfo().isSymLink())
            strip(walk.filePath());
    }
    strip(root);
}

void restore_write_bits(const QString& root)
{
    QFile::setPermissions(root, QFile::permissions(root) | QFile::WriteOwner);
    QDirIterator walk(root, QDir::Dirs | QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        walk.next();
        if (!walk.fileInfo().isSymLink())
            QFile::setPermissions(walk.filePath(), QFile::permissions(walk.filePath()) | QFile::WriteOwner);
    }
}

bool run_tool(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(30000) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

// A read-only view of a folder, unmounted when it goes.
class read_only_view
{
public:
    read_only_view(const QString& folder, const QString& mount_point) : m_point(mount_point)
    {
        m_mounted = run_tool("mount", {"--bind", folder, mount_point});
        m_read_only = m_mounted && run_tool("mount", {"-o", "remount,bind,ro", mount_point});
    }
    ~read_only_view()
    {
        if (m_mounted)
            run_tool("umount", {m_point});
    }
    bool ready() const { return m_read_only; }

private:
    QString m_point;
    bool m_mounted = false;
    bool m_read_only = false;
};

qint64 g_files_hashed = 0;

}  // namespace

class test_immutability : public QObject
{
    Q_OBJECT

private slots:
    void cleanupTestCase() { qInfo("entries compared before and after: %lld", static_cast<long long>(g_files_hashed)); }

    void every_table_leaves_the_source_as_it_was_data()
    {
        QTest::addColumn<int>("tree");
        QTest::addColumn<int>("guard");
        const QList<sample_tree> trees = sample_trees();
        for (int i = 0; i < trees.size(); ++i) {
            const QByteArray scheme = trees.at(i).os_scheme.toUtf8();
            QTest::addRow("%s writable", scheme.constData()) << i << int(protection::none);
            QTest::addRow("%s mode bits read-only", scheme.constData()) << i << int(protection::mode_bits);
            QTest::addRow("%s read-only mount", scheme.constData()) << i << int(protection::read_only_mount);
        }
    }

    void every_table_leaves_the_source_as_it_was()
    {
        QFETCH(int, tree);
        QFETCH(int, guard);
        const sample_tree sample = sample_trees().at(tree);
        QTemporaryDir scratch;
        const QString written = scratch.filePath("evidence");
        QVERIFY(QDir().mkpath(written));
        QString error;
        QVERIFY2(sample.write(written, &error), qPrintable(error));

        QString source = written;
        std::unique_ptr<read_only_view> view;
        if (protection(guard) == protection::mode_bits)
            remove_write_bits(written);
        if (protection(guard) == protection::read_only_mount) {
            source = scratch.filePath("mounted");
            QVERIFY(QDir().mkpath(source));
            view = std::make_unique<read_only_view>(written, source);
            if (!view->ready())
                QSKIP("this system does not allow a read-only bind mount here");
        }

        const auto before = test_support::snapshot_tree(written);
        QStringList arguments = {"--source", source, "--os", sample.os_scheme, "--out", scratch.filePath("out")};
        for (const QString& user : sample.users)
            arguments << "--user" << user;
        const auto result = test_support::run_host(arguments);
        const auto after = test_support::snapshot_tree(written);
        view.reset();
        if (protection(guard) == protection::mode_bits)
            restore_write_bits(written);

        QVERIFY2(result.exit_code == 0, qPrintable(result.err));
        QCOMPARE(after, before);
        g_files_hashed += before.size();
        // Not a run that read nothing: every sample but the stub's fills rows.
        if (sample.os_scheme != "iOS_UID")
            QVERIFY2(!result.out.contains(QRegularExpression("records found: 0,")), qPrintable(result.out));
    }
};

QTEST_MAIN(test_immutability)
#include "test_immutability.moc"
