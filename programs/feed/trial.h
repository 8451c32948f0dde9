// ostrel-feed --trial: what a tree of files would bring to the station, with its area rules and
// without.
#pragma once

#include <string>

namespace ostrel {

/// Says it on standard output, by rule. The minutes of air are those of the packets alone, at the
/// station's data rate: compression shortens them, and what is sent more than once lengthens them.
/// Throws Failure when `tree` is no folder, and std::runtime_error for a wrong Feed.toml.
void TryTree(const std::string& tree, const std::string& station);

}  // namespace ostrel
