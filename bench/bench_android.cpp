// Speed and memory of the Android extractor on a large media database of
// models 15, 30 and 38 (thumbnails by id, by linking table; albums in
// AlbumTrack, in Media): 100,000 media, half audio, half video with three audio tracks
// each, albums of 12 tracks, 500 playlists of 50 items, thumbnails for half
// the media, and the indexes the app keeps on its foreign keys. The tree is
// generated once; the extraction runs in a child process so that its peak
// memory is its own.
// Usage: bench_android [--media N] [--model N] [--keep DIR]

#include "bench_support.h"
#include "controller_setup.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>

#include "android_media_db_writer.h"
#include "tree_writer.h"
#include "vlc.h"

namespace {

const QString k_database = "apps/org.videolan.vlc/r/app_db/vlc_media.db";
const QStringList k_tables = {"media_library", "album_art", "album", "playlists"};

bool write_media_files(const QString& root, int media)
{
    for (int i = 0; i < media; ++i) {
        const QString folder = QString("shared/0/%1/d%2/").arg(i % 2 ? "Movies" : "Music").arg(i / 1000);
        if (!tree_writer::write_file(root, folder + QString("item %1.%2").arg(i).arg(i % 2 ? "mp4" : "mp3"), "x",
                                     nullptr))
            return false;
        if (i % 2 == 0
            && !tree_writer::write_file(root, QString("apps/org.videolan.vlc/ef/thumbs/t%1/%2.jpg").arg(i / 1000).arg(i),
                                        "x", nullptr))
            return false;
    }
    return true;
}

// The indexes the app keeps on the foreign keys the readers look up.
void add_indexes(android_media_db_writer& db)
{
    const QList<QStringList> indexes = {{"File", "media_id"},
                                        {"AudioTrack", "media_id"},
                                        {"VideoTrack", "media_id"},
                                        {"AlbumTrack", "album_id"},
                                        {"Media", "album_id"},
                                        {"PlaylistMediaRelation", "media_id"},
                                        {"PlaylistMediaRelation", "playlist_id"}};
    for (const QStringList& index : indexes) {
        if (db.has_column(index.at(0), index.at(1)))
            db.exec(QString("CREATE INDEX %1_%2 ON %1(%2)").arg(index.at(0), index.at(1)));
    }
}

bool generate(const QString& root, int media, int model, QString* error)
{
    android_media_db_writer db("bench_android");
    if (!db.create(QDir(root).filePath(k_database), model, error))
        return false;
    db.begin();
    const int artists = media / 240 + 1;
    const int albums = media / 24 + 1;
    for (int a = 0; a < artists; ++a)
        db.add_artist(QString("Artist %1").arg(a));
    for (int a = 0; a < albums; ++a)
        db.add_album(QString("Album %1").arg(a), a % artists + 1, QVariant(), 12, 2400000);
    int album_slot = 0;
    for (int i = 0; i < media; ++i) {
        const bool video = i % 2 == 1;
        const QString folder = QString("%1/d%2/").arg(video ? "Movies" : "Music").arg(i / 1000);
        const QVariant thumbnail =
            i % 2 == 0 ? QVariant(db.add_thumbnail(QString("file:///storage/emulated/0/Android/data/"
                                                           "org.videolan.vlc/files/thumbs/t%1/%2.jpg")
                                                       .arg(i / 1000)
                                                       .arg(i)))
                       : QVariant();
        const qint64 id = db.add_media({{"type", video ? 1 : 2},
                                              {"filename", QString("item %1.%2").arg(i).arg(video ? "mp4" : "mp3")},
                                              {"title", QString("Item %1").arg(i)},
                                              {"duration", 180000 + i},
                                              {"play_count", i % 7},
                                              {"last_played_date", 1700000000 + i},
                                              {"insertion_date", 1690000000 + i},
                                              {"is_favorite", i % 5 == 0},
                                              {"is_present", 1}},
                                     thumbnail);
        db.set_position(id, 0.5, 90000);
        db.add_file(id, "file:///storage/emulated/0/" + QString(folder).replace(" ", "%20")
                            + QString("item%20%1.%2").arg(i).arg(video ? "mp4" : "mp3"),
                    1000000 + i, 1690000000 + i, false, false);
        db.add_audio_track(id, "aac", 128000, 44100, 2, "eng", QVariant());
        if (video) {
            db.add_audio_track(id, "ac3", 384000, 48000, 6, "fra", "Dub");
            db.add_audio_track(id, "aac", 96000, 48000, 2, "eng", "Commentary");
            db.add_video_track(id, "h264", 1920, 1080, 8000000, "und", QVariant());
        } else {
            db.add_album_track(id, album_slot / 12 + 1, album_slot % 12 + 1, 180000);
            ++album_slot;
        }
        if (i < 500 * 50)
            db.add_playlist_item(i / 50 + 1, id, i % 50);
    }
    for (int p = 0; p < 500; ++p)
        db.add_playlist(QString("Playlist %1").arg(p), 1695000000 + p);
    add_indexes(db);
    db.commit();
    if (!db.last_error().isEmpty()) {
        *error = db.last_error();
        return false;
    }
    db.close();
    return write_media_files(root, media);
}

// Child: one extraction through the controller, reporting each table as it ends.
int run_extraction(const QString& root, const QString& out)
{
    vlc controller;
    QElapsedTimer clock;
    qint64 last_ms = 0;
    qint64 last_records = 0;
    qint64 records = 0;
    double last_cpu = bench_support::cpu_seconds();
    QObject::connect(&controller, &vlc::signal_extracted_records_of_plugin_overall,
                     [&](qint64 count) { records = count; });
    QObject::connect(&controller, &vlc::signal_tab_processed_of_plugin_overall, [&](int tab) {
        const qint64 now = clock.elapsed();
        const qint64 rows = records - last_records;
        const double seconds = double(now - last_ms) / 1000.0;
        const double cpu = bench_support::cpu_seconds() - last_cpu;
        // CPU time too: other work on the machine stretches the wall clock.
        std::printf("%-14s rows %7lld  %7.2f s  %9.0f rows/s   cpu %7.2f s  %9.0f rows/cpu-s\n",
                    qPrintable(k_tables.value(tab - 1)), static_cast<long long>(rows), seconds,
                    seconds > 0 ? rows / seconds : 0.0, cpu, cpu > 0 ? rows / cpu : 0.0);
        last_ms = now;
        last_cpu += cpu;
        last_records = records;
    });
    controller_setup setup;
    setup.source.source_path_1 = root + "/";
    setup.source.os_scheme_display = "Android";
    setup.source.os_scheme_internal = "androidOS";
    setup.tables = k_tables;
    setup.result_dir = out;
    prepare_controller(controller, setup);
    clock.start();
    controller.pub_find_source_file();
    controller.pub_extract_artifacts();
    const qint64 total_ms = clock.elapsed();
    controller.pub_remove_temporary_asthetics();
    std::printf("whole run      rows %7lld  %8.2f s  (target under 10 s)\n", static_cast<long long>(records),
                double(total_ms) / 1000.0);
    std::printf("peak memory    %.1f MB (target under 200 MB)\n", double(bench_support::peak_memory_kb()) / 1024.0);
    return 0;
}

int run_child(const QString& root, const QString& out)
{
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedChannels);
    child.start(QCoreApplication::applicationFilePath(), {"--run", root, out});
    child.waitForFinished(-1);
    return child.exitCode();
}

}  // namespace

int main(int argc, char** argv)
{
    bench_support::headless_application headless(argc, argv);
    const QStringList args = headless.arguments();
    if (args.size() == 4 && args.at(1) == "--run")
        return run_extraction(args.at(2), args.at(3));

    const int media = args.contains("--media") ? args.value(args.indexOf("--media") + 1).toInt() : 100000;
    const QList<int> models = args.contains("--model") ? QList<int>{args.value(args.indexOf("--model") + 1).toInt()}
                                                       : QList<int>{15, 30, 38};
    QTemporaryDir scratch;
    const QString keep = args.contains("--keep") ? args.value(args.indexOf("--keep") + 1) : QString();
    int status = 0;
    for (int model : models) {
        const QString root = (keep.isEmpty() ? scratch.path() : keep) + QString("/model%1").arg(model);
        QElapsedTimer clock;
        clock.start();
        std::printf("\n== model %d ==\n", model);
        if (!QFileInfo::exists(QDir(root).filePath(k_database))) {
            QString error;
            if (!generate(root, media, model, &error)) {
                std::fprintf(stderr, "bench_android: cannot generate the model %d tree: %s\n", model,
                             qPrintable(error));
                return 1;
            }
            std::printf("generated %d media in %.1f s\n", media, double(clock.elapsed()) / 1000.0);
        }
        std::fflush(stdout);
        status |= run_child(root, scratch.filePath(QString("out%1").arg(model)));
    }
    return status;
}
