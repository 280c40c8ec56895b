#include "media_library_reader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>
#include <QUrl>

#include "media_library_run.h"
#include "plugin_helper_functions.h"
#include "plugin_static_function.h"
#include "prepared_statement.h"
#include "sparse_file_copy.h"

// The texts the Android extractor has always logged, for whichever extractor owns the reader.
media_library_reader::signatures::signatures(const QString& owner)
    : media_library(QString("void %1::extract_media_library()").arg(owner)),
      album_art(QString("void %1::extract_album_art()").arg(owner)),
      album(QString("void %1::extract_album()").arg(owner)),
      playlist(QString("void %1::extract_playlist()").arg(owner)),
      read_shape(QString("void %1::read_database_shape(const QSqlDatabase&)").arg(owner)),
      audio_track(QString("struct_audio_track %1::get_audio_track_details(QString, QSqlQuery)").arg(owner)),
      video_track(QString("struct_video_track %1::get_video_track_details(QString, QSqlQuery)").arg(owner)),
      artist_details(QString("struct_artist %1::get_artist_details(QString, QSqlQuery, QSqlQuery)").arg(owner)),
      playlist_name(QString("QString %1::get_playlist_name(QString, QSqlQuery, QSqlQuery)").arg(owner)),
      artist_name(QString("QString %1::get_artist_name(QString, QSqlQuery)").arg(owner)),
      thumbnail_path(QString("QString %1::get_thumbnail_path(QString, QSqlQuery)").arg(owner)),
      thumbnail_of(QString("QString %1::thumbnail_of(const QString&, bool, media_library_query&)").arg(owner)),
      file_name(QString("struct_media %1::get_file_name(QString, QSqlQuery)").arg(owner)),
      file_path(QString("struct_file %1::get_file_path(QString, QSqlQuery)").arg(owner))
{
}

namespace {

const QByteArray k_sqlite_header("SQLite format 3\0", 16);

// Why a database gets no working copy; empty when it may have one. A file
// that is no SQLite database (enciphered, or something else under the name)
// is not worth copying, and a copy that cannot fit would only fill the disk
// of the output. Holes of a sparse file are not copied, so what the copy
// needs is what the files occupy, not their length.
QString copy_refusal(const QString& database, const QString& copy_folder)
{
    QFile file(database);
    if (!QFileInfo(database).isFile() || !file.open(QIODevice::ReadOnly))
        return "it cannot be read";
    if (file.read(k_sqlite_header.size()) != k_sqlite_header)
        return "it is not an SQLite database (enciphered or damaged)";
    qint64 needed = 0;
    for (const char* suffix : {"", "-wal", "-shm"})
        needed += sparse_file_copy::allocated_size(database + suffix);
    QDir().mkpath(copy_folder);
    const QStorageInfo output(copy_folder);
    if (output.isValid() && needed > output.bytesAvailable())
        return QString("it needs %1 bytes and the output has %2 free").arg(needed).arg(output.bytesAvailable());
    return QString();
}

}  // namespace

media_library_reader::media_library_reader(const media_library_context& context, const media_library_places& places,
                                           const QString& database_path)
    : m_context(context), m_places(places), m_database(database_path),
      m_signatures(std::make_unique<signatures>(context.owner))
{
}

media_library_reader::~media_library_reader() = default;

void media_library_reader::extract_media_library()
{
    run_table(m_signatures->media_library, &media_library_statements::media,
              &media_library_reader::insert_media_library_rows);
}

void media_library_reader::extract_album_art()
{
    run_table(m_signatures->album_art, &media_library_statements::album, &media_library_reader::insert_album_art_rows);
}

void media_library_reader::extract_album()
{
    run_table(m_signatures->album, &media_library_statements::album, &media_library_reader::insert_album_rows);
}

void media_library_reader::extract_playlist()
{
    run_table(m_signatures->playlist, &media_library_statements::playlist, &media_library_reader::insert_playlist_rows);
}

void media_library_reader::run_table(const QString& signature, QString media_library_statements::*select,
                                     bool (media_library_reader::*insert_rows)(media_library_run&))
{
    media_library_run run(signature, m_context.result_db_path);
    const auto copy = [this, &signature] {
        if (!m_copy_made) {
            m_copy_made = true;
            m_copy = checked_working_copy(m_database, m_context.source_root, m_context.helper, signature);
        }
        return m_copy;
    };
    if (!run.open(m_database, copy))
        return;
    if (!m_shape_read)
        read_database_shape(run.source());
    if (!run.select(statements().*select))
        return;
    // A cancelled or broken-off table closes without its end line.
    if ((this->*insert_rows)(run))
        run.finish();
}

QString media_library_reader::checked_working_copy(const QString& database, const QString& source_root,
                                                   plugin_helper_functions* helper, const QString& signature)
{
    if (!helper)
        return QString();
    const QString refusal = copy_refusal(database, helper->get_adhoc_parent_path());
    if (!refusal.isEmpty()) {
        plugin_static_function::app_debug("no working copy of the database, " + refusal + ": " + database, signature);
        return QString();
    }
    return helper->get_adhoc_path_for_database(database, source_root);
}

void media_library_reader::read_database_shape(const QSqlDatabase& source)
{
    const QString& signature = m_signatures->read_shape;
    m_shape_read = true;
    m_shape = media_library_shape::read(source);
    plugin_static_function::app_debug("media database model " + QString::number(m_shape.model()), signature);
    // Once a run, not once a row: what the database cannot give stays empty.
    for (const QString& missing : m_shape.missing())
        plugin_static_function::app_debug("not in this media database, its columns stay empty: " + missing, signature);
}

QString media_library_reader::source_file_text() const
{
    return source_file_of(m_context, m_database);
}

QString media_library_reader::source_file_of(const media_library_context& context, const QString& path)
{
    return plugin_static_function::get_final_artifact_source_file(path_below_root(path, context.source_root),
                                                                  context.source_root, context.source_type)
        .value(0);
}

QString media_library_reader::path_of_file_mrl(const QString& mrl)
{
    if (!mrl.startsWith("file://") && mrl.contains("://"))
        return QString();
    const QString path = mrl.startsWith("file://") ? mrl.mid(7) : mrl;
    return QUrl::fromPercentEncoding(path.toUtf8());
}

QString media_library_reader::path_below_root(const QString& path, const QString& source_root)
{
    QString below = path.trimmed();
    if (below.startsWith(source_root))
        below.remove(0, source_root.size());
    if (!below.isEmpty() && !below.startsWith('/'))
        below.prepend('/');
    return below;
}

QString media_library_reader::with_account(const QString& insert) const
{
    if (m_context.system_user.isEmpty())
        return insert;
    QString statement = insert;
    statement.replace("(bookmark,", "(bookmark,system_user,");
    statement.replace("values(0,", "values(0,?,");
    return statement;
}

void media_library_reader::insert_row(media_library_run& run, prepared_statement& insert, const QStringList& values)
{
    const bool inserted = m_context.system_user.isEmpty()
                              ? run.insert(insert, values)
                              : run.insert(insert, QStringList{m_context.system_user} + values);
    if (inserted && m_context.count_row)
        m_context.count_row();
}

// A position at the very start tells nothing; the apps keep -1 for none. A
// fraction beyond the whole (a damaged row) is no position either.
QString media_library_reader::position_text(double fraction, qint64 time_ms, qint64 duration_ms)
{
    bool has_fraction = fraction > 0 && fraction <= 1;
    bool has_time = time_ms > 0;
    if (!has_time && has_fraction && duration_ms > 0) {
        time_ms = qint64(fraction * double(duration_ms));
        has_time = true;
    }
    if (!has_fraction && has_time && duration_ms > 0 && time_ms <= duration_ms) {
        fraction = double(time_ms) / double(duration_ms);
        has_fraction = true;
    }
    QStringList parts;
    if (has_fraction)
        parts << QString::number(qRound(fraction * 100)) + "%";
    if (has_time)
        parts << "(" + plugin_static_function::clock_text_from_milliseconds(time_ms) + ")";
    return parts.isEmpty() ? QString() : "Position: " + parts.join(' ');
}
