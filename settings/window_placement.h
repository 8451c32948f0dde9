// Where the main window stood when the station was last closed.
#pragma once

#include <vector>

#include "platform/dialogs.h"
#include "platform/settings_store.h"
#include "settings/settings_table.h"

namespace ostrel {

/// The rows of the placement, which start-up and the end read and write below; without a default,
/// which is the window's own. `load` only checks.
std::vector<SettingRow> ScreenSettings();

/// Centres the main window on the screen.
void CentreMainWindow(Dialogs& dialogs);

/// Puts the main window where the store says, value by value; what is not stored stays as it is.
/// Throws Failure 13 for a text that is no number, 6 for one that is too large, 380 for a state
/// that is none.
void RestorePlacement(SettingsStore& store, Dialogs& dialogs);

/// Stores the placement, whole or not at all; a minimized window keeps the position and size last
/// stored. Throws Failure 57.
void StorePlacement(SettingsStore& store, const WindowPlacement& placement);

}  // namespace ostrel
