// Where the Android extractor looks for the files an mrl names, in either
// layout: shared storage under all the names the phone gives it, the app's
// folders, and a memory card that a backup does not hold.

#include <QTemporaryDir>
#include <QtTest>

#include "android_places.h"
#include "tree_writer.h"

class test_android_places : public QObject
{
    Q_OBJECT

private slots:
    void mrls_lead_to_shared_storage_in_both_layouts()
    {
        QTemporaryDir backup, full;
        QString error;
        QVERIFY(tree_writer::write_file(backup.path(), "apps/org.videolan.vlc/r/app_db/vlc_media.db", "x", &error));
        QVERIFY(tree_writer::make_dir(full.path(), "data/media/0", &error));
        const struct
        {
            const char* name;
            bool full_extraction;
            QString mrl;
            QString expected;  // below the source root
        } cases[] = {
            {"backup, emulated", false, "file:///storage/emulated/0/Music/a%20b.mp3", "shared/0/Music/a b.mp3"},
            {"backup, sdcard", false, "file:///sdcard/Music/a.mp3", "shared/0/Music/a.mp3"},
            {"backup, mnt sdcard", false, "file:///mnt/sdcard/Download/b.ogg", "shared/0/Download/b.ogg"},
            {"backup, memory card", false, "file:///storage/1A2B-3C4D/Music/c.mp3", "storage/1A2B-3C4D/Music/c.mp3"},
            {"full, sdcard", true, "file:///sdcard/Music/a.mp3", "data/media/0/Music/a.mp3"},
            {"full, mnt sdcard", true, "/mnt/sdcard/Music/a.mp3", "data/media/0/Music/a.mp3"},
            {"full, private", true, "file:///data/user/0/org.videolan.vlc/app_vlc/t.jpg",
             "data/data/org.videolan.vlc/app_vlc/t.jpg"},
            {"full, memory card", true, "file:///storage/1A2B-3C4D/c.mp3", "storage/1A2B-3C4D/c.mp3"},
            {"stream", true, "http://example.com/a.mp3", ""},
        };
        for (const auto& c : cases) {
            const QString root = (c.full_extraction ? full.path() : backup.path()) + "/";
            android_places places;
            places.find_layout(root);
            const QString expected = c.expected.isEmpty() ? QString() : root + c.expected;
            const QString found = places.media_path(c.mrl);
            QVERIFY2(found == expected, qPrintable(QString(c.name) + ": " + found));
        }
    }
};

QTEST_GUILESS_MAIN(test_android_places)
#include "test_android_places.moc"
