// What becomes of a file of a receiver's tree once it was taken.
#pragma once

#include <optional>
#include <string>

#include "feed/feed_config.h"
#include "platform/linux/held_alone.h"

namespace ostrel {

/// The file of that path on its way: it goes to a hidden name in its folder first. An ended program
/// may have left it there.
std::string AsidePath(const std::string& path);
/// The path of the file that lies at such a name; nothing for every other one.
std::optional<std::string> PathOfAside(const std::string& aside);

/// Moves or deletes the file. False when another version was got that had come under its name: that
/// one is there again. Throws Failure when it stays where it was.
bool PutAway(const FolderSettings& settings, const std::string& path, LinuxFileHold& hold);

/// The second half of it, for what lies aside. Throws Failure.
void FinishPuttingAway(const FolderSettings& settings, const std::string& aside);

}  // namespace ostrel
