#include "vlc.h"

#include <QDir>
#include <QFileInfo>

#include "plugin_helper_functions.h"
#include "plugin_static_function.h"
#include "result_database_schema.h"
#include "source_path_guard.h"
#include "sqlite_connection_scope.h"
#include "ui_vlc.h"
#include "vlc_androidos.h"
#include "vlc_ios_uid.h"
#include "vlc_macos.h"
#include "vlc_winos.h"

vlc::vlc(QWidget* parent) : QFrame(parent), ui(new Ui_vlc)
{
    ui->setupUi(this);

    macos_obj = new vlc_macos(this);
    connect(macos_obj, SIGNAL(signal_extracted_records_of_plugin_macos(qint64)), this,
            SLOT(slot_extracted_records_of_plugin(qint64)));
    connect(macos_obj, SIGNAL(signal_total_tabs_processed_macos(int)), this, SLOT(slot_total_tabs_processed(int)));

    ios_uid_obj = new vlc_ios_uid(this);
    connect(ios_uid_obj, SIGNAL(signal_extracted_records_of_plugin_ios_uid(qint64)), this,
            SLOT(slot_extracted_records_of_plugin(qint64)));
    connect(ios_uid_obj, SIGNAL(signal_total_tabs_processed_ios_uid(int)), this,
            SLOT(slot_total_tabs_processed(int)));

    winos_obj = new vlc_winos(this);
    connect(winos_obj, SIGNAL(signal_extracted_records_of_plugin_winos(qint64)), this,
            SLOT(slot_extracted_records_of_plugin(qint64)));
    connect(winos_obj, SIGNAL(signal_total_tabs_processed_winos(int)), this, SLOT(slot_total_tabs_processed(int)));

    androidos_obj = new vlc_androidos(this);
    connect(androidos_obj, SIGNAL(signal_extracted_records_of_plugin_androidos(qint64)), this,
            SLOT(slot_extracted_records_of_plugin(qint64)));
    connect(androidos_obj, SIGNAL(signal_total_tabs_processed_androidos(int)), this,
            SLOT(slot_total_tabs_processed(int)));

    helper_obj = new plugin_helper_functions(this);

    bool_cancel_extraction = false;
    extracted_records_count = 0;
    tabs_processed_count = 0;
}

vlc::~vlc()
{
    delete ui;
}

void vlc::slot_extracted_records_of_plugin(qint64 count)
{
    extracted_records_count = count;
    emit signal_extracted_records_of_plugin_overall(count);
}

void vlc::slot_total_tabs_processed(int count)
{
    tabs_processed_count = count;
    emit signal_tab_processed_of_plugin_overall(count);
}

void vlc::slot_m_process_finished(int)
{
    bool_process_finished = true;
}

void vlc::pub_set_engine_type(int type)
{
    engine_type = type;
    plugin_static_function::set_engine_type(type);
    macos_obj->macos_set_engine_type(type);
    ios_uid_obj->ios_uid_set_engine_type(type);
    winos_obj->winos_set_engine_type(type);
    androidos_obj->androidos_set_engine_type(type);

    const QString name = pub_get_artifact_name();
    macos_obj->macos_set_plugin_name(name);
    ios_uid_obj->ios_uid_set_plugin_name(name);
    winos_obj->winos_set_plugin_name(name);
    androidos_obj->androidos_set_plugin_name(name);
}

QString vlc::pub_get_artifact_name()
{
    return QObject::tr("VLC");
}

void vlc::pub_set_essentials()
{
    bool_cancel_extraction = false;
    extracted_records_count = 0;
    tabs_processed_count = 0;
    plugin_static_function::set_essentials();
    source_path_guard::reset_log();
    helper_obj->set_essentials();
    macos_obj->macos_set_essentials();
    ios_uid_obj->ios_uid_set_essentials();
    winos_obj->winos_set_essentials();
    androidos_obj->androidos_set_essentials();
}

void vlc::pub_set_source_count(int count)
{
    macos_obj->macos_set_source_count(count);
    ios_uid_obj->ios_uid_set_source_count(count);
    winos_obj->winos_set_source_count(count);
    androidos_obj->androidos_set_source_count(count);
    plugin_static_function::set_source_count(count);
}

void vlc::pub_set_ios_uid_backup_pointer(ios_uid_backup_parser* parser)
{
    ios_uid_obj->ios_uid_set_ios_backup_pointer(parser);
}

void vlc::pub_set_desktop_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_desktop_info info)
{
    plugin_static_function::set_desktop_info(info);
    macos_obj->macos_set_desktop_info(info);
    ios_uid_obj->ios_uid_set_desktop_info(info);
    winos_obj->winos_set_desktop_info(info);
    androidos_obj->androidos_set_desktop_info(info);
}

void vlc::pub_set_general_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info info)
{
    plugin_static_function::set_general_info(info);
    macos_obj->macos_set_general_info(info);
    ios_uid_obj->ios_uid_set_general_info(info);
    winos_obj->winos_set_general_info(info);
    androidos_obj->androidos_set_general_info(info);
}

void vlc::pub_set_source_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info info)
{
    os_scheme_internal = info.os_scheme_internal;
    plugin_static_function::set_source_info(info);
    macos_obj->macos_set_source_info(info);
    ios_uid_obj->ios_uid_set_source_info(info);
    winos_obj->winos_set_source_info(info);
    androidos_obj->androidos_set_source_info(info);
}

void vlc::pub_set_essential_for_quarl_desk_extraction(QList<QString> tables, QList<QString>)
{
    tables_to_clear = tables;
    macos_obj->macos_set_essential_for_quarl_desk_extraction(tables);
    ios_uid_obj->ios_uid_set_essential_for_quarl_desk_extraction(tables);
    winos_obj->winos_set_essential_for_quarl_desk_extraction(tables);
    androidos_obj->androidos_set_essential_for_quarl_desk_extraction(tables);
}

void vlc::pub_set_result_directory(QString directory)
{
    set_destination_location(directory);
}

void vlc::pub_create_db_tables()
{
    create_destination_database();
}

void vlc::pub_set_clear_db(bool clear)
{
    if (clear)
        clear_db_tables();
}

void vlc::pub_cancel_extraction()
{
    bool_cancel_extraction = true;
    macos_obj->macos_cancel_extraction();
    ios_uid_obj->ios_uid_cancel_extraction();
    winos_obj->winos_cancel_extraction();
    androidos_obj->androidos_cancel_extraction();
    plugin_static_function::set_cancel_extraction(true);
    helper_obj->set_cancel_extraction(true);
}

vlc::scheme vlc::selected_scheme() const
{
    if (os_scheme_internal == "macOS")
        return scheme::macos;
    if (os_scheme_internal == "iOS_UID")
        return scheme::ios_uid;
    if (os_scheme_internal == "winOS")
        return scheme::winos;
    if (os_scheme_internal == "androidOS")
        return scheme::androidos;
    return scheme::unknown;
}

void vlc::pub_find_source_file()
{
    switch (selected_scheme()) {
    case scheme::macos:
        macos_obj->macos_find_artifacts_source();
        return;
    case scheme::ios_uid:
        ios_uid_obj->ios_uid_find_artifacts_source();
        return;
    case scheme::winos:
        winos_obj->winos_find_artifacts_source();
        return;
    case scheme::androidos:
        androidos_obj->androidos_find_artifacts_source();
        return;
    case scheme::unknown:
        break;
    }
    plugin_static_function::app_debug("------FAILED------- supported os scheme not matched, received os scheme =  "
                                          + os_scheme_internal + ", plugin name is " + pub_get_artifact_name(),
                                      "virtual void vlc::pub_find_source_file()");
}

void vlc::pub_set_extended_attributes_list(QList<QString> keys)
{
    macos_obj->macos_set_extended_attributes_list(keys);
}

void vlc::pub_extract_artifacts()
{
    const QString signature = "virtual void vlc::pub_extract_artifacts()";
    plugin_static_function::app_debug("[pub_extract_artifacts] - START", signature);
    emit signal_extracted_records_of_plugin_overall(0);

    macos_obj->macos_set_plugin_helper_obj(helper_obj);
    macos_obj->macos_set_record_count(extracted_records_count);
    macos_obj->macos_set_tab_processed_count(tabs_processed_count);
    ios_uid_obj->ios_uid_set_plugin_helper_obj(helper_obj);
    ios_uid_obj->ios_uid_set_record_count(extracted_records_count);
    ios_uid_obj->ios_uid_set_tab_processed_count(tabs_processed_count);
    winos_obj->winos_set_plugin_helper_obj(helper_obj);
    winos_obj->winos_set_record_count(extracted_records_count);
    winos_obj->winos_set_tab_processed_count(tabs_processed_count);
    androidos_obj->androidos_set_plugin_helper_obj(helper_obj);
    androidos_obj->androidos_set_record_count(extracted_records_count);
    androidos_obj->androidos_set_tab_processed_count(tabs_processed_count);

    const scheme selected = selected_scheme();
    if (selected != scheme::unknown && bool_cancel_extraction)
        return;

    switch (selected) {
    case scheme::macos:
        macos_obj->macos_extract_artifacts();
        break;
    case scheme::ios_uid:
        ios_uid_obj->ios_uid_extract_artifacts();
        break;
    case scheme::winos:
        winos_obj->winos_extract_artifacts();
        break;
    case scheme::androidos:
        androidos_obj->androidos_extract_artifacts();
        break;
    case scheme::unknown:
        plugin_static_function::app_debug(
            "------FAILED------- supported os scheme internal not matched, received os scheme internal =  "
                + os_scheme_internal + ", plugin name is " + pub_get_artifact_name(),
            signature);
        break;
    }

    emit signal_extracted_records_of_plugin_overall(extracted_records_count);
    plugin_static_function::app_debug("[pub_extract_artifacts] - END", signature);
}

void vlc::pub_generate_chat_html_pages()
{
}

void vlc::pub_remove_temporary_asthetics()
{
    plugin_static_function::remove_directory(temporary_directory);
    plugin_static_function::close_debug_file();
}

void vlc::set_destination_location(QString host_directory)
{
    const QString signature = "void vlc::set_destination_location(QString)";
    plugin_static_function::app_debug("[set_destination_location] starts", signature);

    // Without a folder there is nowhere to write; an empty text must not
    // become the file-system root.
    if (host_directory.trimmed().isEmpty()) {
        plugin_static_function::app_debug("[set_destination_location] result directory is empty ---FAILED---",
                                          signature);
        return;
    }
    if (!host_directory.endsWith('/'))
        host_directory.append('/');
    const QString artifact_word = pub_get_artifact_name().replace(' ', '_');
    result_directory = host_directory + "Artifacts_Result/" + artifact_word + "/";
    temporary_directory = result_directory + "tmp/";
    result_database_path = result_directory + artifact_word + ".sqlite";

    QDir().mkpath(result_directory);
    QDir().mkpath(temporary_directory);
    helper_obj->set_adhoc_parent_path(temporary_directory);

    macos_obj->macos_set_destination_location(result_directory, temporary_directory, result_database_path);
    ios_uid_obj->ios_uid_set_destination_location(result_directory, temporary_directory, result_database_path);
    winos_obj->winos_set_destination_location(result_directory, temporary_directory, result_database_path);
    androidos_obj->androidos_set_destination_location(result_directory, temporary_directory, result_database_path);

    plugin_static_function::app_debug("[set_destination_location] ends", signature);
}

void vlc::create_destination_database()
{
    const QString signature = "void vlc::create_destination_database()";
    plugin_static_function::app_debug("[create_destination_database] starts", signature);
    create_db_tables();
    plugin_static_function::app_debug("[create_destination_database] ends", signature);
}

void vlc::create_db_tables()
{
    const QString signature = "void vlc::create_db_tables()";
    plugin_static_function::app_debug("[create_db_tables] STARTS", signature);

    sqlite_connection_scope connection(signature, result_database_path);
    // The write lock is taken before the first table: a database another
    // program holds locked gives one failure here, not one per table.
    if (result_database_path.isEmpty() || !connection.open() || !connection.begin_writing()) {
        plugin_static_function::app_debug(
            "[create_db_tables]Destination Db opening ---------FAILED--------- for table creation", signature);
        plugin_static_function::app_debug(connection.last_error_text(), signature);
        return;
    }

    for (const auto& table : result_database_schema::tables()) {
        const QString statement = result_database_schema::create_statement(table);
        if (!plugin_static_function::execute_db_command_by_dbreference(statement, connection.db(), signature))
            plugin_static_function::app_debug(" table creation -----FAILED---- " + QString::fromLatin1(table.name),
                                              signature);
    }

    connection.db().commit();
    connection.db().close();
    plugin_static_function::app_debug("[create_db_tables] ENDS", signature);
}

void vlc::clear_db_tables()
{
    const QString signature = "void vlc::clear_db_tables()";
    if (!QFileInfo::exists(result_database_path)) {
        plugin_static_function::app_debug("[clear_db_tables]DB not exists and so returning...", signature);
        return;
    }
    if (static_cast<unsigned int>(engine_type) > 2 || tables_to_clear.isEmpty())
        return;

    for (const QString& name : tables_to_clear) {
        // The name sits inside a quoted identifier; a quote in it is doubled
        // so that it can neither end the statement nor widen it.
        QString quoted = name;
        quoted.replace("'", "''");
        plugin_static_function::execute_db_command_by_dbpath("delete from '" + quoted + "'", result_database_path,
                                                             signature);
    }
}
