// A folder of the station that somebody removed while it runs.
#pragma once

#include <string>

#include "base/reporting.h"
#include "platform/files.h"

namespace ostrel {

/// Makes `folder` anew when there is nothing of that name, and says so in the log. For those who
/// are about to put a file there, or just failed to. Returns true when it did.
bool RestoreFolder(Files& files, Reporting& reporting, const std::string& folder);

}  // namespace ostrel
