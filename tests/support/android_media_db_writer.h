#pragma once

// Writes media databases of the Android app: a copy of the app's empty schema
// at a given model version (from the shared samples) with rows inserted by
// the caller. It never defines tables of its own.
//
// The add_* helpers write one logical library into any model: they write the
// columns the schema has (found by name), give the app's NOT NULL columns
// that the caller does not name a zero, and put thumbnails, album membership
// and the playback position where that model keeps them.

#include <QHash>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVariant>
#include <QVariantMap>

class android_media_db_writer
{
public:
    explicit android_media_db_writer(const QString& connection_name = "android_media_db_writer");
    ~android_media_db_writer();

    // The empty schema file of a model version in the shared samples.
    static QString schema_path(int model);

    // Copies the model's empty schema to path and opens it; false with a reason.
    bool create(const QString& path, int model, QString* error);
    // Switches to write-ahead logging without automatic checkpoints, so rows
    // written after checkpoint() stay in the -wal file until close.
    bool use_wal();
    bool checkpoint();
    // Copies the database with its -wal and -shm, as they are now, to path.
    bool snapshot_to(const QString& path, QString* error) const;

    bool begin() { return m_db.transaction(); }
    bool commit() { return m_db.commit(); }
    bool exec(const QString& statement, QString* error = nullptr);
    QString last_error() const { return m_error; }
    void close();
    bool has_column(const QString& table, const QString& column) { return columns(table).contains(column.toLower()); }
    // Inserts the values whose columns the table has (an invalid QVariant is
    // NULL); returns the new row id, or -1 with last_error() set.
    qint64 insert_present(const QString& table, const QVariantMap& values);

    // The rows the app writes, with the columns the readers look at.
    // A thumbnail id from add_thumbnail is this writer's handle: on models
    // that keep the mrl in the media or album row it names no table row.
    qint64 add_thumbnail(const QString& mrl);
    // A media row (any Media columns, by name) with its thumbnail, if valid.
    qint64 add_media(const QVariantMap& columns, const QVariant& thumbnail_id);
    // Where playback stopped: a fraction and a time, as the model keeps them.
    bool set_position(qint64 media_id, double fraction, qint64 time_ms);
    qint64 add_artist(const QString& name);
    qint64 add_album(const QVariant& title, const QVariant& artist_id, const QVariant& thumbnail_id, int nb_tracks,
                     qint64 duration_ms);
    qint64 add_file(qint64 media_id, const QString& mrl, qint64 size, qint64 modified, bool removable,
                    bool external);
    qint64 add_audio_track(qint64 media_id, const QString& codec, int bitrate, int samplerate, int channels,
                           const QVariant& language, const QVariant& description);
    qint64 add_video_track(qint64 media_id, const QString& codec, int width, int height, int bitrate,
                           const QVariant& language, const QVariant& description);
    qint64 add_album_track(qint64 media_id, qint64 album_id, int track_number, qint64 duration_ms);
    qint64 add_playlist(const QVariant& name, qint64 creation_date);
    qint64 add_playlist_item(qint64 playlist_id, const QVariant& media_id, int position);

private:
    QStringList columns(const QString& table);  // lower case; empty when the table does not exist
    qint64 insert(const QString& table, const QVariantMap& values);
    bool attach_thumbnail(bool album, qint64 id, const QVariant& thumbnail_id);
    bool update(const QString& table, qint64 key, const QVariantMap& values);
    bool failed(const QSqlQuery& query);

    QString m_name;
    int m_model = 0;
    QHash<QString, QStringList> m_columns;
    QHash<QString, QStringList> m_required;  // NOT NULL without a default
    QHash<qint64, QString> m_row_thumbnails;  // handles of mrls kept in rows
    QString m_path;
    QSqlDatabase m_db;
    QHash<QString, QSqlQuery> m_statements;  // prepared once per column set
    QString m_error;
};
