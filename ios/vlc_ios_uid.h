#pragma once

// Extractor of an iOS backup. A stub: it accepts the whole context and finds and
// extracts nothing, so an iOS run reports only the count it was handed.

#include "extractor_base.h"

class vlc_ios_uid : public extractor_base
{
    Q_OBJECT
public:
    explicit vlc_ios_uid(QWidget* parent = nullptr);
    ~vlc_ios_uid() override;

    void ios_uid_set_plugin_helper_obj(plugin_helper_functions* helper) { helper_obj = helper; }
    void ios_uid_set_record_count(qint64 count) { record_count = count; }
    void ios_uid_set_tab_processed_count(int count) { tabs_processed_count = count; }
    void ios_uid_set_desktop_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_desktop_info) {}
    void ios_uid_set_general_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info) {}
    void ios_uid_set_source_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info info);
    void ios_uid_set_essentials() { cancel_requested = false; }
    void ios_uid_find_artifacts_source() { find_source_file(); }
    void ios_uid_extract_artifacts() { run_extraction(); }
    void ios_uid_set_plugin_name(QString name) { store_plugin_name(name); }
    void ios_uid_set_destination_location(QString result_dir, QString tmp_dir, QString db_path)
    {
        store_destination(result_dir, tmp_dir, db_path);
    }
    void ios_uid_set_essential_for_quarl_desk_extraction(QList<QString> tables) { selected_tables = tables; }
    void ios_uid_set_engine_type(int type) { engine_type = type; }
    void ios_uid_cancel_extraction() { cancel_requested = true; }
    void ios_uid_set_source_count(int count) { source_count = count; }
    void ios_uid_set_ios_backup_pointer(ios_uid_backup_parser* parser) { ios_backup_parser = parser; }

signals:
    void signal_extracted_records_of_plugin_ios_uid(qint64 count);
    void signal_total_tabs_processed_ios_uid(int count);

protected:
    void emit_records_signal(qint64 count) override { emit signal_extracted_records_of_plugin_ios_uid(count); }
    void emit_tabs_signal(int count) override { emit signal_total_tabs_processed_ios_uid(count); }
    void find_source_file() override;
    void extract_plugin_artifacts() override;

private:
    ios_uid_backup_parser* ios_backup_parser = nullptr;  // stored, never used
};
