#include "programs/command_line.h"

#include <fmt/format.h>

#include "base/text.h"
#include "programs/plain_arguments.h"

namespace ostrel {

void Describe(CLI::App& app, const std::string& program, const std::string& example) {
  app.name(program);
  app.set_version_flag("--version", VersionOf(program));
  app.footer(fmt::format("Example:\n  {}\n\n{}(1) and docs/ tell the rest.", example, program));
}

std::optional<int> Parse(CLI::App& app, int count, char* arguments[]) {
  try {
    app.parse(count, arguments);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) return app.exit(error);
    auto why = Printable(error.what());
    if (!why.ends_with('.')) why += '.';
    fmt::print(stderr, "{0}: {1} See {0} --help.\n", app.get_name(), why);
    return kWrongUsage;
  }
}

}  // namespace ostrel
