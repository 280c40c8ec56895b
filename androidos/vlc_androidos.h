#pragma once

// Extractor of an Android image (an unpacked backup or a full file-system
// extraction): the media player's media-library database read into the media
// library, album art, album and playlist tables.

#include <QHash>

#include "android_database_shape.h"
#include "extractor_base.h"

class android_query;
class android_source_run;
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

class vlc_androidos : public extractor_base
{
    Q_OBJECT
public:
    explicit vlc_androidos(QWidget* parent = nullptr);
    ~vlc_androidos() override;

    void androidos_set_plugin_helper_obj(plugin_helper_functions* helper) { helper_obj = helper; }
    void androidos_set_record_count(qint64 count) { record_count = count; }
    void androidos_set_tab_processed_count(int count) { tabs_processed_count = count; }
    void androidos_set_desktop_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_desktop_info) {}
    void androidos_set_general_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info) {}
    void androidos_set_source_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info info);
    void androidos_set_essentials() { cancel_requested = false; }
    void androidos_find_artifacts_source() { find_source_file(); }
    void androidos_extract_artifacts() { run_extraction(); }
    void androidos_set_plugin_name(QString name) { store_plugin_name(name); }
    void androidos_set_destination_location(QString result_dir, QString tmp_dir, QString db_path)
    {
        store_destination(result_dir, tmp_dir, db_path);
    }
    void androidos_set_essential_for_quarl_desk_extraction(QList<QString> tables) { selected_tables = tables; }
    void androidos_set_engine_type(int type) { engine_type = type; }
    void androidos_cancel_extraction() { cancel_requested = true; }
    void androidos_set_source_count(int count) { source_count = count; }

    // Durations are stored in milliseconds; the name is historical.
    static QString convert_sec_to_hh_mm_ss(QString milliseconds);
    static QString prepend_zero_for_time(QString number, int width);

signals:
    void signal_extracted_records_of_plugin_androidos(qint64 count);
    void signal_total_tabs_processed_androidos(int count);

protected:
    void emit_records_signal(qint64 count) override { emit signal_extracted_records_of_plugin_androidos(count); }
    void emit_tabs_signal(int count) override { emit signal_total_tabs_processed_androidos(count); }
    void find_source_file() override;
    void extract_plugin_artifacts() override;

private:
    void extract_media_library();
    void extract_album_art();
    void extract_album();
    void extract_playlist();

    // One fact about one media item each. A query object is dedicated to one
    // statement for the whole run: the statement is prepared on its first use
    // and only re-bound afterwards.
    struct_audio_track get_audio_track_details(QString media_id, android_query& query);
    struct_video_track get_video_track_details(QString media_id, android_query& query);
    struct_artist get_artist_details(QString media_id, android_query& album_track_query, android_query& album_query);
    QString get_playlist_name(QString media_id, android_query& relation_query, android_query& playlist_query);
    QString get_artist_name(QString artist_id, android_query& query);
    QString get_thumbnail_path(QString thumbnail_id, android_query& query);
    struct_media get_file_name(QString media_id, android_query& query);
    struct_file get_file_path(QString media_id, android_query& query);

    // Where the image keeps the app's folders (found with the database).
    void use_backup_layout();
    void use_file_system_layout();
    // Full path of a media file in the image from its mrl.
    QString media_path_from_mrl(QString mrl) const;
    // A path on the phone (shared storage, the app's folders) below the
    // source root of a full file-system extraction.
    QString phone_path_in_source(const QString& phone_path) const;
    // The decoded path of a file:// mrl (or of a plain path).
    static QString phone_path_of_mrl(const QString& mrl);
    // The thumbnail file of a row's reference: a Thumbnail id, or on early
    // models the mrl itself.
    QString thumbnail_of(const QString& reference, bool mrl_in_row, android_query& query);
    QString thumbnail_path_from_mrl(QString mrl, const QString& signature) const;
    // Once a run, on the first table's copy: the model and the statements for it.
    void read_database_shape(const QSqlDatabase& source);
    // The relative form of a source database for the source_file column.
    QString source_file_text(const QString& source_path) const;
    void clear_lookup_caches();
    // One table: the common frame around its row loop.
    void run_table(const QString& signature, const QString& source_path, QString android_statements::*select,
                   bool (vlc_androidos::*insert_rows)(android_source_run&));
    const android_statements& statements() const { return database_shape.statements(); }
    // The row loops of the four tables; false when the run was cancelled or
    // ended early (no end line then).
    bool insert_media_library_rows(android_source_run& run);
    bool insert_album_art_rows(android_source_run& run);
    bool insert_album_rows(android_source_run& run);
    bool insert_playlist_rows(android_source_run& run);
    // One album's tracks as its row's item information and export paths;
    // false when cancelled.
    bool collect_album_tracks(android_source_run& run, const QString& album_id, prepared_statement& tracks,
                              android_query& file_name_query, android_query& file_query, QStringList* item_info,
                              QStringList* export_paths);

    QString media_library_source;
    QString album_source;
    QString playlist_source;
    // The app's private folder, the folder holding shared storage's "0/" and
    // the app's external files folder, each relative to the source root.
    QString private_folder;
    QString shared_storage;
    QString external_files;
    bool full_file_system = false;
    android_database_shape database_shape;
    bool database_shape_read = false;
    // Albums, playlists, artists and thumbnails repeat across rows; each is
    // looked up once a run.
    QHash<QString, struct_artist> album_cache;
    QHash<QString, QString> playlist_names_cache;
    QHash<QString, QString> artist_name_cache;
    QHash<QString, QString> thumbnail_path_cache;
};
