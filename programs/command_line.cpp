#include "programs/command_line.h"

#include <fmt/format.h>

#include "base/text.h"
#include "programs/completion.h"

namespace ostrel {
namespace {

std::vector<CommandWord> OptionsOf(const CLI::App& app) {
  std::vector<CommandWord> words;
  for (const auto* const option : app.get_options())
    for (const auto& name : option->get_lnames())
      words.push_back({"--" + name, option->get_description()});
  return words;
}

CommandWords WordsOf(const CLI::App& app) {
  CommandWords words{app.get_name(), OptionsOf(app), {}};
  for (const auto* const command : app.get_subcommands({})) {
    const auto options = OptionsOf(*command);
    if (command->get_name().empty()) {  // a group of options
      words.words.insert(words.words.end(), options.begin(), options.end());
    } else {
      words.commands.push_back({{command->get_name(), command->get_description()}, options});
    }
  }
  return words;
}

/// The library prints it as it does the version.
[[noreturn]] void PrintCompletion(const CLI::App& app, const std::string& shell) {
  auto script = CompletionFor(shell, WordsOf(app)).value();
  script.pop_back();  // the library ends the line
  throw CLI::CallForVersion(script, EXIT_SUCCESS);
}

}  // namespace

void Describe(CLI::App& app, const std::string& program, const std::string& example) {
  app.name(program);
  app.set_version_flag("--version", VersionOf(program));
  app.add_option_function<std::string>(
         "--completion", [&app](const std::string& shell) { PrintCompletion(app, shell); },
         "Prints what teaches a shell these words")
      ->check(CLI::IsMember({"bash", "zsh", "fish"}))
      ->trigger_on_parse();
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
