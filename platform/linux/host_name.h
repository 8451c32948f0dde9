// What this computer is called.
#pragma once

#include <array>
#include <climits>
#include <string>
#include <unistd.h>

namespace ostrel {

/// As its administrator named it; empty where nobody has.
inline std::string HostName() {
  std::array<char, HOST_NAME_MAX + 1> name{};
  return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

}  // namespace ostrel
