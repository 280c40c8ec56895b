#pragma once

// State and behaviour shared by the four per-system extractors. Each
// extractor exposes the contract under its own prefix (macos_, winos_,
// ios_uid_, androidos_) and its own pair of signals; what the contract does is
// written once, here.

#include <QElapsedTimer>
#include <QPair>
#include <QList>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <functional>

#include "host_context_records.h"
#include "media_library_set.h"

class plugin_helper_functions;

class extractor_base : public QWidget
{
    Q_OBJECT
public:
    explicit extractor_base(QWidget* parent = nullptr);
    ~extractor_base() override;

protected:
    // The driver of the extractor: discovery results in, table rows out.
    virtual void find_source_file() {}
    virtual void extract_plugin_artifacts() {}
    virtual void emit_records_signal(qint64 count) = 0;
    virtual void emit_tabs_signal(int count) = 0;

    // Shared parts of the contract operations.
    void store_destination(QString result_dir, QString tmp_dir, QString db_path);
    void store_source_texts(const struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info& info);
    void store_plugin_name(const QString& name) { plugin_name = name.trimmed(); }
    void run_extraction();

    // Extraction runs only for engine editions 0 to 2, and only for a non-empty selection.
    bool extraction_allowed() const;
    bool is_table_selected(const QString& table) const { return selected_tables.contains(table); }

    // After each inserted row: count it and report at most about once a second.
    void count_inserted_row();
    // After a table: report the count, then one more tab done.
    void finish_table();
    // Runs each selected table of the list, in the list's order, and counts it.
    void run_selected_tables(const QList<QPair<QString, std::function<void()>>>& tables);

    // Account names in order, without duplicates (first kept) or empties.
    static QStringList distinct_non_empty(const QStringList& names);
    // The accounts' names (and their second names when asked) in record order.
    static QStringList account_names(const struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info& info,
                                     bool with_second_names);
    // A path on the source as rows show it: the root cut off, with a leading
    // "/"; an empty path stays empty.
    QString path_below_root(const QString& path) const;
    // What a media-library reader of this extractor works with; owner is the
    // class its log lines name, user the account of the database, if any.
    media_library_context reader_context(const QString& owner, const QString& user = QString());
    // The desktop player 4's media-library databases that discovery found,
    // each with a reader for the run (owner as for reader_context).
    void open_desktop_media_libraries(const QString& owner);
    // One table of every one of them.
    void run_desktop_media_libraries(void (media_library_reader::*table)())
    {
        desktop_media_libraries.run(table, cancel_requested);
    }
    // Discovery of the account folders: one debug line for each folder under
    // Users/ whose name does not decode, since no path can reach it.
    void log_undecodable_account_folders(const QString& signature) const;

    qint64 record_count = 0;
    int tabs_processed_count = 0;
    QElapsedTimer* elapsed_timer = nullptr;
    plugin_helper_functions* helper_obj = nullptr;
    QString plugin_name;
    QString destination_result_dir;
    QString destination_tmp_dir;
    QString destination_db_path;
    QList<QString> selected_tables;
    QString source_root;
    QString source_type;  // second source text
    QString os_scheme_display;
    int engine_type = 0;
    bool cancel_requested = false;
    int source_count = 0;
    QStringList user_names;
    // Account and path of each desktop media-library database found.
    QList<QPair<QString, QString>> desktop_media_library_files;
    media_library_set desktop_media_libraries;
};
