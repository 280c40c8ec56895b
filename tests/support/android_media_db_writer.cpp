#include "android_media_db_writer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QStringList>

#include "tree_writer.h"

namespace {

bool copy_replacing(const QString& from, const QString& to)
{
    QFile::remove(to);
    // The shared samples are read-only; the copy must take rows.
    return QFile::copy(from, to)
           && QFile::setPermissions(to, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
}

}  // namespace

android_media_db_writer::android_media_db_writer(const QString& connection_name) : m_name(connection_name) {}

android_media_db_writer::~android_media_db_writer()
{
    close();
}

QString android_media_db_writer::schema_path(int model)
{
    return tree_writer::shared_fixtures_dir() + QString("/android/schemas/vlc_media_model%1.db").arg(model);
}

bool android_media_db_writer::create(const QString& path, int model, QString* error)
{
    close();
    const QString schema = schema_path(model);
    QString problem;
    if (!QFileInfo::exists(schema))
        problem = "no schema file at " + schema + " (set VLC_SHARED_FIXTURES to the shared samples folder)";
    else if (!QDir().mkpath(QFileInfo(path).absolutePath()) || !copy_replacing(schema, path))
        problem = "cannot copy " + schema + " to " + path;
    m_path = path;
    m_model = model;
    m_db = QSqlDatabase::addDatabase("QSQLITE", m_name);
    m_db.setDatabaseName(path);
    if (problem.isEmpty() && !m_db.open())
        problem = "cannot open " + path + ": " + m_db.lastError().text();
    if (problem.isEmpty())
        return true;
    if (error)
        *error = problem;
    close();
    return false;
}

bool android_media_db_writer::use_wal()
{
    QSqlQuery query(m_db);
    return query.exec("PRAGMA journal_mode=WAL") && query.next()
           && query.value(0).toString().compare("wal", Qt::CaseInsensitive) == 0
           && exec("PRAGMA wal_autocheckpoint=0");
}

bool android_media_db_writer::checkpoint()
{
    return exec("PRAGMA wal_checkpoint(TRUNCATE)");
}

bool android_media_db_writer::snapshot_to(const QString& path, QString* error) const
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    for (const QString& suffix : {QString(), QString("-wal"), QString("-shm")}) {
        if (QFileInfo::exists(m_path + suffix) && !copy_replacing(m_path + suffix, path + suffix)) {
            if (error)
                *error = "cannot copy " + m_path + suffix + " to " + path + suffix;
            return false;
        }
    }
    return true;
}

bool android_media_db_writer::failed(const QSqlQuery& query)
{
    m_error = query.lastError().text();
    return false;
}

bool android_media_db_writer::exec(const QString& statement, QString* error)
{
    QSqlQuery query(m_db);
    if (query.exec(statement) || failed(query))
        return true;
    if (error)
        *error = m_error;
    return false;
}

qint64 android_media_db_writer::insert(const QString& table, const QVariantMap& values)
{
    const QStringList columns = values.keys();
    const QString statement = "INSERT INTO " + table + "(" + columns.join(',') + ") VALUES("
                              + QStringList(columns.size(), "?").join(',') + ")";
    auto found = m_statements.find(statement);
    if (found == m_statements.end()) {
        QSqlQuery query(m_db);
        if (!query.prepare(statement)) {
            failed(query);
            return -1;
        }
        found = m_statements.insert(statement, query);
    }
    QSqlQuery& query = found.value();
    for (int i = 0; i < columns.size(); ++i)
        query.bindValue(i, values.value(columns.at(i)));  // an invalid value binds NULL
    if (query.exec())
        return query.lastInsertId().toLongLong();
    failed(query);
    return -1;
}

void android_media_db_writer::close()
{
    m_statements.clear();
    m_columns.clear();
    m_required.clear();
    m_row_thumbnails.clear();
    if (m_db.isValid()) {
        m_db.close();
        m_db = QSqlDatabase();
        QSqlDatabase::removeDatabase(m_name);
    }
}

QStringList android_media_db_writer::columns(const QString& table)
{
    const auto found = m_columns.constFind(table);
    if (found != m_columns.constEnd())
        return found.value();
    QStringList names;
    QStringList required;
    QSqlQuery query(m_db);
    query.prepare("SELECT name, \"notnull\", dflt_value, pk FROM pragma_table_info(?)");
    query.addBindValue(table);
    for (query.exec(); query.next();) {
        names << query.value(0).toString().toLower();
        if (query.value(1).toInt() != 0 && query.value(2).isNull() && query.value(3).toInt() == 0)
            required << names.last();
    }
    m_required.insert(table, required);
    return m_columns.insert(table, names).value();
}

qint64 android_media_db_writer::insert_present(const QString& table, const QVariantMap& values)
{
    const QStringList names = columns(table);
    if (names.isEmpty()) {
        m_error = "model " + QString::number(m_model) + " has no table " + table;
        return -1;
    }
    QVariantMap present;
    for (auto it = values.begin(); it != values.end(); ++it) {
        if (names.contains(it.key().toLower()))
            present.insert(it.key(), it.value());
    }
    for (const QString& name : m_required.value(table)) {
        if (!present.contains(name))
            present.insert(name, 0);
    }
    return insert(table, present);
}

bool android_media_db_writer::update(const QString& table, qint64 key, const QVariantMap& values)
{
    QStringList assignments;
    QVariantList bound;
    for (auto it = values.begin(); it != values.end(); ++it) {
        if (has_column(table, it.key())) {
            assignments << it.key() + "=?";
            bound << it.value();
        }
    }
    if (assignments.isEmpty())
        return false;
    QSqlQuery query(m_db);
    query.prepare("UPDATE " + table + " SET " + assignments.join(',') + " WHERE id_" + table.toLower() + "=?");
    for (const QVariant& value : bound)
        query.addBindValue(value);
    query.addBindValue(key);
    return query.exec() || failed(query);
}

qint64 android_media_db_writer::add_thumbnail(const QString& mrl)
{
    if (!columns("Thumbnail").isEmpty())
        return insert_present("Thumbnail", {{"mrl", mrl}, {"origin", 0}, {"is_generated", 1}, {"is_owned", 1}});
    const qint64 handle = m_row_thumbnails.size() + 1;
    m_row_thumbnails.insert(handle, mrl);
    return handle;
}

bool android_media_db_writer::attach_thumbnail(bool album, qint64 id, const QVariant& thumbnail_id)
{
    const QString table = album ? "Album" : "Media";
    if (thumbnail_id.isNull() || id < 0)
        return true;
    if (has_column(table, "thumbnail_id"))
        return update(table, id, {{"thumbnail_id", thumbnail_id}});
    if (!columns("ThumbnailLinking").isEmpty())
        return insert_present("ThumbnailLinking", {{"entity_id", id}, {"entity_type", album ? 1 : 0}, {"size_type", 0},
                                                   {"thumbnail_id", thumbnail_id}, {"origin", 0}})
               >= 0;
    const QString mrl = m_row_thumbnails.value(thumbnail_id.toLongLong());
    return update(table, id, {{album ? "artwork_mrl" : "thumbnail", mrl}});
}

qint64 android_media_db_writer::add_media(const QVariantMap& columns, const QVariant& thumbnail_id)
{
    const qint64 id = insert_present("Media", columns);
    return attach_thumbnail(false, id, thumbnail_id) ? id : -1;
}

bool android_media_db_writer::set_position(qint64 media_id, double fraction, qint64 time_ms)
{
    if (has_column("Media", "progress"))
        return update("Media", media_id, {{"progress", fraction}});
    return update("Media", media_id, {{"last_position", fraction}, {"last_time", time_ms}});
}

qint64 android_media_db_writer::add_artist(const QString& name)
{
    return insert_present("Artist", {{"name", name}, {"is_present", m_model >= 17 ? 0 : 1}});
}

qint64 android_media_db_writer::add_album(const QVariant& title, const QVariant& artist_id,
                                          const QVariant& thumbnail_id, int nb_tracks, qint64 duration_ms)
{
    // is_present is a flag up to model 16; from 17 the number of present
    // tracks, which may not exceed nb_tracks.
    const qint64 id = insert_present("Album", {{"title", title}, {"artist_id", artist_id}, {"release_year", 2019},
                                               {"nb_tracks", nb_tracks}, {"duration", duration_ms},
                                               {"is_present", m_model >= 17 ? nb_tracks : 1}});
    return attach_thumbnail(true, id, thumbnail_id) ? id : -1;
}

qint64 android_media_db_writer::add_file(qint64 media_id, const QString& mrl, qint64 size, qint64 modified,
                                         bool removable, bool external)
{
    return insert_present("File", {{"media_id", media_id}, {"mrl", mrl}, {"type", 1},
                                   {"last_modification_date", modified}, {"size", size},
                                   {"is_removable", removable ? 1 : 0}, {"is_external", external ? 1 : 0},
                                   {"is_network", 0}});
}

qint64 android_media_db_writer::add_audio_track(qint64 media_id, const QString& codec, int bitrate,
                                                int samplerate, int channels, const QVariant& language,
                                                const QVariant& description)
{
    return insert_present("AudioTrack", {{"media_id", media_id}, {"codec", codec}, {"bitrate", bitrate},
                                         {"samplerate", samplerate}, {"nb_channels", channels},
                                         {"language", language}, {"description", description}});
}

qint64 android_media_db_writer::add_video_track(qint64 media_id, const QString& codec, int width, int height,
                                                int bitrate, const QVariant& language, const QVariant& description)
{
    return insert_present("VideoTrack", {{"media_id", media_id}, {"codec", codec}, {"width", width},
                                         {"height", height}, {"fps", 25.0}, {"fps_num", 30000}, {"fps_den", 1001},
                                         {"bitrate", bitrate}, {"sar_num", 1}, {"sar_den", 1},
                                         {"language", language}, {"description", description}});
}

qint64 android_media_db_writer::add_album_track(qint64 media_id, qint64 album_id, int track_number,
                                                qint64 duration_ms)
{
    // From model 34 a track's album lives in its Media row.
    if (columns("AlbumTrack").isEmpty())
        return update("Media", media_id, {{"album_id", album_id}, {"track_number", track_number}, {"disc_number", 1}})
                   ? media_id
                   : -1;
    return insert_present("AlbumTrack", {{"media_id", media_id}, {"album_id", album_id},
                                         {"track_number", track_number}, {"duration", duration_ms},
                                         {"disc_number", 1}});
}

qint64 android_media_db_writer::add_playlist(const QVariant& name, qint64 creation_date)
{
    return insert_present("Playlist", {{"name", name}, {"creation_date", creation_date}});
}

qint64 android_media_db_writer::add_playlist_item(qint64 playlist_id, const QVariant& media_id, int position)
{
    return insert_present("PlaylistMediaRelation",
                          {{"media_id", media_id}, {"playlist_id", playlist_id}, {"position", position}});
}
