#include "qt_interface_settings.h"

#include <QDir>
#include <QSettings>
#include <QTemporaryFile>

namespace {

// A value as the list it was written from: the reader gives a list for a
// value written with commas, a plain string for a one-item list and nothing
// for an empty list ("@Invalid()") or a value of another type.
QStringList as_list(const QVariant& value)
{
    if (value.typeId() == QMetaType::QStringList)
        return value.toStringList();
    if (value.typeId() == QMetaType::QString)
        return {value.toString()};
    return {};
}

}  // namespace

namespace qt_interface_settings {

bool read(const QByteArray& data, const QString& working_folder, qt_interface_recents* result)
{
    *result = qt_interface_recents();
    if (!QDir().mkpath(working_folder))
        return false;
    QTemporaryFile copy(QDir(working_folder).filePath("vlc-qt-interface-XXXXXX.ini"));
    if (!copy.open() || copy.write(data) != data.size() || !copy.flush())
        return false;

    const QSettings settings(copy.fileName(), QSettings::IniFormat);
    // Positions pair with locations by index; the player writes none before
    // 2.2, and keeps -1 or 0 for an item it holds no position for.
    const QStringList locations = as_list(settings.value("RecentsMRL/list"));
    const QStringList times = as_list(settings.value("RecentsMRL/times"));
    for (qsizetype i = 0; i < locations.size(); ++i) {
        if (locations.at(i).isEmpty())
            continue;
        const qint64 resume_ms = times.value(i).trimmed().toLongLong();
        result->recent.append({locations.at(i), qMax<qint64>(resume_ms, 0)});
    }
    for (const QString& address : as_list(settings.value("OpenDialog/netMRL"))) {
        if (!address.isEmpty())
            result->typed_network_addresses << address;
    }
    return true;
}

}  // namespace qt_interface_settings
