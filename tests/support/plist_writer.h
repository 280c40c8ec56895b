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
// CustomListItems, one item per name.
QByteArray recent_documents_list(const QStringList& names, format form);

}  // namespace plist_writer
