// The command line of a program that takes no arguments but --help and --version: these two make no
// station and need no display.
#pragma once

#include <optional>
#include <string>

namespace ostrel {

/// The status of a program that was called wrongly.
inline constexpr int kWrongUsage = 2;

/// "ostrel-queue 3.0.0"
std::string VersionOf(const std::string& program);

struct PlainHelp {
  std::string program;
  std::string what;  // it is and does, in lines
};

/// Returns the status with which the program ends at once; nothing where it was called plainly.
std::optional<int> AnswerArguments(const PlainHelp& help, int count, char* arguments[]);

}  // namespace ostrel
