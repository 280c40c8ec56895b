#pragma once

// Static services shared by the controller and every extractor: run state,
// the debug log, SQL helpers, value conversions and source-path helpers.
// Nothing here throws; bad input degrades to an empty result.

#include <QDateTime>
#include <QFile>
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>

#include <plist/plist.h>

#include "host_context_records.h"

// Usage dates of one file, each as decimal seconds since 1970 (UTC).
struct struct_GLOBAL_ARTIFACT_used_dates
{
    QString last_used_date;
    QStringList used_dates;  // in the order the metadata lists them
    QString first_date;      // first and last entries of used_dates
    QString last_date;
};

class plugin_static_function
{
public:
    // ---- run state and host context ------------------------------------
    static void set_essentials();
    static void set_engine_type(int type);
    static void set_source_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info info);
    static void set_general_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info info);
    static void set_desktop_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_desktop_info info);
    static void set_source_count(int count);
    static QString get_source_count_name();
    static void set_cancel_extraction(bool status);
    static void clear_variables_quarl_and_artifact_common_source_info(
        struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info& info);
    static void clear_variables_quarl_and_artifact_common_desktop_info(
        struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_desktop_info& info);
    static void clear_variables_quarl_and_artifact_common_general_info(
        struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info& info);
    static QString get_source_os_scan_version(QString os_scheme_internal);

    // ---- debug log -------------------------------------------------------
    static void app_debug(QString message, QString function);
    static void open_debug_file();
    static void close_debug_file();
    static QString encrypt_string(QString text, QString function);

    // ---- SQL helpers -----------------------------------------------------
    static bool execute_db_command_by_dbpath(QString command, QString db_path, QString caller);
    static bool execute_db_command_with_addbindvalue_by_dbpath(QString command, QStringList values,
                                                               QString db_path, QString caller);
    static bool execute_db_command_by_dbreference(QString command, QSqlDatabase& db, QString caller);
    static bool execute_db_command_with_addbindvalue_by_dbreference(QString command, QStringList values,
                                                                    QSqlDatabase& db, QString caller);
    static QStringList get_stringlist_from_db_by_dbpath(QString command, int column, QString db_path,
                                                        QString caller);
    static QStringList get_stringlist_from_db_with_addbindvalues_by_dbpath(QString command, QStringList values,
                                                                           int column, QString db_path,
                                                                           QString caller);
    static QStringList get_stringlist_from_db_by_dbreference(QString command, int column, QSqlDatabase& db,
                                                             QString caller);
    static QStringList get_stringlist_from_db_with_addbindvalues_by_dbreference(QString command,
                                                                                QStringList values, int column,
                                                                                QSqlDatabase& db, QString caller);
    static bool check_value_existence_in_db_by_dbreference(QString command, int column, QString value,
                                                           QSqlDatabase db);
    static QStringList get_total_tables_list_by_dbpath(QString db_path, QString caller);

    // ---- time and value conversion ---------------------------------------
    static QString get_human_readable_time(QString seconds);
    // A duration the media libraries store as milliseconds (text), as the
    // tables show it: "hh:mm:ss Hrs" from one hour on, else "mm:ss Min";
    // text that is no 32-bit number counts as 0.
    static QString duration_text_from_milliseconds(const QString& milliseconds);
    // An unsigned decimal number (as text) at least width characters wide,
    // padded with "0" on the left; text that is no such number gives 0.
    static QString zero_padded_number(const QString& number, int width);
    // A playback position in milliseconds as "hh:mm:ss" (hours from 00 up).
    static QString clock_text_from_milliseconds(qint64 milliseconds);
    // A row's description followed by further facts, ";++::++;" between the
    // two when both are there.
    static QString description_with(const QString& description, const QString& facts);
    static QString human_readable_size(QString bytes);
    static QString mining_suffix(QString path);
    static QString mining_size(QString path);
    // which: "birth" (or "creation"), "modification", "access"
    static QString get_posix_timestamp(QString path, QString which);
    static QDateTime get_datetime_from_string_with_iso_date(QString text);
    static QString convert_apple_time_to_epoch(QString value);
    static QString convert_google_time_to_epoch(QString value);
    static QString convert_timestamp_to_human_readable_in_UTC(QString value);
    static QString convert_human_readable_to_epoch_1(QString value);
    static QString convert_human_readable_to_epoch_2(QString value);
    static QString convert_human_readable_to_epoch_3(QString value);
    static QString convert_timezone_to_seconds(QString value);
    static QString convert_T_Z_time_to_epoch(QString value);
    static QString get_filtered_number_value(QString value);
    static QString get_filtered_boolean_value(QString value);
    static QString get_filtered_cfstring_value(QString value);
    static QString get_filtered_wherefrom_value(QString value);
    static QString get_filtered_string_value(QString value);
    static QString get_filtered_date_value(QString value);

    // ---- source paths and file helpers -----------------------------------
    static QString get_available_file(QString file_path, QString directory, QString caller);
    static bool is_file_exist_in_dir(QString directory, QString file_name);
    // [0] the path made relative, [1] the path as given for home-directory sources, else empty
    static QStringList get_final_artifact_source_file(QString path, QString prefix, QString source_type);
    static QString get_relative_file_path(QString path, QString prefix, QString source_type);
    static QString get_complete_file_path(QString path, QString user, QString source_type);
    static QString extract_user_name_from_sourcefile(QString path, QString prefix);
    // The whole account record whose name (either of its two) names the home
    // folder holding the path; empty record when none matches.
    static struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_system_account
    extract_account_from_sourcefile(QString path, QString prefix);
    static void copy_directory(QString source, QString destination);
    static void remove_directory(QString path);
    static QList<QString> get_unmatched_varible_list_of_parentlist(QList<QString> parent, QList<QString> other);

    // ---- property-list readers ---------------------------------------------
    // One key of a dictionary node, as text; empty when absent or of another
    // type. Booleans give "YES"/"NO"; labelled forms give label ":+:" value.
    static QString get_nsstring_values(QString key, plist_t dictionary);
    static QString get_nsnumber_values(QString key, plist_t dictionary);
    static QString get_nsnumber_values_yes_no(QString key, plist_t dictionary);
    static QString get_nsnumber_key_and_value_yes_no(QString key, plist_t dictionary, QString label);
    static QString get_nsstring_key_and_values(QString key, plist_t dictionary, QString label);
    static QString get_nsnumber_key_and_values(QString key, plist_t dictionary, QString label);
    static QString get_nsarray_key_and_values(QString key, plist_t dictionary, QString label);
    // Seconds since 1970 of a date node, fractions dropped; 0 for anything else.
    static qint64 convert_nsdate_to_epoch(plist_t date);
    // Any scalar node as text (dates as epoch seconds, booleans "YES"/"NO"),
    // an array's scalars joined by ";++::++;"; empty for anything else.
    static QString plist_value_as_text(plist_t node);
    // Usage dates of a file the source-path guard allowed.
    static struct_GLOBAL_ARTIFACT_used_dates extract_used_date(QString path);
    // "2019-05-04 10:20:30 +0000" (a metadata date's description) as epoch seconds.
    static QString convert_date_description_to_epoch(QString description);
#ifdef __APPLE__
    static QString convert_cfstring_to_qstring(const struct __CFString* text);
    // CFCopyDescription of any CoreFoundation object as text; empty for null.
    static QString get_cf_description(const void* object);
#endif

    // ---- static run state --------------------------------------------------
    static QString source_os_version_full;
    static QList<struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_system_account> system_account_QList;
    static int source_count_int;
    static bool bool_cancel_extraction;
    static int type_engine_int;
    static bool debug_mode_status_bool;
    static bool debug_print_in_file_bool;
    static bool debug_print_on_terminal_bool;
    static bool debug_encryption_status_bool;
    static QString debug_file_path_QString;
    static QFile debug_file_regular_QFile;
};
