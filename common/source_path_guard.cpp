#include "source_path_guard.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

#include "plugin_static_function.h"

namespace {

constexpr int k_max_logged_refusals = 10000;
QSet<QString> g_logged_refusals;

bool is_under(const QString& path, const QString& root)
{
    if (root == "/")
        return path.startsWith('/');
    return path == root || path.startsWith(root + "/");
}

QString cleaned_absolute(const QString& path)
{
    if (path.isEmpty() || !QDir::isAbsolutePath(path))
        return QString();
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

// The deepest part of the path that exists, with its links resolved.
QString resolved_existing_prefix(const QString& cleaned_path)
{
    QString probe = cleaned_path;
    while (!probe.isEmpty()) {
        const QFileInfo info(probe);
        if (info.exists())
            return info.canonicalFilePath();
        if (info.isSymLink())
            return QString();  // a dangling link: where it points is not ours to follow
        const int slash = probe.lastIndexOf('/');
        if (slash <= 0)
            return QString("/");
        probe = probe.left(slash);
    }
    return QString();
}

}  // namespace

namespace source_path_guard {

bool is_inside_root(const QString& path, const QString& source_root)
{
    const QString root = cleaned_absolute(source_root);
    const QString target = cleaned_absolute(path);
    if (root.isEmpty() || target.isEmpty() || !is_under(target, root))
        return false;

    const QString real_root = canonical_root(root);
    if (real_root.isEmpty())
        return false;
    // Only the part that exists can be resolved; the part below it is plain
    // names. The path is resolved both as cleaned and as written: the system
    // follows a link before the ".." after it, so "link/../x" as written may
    // name a file outside while its cleaned text stays inside, and a caller
    // may open either form.
    const QStringList forms = path == target ? QStringList{target} : QStringList{target, path};
    for (const QString& form : forms) {
        const QString real_target = resolved_existing_prefix(form);
        if (real_target.isEmpty() || !is_under(real_target, real_root))
            return false;
    }
    return true;
}

bool allow(const QString& path, const QString& source_root, const QString& caller)
{
    if (path.trimmed().isEmpty())
        return false;
    if (is_inside_root(path, source_root))
        return true;
    if (g_logged_refusals.size() < k_max_logged_refusals && !g_logged_refusals.contains(path)) {
        g_logged_refusals.insert(path);
        plugin_static_function::app_debug("path outside the source root ---FAILED--- treated as absent: " + path,
                                          caller);
    }
    return false;
}

bool exists_inside(const QString& path, const QString& source_root, const QString& caller)
{
    return allow(path, source_root, caller) && QFileInfo::exists(path);
}

void reset_log()
{
    g_logged_refusals.clear();
}

}  // namespace source_path_guard
