#pragma once

// The statements the media-library readers run, chosen once a run for the
// database at hand. The player changed its schema many times (model 8 to 38 and
// on): thumbnails moved from a Media column to a Thumbnail table and then to
// a linking table, album membership moved from AlbumTrack into Media, and
// columns came and went. Models 14 to 16 are read with the statements the
// readers were first written for; every other model gets statements built
// from the columns the database really has (by name, never by position, since
// an upgraded database carries other CREATE text than a fresh one). Each
// statement keeps the column order of its original, so the row loops read
// every model alike.

#include <QSqlDatabase>
#include <QString>
#include <QStringList>

struct media_library_statements
{
    QString media;             // main statement of the media library
    QString file;              // File of a media item
    QString album;             // main statement of album art and album
    QString album_members;     // media of an album
    QString playlist;          // main statement of the playlists
    QString playlist_members;  // media of a playlist
    QString audio_track;
    QString video_track;
    QString album_of_media;
    QString album_title;
    QString media_playlists;
    QString playlist_name;
    QString artist_name;
    QString thumbnail;  // mrl of a Thumbnail row
    QString media_name;
};

class media_library_shape
{
public:
    // The shape of models 14 to 16; also taken when the model cannot be read,
    // so a damaged database fails the way it always has.
    media_library_shape();
    // Reads Settings.db_model_version and the columns of the tables read.
    static media_library_shape read(const QSqlDatabase& db);

    int model() const { return m_model; }
    bool is_original() const { return m_original; }
    const media_library_statements& statements() const { return m_statements; }
    // Up to model 13 a media item and an album name their thumbnail's mrl
    // in their own row; later models refer to a Thumbnail row.
    bool media_thumbnail_in_row() const { return m_media_thumbnail_in_row; }
    bool album_thumbnail_in_row() const { return m_album_thumbnail_in_row; }
    // The media statement ends with progress, last_position and last_time.
    bool has_position() const { return m_has_position; }
    // Tables and columns a result column needs that the database lacks.
    const QStringList& missing() const { return m_missing; }

    // A statement of the given columns of one table, built from the columns
    // it really has: an entry is a column name (noted in missing when absent),
    // "?name" (read where present) or an expression in parentheses. A column
    // the table lacks is selected as NULL, so the positions stay.
    static QString select_by_name(const QSqlDatabase& db, const QString& table, const QStringList& entries,
                                  QStringList* missing);

    // Columns of the playback position appended to the media statement.
    enum position_column { progress = 17, last_position = 18, last_time = 19 };

private:
    class builder;

    int m_model = 0;
    bool m_original = true;
    media_library_statements m_statements;
    bool m_media_thumbnail_in_row = false;
    bool m_album_thumbnail_in_row = false;
    bool m_has_position = false;
    QStringList m_missing;
};
