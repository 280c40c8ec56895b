#pragma once

// Loads the plug-in library by path and drives one extraction the way the
// forensic suite does: the context calls in their fixed order, discovery,
// extraction, clean-up, with progress from the controller's two signals.

#include <QLibrary>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>

#include "vlc_plugin_interface.h"

struct session_options
{
    QString source_root;     // evidence root
    QString os_scheme;       // "macOS", "winOS", "androidOS" or "iOS_UID"
    QString os_display;      // shown in every row; derived from the scheme when empty
    QString source_type;     // second source text
    QString out_dir;         // host directory of the results
    QStringList users;
    QStringList tables;
    QStringList metadata_keys;
    int engine = 0;
    int source_number = 1;
    QString debug_log;
    bool debug_terminal = false;
    bool debug_encrypt = false;
    bool clear = false;
};

class plugin_session : public QObject
{
    Q_OBJECT
public:
    explicit plugin_session(QObject* parent = nullptr);
    ~plugin_session() override;

    bool load(const QString& plugin_path, QString* error);
    vlc_plugin_interface* controller() const { return m_controller; }

    void run(const session_options& options);

    // Ctrl-C: handed to the controller at its next progress report.
    void request_cancel() { m_cancel_requested = true; }
    bool cancelled() const { return m_cancel_delivered; }

    qint64 records() const { return m_records; }
    int tabs() const { return m_tabs; }

    // The plug-in's debug lines that say a reader stopped at one of its limits
    // (a file over a size limit, a playlist over its entry limit, a line over
    // its part limit), each once, in the order met; at most k_max_cut_offs,
    // with the number of the others.
    const QStringList& cut_offs() const { return m_cut_offs; }
    int cut_offs_not_kept() const { return m_cut_offs_not_kept; }
    static constexpr int k_max_cut_offs = 50;

    std::function<void(qint64 records, int tabs)> on_progress;

    static QString result_database_path(const QString& out_dir);
    static QString display_name_of(const QString& os_scheme);
    static QString default_plugin_path();

private slots:
    void slot_records(qint64 count);
    void slot_tabs(int count);

private:
    void drive(const session_options& options);
    void deliver_cancel_if_requested();
    static void take_message(QtMsgType type, const QMessageLogContext& context, const QString& message);
    void take_debug_message(const QString& line);

    QLibrary m_library;
    vlc_plugin_interface* m_controller = nullptr;
    qint64 m_records = 0;
    int m_tabs = 0;
    bool m_cancel_requested = false;
    bool m_cancel_delivered = false;
    bool m_echo_debug = false;  // the examiner asked for the debug log on the terminal
    QStringList m_cut_offs;
    int m_cut_offs_not_kept = 0;
};
