// The answer of a station, for people and for Prometheus.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace ostrel {

using Status = nlohmann::ordered_json;

/// An obstacle's file with its folder, or the folder that cannot be used.
std::string PlaceOf(const Status& obstacle);

/// On one line, in ASCII; what is no UTF-8 is replaced.
std::string JsonText(const Status& value);

/// A page of text.
std::string PageOf(const Status& status);

/// The Prometheus text format. Without a status (null), the one metric that says that the station
/// does not answer.
std::string MetricsOf(const Status& status);

}  // namespace ostrel
