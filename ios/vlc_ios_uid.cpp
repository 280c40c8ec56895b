#include "vlc_ios_uid.h"

vlc_ios_uid::vlc_ios_uid(QWidget* parent) : extractor_base(parent)
{
}

vlc_ios_uid::~vlc_ios_uid() = default;

void vlc_ios_uid::ios_uid_set_source_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info info)
{
    // The stub keeps the root and the display name only.
    source_root = info.source_path_1;
    os_scheme_display = info.os_scheme_display;
}

void vlc_ios_uid::find_source_file()
{
}

void vlc_ios_uid::extract_plugin_artifacts()
{
}
