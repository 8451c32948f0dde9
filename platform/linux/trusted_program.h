// Whose a program is. A station's folder may be open to a group, and what one of its members lays
// there must not run under the account of another.
#pragma once

#include <string>

namespace ostrel {

/// Throws Failure 70 when the program at `path` belongs to anyone but root and the running account,
/// or may be written by others, and Failure 53 when there is none. Root's group and the account's
/// primary one count as they themselves. A link must be theirs, as what it points to.
void CheckTrusted(const std::string& path);

}  // namespace ostrel
