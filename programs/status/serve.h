// The status over HTTP: a page, the answer itself, the metrics. Read-only.
#pragma once

#include <string>
#include <vector>

#include "programs/status/alarms.h"

namespace ostrel {

/// Serves the station in `folder` and its last alarms at "[ADDRESS:]PORT", until the program ends,
/// to whoever asks by an address, "localhost" or one of `names`.
/// Throws std::runtime_error with a text for the operator.
void Serve(const std::string& folder, const std::string& where,
           const std::vector<std::string>& names, const LastAlarms& alarms);

}  // namespace ostrel
