#include "vlc_ios_uid.h"

#include <QDir>
#include <QFileInfo>

#include "ios_app_stores.h"
#include "ios_backup_manifest.h"
#include "ios_places.h"
#include "plist_document.h"
#include "plugin_static_function.h"
#include "source_path_guard.h"

namespace {

const QString k_signature_find = "void vlc_ios_uid::find_source_file()";
const QString k_signature_extract = "void vlc_ios_uid::extract_plugin_artifacts()";
const QString k_app = "org.videolan.vlc-ios";
const QString k_group = "group.org.videolan.vlc-ios";
const QString k_metadata = ".com.apple.mobile_container_manager.metadata.plist";
const QString k_database = "Library/MediaLibrary/medialibrary.db";
const QString k_preferences = "Library/Preferences/org.videolan.vlc-ios.plist";
// The Core Data store of versions up to 3.1: in the app's Library/, later in
// the app group's container.
const QStringList k_app_stores = {"Library/MediaLibrary.sqlite"};
const QStringList k_group_stores = {"MediaLibrary.sqlite", "Library/MediaLibrary.sqlite"};
// A phone has a few hundred apps; more folders than this is no phone.
constexpr int k_max_containers = 100000;

}  // namespace

vlc_ios_uid::vlc_ios_uid(QWidget* parent) : extractor_base(parent) {}

vlc_ios_uid::~vlc_ios_uid() = default;

void vlc_ios_uid::ios_uid_set_source_info(struct_GLOBAL_COMMON_QUARL_AND_ARTIFACT_source_info info)
{
    store_source_texts(info);
}

void vlc_ios_uid::find_source_file()
{
    plugin_static_function::app_debug("[find_source_file] starts", k_signature_find);
    apps.clear();
    groups.clear();
    found_containers.clear();
    // A backup's manifest is read when the run starts (it needs a working copy).
    backup_layout = ios_backup_manifest::is_backup(source_root);
    if (!backup_layout) {
        // The source may be the app's container itself.
        if (is_container_of(source_root, k_app))
            apps.push_back(ios_app_files::container(source_root, source_root));
        for (const char* base : {"private/var/mobile/Containers/", "var/mobile/Containers/"}) {
            find_containers(source_root + base + "Data/Application/", "data", k_app, &apps);
            find_containers(source_root + base + "Shared/AppGroup/", "app group", k_group, &groups);
        }
    }
    plugin_static_function::app_debug("[find_source_file] ends", k_signature_find);
}

void vlc_ios_uid::find_containers(const QString& containers, const QString& kind, const QString& identifier,
                                  std::vector<ios_app_files>* found)
{
    if (!source_path_guard::is_inside_root(containers, source_root) || !QFileInfo(containers).isDir())
        return;
    const QStringList names = QDir(containers).entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name);
    for (int i = 0; i < names.size() && i < k_max_containers; ++i) {
        const QString folder = containers + names.at(i) + "/";
        // var/ is often a link to private/var/: the same container twice is read once.
        const QString canonical = QFileInfo(folder).canonicalFilePath();
        if (found_containers.contains(canonical))
            continue;
        if (is_container_of(folder, identifier)) {
            found_containers << canonical;
            plugin_static_function::app_debug("the app's " + kind + " container: " + path_below_root(folder),
                                              k_signature_find);
            found->push_back(ios_app_files::container(source_root, folder));
        }
    }
}

bool vlc_ios_uid::is_container_of(const QString& folder, const QString& identifier)
{
    const QString metadata = folder + k_metadata;
    if (!source_path_guard::exists_inside(metadata, source_root, k_signature_find))
        return false;
    plist_owner plist = plist_document::load_file(metadata);
    return plist_document::string_of(
               plist_document::dict_item(static_cast<plist_t>(plist.get()), "MCMMetadataIdentifier"))
           == identifier;
}

void vlc_ios_uid::read_backup_manifest()
{
    const QString app_domain = "AppDomain-" + k_app;
    const QString group_domain = "AppDomainGroup-" + k_group;
    auto manifest = std::make_shared<ios_backup_manifest>(
        ios_backup_manifest::read(source_root, {app_domain, group_domain}, helper_obj, k_signature_extract));
    if (manifest->status() != ios_backup_manifest::state::read)
        return;
    apps.push_back(ios_app_files::backup_domain(source_root, manifest, app_domain));
    groups.push_back(ios_app_files::backup_domain(source_root, manifest, group_domain));
}

QStringList vlc_ios_uid::existing(const std::vector<ios_app_files>& folders, const QStringList& names)
{
    QStringList found;
    for (const ios_app_files& folder : folders) {
        for (const QString& name : names) {
            const QString path = folder.path_of(name, k_signature_extract);
            if (source_path_guard::exists_inside(path, source_root, k_signature_extract) && !found.contains(path))
                found << path;
        }
    }
    return found;
}

void vlc_ios_uid::extract_plugin_artifacts()
{
    plugin_static_function::app_debug("[extract_plugin_artifacts] starts", k_signature_extract);
    source_path_guard::reset_log();
    if (extraction_allowed()) {
        if (backup_layout) {
            apps.clear();
            groups.clear();
            read_backup_manifest();
        }
        // One reader per app folder holding a database.
        for (const ios_app_files& app : apps) {
            for (const QString& database : existing({app}, {k_database}))
                libraries.add(std::make_unique<ios_places>(source_root, app, k_signature_extract),
                              reader_context("vlc_ios_uid"), database);
        }
        const auto every = [this](void (media_library_reader::*table)()) {
            return [this, table] { libraries.run(table, cancel_requested); };
        };
        run_selected_tables({
            {"media_library",
             [this] {
                 libraries.run(&media_library_reader::extract_media_library, cancel_requested);
                 extract_core_data_stores();
             }},
            {"album_art", every(&media_library_reader::extract_album_art)},
            {"album", every(&media_library_reader::extract_album)},
            {"playlists", every(&media_library_reader::extract_playlist)},
            {"recents", [this] { extract_recents(); }},
        });
        libraries.clear();
    }
    plugin_static_function::app_debug("[extract_plugin_artifacts] ends", k_signature_extract);
}

void vlc_ios_uid::extract_core_data_stores()
{
    // The store names the app's files by their path in its data container.
    const ios_app_files app = apps.empty() ? ios_app_files() : apps.front();
    const ios_places store_places(source_root, app, k_signature_extract);
    for (const QString& store : existing(apps, k_app_stores) + existing(groups, k_group_stores)) {
        if (cancel_requested)
            return;
        ios_app_stores::extract_core_data_library(reader_context("vlc_ios_uid"), store_places, store);
    }
}

void vlc_ios_uid::extract_recents()
{
    for (const QString& preferences : existing(apps, {k_preferences})) {
        if (cancel_requested)
            return;
        ios_app_stores::extract_recent_addresses(reader_context("vlc_ios_uid"), preferences);
    }
}
