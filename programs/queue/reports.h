// What waits and what was, for people and for programs.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "programs/queue/past_products.h"

namespace ostrel {

/// The station's entries and what it holds, as its answers have them.
std::string QueueTable(const nlohmann::ordered_json& entries, const nlohmann::ordered_json& held);

std::string HistoryTable(const std::vector<PastProduct>& products);
/// With a line of headings; times in UTC.
std::string HistoryCsv(const std::vector<PastProduct>& products);
std::string HistoryJson(const std::vector<PastProduct>& products);

/// "2026-11-26", "2026-11-26 14:30", "14:30" of today, or "3d", "12h", "30m" before `now`, in local
/// time. Throws Failure for any other text.
UtcTime MomentIn(const std::string& text, UtcTime now);

}  // namespace ostrel
