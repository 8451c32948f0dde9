// What a shell offers behind a program's name when its user presses the tabulator key.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ostrel {

/// A word of the command line and what it means.
struct CommandWord {
  std::string word;  // "--json", or the name of a command
  std::string what;  // one sentence; may be empty
};

/// The words of a program. Commands have words of their own.
struct CommandWords {
  struct Command {
    CommandWord name;
    std::vector<CommandWord> words;
  };
  std::string program;
  std::vector<CommandWord> words;
  std::vector<Command> commands;
};

/// The script that teaches `shell` ("bash", "zsh" or "fish") these words; where none of them fits,
/// the shell offers files. Nothing for another shell.
std::optional<std::string> CompletionFor(const std::string& shell, const CommandWords& words);

}  // namespace ostrel
