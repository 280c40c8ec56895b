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

// Qt's INI reader turns a value written as "@Variant(...)" back into an
// object through its binary stream format, whose length fields a damaged or
// forged file can set to gigabytes. The player keeps plain strings under the
// keys read here, so every such value is made a plain string first: "@@"
// is the reader's escape for a string that starts with "@".
QByteArray without_serialised_values(QByteArray data)
{
    static const QByteArray marker("@Variant(");
    for (qsizetype at = data.indexOf(marker); at >= 0; at = data.indexOf(marker, at + marker.size())) {
        const char before = at > 0 ? data.at(at - 1) : '\n';
        if (QByteArray("=,\" \t\r\n").contains(before)) {
            data.insert(at, '@');
            ++at;
        }
    }
    return data;
}

}  // namespace

namespace qt_interface_settings {

bool read(const QByteArray& data, const QString& working_folder, qt_interface_recents* result)
{
    *result = qt_interface_recents();
    if (!QDir().mkpath(working_folder))
        return false;
    QTemporaryFile copy(QDir(working_folder).filePath("vlc-qt-interface-XXXXXX.ini"));
    const QByteArray plain = without_serialised_values(data);
    if (!copy.open() || copy.write(plain) != plain.size() || !copy.flush())
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
