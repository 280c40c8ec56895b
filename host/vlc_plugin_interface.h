#pragma once

// The host's view of the plug-in's controller: a QFrame followed by the pub_
// operations in their virtual-table order. The host never links the plug-in;
// it calls these slots on the object that create_object returns, exactly as
// the forensic suite does. The order here must match the plug-in's.

#include <QFrame>
#include <QList>
#include <QString>

#include "host_context_records.h"

class vlc_plugin_interface : public QFrame
{
public:
    virtual void pub_set_engine_type(int type) = 0;
    virtual QString pub_get_artifact_name() = 0;
    virtual void pub_set_essentials() = 0;
    virtual void pub_set_source_count(int count) = 0;
    virtual void pub_set_ios_uid_backup_pointer(ios_uid_backup_parser* parser) = 0;
    virtual void pub_set_desktop_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_desktop_info info) = 0;
    virtual void pub_set_general_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info info) = 0;
    virtual void pub_set_source_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info info) = 0;
    virtual void pub_set_essential_for_quarl_desk_extraction(QList<QString> tables, QList<QString> second) = 0;
    virtual void pub_set_result_directory(QString directory) = 0;
    virtual void pub_create_db_tables() = 0;
    virtual void pub_set_clear_db(bool clear) = 0;
    virtual void pub_cancel_extraction() = 0;
    virtual void pub_find_source_file() = 0;
    virtual void pub_set_extended_attributes_list(QList<QString> keys) = 0;
    virtual void pub_extract_artifacts() = 0;
    virtual void pub_generate_chat_html_pages() = 0;
    virtual void pub_remove_temporary_asthetics() = 0;

    // Signals the host connects to by name.
    static constexpr const char* records_signal = "2signal_extracted_records_of_plugin_overall(qint64)";
    static constexpr const char* tabs_signal = "2signal_tab_processed_of_plugin_overall(int)";
};

using create_object_function = void* (*)();
