// What the accounts of a station's group have in common: they take turns, and what one writes the
// next goes on writing.
#pragma once

#include <string>

namespace ostrel {

/// Sets what is taken from the permissions of the files that this process makes. In a station whose
/// folder its group may write to, the group gets what the account gets; elsewhere the operator's
/// mask stands. No file is ever open to everyone for writing, and what the operator's mask keeps
/// from everyone stays kept.
void ShareWithGroupOf(const std::string& folder);

}  // namespace ostrel
