#include "vlc_winos.h"

#include "plugin_static_function.h"

vlc_winos::vlc_winos(QWidget* parent) : extractor_base(parent)
{
}

vlc_winos::~vlc_winos() = default;

void vlc_winos::winos_set_source_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info info)
{
    // Both names of every account are candidate home folders. The list is
    // not cleared first: a second call adds to it.
    store_source_texts(info);
    user_names = distinct_non_empty(user_names + account_names(info, true));
}

void vlc_winos::find_source_file()
{
    plugin_static_function::app_debug("[find_source_file]---STARTS---", "void vlc_winos::find_source_file()");
    plugin_static_function::app_debug("[find_source_file]---ENDS---", "void vlc_winos::find_source_file()");
}

void vlc_winos::extract_plugin_artifacts()
{
    const QString signature = "void vlc_winos::extract_plugin_artifacts()";
    plugin_static_function::app_debug("[extract_plugins_artifacts]---STARTS---", signature);
    plugin_static_function::app_debug("[extract_plugins_artifacts]---ENDS---", signature);
}
