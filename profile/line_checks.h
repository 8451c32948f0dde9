// What is odd about a line of a list: what the setup dialog would refuse, though a station reads
// it, and what does not do what it seems to.
#pragma once

#include <string>
#include <vector>

#include "profile/profile_text.h"

namespace ostrel {

/// Of the lines that are new, each with its number in the text. `staying` are the lists that do not
/// change: a keyword stands in one list only.
std::vector<std::string> DoubtsOf(const std::vector<ProfileChange>& changes,
                                  const std::vector<ProfileEntry>& staying);

}  // namespace ostrel
