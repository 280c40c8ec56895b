#pragma once

// Extractor of a macOS source: per-user discovery of the player's files and the
// readers of the media library, recent items, recently played list and podcasts.

#include "extractor_base.h"

class vlc_macos : public extractor_base
{
    Q_OBJECT
public:
    explicit vlc_macos(QWidget* parent = nullptr);
    ~vlc_macos() override;

    void macos_set_plugin_helper_obj(plugin_helper_functions* helper) { helper_obj = helper; }
    void macos_set_record_count(qint64 count) { record_count = count; }
    void macos_set_tab_processed_count(int count) { tabs_processed_count = count; }
    void macos_set_desktop_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_desktop_info) {}
    void macos_set_general_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info) {}
    void macos_set_source_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info info);
    void macos_set_essentials() { cancel_requested = false; }
    void macos_find_artifacts_source() { find_source_file(); }
    void macos_extract_artifacts() { run_extraction(); }
    void macos_set_plugin_name(QString name) { store_plugin_name(name); }
    void macos_set_destination_location(QString result_dir, QString tmp_dir, QString db_path)
    {
        store_destination(result_dir, tmp_dir, db_path);
    }
    void macos_set_essential_for_quarl_desk_extraction(QList<QString> tables) { selected_tables = tables; }
    void macos_set_engine_type(int type) { engine_type = type; }
    void macos_cancel_extraction() { cancel_requested = true; }
    void macos_set_source_count(int count) { source_count = count; }
    void macos_set_extended_attributes_list(QList<QString> keys);

signals:
    void signal_extracted_records_of_plugin_macos(qint64 count);
    void signal_total_tabs_processed_macos(int count);

protected:
    void emit_records_signal(qint64 count) override { emit signal_extracted_records_of_plugin_macos(count); }
    void emit_tabs_signal(int count) override { emit signal_total_tabs_processed_macos(count); }
    void find_source_file() override;
    void extract_plugin_artifacts() override;

    QList<QString> extended_attribute_keys;
};
