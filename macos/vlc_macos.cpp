#include "vlc_macos.h"

#include <QFileInfo>
#include <QXmlStreamWriter>

#include "file_times.h"
#include "source_path_guard.h"

namespace {

const QString sig_find_source_file = "void vlc_macos::find_source_file()";
const QString sig_extract_plugin_artifacts = "void vlc_macos::extract_plugin_artifacts()";
const QString sig_get_extended_attributes = "QStringList vlc_macos::get_extended_attributes(QList<QString>)";
const QString k_list_separator = ";++::++;";

// The attributes that have columns of their own; the examiner's other keys
// go into the two extended-attribute columns.
const QList<QString> k_fixed_attributes = {
    "kMDItemAltitude",         "kMDItemContentCreationDate", "kMDItemContentModificationDate",
    "kMDItemContentType",      "kMDItemDateAdded",           "kMDItemFSContentChangeDate",
    "kMDItemFSCreationDate",   "kMDItemFSName",              "kMDItemFSNodeCount",
    "kMDItemKind",             "kMDItemLastUsedDate",        "kMDItemLatitude",
    "kMDItemLongitude",        "kMDItemUsedDates",           "kMDItemWhereFroms",
    "org_bittorrent_torrent_filenames"};

const QString k_library_file = "/Library/Application Support/org.videolan.vlc/ml.xspf";
const QString k_library_database = "/Library/Application Support/org.videolan.vlc/ml/ml.db";
const QString k_configuration_file = "/Library/Preferences/org.videolan.vlc/vlcrc";
const QString k_recents_plist = "/Library/Preferences/org.videolan.vlc.LSSharedFileList.plist";
const QString k_recents_sfl = "/Library/Application Support/com.apple.sharedfilelist/"
                              "com.apple.LSSharedFileList.ApplicationRecentDocuments/org.videolan.vlc.sfl";
// The lists of later systems, newest generation first: an upgrade leaves the
// older ones behind.
const QStringList k_recents_sfl_generations = {"4", "3", "2"};
const QString k_preference_file = "/Library/Preferences/org.videolan.vlc.plist";

}  // namespace

vlc_macos::vlc_macos(QWidget* parent) : extractor_base(parent), metadata_reader(file_metadata_reader::create())
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
    filter_extended_attribute_list();
}

void vlc_macos::filter_extended_attribute_list()
{
    extended_attribute_keys =
        plugin_static_function::get_unmatched_varible_list_of_parentlist(extended_attribute_keys, k_fixed_attributes);
}

// ---- discovery and driver ----------------------------------------------------

void vlc_macos::add_if_inside(QList<QString>& list, const QString& path)
{
    // A file of the player that is a link out of the source is not read; the
    // guard answers before anything is asked about the file itself.
    if (source_path_guard::exists_inside(path, source_root, sig_find_source_file))
        list << path;
}

void vlc_macos::find_source_file()
{
    plugin_static_function::app_debug("[find_source_file] starts", sig_find_source_file);
    log_undecodable_account_folders(sig_find_source_file);
    const QString users_root = source_root + "Users/";
    media_library_files.clear();
    configuration_files.clear();
    recent_document_files.clear();
    preference_files.clear();
    desktop_media_library_files.clear();
    for (const QString& user : user_names) {
        const QString home = users_root + user;
        add_if_inside(media_library_files, home + k_library_file);
        // The player 4 keeps a media-library database beside the playlist.
        if (source_path_guard::exists_inside(home + k_library_database, source_root, sig_find_source_file))
            desktop_media_library_files.append({user, home + k_library_database});
        add_if_inside(configuration_files, home + k_configuration_file);
        for (const QString& generation : k_recents_sfl_generations)
            add_if_inside(recent_document_files, home + k_recents_sfl + generation);
        // The older list in the preferences folder wins over the archive of 10.11 and 10.12.
        const int before = recent_document_files.size();
        add_if_inside(recent_document_files, home + k_recents_plist);
        if (recent_document_files.size() == before)
            add_if_inside(recent_document_files, home + k_recents_sfl);
        add_if_inside(preference_files, home + k_preference_file);
    }
    plugin_static_function::app_debug("[find_source_file] ends", sig_find_source_file);
}

void vlc_macos::extract_plugin_artifacts()
{
    plugin_static_function::app_debug("[extract_plugin_artifacts] starts", sig_extract_plugin_artifacts);
    source_path_guard::reset_log();
    folder_sizes.clear();
    if (extraction_allowed()) {
        open_desktop_media_libraries("vlc_macos");
        if (is_table_selected("media_library")) {
            extract_media_library();
            run_desktop_media_libraries(&media_library_reader::extract_media_library);
            finish_table();
        }
        if (is_table_selected("podcasts")) {
            extract_podcasts();
            finish_table();
        }
        // A cancel met before one of their files ends the run at once: the
        // table is not counted and the end is not logged.
        if (is_table_selected("recents")) {
            if (!extract_recent_documents())
                return;
            finish_table();
        }
        if (is_table_selected("recent_played")) {
            if (!extract_recently_played())
                return;
            finish_table();
        }
        // The tables only the player 4's database fills.
        run_selected_tables({
            {"album_art", [this] { run_desktop_media_libraries(&media_library_reader::extract_album_art); }},
            {"album", [this] { run_desktop_media_libraries(&media_library_reader::extract_album); }},
            {"playlists", [this] { run_desktop_media_libraries(&media_library_reader::extract_playlist); }},
        });
        desktop_media_libraries.clear();
    }
    plugin_static_function::app_debug("[extract_plugin_artifacts] ends", sig_extract_plugin_artifacts);
}

bool vlc_macos::extract_recent_documents()
{
    for (const QString& file : recent_document_files) {
        if (cancel_requested)
            return false;
        const QString user = plugin_static_function::extract_user_name_from_sourcefile(file, source_root);
        const QString name = QFileInfo(file).fileName();
        if (name == "org.videolan.vlc.sfl")
            xcode_extract_recents_items_11_12(file, destination_db_path, user, source_root);
        else if (name.startsWith("org.videolan.vlc.sfl"))
            xcode_extract_recents_items_10_13(file, destination_db_path, user);
        else
            xcode_extract_recents_items(file, destination_db_path, user);
        emit_records_signal(record_count);
    }
    return true;
}

bool vlc_macos::extract_recently_played()
{
    for (const QString& file : preference_files) {
        if (cancel_requested)
            return false;
        const QString user = plugin_static_function::extract_user_name_from_sourcefile(file, source_root);
        xcode_extract_recent_played_11_12(file, user);
        emit_records_signal(record_count);
    }
    return true;
}

// ---- shared row pieces -------------------------------------------------------

QString vlc_macos::path_inside_source(const QString& machine_path, const QString& user) const
{
    QString path = plugin_static_function::get_complete_file_path(machine_path, user, source_type);
    if (path.startsWith('/'))
        path.remove(0, 1);
    if (path.isEmpty())
        return QString();
    return source_root.endsWith('/') ? source_root + path : source_root + "/" + path;
}

vlc_macos::media_file_facts vlc_macos::gather_media_file_facts(const QString& source_path, const QString& caller,
                                                               file_facts wanted)
{
    media_file_facts facts;
    facts.file_name = QFileInfo(source_path).fileName();
    facts.suffix = plugin_static_function::mining_suffix(source_path);
    // A name that leads out of the source is absent: never opened, measured or read.
    const bool inside = source_path_guard::allow(source_path, source_root, caller);
    // Every row carries the selected-attribute document; for a file absent
    // from the source it holds the header alone.
    facts.extended = get_extended_attributes({source_path});
    if (!inside)
        return facts;
    facts.source_path = source_path;
    if (wanted == file_facts::names_only)
        return facts;
    const QFileInfo info(source_path);
    // Asked after the type, existence comes with the same status read.
    facts.exists = info.isFile() || info.isDir() || info.exists();
    if (!facts.exists)
        return facts;
    if (wanted == file_facts::all || !info.isDir())
        facts.size = size_of(info);
    facts.birth_seconds = file_times::of(source_path).birth;
    facts.attributes = extract_cfstring_attributes(info);
    facts.used = plugin_static_function::extract_used_date(source_path);
    return facts;
}

QString vlc_macos::size_of(const QFileInfo& info)
{
    // A folder's size is the sum of its files; a file's is already at hand.
    if (!info.isDir())
        return QString::number(info.size());
    const QString path = info.filePath();
    auto known = folder_sizes.constFind(path);
    if (known == folder_sizes.constEnd())
        known = folder_sizes.insert(path, plugin_static_function::mining_size(path));
    return *known;
}

QStringList vlc_macos::source_file_columns(const QString& path) const
{
    return {plugin_static_function::get_relative_file_path(path, source_root, source_type),
            plugin_static_function::get_final_artifact_source_file(path, source_root, source_type).value(0)};
}

// ---- metadata ----------------------------------------------------------------

struct_GLOBAL_ARTIFACT_cfstring_attributes vlc_macos::extract_cfstring_attributes(QString path)
{
    return extract_cfstring_attributes(QFileInfo(path));
}

struct_GLOBAL_ARTIFACT_cfstring_attributes vlc_macos::extract_cfstring_attributes(const QFileInfo& file)
{
    return metadata_reader->fixed_attributes(file);
}

QStringList vlc_macos::extract_longi_lati_attributes(QString path)
{
    return metadata_reader->latitude_longitude(path);
}

QStringList vlc_macos::get_extended_attributes(QList<QString> paths)
{
    if (extended_attribute_keys.isEmpty())
        return {QString(), QString()};

    QString document;
    QStringList search;
    QXmlStreamWriter xml(&document);
    xml.setAutoFormatting(true);
    xml.writeStartElement("Extended_Attributes_XML_Header");
    for (const QString& path : paths) {
        if (!source_path_guard::exists_inside(path, source_root, sig_get_extended_attributes))
            continue;
        xml.writeStartElement("Extended_Attributes_Artifact_Source_Header");
        xml.writeTextElement("File_Path", path_below_root(path));
        for (const QString& key : extended_attribute_keys) {
            const QString value = metadata_reader->attribute_value(path, key);
            xml.writeTextElement(key, value);
            if (!value.isEmpty())
                search << value;
        }
        xml.writeEndElement();
    }
    xml.writeEndElement();
    return {document, search.join(k_list_separator)};
}
