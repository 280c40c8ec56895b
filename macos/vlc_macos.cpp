#include "vlc_macos.h"

#include "plugin_static_function.h"

vlc_macos::vlc_macos(QWidget* parent) : extractor_base(parent)
{
}

vlc_macos::~vlc_macos() = default;

void vlc_macos::macos_set_source_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info info)
{
    store_source_texts(info);
    user_names = distinct_non_empty(account_names(info, false));
}

void vlc_macos::macos_set_extended_attributes_list(QList<QString> keys)
{
    extended_attribute_keys = keys;
}

void vlc_macos::find_source_file()
{
    plugin_static_function::app_debug("[find_source_file] starts", "void vlc_macos::find_source_file()");
    plugin_static_function::app_debug("[find_source_file] ends", "void vlc_macos::find_source_file()");
}

void vlc_macos::extract_plugin_artifacts()
{
    const QString signature = "void vlc_macos::extract_plugin_artifacts()";
    plugin_static_function::app_debug("[extract_plugin_artifacts] starts", signature);
    plugin_static_function::app_debug("[extract_plugin_artifacts] ends", signature);
}
