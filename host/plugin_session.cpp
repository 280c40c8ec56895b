#include "plugin_session.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace {

// The plug-in's debug lines reach the host only through Qt's message stream
// (the terminal copy of its debug log); a run listens to it for these.
plugin_session* g_listening = nullptr;
QtMessageHandler g_previous_handler = nullptr;

// How the plug-in's readers word a stop at one of their limits.
const char* const k_cut_off_texts[] = {"larger than the read limit", "beyond the limit"};

}  // namespace

plugin_session::plugin_session(QObject* parent) : QObject(parent)
{
}

plugin_session::~plugin_session()
{
    // The library stays loaded: Qt keeps meta-objects of the plug-in alive.
    delete m_controller;
}

QString plugin_session::default_plugin_path()
{
    const QByteArray from_env = qgetenv("VLC_ARTIFACTS_PLUGIN");
    if (!from_env.isEmpty())
        return QString::fromLocal8Bit(from_env);
#ifdef Q_OS_MACOS
    const QString file = "libvlc_artifacts_plugin.dylib";
#else
    const QString file = "libvlc_artifacts_plugin.so";
#endif
    return QDir(QCoreApplication::applicationDirPath()).filePath(file);
}

bool plugin_session::load(const QString& plugin_path, QString* error)
{
    m_library.setFileName(plugin_path);
    if (!m_library.load()) {
        *error = "cannot load the plug-in library " + plugin_path + ": " + m_library.errorString();
        return false;
    }
    auto create = reinterpret_cast<create_object_function>(m_library.resolve("create_object"));
    if (!create) {
        *error = "the library " + plugin_path + " does not export create_object";
        return false;
    }
    m_controller = static_cast<vlc_plugin_interface*>(create());
    if (!m_controller) {
        *error = "create_object returned no controller";
        return false;
    }
    connect(m_controller, vlc_plugin_interface::records_signal, this, SLOT(slot_records(qint64)));
    connect(m_controller, vlc_plugin_interface::tabs_signal, this, SLOT(slot_tabs(int)));
    return true;
}

QString plugin_session::result_database_path(const QString& out_dir)
{
    QString dir = out_dir;
    if (!dir.endsWith('/'))
        dir += '/';
    return dir + "Artifacts_Result/VLC/VLC.sqlite";
}

QString plugin_session::display_name_of(const QString& os_scheme)
{
    if (os_scheme == "macOS")
        return "macOS";
    if (os_scheme == "winOS")
        return "Windows";
    if (os_scheme == "androidOS")
        return "Android";
    if (os_scheme == "iOS_UID")
        return "iOS";
    return os_scheme;
}

void plugin_session::drive(const session_options& options)
{
    vlc_plugin_interface* c = m_controller;

    struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_general_info general;
    // The debug log is always on, its terminal copy caught here: the cut-offs
    // it names are told to the examiner at the end of every run.
    general.bool_debug_mode = true;
    general.bool_debug_print_on_terminal = true;
    m_echo_debug = options.debug_terminal;
    general.bool_debug_print_in_file = !options.debug_log.isEmpty();
    general.bool_debug_encryption = options.debug_encrypt;
    general.debug_file_path = options.debug_log;

    struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info source;
    source.source_path_1 = options.source_root.endsWith('/') ? options.source_root : options.source_root + "/";
    source.source_path_2 = options.source_type;
    source.os_scheme_display = options.os_display.isEmpty() ? display_name_of(options.os_scheme) : options.os_display;
    source.os_scheme_internal = options.os_scheme;
    for (const QString& user : options.users)
        source.system_account_QList.append({user, QString()});

    c->pub_set_engine_type(options.engine);
    c->pub_set_essentials();
    // The essentials reset the shared engine code; give it again so that the
    // debug log names the edition.
    c->pub_set_engine_type(options.engine);
    c->pub_set_general_info(general);
    c->pub_set_desktop_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_desktop_info());
    c->pub_set_source_count(options.source_number);
    c->pub_set_source_info(source);
    if (options.os_scheme == "iOS_UID")
        c->pub_set_ios_uid_backup_pointer(nullptr);
    c->pub_set_essential_for_quarl_desk_extraction(options.tables, QList<QString>());
    c->pub_set_result_directory(options.out_dir);
    c->pub_create_db_tables();
    c->pub_set_clear_db(options.clear);
    if (options.os_scheme == "macOS")
        c->pub_set_extended_attributes_list(options.metadata_keys);
    deliver_cancel_if_requested();
    c->pub_find_source_file();
    deliver_cancel_if_requested();
    c->pub_extract_artifacts();
    c->pub_remove_temporary_asthetics();
}

void plugin_session::run(const session_options& options)
{
    g_listening = this;
    g_previous_handler = qInstallMessageHandler(&plugin_session::take_message);
    drive(options);
    qInstallMessageHandler(g_previous_handler);
    g_listening = nullptr;
}

void plugin_session::take_message(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (g_listening && type == QtDebugMsg && message.contains("][Artifacts Extraction][")) {
        g_listening->take_debug_message(message);
        if (!g_listening->m_echo_debug)
            return;
    }
    if (g_previous_handler)
        g_previous_handler(type, context, message);
}

void plugin_session::take_debug_message(const QString& line)
{
    const qsizetype at = line.indexOf("]:-- ");
    const QString message = at < 0 ? line : line.mid(at + 5);
    for (const char* text : k_cut_off_texts) {
        if (!message.contains(QLatin1String(text)) || m_cut_offs.contains(message))
            continue;
        if (m_cut_offs.size() < k_max_cut_offs)
            m_cut_offs << message;
        else
            ++m_cut_offs_not_kept;
        return;
    }
}

void plugin_session::deliver_cancel_if_requested()
{
    if (m_cancel_requested && !m_cancel_delivered) {
        m_cancel_delivered = true;
        m_controller->pub_cancel_extraction();
    }
}

void plugin_session::slot_records(qint64 count)
{
    m_records = count;
    if (on_progress)
        on_progress(m_records, m_tabs);
    deliver_cancel_if_requested();
}

void plugin_session::slot_tabs(int count)
{
    m_tabs = count;
    if (on_progress)
        on_progress(m_records, m_tabs);
    deliver_cancel_if_requested();
}
