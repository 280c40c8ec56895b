#pragma once

// What the iOS app keeps besides its media-library database: the Core Data
// store of app versions up to 3.1 (MediaLibrary.sqlite, table ZFILE), read
// into media_library, and its preferences, whose recent network addresses
// go into recents.

#include <QString>

#include "media_library_reader.h"

namespace ios_app_stores {

// One media_library row per ZFILE row, with the columns Android's rows give
// the same meaning; a column the store lacks stays empty (logged once).
void extract_core_data_library(const media_library_context& context, const media_library_places& places,
                               const QString& store_path);

// One recents row per entry of "recent-urls" in the preferences, with its
// title from "recent-url-titles".
void extract_recent_addresses(const media_library_context& context, const QString& preferences_path);

// More addresses than the app ever keeps (it keeps about a hundred).
constexpr int k_max_addresses = 10000;

}  // namespace ios_app_stores
