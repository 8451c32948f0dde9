// The questions that ask for something to be done to the queues, and the lists that go before.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "station/station.h"

namespace ostrel {

using Json = nlohmann::ordered_json;

/// How many bytes the entries of one answer take at most, well below what an asker may leave
/// unread.
inline constexpr std::size_t kLongestList = 32'768;

/// A span of time in seconds; null for none.
Json Seconds(std::optional<milliseconds> time);

/// The entries of the queues from number "from" on, as many as fit, and how many there are.
Json ListOf(Station& station, const Json& question);
/// The same for what is held.
Json HeldOf(Station& station, const Json& question);

/// The last 24 hours, a column for each figure.
Json LastDayOf(Station& station);

/// The same for what was set aside.
Json QuarantineOf(Station& station, const Json& question);

/// What an operation did; nothing for a question that is none. Throws Failure when it was refused.
Json DoAsAsked(Station& station, const std::string& account, const Json& question);

}  // namespace ostrel
