#pragma once

// What the host program can tell about an evidence tree from its layout.

#include <QString>
#include <QStringList>

namespace source_layout {

// "macOS", "winOS" or "androidOS"; empty when the layout does not say.
QString detect_os_scheme(const QString& source_root);

// Account folders under the source's users root (macOS and Windows): every
// folder but "Shared" and hidden ones.
QStringList default_users(const QString& source_root, const QString& os_scheme);

}  // namespace source_layout
