// The debug log: one line per event, to the terminal (Qt debug stream, never
// stdout), to a file, or both; file lines may be enciphered one by one.

#include <QDebug>

#include <ctime>

#include "encryptor_string.h"
#include "plugin_static_function.h"

namespace {

QString qualified_name_of(const QString& function)
{
    QString name = function.trimmed();
    if (name.isEmpty())
        return "FUNCTION INFO IS EMPTY ---FAILED--- debug!!!";

    const int paren = name.indexOf('(');
    if (paren >= 0)
        name = name.left(paren);
    name = name.trimmed();
    const int blank = name.lastIndexOf(' ');
    if (blank >= 0)
        name = name.mid(blank + 1);
    return name.trimmed();
}

QString edition_prefix(int engine)
{
    switch (engine) {
    case 0:
        return "[QUARL_DESK]";
    case 1:
        return "[QUARL_SWEEP]";
    case 2:
        return "[QUARL_PROBE]";
    default:
        return "[ -----FAILED----- to find Engine Type ][" + QString::number(engine) + "]";
    }
}

// The stamp changes once a second, while a busy reader logs thousands of
// lines in that time; turning the clock into local time costs more than the
// rest of a line, so it is done once a second.
QString current_stamp()
{
    static std::time_t stamped_second = -1;
    static QString stamp;
    const std::time_t now = std::time(nullptr);
    if (now != stamped_second) {
        stamped_second = now;
        stamp = QDateTime::fromSecsSinceEpoch(now).toString("yyyy-MMM-dd'T'hh-mm-ss");
    }
    return stamp;
}

}  // namespace

void plugin_static_function::app_debug(QString message, QString function)
{
    if (!debug_mode_status_bool)
        return;

    const QString line = "[" + current_stamp() + "]" + edition_prefix(type_engine_int) + "[Artifacts Extraction]["
                         + qualified_name_of(function) + "]:-- " + message;

    if (debug_print_on_terminal_bool)
        qDebug().noquote() << line;

    if (debug_print_in_file_bool && debug_file_regular_QFile.isOpen()) {
        if (debug_encryption_status_bool) {
            const QString record =
                encrypt_string(line, "static void plugin_static_function::app_debug(QString, QString)");
            debug_file_regular_QFile.write(record.toLocal8Bit() + "<[{()}]>");
        } else {
            debug_file_regular_QFile.write(line.toLocal8Bit() + "\n");
        }
        debug_file_regular_QFile.flush();
    }
}

void plugin_static_function::set_general_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info info)
{
    debug_file_path_QString = info.debug_file_path;
    debug_mode_status_bool = info.bool_debug_mode;
    debug_print_on_terminal_bool = info.bool_debug_print_on_terminal;
    debug_print_in_file_bool = info.bool_debug_print_in_file;
    debug_encryption_status_bool = info.bool_debug_encryption;
    open_debug_file();
}

void plugin_static_function::open_debug_file()
{
    if (!debug_mode_status_bool || !debug_print_in_file_bool)
        return;
    if (debug_file_path_QString.trimmed().isEmpty())
        return;

    // A new path replaces the file of an earlier run.
    if (debug_file_regular_QFile.isOpen()) {
        if (debug_file_regular_QFile.fileName() == debug_file_path_QString)
            return;
        debug_file_regular_QFile.close();
    }
    debug_file_regular_QFile.setFileName(debug_file_path_QString);
    debug_file_regular_QFile.open(QIODevice::Append);
}

void plugin_static_function::close_debug_file()
{
    if (!debug_file_regular_QFile.isOpen())
        return;
    debug_file_regular_QFile.flush();
    debug_file_regular_QFile.close();
}

QString plugin_static_function::encrypt_string(QString text, QString)
{
    if (text.isEmpty())
        return QString();
    encryptor_string cipher;
    return cipher.encryptToString(text);
}
