#pragma once

// Extractor of an Android image (an unpacked backup or a full file-system
// extraction): the media player's media-library database read into the media
// library, album art, album and playlist tables.

#include <memory>

#include "android_places.h"
#include "extractor_base.h"
#include "media_library_reader.h"

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
    // The four tables, read by the media-library reader of this run.
    void extract_media_library();
    void extract_album_art();
    void extract_album();
    void extract_playlist();

    QString media_library_source;
    QString album_source;
    QString playlist_source;
    android_places places;
    std::unique_ptr<media_library_reader> reader;
};
