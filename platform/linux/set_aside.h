// A damaged database is never deleted: what can still be read of it is worth something to somebody.
#pragma once

#include <string>

#include "base/time.h"

namespace ostrel {

/// Gives the database at `path`, whatever lies there, and the files that belong to it, names of
/// their own with the date: "KvHistory.damaged-2026-11-18-120000.db". Returns the bare name; empty
/// when there is no database. Throws Failure.
std::string SetAside(const std::string& path, UtcTime now);

}  // namespace ostrel
