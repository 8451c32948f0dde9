#include "programs/plain_arguments.h"

#include <fmt/format.h>
#include <string_view>

#include "base/about.h"
#include "base/text.h"

namespace ostrel {

std::string VersionOf(const std::string& program) {
  return fmt::format("{} {}.{}.{}", program, kVersionMajor, kVersionMinor, kVersionBuild);
}

std::optional<int> AnswerArguments(const PlainHelp& help, int count, char* arguments[]) {
  if (count < 2) return std::nullopt;
  const std::string_view argument = arguments[1];
  if (argument == "--version") {
    fmt::print("{}\n", VersionOf(help.program));
    return 0;
  }
  if (argument == "--help" || argument == "-h") {
    fmt::print("{}\n\nUsage: {} [--help | --version]\n\n{}(1) and docs/ tell the rest.\n",
               help.what, help.program, help.program);
    return 0;
  }
  fmt::print(stderr, "{0}: {1} is no argument of it. See {0} --help.\n", help.program,
             Printable(argument));
  return kWrongUsage;
}

}  // namespace ostrel
