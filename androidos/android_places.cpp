#include "android_places.h"

#include <QFileInfo>
#include <QRegularExpression>

#include "source_path_guard.h"

namespace {

const QString k_backup_database = "apps/org.videolan.vlc/r/app_db/vlc_media.db";
const QString k_file_system_database = "data/data/org.videolan.vlc/app_db/vlc_media.db";
// Shared storage of the primary user, where a full file-system extraction
// may keep it.
const char* const k_file_system_storage[] = {"data/media/", "media/"};
// Short names the phone also gives the primary user's shared storage.
const char* const k_storage_aliases[] = {"/sdcard/", "/mnt/sdcard/"};

// Whether a fixed path of the app's layout is present, judged without
// looking outside the source: its folder must stay inside, and the entry is
// only looked at itself (a link counts as present, so that the guard refuses
// and logs it where the layout is chosen).
bool entry_present(const QString& path, const QString& source_root)
{
    const QFileInfo entry(path);
    return source_path_guard::is_inside_root(entry.path(), source_root) && (entry.isSymLink() || entry.exists());
}

}  // namespace

QString android_places::find_layout(const QString& source_root)
{
    m_source_root = source_root;
    // The backup layout keeps an app's private data in r/ below apps/<package>;
    // a full file-system extraction keeps it in data/data/<package>.
    use_backup_layout();
    if (entry_present(source_root + k_backup_database, source_root))
        return source_root + k_backup_database;
    use_file_system_layout();
    return source_root + k_file_system_database;
}

void android_places::use_backup_layout()
{
    m_full_file_system = false;
    m_private_folder = "apps/org.videolan.vlc/r/";
    m_shared_storage = "shared/";
    m_external_files = "apps/org.videolan.vlc/ef/";
}

void android_places::use_file_system_layout()
{
    m_full_file_system = true;
    m_private_folder = "data/data/org.videolan.vlc/";
    m_shared_storage = k_file_system_storage[0];
    for (const char* storage : k_file_system_storage) {
        const QString folder = m_source_root + storage + "0";
        if (source_path_guard::is_inside_root(folder, m_source_root) && QFileInfo(folder).isDir()) {
            m_shared_storage = storage;
            break;
        }
    }
    m_external_files = m_shared_storage + "0/Android/data/org.videolan.vlc/files/";
}

QString android_places::media_path(const QString& mrl) const
{
    return m_full_file_system ? phone_path_in_source(media_library_reader::path_of_file_mrl(mrl))
                              : phone_path_in_backup(mrl);
}

QString android_places::phone_path_in_backup(QString mrl) const
{
    // The usual name, .../emulated/0/..., is read the quick way below.
    if (!mrl.contains(QLatin1String("/emulated/"))) {
        const QString phone_path = media_library_reader::path_of_file_mrl(mrl);
        for (const char* alias : k_storage_aliases) {
            if (phone_path.startsWith(QLatin1String(alias)))
                return m_source_root + m_shared_storage + "0/" + phone_path.mid(int(qstrlen(alias)));
        }
        // A memory card is not in a backup: the row names it where the phone had it.
        static const QRegularExpression memory_card("^/storage/[0-9A-Fa-f]{4}-[0-9A-Fa-f]{4}/");
        if (memory_card.match(phone_path).hasMatch())
            return m_source_root + phone_path.mid(1);
    }
    mrl.replace("%20", " ");
    // Primary storage is .../emulated/0/...; the backup keeps it below shared/0/.
    const int zero = mrl.indexOf('0');
    if (zero > 0)
        mrl = mrl.mid(zero);
    return m_source_root + m_shared_storage + mrl;
}

QString android_places::phone_path_in_source(const QString& phone_path) const
{
    // The phone reaches the primary user's shared storage and the app's
    // private folder under several names.
    const QString storage = m_shared_storage + "0/";
    const QList<QPair<QString, QString>> places = {
        {"/storage/emulated/0/", storage},
        {"/sdcard/", storage},
        {"/mnt/sdcard/", storage},
        {"/storage/self/primary/", storage},
        {"/data/media/0/", storage},
        {"/data/user/0/org.videolan.vlc/", m_private_folder},
        {"/data/data/org.videolan.vlc/", m_private_folder},
    };
    for (const auto& place : places) {
        if (phone_path.startsWith(place.first))
            return m_source_root + place.second + phone_path.mid(place.first.size());
    }
    // Anything else (a memory card, say) lies where the phone had it.
    return phone_path.isEmpty() ? QString() : m_source_root + phone_path.mid(phone_path.startsWith('/') ? 1 : 0);
}

QString android_places::thumbnail_path(const QString& stored_mrl, int model, const QString& signature) const
{
    if (m_full_file_system) {
        const QString path = phone_path_in_source(media_library_reader::path_of_file_mrl(stored_mrl));
        return source_path_guard::exists_inside(path, m_source_root, signature) ? path : QString();
    }
    QString mrl = stored_mrl;
    mrl.replace("%20", " ").replace("%2C", ",").replace("%29", ")").replace("%28", "(");
    // The app writes thumbnails either to its external files folder (ef/
    // beside r/ in the backup) or to its private app_vlc folder.
    const int thumbs = mrl.indexOf("thumbs");
    const QString app_folder = m_database.left(m_database.indexOf("/r/"));
    const QString external = app_folder + "/ef/" + (thumbs >= 0 ? mrl.mid(thumbs) : mrl);
    const int app_vlc = mrl.indexOf("app_vlc");
    const QString internal = m_source_root + m_private_folder + (app_vlc >= 0 ? mrl.mid(app_vlc) : mrl);
    if (source_path_guard::exists_inside(external, m_source_root, signature))
        return external;
    if (source_path_guard::exists_inside(internal, m_source_root, signature))
        return internal;
    // From model 17 the app also keeps thumbnails elsewhere in its external
    // files folder; earlier models never wrote there.
    const QString marker = "/Android/data/org.videolan.vlc/files/";
    const int files = model >= 17 ? mrl.indexOf(marker) : -1;
    const QString elsewhere =
        files >= 0 ? m_source_root + m_external_files + mrl.mid(files + marker.size()) : QString();
    if (!elsewhere.isEmpty() && source_path_guard::exists_inside(elsewhere, m_source_root, signature))
        return elsewhere;
    return QString();
}
