#include "source_path_guard.h"

#include <QSet>

#include "plugin_static_function.h"
#include "source_path_placement.h"

namespace {

constexpr int k_max_logged_refusals = 10000;
QSet<QString> g_logged_refusals;

using source_path_placement::locate;
using source_path_placement::placement;

// The guard's verdict on a path, its refusal logged once per run.
placement locate_logged(const QString& path, const QString& source_root, const QString& caller)
{
    if (path.trimmed().isEmpty())
        return placement::outside;
    const placement where = locate(path, source_root);
    if (where != placement::outside)
        return where;
    if (g_logged_refusals.size() < k_max_logged_refusals && !g_logged_refusals.contains(path)) {
        g_logged_refusals.insert(path);
        plugin_static_function::app_debug("path outside the source root ---FAILED--- treated as absent: " + path,
                                          caller);
    }
    return placement::outside;
}

}  // namespace

namespace source_path_guard {

bool is_inside_root(const QString& path, const QString& source_root)
{
    return locate(path, source_root) != placement::outside;
}

bool allow(const QString& path, const QString& source_root, const QString& caller)
{
    return locate_logged(path, source_root, caller) != placement::outside;
}

bool exists_inside(const QString& path, const QString& source_root, const QString& caller)
{
    return locate_logged(path, source_root, caller) == placement::inside_present;
}

void reset_log()
{
    g_logged_refusals.clear();
    source_path_placement::forget_resolved_folders();
}

}  // namespace source_path_guard
