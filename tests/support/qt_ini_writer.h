#pragma once

// Writes the player's interface settings file as Qt 4 and 5 wrote it: values
// with "," ";" "=" or edge blanks quoted, lists joined with ", ", a one-item
// list as a plain value, an empty one as @Invalid(), and every character from
// 0x7F on as \x and the hex of its UTF-16 unit.

#include <QByteArray>
#include <QStringList>

namespace qt_ini_writer {

// [RecentsMRL] list= and times= (left out when times is empty), and
// [OpenDialog] netMRL= (left out when typed is empty).
QByteArray interface_settings(const QStringList& recent, const QStringList& times, const QStringList& typed);

}  // namespace qt_ini_writer
