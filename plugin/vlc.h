#pragma once

// The controller the host drives. The host binds to the virtual pub_
// operations by their slot in the virtual table, so their order below is part
// of the binary interface and must never change.

#include <QFrame>
#include <QList>
#include <QString>

#include "host_context_records.h"

class Ui_vlc;
class plugin_helper_functions;
class vlc_macos;
class vlc_ios_uid;
class vlc_winos;
class vlc_androidos;

class vlc : public QFrame
{
    Q_OBJECT

public:
    explicit vlc(QWidget* parent = nullptr);
    ~vlc() override;

    virtual void pub_set_engine_type(int type);
    virtual QString pub_get_artifact_name();
    virtual void pub_set_essentials();
    virtual void pub_set_source_count(int count);
    virtual void pub_set_ios_uid_backup_pointer(ios_uid_backup_parser* parser);
    virtual void pub_set_desktop_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_desktop_info info);
    virtual void pub_set_general_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info info);
    virtual void pub_set_source_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info info);
    virtual void pub_set_essential_for_quarl_desk_extraction(QList<QString> tables, QList<QString> second);
    virtual void pub_set_result_directory(QString directory);
    virtual void pub_create_db_tables();
    virtual void pub_set_clear_db(bool clear);
    virtual void pub_cancel_extraction();
    virtual void pub_find_source_file();
    virtual void pub_set_extended_attributes_list(QList<QString> keys);
    virtual void pub_extract_artifacts();
    virtual void pub_generate_chat_html_pages();
    virtual void pub_remove_temporary_asthetics();

signals:
    void signal_extracted_records_of_plugin_overall(qint64 count);
    void signal_tab_processed_of_plugin_overall(int count);

private slots:
    void slot_extracted_records_of_plugin(qint64 count);
    void slot_total_tabs_processed(int count);
    void slot_m_process_finished(int status);

private:
    enum class scheme { macos, ios_uid, winos, androidos, unknown };
    scheme selected_scheme() const;

    void set_destination_location(QString host_directory);
    void create_destination_database();
    void create_db_tables();
    void clear_db_tables();

    Ui_vlc* ui = nullptr;
    bool bool_process_finished = false;
    qint64 extracted_records_count = 0;
    int tabs_processed_count = 0;
    QString temporary_directory;
    QString result_database_path;
    QString result_directory;
    int engine_type = 0;
    bool bool_cancel_extraction = false;
    QString os_scheme_internal;
    QList<QString> tables_to_clear;
    plugin_helper_functions* helper_obj = nullptr;
    vlc_macos* macos_obj = nullptr;
    vlc_ios_uid* ios_uid_obj = nullptr;
    vlc_winos* winos_obj = nullptr;
    vlc_androidos* androidos_obj = nullptr;
};
