// Which folders received files are never taken from: each file there is moved or deleted.
#pragma once

#include <string>

namespace ostrel {

/// Throws Failure 5, naming the reason, for the folder of a station, one that contains it, one that
/// the station keeps in its KvData, and a home folder. Goes by the paths alone; who can resolves
/// links first.
void CheckIngestFolder(const std::string& folder, const std::string& programFolder);

}  // namespace ostrel
