#pragma once

// Folder entries whose names are not valid UTF-8: a user folder named in
// Latin-1 on an older volume, say. Qt's paths are Unicode text, so such an
// entry cannot be opened through them; it is named instead, with the bytes
// that do not decode escaped ("caf\xE9"), so it never vanishes without a word.
// The plug-in logs these names and the host program warns about them.

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace entry_names {

// The escaped names of folder's entries that are not valid UTF-8, sorted.
// Empty when there are none or the folder cannot be listed.
QStringList undecodable(const QString& folder);

// The name with every byte that is not part of a valid UTF-8 sequence written
// as \xNN.
QString escaped(const QByteArray& name);

}  // namespace entry_names
