// Where the running program lies: its station is there, unless it is told of another one.
#pragma once

#include <filesystem>
#include <string>

namespace ostrel {

/// The folder of the executable, symbolic links resolved.
inline std::string ProgramFolder() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path().string();
}

}  // namespace ostrel
