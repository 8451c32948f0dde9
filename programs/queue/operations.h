// What is asked of a running station: its lists, and changes to them.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

namespace ostrel {

/// The answer of the station in `folder`. Throws std::runtime_error when none comes or it refuses.
nlohmann::ordered_json Ask(const std::string& folder, const nlohmann::ordered_json& question);

/// Everything of a list ("list" or "held") that the station answers page by page under `name`.
nlohmann::ordered_json AskForAll(const std::string& folder, const char* list, const char* name);

/// Has a product sent again, by its number in the history or its name: from the sent folder, or
/// from what the history keeps. Returns what the station says. Throws std::exception.
std::string Resend(const std::string& folder, const std::string& numberOrName,
                   std::optional<int> priority);

}  // namespace ostrel
