// The files in a station's folder that more than one part of the program knows by name.
#pragma once

#include <string>

#include "base/names.h"

namespace ostrel {

inline constexpr const char* kSettingsFile = "KvRegistry.db";
/// How the names of its copy begin, and of what was set aside of it.
inline constexpr const char* kBesideSettings = "KvRegistry.";
inline constexpr const char* kHistoryFile = "KvHistory.db";
/// What ostrel-repeat found in force at its last look, for who shows it.
inline constexpr const char* kInForceFile = "KvData/InForce.json";

inline std::string LogPath(const std::string& programFolder) {
  return JoinPath(programFolder, "RtLog.txt");
}
/// The log before that one.
inline std::string OldLogPath(const std::string& programFolder) {
  return JoinPath(programFolder, "RtLog.old");
}
/// How the text of a start's line begins.
inline constexpr const char* kStartText = "Program Started - ";

}  // namespace ostrel
