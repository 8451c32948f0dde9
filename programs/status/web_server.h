// The status over HTTP: a page, the answer itself, the metrics. Read-only.
#pragma once

#include <string>

#include "programs/status/alarms.h"

namespace ostrel {

/// Serves the station in `folder` and its last alarms at "[ADDRESS:]PORT", until the program ends.
/// Throws std::runtime_error with a text for the operator.
void Serve(const std::string& folder, const std::string& where, const LastAlarms& alarms);

}  // namespace ostrel
