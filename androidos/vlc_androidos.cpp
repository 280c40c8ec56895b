#include "vlc_androidos.h"

#include "plugin_static_function.h"
#include "source_path_guard.h"

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
    const QString signature = "void vlc_androidos::find_source_file()";
    plugin_static_function::app_debug("[find_source_file] starts", signature);

    media_library_source.clear();
    album_source.clear();
    playlist_source.clear();
    const QString candidate = places.find_layout(source_root);
    // A database that is a link out of the source is not the evidence's.
    if (source_path_guard::exists_inside(candidate, source_root, signature)) {
        media_library_source = candidate;
        album_source = candidate;
        playlist_source = candidate;
    }
    places.set_database(media_library_source);

    plugin_static_function::app_debug("[find_source_file] ends", signature);
}

void vlc_androidos::extract_plugin_artifacts()
{
    const QString signature = "void vlc_androidos::extract_plugin_artifacts()";
    plugin_static_function::app_debug("[extract_plugin_artifacts] starts", signature);
    source_path_guard::reset_log();

    if (extraction_allowed()) {
        // One reader for the run: one working copy of the database, its model
        // read once, its lookups remembered across the tables.
        reader = std::make_unique<media_library_reader>(reader_context("vlc_androidos"), places, media_library_source);
        run_selected_tables({
            {"media_library", [this] { extract_media_library(); }},
            {"album_art", [this] { extract_album_art(); }},
            {"album", [this] { extract_album(); }},
            {"playlists", [this] { extract_playlist(); }},
        });
        reader.reset();
    }

    plugin_static_function::app_debug("[extract_plugin_artifacts] ends", signature);
}

void vlc_androidos::extract_media_library()
{
    reader->extract_media_library();
}

void vlc_androidos::extract_album_art()
{
    reader->extract_album_art();
}

void vlc_androidos::extract_album()
{
    reader->extract_album();
}

void vlc_androidos::extract_playlist()
{
    reader->extract_playlist();
}

QString vlc_androidos::convert_sec_to_hh_mm_ss(QString milliseconds)
{
    return plugin_static_function::duration_text_from_milliseconds(milliseconds);
}

QString vlc_androidos::prepend_zero_for_time(QString number, int width)
{
    return plugin_static_function::zero_padded_number(number, width);
}
