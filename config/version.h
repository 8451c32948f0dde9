// The program's version as its windows and its log name it.
#pragma once

namespace ostrel {

inline constexpr int kVersionMajor = 3;
inline constexpr int kVersionMinor = 0;
inline constexpr int kVersionBuild = 0;

}  // namespace ostrel
