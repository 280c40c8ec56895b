#pragma once

// Extractor of a Windows source: per-user discovery, jump-list recents,
// playlists, the cover-art cache and podcasts.

#include <QList>
#include <QString>
#include <QVariantList>

#include <memory>

#include "bounded_file_reader.h"
#include "extractor_base.h"
#include "prepared_statement.h"

class lnk_paser_class;
class olecf_file_parse;
class sqlite_connection_scope;

// One recent item: a shell link in a jump list, or an entry of the player's
// own recent list (whose file then stands where the jump list's path does).
struct struct_recents
{
    QString user_name;
    QString jump_list_output_folder;
    QString creation_time;
    QString modification_time;
    QString access_time;
    QString file_size;
    QString drive_type;
    QString drive_serial_number;
    QString local_path;
    QString volume_label;
    QString description;
    QString machine_identifier;
    QString network_path;
    QString jump_list_path;
};

// One entry of a playlist named among the recent items.
struct struct_playlist
{
    QString user_name;
    QString jump_list_path;
    QString playlist_name;
    QString title;
    QString duration;
    QString media_path;
    QString playlist_path;
};

class vlc_winos : public extractor_base
{
    Q_OBJECT
public:
    explicit vlc_winos(QWidget* parent = nullptr);
    ~vlc_winos() override;

    void winos_set_plugin_helper_obj(plugin_helper_functions* helper) { helper_obj = helper; }
    void winos_set_record_count(qint64 count) { record_count = count; }
    void winos_set_tab_processed_count(int count) { tabs_processed_count = count; }
    void winos_set_desktop_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_desktop_info) {}
    void winos_set_general_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info) {}
    void winos_set_source_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info info);
    void winos_set_essentials() { cancel_requested = false; }
    void winos_find_artifacts_source() { find_source_file(); }
    void winos_extract_artifacts() { run_extraction(); }
    void winos_set_plugin_name(QString name) { store_plugin_name(name); }
    void winos_set_destination_location(QString result_dir, QString tmp_dir, QString db_path)
    {
        store_destination(result_dir, tmp_dir, db_path);
    }
    void winos_set_essential_for_quarl_desk_extraction(QList<QString> tables) { selected_tables = tables; }
    void winos_set_engine_type(int type) { engine_type = type; }
    void winos_cancel_extraction() { cancel_requested = true; }
    void winos_set_source_count(int count) { source_count = count; }

    // The path on the source in Windows form, always on drive C.
    QString prepare_windows_path(QString path);

    // Discovery results (read by tests and by the table extractors).
    const QStringList& art_folders() const { return art_folder_list; }
    const QStringList& preference_files() const { return preference_file_list; }
    const QStringList& jump_list_folders() const { return jump_list_folder_list; }
    const QStringList& interface_settings_files() const { return interface_settings_file_list; }
    const QStringList& users() const { return user_names; }

signals:
    void signal_extracted_records_of_plugin_winos(qint64 count);
    void signal_total_tabs_processed_winos(int count);

protected:
    void emit_records_signal(qint64 count) override { emit signal_extracted_records_of_plugin_winos(count); }
    void emit_tabs_signal(int count) override { emit signal_total_tabs_processed_winos(count); }
    void find_source_file() override;
    void extract_plugin_artifacts() override;

    void extract_recents();
    // One jump list's links, in stream order, with the facts its DestList
    // keeps of each: appended to the recents list.
    void read_jump_list(const QString& path, olecf_file_parse& compound_reader, lnk_paser_class& link_reader);
    // The player's own recent list and typed network addresses: appended too.
    void read_player_recent_list(const QString& path);
    void extract_playlists();
    void get_info_from_m34_file(QString playlist_path, QString context1, QString context2);
    void get_info_from_xspf_file(QString playlist_path, QString context1, QString context2);
    void get_further_info(const QByteArray& chunk);
    // Appends the work record unless the entry list is full: a jump list may
    // name one huge playlist thousands of times.
    void append_playlist_entry();
    bool playlist_entries_full() const;
    void album_arts_artifacts();
    void extract_podcasts_vlc();

    // A link's local path as a path on the source: only paths on drive C
    // map to the source; anything else is empty.
    QString media_path_on_source(const QString& windows_path) const;
    // The last "/"-separated part of a path that has at least two.
    static QString last_path_part(const QString& path);
    // The two names of the account whose home folder holds the path.
    struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_system_account account_of(const QString& path) const;
    QString temporary_files_folder() const { return destination_result_dir + "Files/"; }
    // A path on the source as the rows show it: below the root, with a
    // leading "/"; and the source-file text of the file a row came from.
    QString relative_to_source(const QString& path) const;
    QString source_file_text(const QString& path) const;
    // Opens the result database for one table's run: a transaction begun and
    // the insert prepared; false (and the failure logged) when it did not open.
    std::unique_ptr<prepared_statement> begin_table_run(sqlite_connection_scope& scope, const QString& insert,
                                                        const QString& open_failure, const QString& signature);
    // An evidence text file read up to the reader's ceiling; hitting it is logged.
    static bounded_file_reader::result read_capped(const QString& path, const QString& signature);
    bool read_playlist(const QString& path, const QString& signature, QByteArray* data);
    // Runs a prepared insert; counts the row, or logs the failure after the prefix.
    void insert_row(prepared_statement& insert, const QStringList& values, const QString& failure_prefix,
                    const QString& signature);

    struct_recents recents_work_record;
    struct_playlist playlist_work_record;
    QList<struct_recents> recents_list;
    QList<struct_playlist> playlist_list;
    QStringList art_folder_list;
    QStringList preference_file_list;
    QStringList jump_list_folder_list;
    // The player's vlc-qt-interface.ini of each user that has one.
    QStringList interface_settings_file_list;
};
