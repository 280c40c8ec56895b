#pragma once

// The media-library database that the player keeps on a phone (Android and
// iOS) and on the desktop from version 4 on: one schema wherever it is found,
// read into the media library, album art, album and playlist tables. Only
// where the database and the files it names lie differs from home to home; a
// places object answers that for its layout, and the extractor class that
// owns the reader names the log lines.
//
// One reader serves one database for one run: its working copy is made once,
// on the first table that needs it, and its model is read once.

#include <QHash>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

#include "media_library_shape.h"

class media_library_query;
class media_library_run;
class plugin_helper_functions;
class prepared_statement;

struct struct_audio_track
{
    QString codec, bitrate, samplerate, nb_channels, language, description;
};

struct struct_video_track
{
    QString codec, bitrate, width, height, language, description, fps_num, fps_den, sar_num, sar_den;
};

struct struct_artist
{
    QString album_title, artist_id;
};

struct struct_media
{
    QString file_name, duration;
};

struct struct_file
{
    QString file_path, file_size, file_exist;
};

class media_library_places
{
public:
    virtual ~media_library_places() = default;
    // Full path on the source of the file an mrl names; empty for a stream.
    virtual QString media_path(const QString& mrl) const = 0;
    // The thumbnail file an mrl names when it is on the source (each look
    // goes through the source-path guard with the caller's signature); the
    // database's model tells which folders the app wrote to.
    virtual QString thumbnail_path(const QString& mrl, int model, const QString& signature) const = 0;
};

struct media_library_context
{
    QString owner;  // the extractor class named in every log line
    QString source_root;
    QString source_type;
    QString os_scheme_display;
    QString result_db_path;
    QString system_user;  // the account whose database it is, where the source has accounts
    plugin_helper_functions* helper = nullptr;
    const bool* cancel_requested = nullptr;
    std::function<void()> count_row;  // after each inserted row
};

class media_library_reader
{
public:
    media_library_reader(const media_library_context& context, const media_library_places& places,
                         const QString& database_path);
    ~media_library_reader();

    media_library_reader(const media_library_reader&) = delete;
    media_library_reader& operator=(const media_library_reader&) = delete;

    void extract_media_library();
    void extract_album_art();
    void extract_album();
    void extract_playlist();

    // "Position: 42% (00:12:34)" from a fraction played (0 to 1, or below 0
    // for none) and a time (milliseconds, 0 or less for none), the missing
    // one worked out from the duration; empty when neither tells anything.
    static QString position_text(double fraction, qint64 time_ms, qint64 duration_ms);
    // The rows' form of a path on the source: the root cut off, with a leading "/".
    static QString path_below_root(const QString& path, const QString& source_root);
    // A working copy of an SQLite database of the evidence (its -wal and -shm
    // along where they stay inside source_root), made only when the file is
    // one and the output has room for it; else nothing, with the reason
    // logged under the signature.
    static QString checked_working_copy(const QString& database, const QString& source_root,
                                        plugin_helper_functions* helper, const QString& signature);
    // The decoded path of a file mrl (or of a plain path); empty for a stream
    // (http://, smb://, ...), which has no file.
    static QString path_of_file_mrl(const QString& mrl);
    // The source_file text of a file on the source.
    static QString source_file_of(const media_library_context& context, const QString& path);
    // An insert statement that also fills system_user when the context names an account.
    QString with_account(const QString& insert) const;

private:
    // Every log line names the owning extractor's function.
    struct signatures
    {
        explicit signatures(const QString& owner);
        const QString media_library, album_art, album, playlist, read_shape;
        const QString audio_track, video_track, artist_details, playlist_name, artist_name, thumbnail_path,
            thumbnail_of, file_name, file_path;
    };

    bool cancelled() const { return m_context.cancel_requested && *m_context.cancel_requested; }
    void read_database_shape(const QSqlDatabase& source);
    QString source_file_text() const;
    QString below_root(const QString& path) const { return path_below_root(path, m_context.source_root); }
    void run_table(const QString& signature, QString media_library_statements::*select,
                   bool (media_library_reader::*insert_rows)(media_library_run&));
    const media_library_statements& statements() const { return m_shape.statements(); }

    bool insert_media_library_rows(media_library_run& run);
    bool insert_album_art_rows(media_library_run& run);
    bool insert_album_rows(media_library_run& run);
    bool insert_playlist_rows(media_library_run& run);
    bool collect_album_tracks(media_library_run& run, const QString& album_id, prepared_statement& tracks,
                              media_library_query& file_name_query, media_library_query& file_query,
                              QStringList* item_info, QStringList* export_paths);
    void insert_row(media_library_run& run, prepared_statement& insert, const QStringList& values);

    // One fact about one media item each. A query object is dedicated to one
    // statement for the whole run: the statement is prepared on its first use
    // and only re-bound afterwards.
    struct_audio_track get_audio_track_details(QString media_id, media_library_query& query);
    struct_video_track get_video_track_details(QString media_id, media_library_query& query);
    struct_artist get_artist_details(QString media_id, media_library_query& album_track_query,
                                     media_library_query& album_query);
    QString get_playlist_name(QString media_id, media_library_query& relation_query,
                              media_library_query& playlist_query);
    QString get_artist_name(QString artist_id, media_library_query& query);
    QString get_thumbnail_path(QString thumbnail_id, media_library_query& query);
    struct_media get_file_name(QString media_id, media_library_query& query);
    struct_file get_file_path(QString media_id, media_library_query& query);
    // The thumbnail file of a row's reference: a Thumbnail id, or on early
    // models the mrl itself.
    QString thumbnail_of(const QString& reference, bool mrl_in_row, media_library_query& query);

    media_library_context m_context;
    const media_library_places& m_places;
    QString m_database;
    std::unique_ptr<const signatures> m_signatures;
    bool m_copy_made = false;
    QString m_copy;
    media_library_shape m_shape;
    bool m_shape_read = false;
    // Albums, playlists, artists and thumbnails repeat across rows; each is
    // looked up once a run.
    QHash<QString, struct_artist> m_album_cache;
    QHash<QString, QString> m_playlist_names_cache;
    QHash<QString, QString> m_artist_name_cache;
    QHash<QString, QString> m_thumbnail_path_cache;
};
