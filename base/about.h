// What the program says of itself: its version, its caption and where its makers are found.
#pragma once

namespace ostrel {

inline constexpr const char* kProgramName = "Ostrel";
inline constexpr int kVersionMajor = 3;
inline constexpr int kVersionMinor = 0;
inline constexpr int kVersionBuild = 0;

/// The main window's caption.
inline constexpr const char* kMainCaption = "EMWIN ReTransmission Engine - By Corvain";

inline constexpr const char* kWebSite = "https://www.corvain.example/";
inline constexpr const char* kSupportAddress = "support@corvain.example";

}  // namespace ostrel
