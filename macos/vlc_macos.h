#pragma once

// Extractor of a macOS source: per-user discovery of the player's files and the
// readers of the media library, recent items, recently played list and podcasts.

#include <QHash>

#include <memory>

#include "bookmark_reader.h"
#include "extractor_base.h"
#include "file_metadata_reader.h"
#include "plugin_static_function.h"

class prepared_statement;

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

    // Durations of the media library: milliseconds as "HH:MM:SS Hrs" or "MM:SS Min".
    static QString convert_sec_to_hh_mm_ss(QString duration);
    static QString prepend_zero_for_time(QString value, int width);

    // The examiner's metadata keys that are not among the fixed columns.
    QList<QString> selected_extended_attribute_keys() const { return extended_attribute_keys; }

signals:
    void signal_extracted_records_of_plugin_macos(qint64 count);
    void signal_total_tabs_processed_macos(int count);

public slots:
    void slot_proc_generic_finished(int) { bool_process_generic_finished = 1; }

protected:
    void emit_records_signal(qint64 count) override { emit signal_extracted_records_of_plugin_macos(count); }
    void emit_tabs_signal(int count) override { emit signal_total_tabs_processed_macos(count); }
    void find_source_file() override;
    void extract_plugin_artifacts() override;

private:
    // What the rows say of one media file the player named.
    struct media_file_facts
    {
        QString source_path;  // inside the source root; empty when the name leads outside it
        bool exists = false;
        QString file_name;
        QString suffix;
        QString size;
        QString birth_seconds;
        struct_GLOBAL_ARTIFACT_cfstring_attributes attributes;
        struct_GLOBAL_ARTIFACT_used_dates used;
        QStringList extended{QString(), QString()};  // key/value XML, search text
    };

    // Table readers.
    void extract_media_library();
    void extract_podcasts();
    void xcode_extract_recents_items(QString file_path, QString db_path, QString user_name);
    void xcode_extract_recents_items_11_12(QString file_path, QString db_path, QString user_name,
                                           QString root);
    // The shared-file lists of macOS 10.13 on (.sfl2, .sfl3, .sfl4).
    void xcode_extract_recents_items_10_13(QString file_path, QString db_path, QString user_name);
    void xcode_extract_recent_played_11_12(QString file_path, QString user_name);
    // False when a cancel was met before one of the files.
    bool extract_recent_documents();
    bool extract_recently_played();

    // Metadata of one file (the path passed the source-path guard).
    void filter_extended_attribute_list();
    struct_GLOBAL_ARTIFACT_cfstring_attributes extract_cfstring_attributes(QString path);
    struct_GLOBAL_ARTIFACT_cfstring_attributes extract_cfstring_attributes(const QFileInfo& file);
    QStringList extract_longi_lati_attributes(QString path);
    QStringList get_extended_attributes(QList<QString> paths);

    // Shared row pieces.
    QString path_inside_source(const QString& machine_path, const QString& user) const;
    // How much is gathered of a file: everything; everything but the size of a
    // folder (a recent document may name a whole volume, and measuring it
    // walks it); or only the name, the guarded path and the examiner's
    // metadata keys.
    enum class file_facts { all, without_folder_sizes, names_only };
    media_file_facts gather_media_file_facts(const QString& source_path, const QString& caller,
                                             file_facts wanted = file_facts::all);
    // The values of a recents row for an item of a list whose items carry
    // bookmarks. listed_name is the list's own name for the item, which the
    // older list shows as it is (pass name_wins) and the newer ones only when
    // the bookmark holds no path.
    // Inserts a row: counted when written, the failure text logged when not.
    void insert_recents_row(prepared_statement& insert, const QStringList& values, const QString& failure,
                            const QString& caller);
    QStringList bookmarked_recents_row(const bookmark_record& mark, const QString& listed_name, bool name_wins,
                                       int position, int count, const QString& user, const QString& list_file,
                                       const QString& caller);
    QString size_of(const QFileInfo& info);
    QStringList source_file_columns(const QString& path) const;
    void add_if_inside(QList<QString>& list, const QString& path);

    QList<QString> extended_attribute_keys;
    QList<QString> media_library_files;
    QList<QString> configuration_files;
    QList<QString> recent_document_files;
    QList<QString> preference_files;
    std::unique_ptr<file_metadata_reader> metadata_reader;
    // Sizes of the folders met in this run: many tracks may name one folder,
    // and each measure walks it whole.
    QHash<QString, QString> folder_sizes;
    int bool_process_generic_finished = 0;
};
