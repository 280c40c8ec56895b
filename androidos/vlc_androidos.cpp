#include "vlc_androidos.h"

#include "plugin_static_function.h"

vlc_androidos::vlc_androidos(QWidget* parent) : extractor_base(parent)
{
}

vlc_androidos::~vlc_androidos() = default;

void vlc_androidos::androidos_set_source_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info info)
{
    store_source_texts(info);
    user_names = distinct_non_empty(account_names(info, false));
}

void vlc_androidos::find_source_file()
{
    plugin_static_function::app_debug("[find_source_file] starts", "void vlc_androidos::find_source_file()");
    plugin_static_function::app_debug("[find_source_file] ends", "void vlc_androidos::find_source_file()");
}

void vlc_androidos::extract_plugin_artifacts()
{
    const QString signature = "void vlc_androidos::extract_plugin_artifacts()";
    plugin_static_function::app_debug("[extract_plugin_artifacts] starts", signature);
    plugin_static_function::app_debug("[extract_plugin_artifacts] ends", signature);
}
