#pragma once

// Context records the host passes by value. Member order and types are part of
// the host's binary interface and must not change.

#include <QList>
#include <QString>
#include <QtGlobal>

struct struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_system_account
{
    QString system_user;  // account name
    QString domain_user;  // domain or alternate name
};

struct struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info
{
    QString source_path_1;             // source root, ends in "/"
    QString source_path_2;             // second source text (source type)
    QString os_scheme_display;
    QString os_scheme_internal;        // "macOS", "iOS_UID", "winOS" or "androidOS"
    QString os_version_full;
    QList<struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_system_account> system_account_QList;
    QString source_name;               // host fields below are not used by the plug-in
    QString source_type_display;
    QList<QString> source_evidence_list;
    QString source_hierarchy;
    QString root_name;
    QString root_type;
    QString source_main_path;
};

struct struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info
{
    bool bool_host_flag = false;
    bool bool_debug_mode = false;
    bool bool_debug_print_on_terminal = false;
    bool bool_debug_print_in_file = false;
    bool bool_debug_encryption = false;
    QString debug_file_path;
};

struct struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_desktop_info
{
    QString desktop_user_name;
    QString desktop_home_path;
    qint64 desktop_free_space = 0;
    QString desktop_os_version;
    QString desktop_timezone;
};

// Opaque iOS backup reader owned by the host; the plug-in only stores the pointer.
class ios_uid_backup_parser;
