// Whether a settings store holds what was stored. Damage within a value leaves a database that is
// whole; so the store carries a checksum over all of its values. Who changes them and knows nothing
// of it, an older version or an operator, takes it off without knowing, and is believed.
#pragma once

#include "platform/linux/sqlite_database.h"
#include "platform/settings_store.h"

namespace ostrel {

/// In failures.
inline constexpr const char* kSettingsStore = "Settings store";

/// Throws Failure 57 for a store that a later version of the program has made.
void CheckFormat(const SqliteDatabase& database);

// Within the transaction that changes the values
/// Before it: so that each change takes the checksum off.
void MakeSeal(SqliteDatabase& database);
/// After it.
void Seal(SqliteDatabase& database);

/// Missing when it never held a value and was never sealed either. Throws DamagedDatabase.
StoreState ContentState(const SqliteDatabase& database);

}  // namespace ostrel
