// The status over HTTP: a page, the answer itself, the metrics. Read-only.
#pragma once

#include <string>

namespace ostrel {

/// Serves the station in `folder` at "[ADDRESS:]PORT", until the program ends. Throws
/// std::runtime_error with a text for the operator.
void Serve(const std::string& folder, const std::string& where);

}  // namespace ostrel
