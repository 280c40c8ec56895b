#include "source_path_placement.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>

namespace {

bool is_under(const QString& path, const QString& root)
{
    if (root == QLatin1String("/"))
        return path.startsWith('/');
    return path.startsWith(root) && (path.size() == root.size() || path.at(root.size()) == '/');
}

// Whether cleaning would leave the text as it is; most paths a reader builds
// are, and cleaning them costs more than the rest of the test.
bool is_clean_absolute(const QString& path)
{
    if (!path.startsWith('/') || (path.size() > 1 && path.endsWith('/')))
        return false;
    int dots = 0;
    bool after_slash = false;
    for (const QChar c : path) {
        if (c == '/') {
            if (after_slash || dots == 1 || dots == 2)
                return false;  // "//", "/./" or "/../"
            after_slash = true;
            dots = 0;
        } else if (c == '.' && (after_slash || dots > 0)) {
            after_slash = false;
            ++dots;
        } else {
            after_slash = false;
            dots = -1;
        }
    }
    return dots != 1 && dots != 2;
}

QString cleaned_absolute(const QString& path)
{
    if (path.isEmpty() || !QDir::isAbsolutePath(path))
        return QString();
    if (is_clean_absolute(path))
        return path;
    return QDir::cleanPath(path);
}

// Canonical form of the root, kept for the last root asked about: every row of
// a run asks about the same root. A root that could not be resolved is asked
// again next time, as it may have been mounted since.
QString canonical_root(const QString& cleaned_root)
{
    static QString last_root;
    static QString last_canonical;
    if (cleaned_root != last_root || last_canonical.isEmpty()) {
        last_root = cleaned_root;
        last_canonical = QFileInfo(cleaned_root).canonicalFilePath();
    }
    return last_canonical;
}

// Canonical forms of the folders resolved since they were last forgotten: a
// library names thousands of files in a few folders, and the evidence does
// not change during a run. Only folders that exist are kept.
constexpr int k_max_cached_folders = 4096;
QHash<QString, QString> g_canonical_folders;

void remember_folder(const QString& folder, const QString& canonical)
{
    if (canonical.isEmpty())
        return;
    if (g_canonical_folders.size() >= k_max_cached_folders)
        g_canonical_folders.clear();
    g_canonical_folders.insert(folder, canonical);
}

QString canonical_folder(const QString& folder)
{
    const auto known = g_canonical_folders.constFind(folder);
    if (known != g_canonical_folders.constEnd())
        return *known;
    const QString canonical = QFileInfo(folder).canonicalFilePath();
    remember_folder(folder, canonical);
    return canonical;
}

// The canonical form of an existing entry: a link is resolved whole; any
// other entry is its folder's canonical form plus its own name.
QString canonical_entry(const QString& path, const QFileInfo& info)
{
    const int slash = path.lastIndexOf('/');
    const QString name = path.mid(slash + 1);
    if (info.isSymLink() || slash <= 0 || name == "." || name == "..")
        return info.canonicalFilePath();
    const QString written_folder = path.left(slash);
    const QString folder = canonical_folder(written_folder);
    if (folder.isEmpty())
        return QString();
    if (folder == written_folder)
        return path;
    return (folder.endsWith('/') ? folder : folder + "/") + name;
}

// The deepest part of the path that exists, with its links resolved;
// whole_exists tells whether that part is the whole path.
QString resolved_existing_prefix(const QString& cleaned_path, bool* whole_exists)
{
    QString probe = cleaned_path;
    *whole_exists = false;
    while (!probe.isEmpty()) {
        // A folder above the path that was resolved before still exists: the
        // folder of thousands of missing files is looked at once.
        if (probe != cleaned_path) {
            const auto known = g_canonical_folders.constFind(probe);
            if (known != g_canonical_folders.constEnd())
                return *known;
        }
        const QFileInfo info(probe);
        // The link test first: for anything but a link its status read also
        // answers whether the entry exists.
        const bool is_link = info.isSymLink();
        if (info.exists()) {
            *whole_exists = probe == cleaned_path;
            const QString canonical = canonical_entry(probe, info);
            if (!*whole_exists && info.isDir())
                remember_folder(probe, canonical);
            return canonical;
        }
        if (is_link)
            return QString();  // a dangling link: where it points is not ours to follow
        const int slash = probe.lastIndexOf('/');
        if (slash <= 0)
            return QString("/");
        probe = probe.left(slash);
    }
    return QString();
}

}  // namespace

namespace source_path_placement {

// Whether the path exists comes from the same status reads, so a reader's
// existence test costs nothing more.
placement locate(const QString& path, const QString& source_root)
{
    const QString root = cleaned_absolute(source_root);
    const QString target = cleaned_absolute(path);
    if (root.isEmpty() || target.isEmpty() || !is_under(target, root))
        return placement::outside;

    const QString real_root = canonical_root(root);
    if (real_root.isEmpty())
        return placement::outside;
    // Only the part that exists can be resolved; the part below it is plain
    // names. The path is resolved both as cleaned and as written: the system
    // follows a link before the ".." after it, so "link/../x" as written may
    // name a file outside while its cleaned text stays inside, and a caller
    // may open either form.
    const QStringList forms = path == target ? QStringList{target} : QStringList{target, path};
    bool exists = false;
    for (const QString& form : forms) {
        const QString real_target = resolved_existing_prefix(form, &exists);
        if (real_target.isEmpty() || !is_under(real_target, real_root))
            return placement::outside;
    }
    // With two forms the last one checked is the path as written, the one a
    // caller opens.
    return exists ? placement::inside_present : placement::inside_missing;
}

void forget_resolved_folders()
{
    g_canonical_folders.clear();
}

}  // namespace source_path_placement
