// Whether a station has lost its settings. A station that ran stored some: where its store is gone
// now, the defaults are not what anybody chose, and it must not go on the air with them.
#pragma once

#include <string>

#include "platform/files.h"
#include "platform/settings_store.h"

namespace ostrel {

/// Whether a station has run in the folder, by what it leaves behind. Throws Failure when that
/// cannot be said.
bool HasBeenStation(Files& files, const std::string& programFolder);

/// What has become of the store: "The settings store is missing."; empty when it can be used, by a
/// new station, too. Throws Failure 57 when that cannot be said now.
std::string LossOf(SettingsStores& stores, Files& files, const std::string& programFolder);

/// What an operator can do about it.
inline constexpr const char* kWayOut =
    "\"ostrel-settings apply FILE\" makes a store of the text of a station.";

}  // namespace ostrel
