#pragma once

// Writes property lists the way macOS keeps them: XML or binary, and keyed
// archives (a dictionary with "$archiver", "$objects", "$top" and "$version",
// whose objects refer to each other by UID). Values are given as QVariant:
// QString, bool, int/qint64, double, QDateTime, QByteArray (data),
// QVariantList (array), QVariantMap (dictionary) and plist_uid.

#include <QByteArray>
#include <QMetaType>
#include <QStringList>
#include <QVariant>

struct plist_uid
{
    quint64 value = 0;
};
Q_DECLARE_METATYPE(plist_uid)

namespace plist_writer {

enum class format { xml, binary };

QByteArray write(const QVariant& value, format form);

// A keyed archive whose object table holds the given strings (after "$null"
// and a root object that refers to them), as a shared-file list keeps the
// URLs and bookkeeping strings of its items.
QByteArray keyed_archive(const QStringList& strings, format form = format::binary);

// The older per-application recent-documents list: RecentDocuments /
// CustomListItems, one item per name, with the bookmark of the same position
// when one is given.
QByteArray recent_documents_list(const QStringList& names, format form, const QList<QByteArray>& bookmarks = {});

// A keyed archive of any value, as the system's archiver writes one: maps as
// NSDictionary objects (a map with a "$class" name as an object of that class
// and these members), lists as NSArray objects, texts and data as objects of
// their own, a plist_uid as it is (for damaged archives).
QByteArray archive_of(const QVariant& root, format form = format::binary);

// The shared-file list of macOS 10.13 on: items (most recent first) with the
// members given (Bookmark, Name).
QByteArray shared_file_list(const QList<QVariantMap>& items);

}  // namespace plist_writer
