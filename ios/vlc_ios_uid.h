#pragma once

// Extractor of an iOS source: a full file-system extraction, where the app's
// data container is found by its container metadata, or a backup folder,
// where the app's domain is found through the backup's manifest. The app's
// media-library database fills media_library, album_art, album and
// playlists (as on Android), the Core Data store of older versions adds to
// media_library, and the preferences' recent network addresses fill recents.
// The host's backup parser is accepted and not needed: the backup folder is
// read directly.

#include <vector>

#include "extractor_base.h"
#include "ios_app_files.h"
#include "media_library_set.h"

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
    // The app's folders: its data containers (or its backup domain) and its
    // app-group containers.
    void find_containers(const QString& containers, const QString& kind, const QString& identifier,
                         std::vector<ios_app_files>* found);
    bool is_container_of(const QString& folder, const QString& identifier);
    void read_backup_manifest();
    // The existing files among the given names relative to the folders.
    QStringList existing(const std::vector<ios_app_files>& folders, const QStringList& names);
    void extract_core_data_stores();
    void extract_recents();

    ios_uid_backup_parser* ios_backup_parser = nullptr;  // stored, never used
    bool backup_layout = false;
    std::vector<ios_app_files> apps;
    std::vector<ios_app_files> groups;
    QStringList found_containers;  // canonical paths
    media_library_set libraries;
};
