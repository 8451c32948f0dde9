// What is wrong with a line of a list before it is the station's: what no operator could have
// entered, and what he could and it does nothing.
#pragma once

#include <string>
#include <vector>

#include "profile/profile_text.h"

namespace ostrel {

/// Why the lines that are new cannot be entered, each with its number in the text. `staying` are
/// the lists that do not change: a keyword stands in one list only.
std::vector<std::string> FaultsOf(const std::vector<ProfileChange>& changes,
                                  const std::vector<ProfileEntry>& staying);
/// Of the same lines, those that can be entered and do not what they seem to.
std::vector<std::string> DoubtsOf(const std::vector<ProfileChange>& changes);

}  // namespace ostrel
