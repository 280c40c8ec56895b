// Run state shared by the controller and the extractors, and the host records
// it is filled from.

#include "plugin_static_function.h"

QString plugin_static_function::source_os_version_full;
QList<struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_system_account> plugin_static_function::system_account_QList;
int plugin_static_function::source_count_int = -1;
bool plugin_static_function::bool_cancel_extraction = false;
int plugin_static_function::type_engine_int = -1;
bool plugin_static_function::debug_mode_status_bool = false;
bool plugin_static_function::debug_print_in_file_bool = false;
bool plugin_static_function::debug_print_on_terminal_bool = false;
bool plugin_static_function::debug_encryption_status_bool = false;
QString plugin_static_function::debug_file_path_QString;
QFile plugin_static_function::debug_file_regular_QFile;

void plugin_static_function::set_essentials()
{
    // The encryption switch deliberately survives: only the host's general
    // record changes it.
    debug_file_path_QString.clear();
    type_engine_int = -1;
    bool_cancel_extraction = false;
    source_count_int = -1;
    debug_mode_status_bool = false;
    debug_print_in_file_bool = false;
    debug_print_on_terminal_bool = false;
    system_account_QList.clear();
}

void plugin_static_function::set_engine_type(int type)
{
    type_engine_int = type;
}

void plugin_static_function::set_source_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info info)
{
    source_os_version_full = info.os_version_full;
    system_account_QList = info.system_account_QList;
}

void plugin_static_function::set_desktop_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_desktop_info)
{
}

void plugin_static_function::set_source_count(int count)
{
    source_count_int = count;
}

QString plugin_static_function::get_source_count_name()
{
    return QString("Source") + QString::number(source_count_int);
}

void plugin_static_function::set_cancel_extraction(bool status)
{
    bool_cancel_extraction = status;
}

void plugin_static_function::clear_variables_quarl_and_artifact_common_source_info(
    struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info& info)
{
    info = struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info();
}

void plugin_static_function::clear_variables_quarl_and_artifact_common_desktop_info(
    struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_desktop_info& info)
{
    info = struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_desktop_info();
}

void plugin_static_function::clear_variables_quarl_and_artifact_common_general_info(
    struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info& info)
{
    info = struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info();
}

QString plugin_static_function::get_source_os_scan_version(QString os_scheme_internal)
{
    // Short version text used by the host to pick scan profiles: "10.15.7" on
    // macOS gives "10_15", "13.2" gives "13"; Windows "10.0.19045" gives "10".
    const QStringList parts = source_os_version_full.trimmed().split(".", Qt::SkipEmptyParts);
    if (parts.isEmpty())
        return QString();

    if (os_scheme_internal == "macOS") {
        if (parts.first() == "10" && parts.size() > 1)
            return parts.at(0) + "_" + parts.at(1);
        return parts.first();
    }
    if (os_scheme_internal == "winOS" || os_scheme_internal == "iOS")
        return parts.first();
    return parts.join("_");
}
