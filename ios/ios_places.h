#pragma once

// Where the files an iOS media library names are on the source. The app
// names its files by their full path on the phone, inside its data container
// (/private/var/mobile/Containers/Data/Application/<UUID>/Documents/...), and
// the container's UUID changes when the app is reinstalled or restored: the
// part after it is looked up in the container (or backup domain) found.

#include "ios_app_files.h"
#include "media_library_reader.h"

class ios_places : public media_library_places
{
public:
    ios_places(const QString& source_root, const ios_app_files& app, const QString& signature);

    QString media_path(const QString& mrl) const override;
    QString thumbnail_path(const QString& mrl, int model, const QString& signature) const override;

    // The part of a phone path inside the app's data container, a relative
    // path as it is; empty for a path elsewhere.
    static QString app_relative(const QString& phone_path);

private:
    QString m_source_root;
    ios_app_files m_app;
    QString m_signature;
};
