// Writes the seed corpus of every fuzz target below a folder:
//   fuzz_seeds OUT_DIR
// Seeds are the player's files from our sample trees, a few more made by the
// fixture generators, and the real samples in the shared fixtures (read from
// there, never kept in the repository). A seed's file name is the hash of its
// bytes, so reruns and duplicates add nothing.

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QTemporaryDir>
#include <QtEndian>

#include <cstdio>

#include "compound_file_writer.h"
#include "olecf_file_parse.h"
#include "plist_writer.h"
#include "sample_trees.h"
#include "shell_link_writer.h"
#include "tree_writer.h"

namespace {

struct corpus
{
    QString folder;
    int written = 0;

    void add(const QByteArray& bytes)
    {
        const QString name = QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex();
        if (tree_writer::write_file(folder + "/" + name, bytes))
            ++written;
    }
    void add_embedded(const QByteArray& bytes)
    {
        for (qsizetype at = bytes.indexOf("book"); at >= 0 && at + 8 <= bytes.size();
             at = bytes.indexOf("book", at + 4))
            add(bytes.mid(at, qFromLittleEndian<quint32>(bytes.constData() + at + 4)));
    }
    // Every regular file below dir whose name matches one of the patterns.
    void add_files(const QString& dir, const QStringList& patterns)
    {
        for (QDirIterator it(dir, patterns, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories); it.hasNext();)
            add(tree_writer::read_file(it.next()));
    }
};

bool write_tree(const QString& root, bool (*write)(const QString&, QString*))
{
    QString error;
    if (QDir().mkpath(root) && write(root, &error))
        return true;
    std::fprintf(stderr, "fuzz_seeds: %s\n", qPrintable(error));
    return false;
}

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: fuzz_seeds OUT_DIR\n");
        return 2;
    }
    const QString out = QString::fromLocal8Bit(argv[1]);
    QTemporaryDir trees;
    const QString macos = trees.filePath("macos");
    const QString windows = trees.filePath("windows");
    const QString android = trees.filePath("android");
    const QString ios = trees.filePath("ios");
    const QString ios_backup = trees.filePath("ios_backup");
    if (!write_tree(macos, write_macos_sample_tree) || !write_tree(windows, write_windows_sample_tree)
        || !write_tree(android, write_android_sample_tree) || !write_tree(ios, write_ios_sample_tree)
        || !write_tree(ios_backup, write_ios_backup_sample_tree))
        return 1;
    const QString shared = tree_writer::shared_fixtures_dir();

    corpus media_library{out + "/fuzz_macos_media_library"};
    media_library.add_files(macos, {"*.xspf"});
    media_library.add_files(shared + "/vlc", {"ml.xspf"});

    corpus playlists{out + "/fuzz_winos_playlists"};
    playlists.add_files(windows, {"*.m3u", "*.m3u8", "*.xspf"});
    playlists.add_files(shared + "/vlc", {"ml.xspf"});

    // A playlist with a document type declaration, quotes and brackets in its subset.
    const QByteArray doctype = "<?xml version=\"1.0\"?><!DOCTYPE playlist SYSTEM 'x' [<!ENTITY a \"]>\"><!-- ] ' -->]>"
                               "<playlist xmlns:vlc='v'><trackList><track><location>&a;</location><extension><vlc:id>0</vlc:id>"
                               "</extension></track></trackList></playlist>";
    media_library.add(doctype);
    playlists.add(doctype);

    corpus podcasts{out + "/fuzz_vlcrc_podcasts"};
    podcasts.add_files(macos, {"vlcrc"});
    podcasts.add_files(windows, {"vlcrc"});
    podcasts.add_files(shared + "/vlc", {"vlcrc"});

    corpus plists{out + "/fuzz_property_lists"};
    plists.add_files(macos, {"*.plist", "*.sfl"});
    plists.add(plist_writer::recent_documents_list({"a.mp4", "b.mp3"}, plist_writer::format::binary));
    plists.add(plist_writer::keyed_archive({"file:///Users/a/b.mp4"}, plist_writer::format::xml));
    plists.add_files(shared + "/macos", {"*.plist", "*.sfl*", "*.btm", "*.book"});

    corpus lists{out + "/fuzz_shared_file_lists"};
    lists.add_files(macos, {"*.sfl*"});
    lists.add_files(shared + "/macos", {"*.sfl*", "*.btm", "NSKeyedArchiver.plist"});
    lists.add(plist_writer::archive_of(QVariantMap{{"self", QVariant::fromValue(plist_uid{3})}}));

    // Bookmarks: the shared ones, and each one the lists above hold (a blob
    // starts with its magic and gives its own size).
    corpus bookmarks{out + "/fuzz_bookmark"};
    bookmarks.add_files(shared + "/macos", {"*.book"});
    for (QDirIterator it(macos, {"*.sfl*", "*.plist"}, QDir::Files, QDirIterator::Subdirectories); it.hasNext();)
        bookmarks.add_embedded(tree_writer::read_file(it.next()));
    for (QDirIterator it(shared + "/macos", {"*.sfl*", "*.plist"}, QDir::Files, QDirIterator::Subdirectories);
         it.hasNext();)
        bookmarks.add_embedded(tree_writer::read_file(it.next()));

    corpus links{out + "/fuzz_shell_link"};
    links.add(shell_link_writer::build(shell_link_writer::media_link("C:\\Users\\a\\Music\\b.mp3", 1600000000, 42)));
    links.add_files(shared + "/windows/lnk", {"*.lnk", "*.lnk.test", "*.lnk_"});

    corpus compound{out + "/fuzz_compound_file"};
    compound.add_files(windows, {"*.automaticDestinations-ms"});
    compound.add(compound_file_writer::jump_list(
        {shell_link_writer::build(shell_link_writer::media_link("C:\\Users\\a\\b.m3u", 1600000000, 7))}));
    compound.add_files(shared + "/windows/olecf", {"*.cfs", "*.doc", "*.xls", "*.db", "*.ole"});
    compound.add_files(shared + "/windows/jumplists", {"*.automaticDestinations-ms"});

    corpus destinations{out + "/fuzz_dest_list"};
    for (const quint32 version : {1u, 3u, 4u, 6u})
        destinations.add(compound_file_writer::dest_list(version, {{1, 133589461530000000, 3, true, "pc", "store"}}));
    for (QDirIterator it(shared + "/windows/jumplists", {"*.automaticDestinations-ms"}, QDir::Files,
                         QDirIterator::Subdirectories);
         it.hasNext();)
        olecf_file_parse().read_streams(it.next(), [&](const QString& name, const QByteArray& data) {
            if (name == "DestList")
                destinations.add(data);
        });

    corpus settings{out + "/fuzz_interface_settings"};
    settings.add_files(windows, {"vlc-qt-interface.ini"});
    settings.add_files(shared + "/vlc", {"vlc-qt-interface.*"});

    corpus databases{out + "/fuzz_android_database"};
    databases.add_files(android, {"vlc_media.db"});
    databases.add_files(shared + "/android/schemas", {"*.db"});

    databases.add_files(ios, {"medialibrary.db"});
    databases.add_files(macos, {"ml.db"});

    corpus manifests{out + "/fuzz_ios_backup_manifest"};
    manifests.add_files(ios_backup, {"Manifest.db"});

    corpus app_files{out + "/fuzz_ios_app_files"};
    app_files.add_files(ios, {"org.videolan.vlc-ios.plist", "MediaLibrary.sqlite"});

    for (const corpus* c : {&media_library, &playlists, &podcasts, &plists, &lists, &bookmarks, &links, &compound,
                            &destinations, &settings, &databases, &manifests, &app_files})
        std::printf("%-40s %d seeds\n", qPrintable(QDir(c->folder).dirName()), c->written);
    return 0;
}
