#include "extractor_base.h"

#include "entry_names.h"
#include "plugin_static_function.h"
#include "sqlite_connection_scope.h"

extractor_base::extractor_base(QWidget* parent) : QWidget(parent), elapsed_timer(new QElapsedTimer())
{
}

extractor_base::~extractor_base()
{
    delete elapsed_timer;
}

void extractor_base::store_destination(QString result_dir, QString tmp_dir, QString db_path)
{
    destination_result_dir = result_dir;
    destination_tmp_dir = tmp_dir;
    destination_db_path = db_path;
}

void extractor_base::store_source_texts(const struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info& info)
{
    source_root = info.source_path_1;
    source_type = info.source_path_2;
    os_scheme_display = info.os_scheme_display;
}

void extractor_base::run_extraction()
{
    elapsed_timer->start();
    extract_plugin_artifacts();
    emit_records_signal(record_count);
}

bool extractor_base::extraction_allowed() const
{
    return static_cast<unsigned int>(engine_type) <= 2 && !selected_tables.isEmpty();
}

void extractor_base::count_inserted_row()
{
    ++record_count;
    if (!elapsed_timer->isValid()) {
        elapsed_timer->start();
        return;
    }
    if (elapsed_timer->elapsed() > 1000) {
        sqlite_connection_scope::commit_batch();
        emit_records_signal(record_count);
        elapsed_timer->restart();
    }
}

void extractor_base::finish_table()
{
    emit_records_signal(record_count);
    ++tabs_processed_count;
    emit_tabs_signal(tabs_processed_count);
}

void extractor_base::run_selected_tables(const QList<QPair<QString, std::function<void()>>>& tables)
{
    for (const auto& table : tables) {
        if (!is_table_selected(table.first))
            continue;
        table.second();
        finish_table();
    }
}

QStringList extractor_base::distinct_non_empty(const QStringList& names)
{
    QStringList kept;
    for (const QString& name : names) {
        if (!name.isEmpty() && !kept.contains(name))
            kept << name;
    }
    return kept;
}

QStringList extractor_base::account_names(const struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info& info,
                                          bool with_second_names)
{
    QStringList names;
    for (const auto& account : info.system_account_QList) {
        names << account.system_user;
        if (with_second_names)
            names << account.domain_user;
    }
    return names;
}

QString extractor_base::path_below_root(const QString& path) const
{
    return media_library_reader::path_below_root(path, source_root);
}

media_library_context extractor_base::reader_context(const QString& owner, const QString& user)
{
    media_library_context context;
    context.owner = owner;
    context.source_root = source_root;
    context.source_type = source_type;
    context.os_scheme_display = os_scheme_display;
    context.result_db_path = destination_db_path;
    context.system_user = user;
    context.helper = helper_obj;
    context.cancel_requested = &cancel_requested;
    context.count_row = [this] { count_inserted_row(); };
    return context;
}

void extractor_base::open_desktop_media_libraries(const QString& owner)
{
    desktop_media_libraries.clear();
    for (const auto& database : desktop_media_library_files)
        desktop_media_libraries.add(std::make_unique<desktop_media_places>(source_root, database.second),
                                    reader_context(owner, database.first), database.second);
}

void extractor_base::log_undecodable_account_folders(const QString& signature) const
{
    for (const QString& name : entry_names::undecodable(source_root + "Users"))
        plugin_static_function::app_debug("account folder name is not valid UTF-8, it cannot be read: Users/" + name,
                                          signature);
}
