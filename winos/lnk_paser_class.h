#pragma once

// Reads one Windows shell link (.lnk) through liblnk into a record of text
// fields. Used for the links held in jump lists.

#include <QList>
#include <QString>

#include <functional>

#include "libyal_headers.h"

struct struct_lnk_info
{
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
    QString relative_path;
    QString working_directory;
    QString command_line_arguments;
    QString environment_variables_location;
    QString link_target;
    QString icon_location;
};

class lnk_paser_class
{
public:
    lnk_paser_class() = default;
    virtual ~lnk_paser_class() = default;

    // 0 when the file opened as a shell link (one record appended), else -1.
    virtual int start_parsing_lnk(QString path);
    // The same for a link already in memory (a jump list's stream), read from
    // there: no file is made for it.
    int start_parsing_lnk_data(const QByteArray& data);
    virtual void get_lnk_info(liblnk_file_t* file, liblnk_error_t** error);
    virtual QString get_link_target(liblnk_file_t* file, liblnk_error_t** error);
    virtual QString get_env_variable(liblnk_file_t* file, liblnk_error_t** error);
    virtual QString get_commd_line_arguments(liblnk_file_t* file, liblnk_error_t** error);
    virtual QString get_working_directory(liblnk_file_t* file, liblnk_error_t** error);
    virtual QString get_relative_path(liblnk_file_t* file, liblnk_error_t** error);
    virtual QString get_network_path(liblnk_file_t* file, liblnk_error_t** error);
    virtual qint64 give_epoch_from_string(QString filetime_text);
    virtual QString get_volume_label(liblnk_file_t* file, liblnk_error_t** error);
    virtual QString get_serial_str(liblnk_file_t* file, liblnk_error_t** error);
    virtual QString extract_drive_type_fun(liblnk_file_t* file, liblnk_error_t** error);
    virtual quint32 get_size(liblnk_file_t* file, liblnk_error_t** error);
    virtual qint64 access_time(liblnk_file_t* file, liblnk_error_t** error);
    virtual qint64 modification(liblnk_file_t* file, liblnk_error_t** error);
    virtual qint64 creation_time(liblnk_file_t* file, liblnk_error_t** error);
    virtual QString get_local_path(liblnk_file_t* file, liblnk_error_t** error);
    virtual QString get_description_str(liblnk_file_t* file, liblnk_error_t** error);
    virtual QString get_machine_id(liblnk_file_t* file, liblnk_error_t** error);
    virtual QString get_icon_location_path(liblnk_file_t* file, liblnk_error_t** error);

    QList<struct_lnk_info> lnk_info_list;

protected:
    struct_lnk_info* current_record = nullptr;

private:
    // Opens the link with open (from a path or from memory) and reads it.
    int read_link(const std::function<int(liblnk_file_t*, liblnk_error_t**)>& open);
};
