#include "media_library_shape.h"

#include <QHash>
#include <QSet>
#include <QSqlQuery>

namespace {

// A statement that runs and yields nothing: what a lookup does when the
// database has no table for it.
const QString k_nothing = "SELECT NULL WHERE 0";

}  // namespace

// Builds one statement at a time from the columns present. A column entry is
// a column name (needed by a result column), "?name" (read where present,
// written nowhere) or an expression in parentheses (taken as it is).
class media_library_shape::builder
{
public:
    builder(const QSqlDatabase& db, QStringList* missing) : m_db(db), m_missing(missing) {}

    bool has_table(const QString& table) { return !columns(table).isEmpty(); }
    bool has(const QString& table, const QString& column) { return columns(table).contains(column.toLower()); }

    void note_missing(const QString& what)
    {
        if (!m_missing->contains(what))
            m_missing->append(what);
    }

    QString select(const QString& table, const QStringList& entries, const QString& condition = QString())
    {
        if (!has_table(table)) {
            note_missing(table);
            return k_nothing;
        }
        QStringList expressions;
        for (const QString& entry : entries)
            expressions << expression(table, entry);
        return "SELECT " + expressions.join(',') + " from " + table + (condition.isEmpty() ? "" : " " + condition);
    }

    // The reference of a row to its thumbnail: a Thumbnail id from the row
    // itself or from ThumbnailLinking, else the mrl kept in the row.
    QString thumbnail_reference(const QString& table, const QString& id_column, int entity_type,
                                const QString& mrl_column, bool* in_row)
    {
        if (has(table, "thumbnail_id"))
            return "thumbnail_id";
        if (has_table("ThumbnailLinking")) {
            // size_type 0 is the thumbnail proper, 1 a banner.
            return QString("(SELECT thumbnail_id FROM ThumbnailLinking WHERE entity_id = %1.%2 AND entity_type = %3 "
                           "ORDER BY size_type LIMIT 1)")
                .arg(table, id_column)
                .arg(entity_type);
        }
        if (has(table, mrl_column)) {
            *in_row = true;
            return mrl_column;
        }
        note_missing(table + ".thumbnail_id");
        return "NULL";
    }

private:
    QString expression(const QString& table, const QString& entry)
    {
        if (entry.startsWith('('))
            return entry;
        const bool optional = entry.startsWith('?');
        const QString column = optional ? entry.mid(1) : entry;
        if (has(table, column))
            return column;
        if (!optional)
            note_missing(table + "." + column);
        return "NULL";
    }

    const QSet<QString>& columns(const QString& table)
    {
        auto found = m_columns.constFind(table);
        if (found != m_columns.constEnd())
            return found.value();
        QSet<QString> names;
        QSqlQuery query(m_db);
        if (query.prepare("SELECT name FROM pragma_table_info(?)")) {
            query.addBindValue(table);
            if (query.exec()) {
                while (query.next())
                    names.insert(query.value(0).toString().toLower());
            }
        }
        return m_columns.insert(table, names).value();
    }

    QSqlDatabase m_db;
    QStringList* m_missing;
    QHash<QString, QSet<QString>> m_columns;
};

media_library_shape::media_library_shape()
{
    media_library_statements& s = m_statements;
    s.media = "SELECT id_media,type,subtype,duration,play_count,last_played_date,real_last_played_date,insertion_date,"
              "release_date,thumbnail_id,title,filename,is_favorite,is_present,device_id,nb_playlists,folder_id from "
              "Media ";
    s.file = "SELECT playlist_id,mrl,last_modification_date,size,is_removable,is_external from File where media_id = ?";
    s.album = "SELECT id_album,title,artist_id,release_year,short_summary,thumbnail_id,nb_tracks,duration,nb_discs,"
              "is_present from Album ";
    s.album_members = "SELECT media_id from AlbumTrack where album_id = ? ";
    s.playlist = "SELECT id_playlist,name,file_id,creation_date,artwork_mrl from Playlist ";
    s.playlist_members = "SELECT media_id from PlaylistMediaRelation where playlist_id = ? ";
    s.audio_track =
        "SELECT id_track,codec,bitrate,samplerate,nb_channels,language,description from AudioTrack where media_id = ?";
    s.video_track = "SELECT codec,bitrate,width,height,language,description,fps_num,fps_den,sar_num,sar_den from "
                    "VideoTrack where media_id = ?";
    s.album_of_media = "SELECT album_id from AlbumTrack where media_id = ?";
    s.album_title = "SELECT title, artist_id from Album where id_album = ?";
    s.media_playlists = "SELECT playlist_id from PlaylistMediaRelation where media_id = ?";
    s.playlist_name = "SELECT name from Playlist where id_playlist = ?";
    s.artist_name = "SELECT name from Artist where id_artist = ?";
    s.thumbnail = "SELECT mrl from Thumbnail where id_thumbnail = ?";
    s.media_name = "SELECT filename,duration from Media where id_media = ? ";
}

QString media_library_shape::select_by_name(const QSqlDatabase& db, const QString& table, const QStringList& entries,
                                           QStringList* missing)
{
    return builder(db, missing).select(table, entries);
}

media_library_shape media_library_shape::read(const QSqlDatabase& db)
{
    media_library_shape shape;
    QSqlQuery version(db);
    if (version.exec("SELECT db_model_version FROM Settings") && version.next())
        shape.m_model = version.value(0).toInt();
    version.finish();
    if (shape.m_model == 0 || (shape.m_model >= 14 && shape.m_model <= 16))
        return shape;

    shape.m_original = false;
    builder b(db, &shape.m_missing);
    media_library_statements& s = shape.m_statements;
    const QString media_thumbnail =
        b.thumbnail_reference("Media", "id_media", 0, "thumbnail", &shape.m_media_thumbnail_in_row);
    const QString album_thumbnail =
        b.thumbnail_reference("Album", "id_album", 1, "artwork_mrl", &shape.m_album_thumbnail_in_row);
    // The playback position ends the media statement (progress up to model
    // 30, then last_position and last_time).
    s.media = b.select("Media", {"id_media", "type", "?subtype", "duration", "play_count", "last_played_date",
                                 "real_last_played_date", "insertion_date", "release_date", media_thumbnail, "title",
                                 "filename", "is_favorite", "is_present", "?device_id", "?nb_playlists", "?folder_id",
                                 "?progress", "?last_position", "?last_time"});
    s.file = b.select("File", {"?playlist_id", "mrl", "last_modification_date", "size", "is_removable", "is_external"},
                      "where media_id = ?");
    s.album = b.select("Album", {"id_album", "title", "artist_id", "?release_year", "?short_summary", album_thumbnail,
                                 "nb_tracks", "duration", "?nb_discs", "?is_present"});
    s.playlist = b.select("Playlist", {"id_playlist", "name", "?file_id", "creation_date", "?artwork_mrl"});
    s.playlist_members = b.select("PlaylistMediaRelation", {"media_id"}, "where playlist_id = ?");
    s.media_playlists = b.select("PlaylistMediaRelation", {"playlist_id"}, "where media_id = ?");
    s.audio_track = b.select("AudioTrack", {"?id_track", "codec", "bitrate", "samplerate", "nb_channels", "language",
                                            "description"},
                             "where media_id = ?");
    // Early models keep one frame rate instead of a fraction.
    const bool rate_only = !b.has("VideoTrack", "fps_num") && b.has("VideoTrack", "fps");
    s.video_track = b.select("VideoTrack", {"codec", "bitrate", "width", "height", "language", "?description",
                                            rate_only ? "(fps)" : "fps_num", rate_only ? "(1)" : "fps_den", "sar_num",
                                            "sar_den"},
                             "where media_id = ?");
    // Album membership: AlbumTrack up to model 33, Media.album_id from 34.
    if (b.has_table("AlbumTrack")) {
        s.album_members = b.select("AlbumTrack", {"media_id"}, "where album_id = ?");
        s.album_of_media = b.select("AlbumTrack", {"album_id"}, "where media_id = ?");
    } else if (b.has("Media", "album_id")) {
        s.album_members = b.select("Media", {"id_media"}, "where album_id = ?");
        s.album_of_media = b.select("Media", {"album_id"}, "where id_media = ?");
    } else {
        b.note_missing("AlbumTrack");
        s.album_members = k_nothing;
        s.album_of_media = k_nothing;
    }
    s.album_title = b.select("Album", {"title", "artist_id"}, "where id_album = ?");
    s.playlist_name = b.select("Playlist", {"name"}, "where id_playlist = ?");
    s.artist_name = b.select("Artist", {"name"}, "where id_artist = ?");
    const bool thumbnails_by_id = !shape.m_media_thumbnail_in_row || !shape.m_album_thumbnail_in_row;
    s.thumbnail = thumbnails_by_id ? b.select("Thumbnail", {"mrl"}, "where id_thumbnail = ?") : k_nothing;
    s.media_name = b.select("Media", {"filename", "duration"}, "where id_media = ?");
    return shape;
}
