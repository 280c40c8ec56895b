#include "vlc_androidos.h"

#include <QDir>
#include <QFileInfo>

#include "android_source_run.h"
#include "plugin_static_function.h"
#include "source_path_guard.h"

namespace {

const QString k_database_relative = "apps/org.videolan.vlc/r/app_db/vlc_media.db";

}  // namespace

const QString vlc_androidos::k_select_file =
    "SELECT playlist_id,mrl,last_modification_date,size,is_removable,is_external from File where media_id = ?";

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
    // The backup layout keeps an app's private data in r/ below apps/<package>.
    const QString candidate = source_root + k_database_relative;
    // A database that is a link out of the source is not the evidence's.
    if (source_path_guard::exists_inside(candidate, source_root, signature)) {
        media_library_source = candidate;
        album_source = candidate;
        playlist_source = candidate;
    }

    plugin_static_function::app_debug("[find_source_file] ends", signature);
}

void vlc_androidos::extract_plugin_artifacts()
{
    const QString signature = "void vlc_androidos::extract_plugin_artifacts()";
    plugin_static_function::app_debug("[extract_plugin_artifacts] starts", signature);
    source_path_guard::reset_log();

    if (extraction_allowed()) {
        clear_lookup_caches();
        const QList<QPair<QString, void (vlc_androidos::*)()>> tables = {
            {"media_library", &vlc_androidos::extract_media_library},
            {"album_art", &vlc_androidos::extract_album_art},
            {"album", &vlc_androidos::extract_album},
            {"playlists", &vlc_androidos::extract_playlist},
        };
        for (const auto& table : tables) {
            if (!is_table_selected(table.first))
                continue;
            (this->*table.second)();
            finish_table();
        }
    }

    plugin_static_function::app_debug("[extract_plugin_artifacts] ends", signature);
}

void vlc_androidos::run_table(const QString& signature, const QString& source_path, const QString& select_statement,
                              bool (vlc_androidos::*insert_rows)(android_source_run&))
{
    android_source_run run(signature, destination_db_path);
    if (!run.start(source_path, source_root, helper_obj, select_statement))
        return;
    // A cancelled or broken-off table closes without its end line.
    if ((this->*insert_rows)(run))
        run.finish();
}

void vlc_androidos::clear_lookup_caches()
{
    album_cache.clear();
    playlist_names_cache.clear();
    artist_name_cache.clear();
    thumbnail_path_cache.clear();
}

QString vlc_androidos::convert_sec_to_hh_mm_ss(QString milliseconds)
{
    return plugin_static_function::duration_text_from_milliseconds(milliseconds);
}

QString vlc_androidos::prepend_zero_for_time(QString number, int width)
{
    return plugin_static_function::zero_padded_number(number, width);
}

QString vlc_androidos::media_path_from_mrl(QString mrl) const
{
    mrl.replace("%20", " ");
    // Primary storage is .../emulated/0/...; the backup keeps it below shared/0/.
    const int zero = mrl.indexOf('0');
    if (zero > 0)
        mrl = mrl.mid(zero);
    return source_root + "shared/" + mrl;
}

QString vlc_androidos::source_file_text(const QString& source_path) const
{
    const QStringList parts =
        plugin_static_function::get_final_artifact_source_file(path_below_root(source_path), source_root, source_type);
    return parts.value(0);
}

