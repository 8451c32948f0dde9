// The figures of a comparison, for programs.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "programs/monitor/comparison.h"

namespace ostrel {

/// As docs/monitor.md describes them; `now` as for the comparison.
nlohmann::ordered_json FiguresOf(Comparison& comparison, double now);

/// The same in the Prometheus text format.
std::string MetricsOf(const nlohmann::ordered_json& figures);

}  // namespace ostrel
