// What waits and what was, for people and for programs.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "programs/queue/past_products.h"

namespace ostrel {

/// In lines, in ASCII; what is no UTF-8 is replaced.
std::string JsonLines(const nlohmann::ordered_json& value);

/// The station's "entries" and what it has "held", as its answers have them, and "intakePaused".
std::string QueueTable(const nlohmann::ordered_json& lists);

/// What was set aside, as the station's answer has it.
std::string QuarantineTable(const nlohmann::ordered_json& items);

std::string HistoryTable(const std::vector<PastProduct>& products);
/// With a line of headings; times in UTC.
std::string HistoryCsv(const std::vector<PastProduct>& products);
std::string HistoryJson(const std::vector<PastProduct>& products);

}  // namespace ostrel
