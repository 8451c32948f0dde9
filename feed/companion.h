// The two companion programs that a station starts by their names.
#pragma once

#include <string>
#include <string_view>

#include "feed/feed.h"

namespace ostrel {

inline constexpr const char* kSerialCompanion = "Brask";
inline constexpr const char* kOtherCompanion = "Tiltor";
/// What the station gives them on the command line.
inline constexpr const char* kStartWord = "KvStart";

/// Asks the program with the window whether it can show one.
inline constexpr const char* kProbe = "--probe";

/// The sources of the program of that name.
inline SourceKinds KindsOf(std::string_view name) {
  if (name == kSerialCompanion) return SourceKinds::kSerial;
  return name == kOtherCompanion ? SourceKinds::kOthers : SourceKinds::kAll;
}

/// Becomes the program with the window when there is a display, and that program beside this one.
/// Returns when there is not.
void ShowWindowInstead(const std::string& name, char* arguments[]);

}  // namespace ostrel
