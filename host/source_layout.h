#pragma once

// What the host program can tell about an evidence tree from its layout.

#include <QString>
#include <QStringList>

namespace source_layout {

// Whether the tree holds what a source of the scheme holds; true for a
// scheme whose layout this program cannot tell.
bool looks_like(const QString& source_root, const QString& os_scheme);

// "macOS", "winOS", "androidOS" or "iOS_UID"; empty when the layout does not say.
QString detect_os_scheme(const QString& source_root);

// The result tables the plug-in fills for the scheme.
QStringList tables_read(const QString& os_scheme);

// Whether the tree has an account folder of that name (macOS and Windows).
bool has_account_folder(const QString& source_root, const QString& user);

// Account folders under the source's users root (macOS and Windows): every
// folder but "Shared" and hidden ones.
QStringList default_users(const QString& source_root, const QString& os_scheme);

}  // namespace source_layout
