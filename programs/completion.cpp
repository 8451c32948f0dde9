#include "programs/completion.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace ostrel {
namespace {

using Words = std::vector<CommandWord>;

/// A text in single quotes, as all three shells take it within a line.
std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char sign : text) quoted += sign == '\'' ? "'\\''" : std::string(1, sign);
  return quoted += "'";
}

std::string FunctionOf(const CommandWords& words) {
  auto name = "_" + words.program;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

Words NamesOf(const std::vector<CommandWords::Command>& commands) {
  Words names;
  for (const auto& command : commands) names.push_back(command.name);
  return names;
}

/// All that may stand behind the program's name.
Words FirstWords(const CommandWords& words) {
  auto all = NamesOf(words.commands);
  all.insert(all.end(), words.words.begin(), words.words.end());
  return all;
}

std::string Listed(const Words& words, const std::string& between) {
  std::vector<std::string> names;
  for (const auto& each : words) names.push_back(each.word);
  return fmt::format("{}", fmt::join(names, between));
}

std::string ForBash(const CommandWords& words) {
  std::string cases;
  for (const auto& command : words.commands)
    cases +=
        fmt::format("    {}) offered=\"{}\" ;;\n", command.name.word, Listed(command.words, " "));
  const auto find = words.commands.empty()
                        ? ""
                        : fmt::format(
                              "  for word in \"${{COMP_WORDS[@]:1:COMP_CWORD-1}}\"; do\n"
                              "    case $word in {}) command=$word; break ;; esac\n"
                              "  done\n",
                              Listed(NamesOf(words.commands), "|"));
  return fmt::format(
      "{0}() {{\n"
      "  local word command= offered\n{1}"
      "  case $command in\n{2}"
      "    *) offered=\"{3}\" ;;\n"
      "  esac\n"
      "  mapfile -t COMPREPLY < <(compgen -W \"$offered\" -- \"${{COMP_WORDS[COMP_CWORD]}}\")\n"
      "}}\n"
      "complete -o default -F {0} {4}\n",
      FunctionOf(words), find, cases, Listed(FirstWords(words), " "), words.program);
}

/// "word:what" for each, as _describe takes it.
std::string DescribedForZsh(const Words& words) {
  std::string text;
  for (const auto& each : words)
    text += " " + Quoted(each.what.empty() ? each.word : each.word + ":" + each.what);
  return text;
}

std::string ForZsh(const CommandWords& words) {
  std::string cases;
  for (const auto& command : words.commands)
    cases += fmt::format("  {}) offered=({}); break ;;\n", command.name.word,
                         DescribedForZsh(command.words));
  return fmt::format(
      "#compdef {0}\n"
      "local word\nlocal -a offered\n"
      "offered=({1})\n"
      "for word in \"${{(@)words[2,CURRENT-1]}}\"; do\n"
      "  case $word in\n{2}  esac\n"
      "done\n"
      "_describe {0} offered || _files\n",
      words.program, DescribedForZsh(FirstWords(words)), cases);
}

/// One word of fish, offered where `when` holds.
std::string LineForFish(const std::string& program, const std::string& when,
                        const CommandWord& word) {
  const bool isOption = word.word.starts_with("--");
  return fmt::format("complete -c {}{} {} {} -d {}\n", program,
                     when.empty() ? "" : " -n " + Quoted(when), isOption ? "-l" : "-a",
                     isOption ? word.word.substr(2) : word.word, Quoted(word.what));
}

std::string ForFish(const CommandWords& words) {
  std::string text;
  const std::string first = words.commands.empty() ? "" : "__fish_use_subcommand";
  for (const auto& each : FirstWords(words)) text += LineForFish(words.program, first, each);
  for (const auto& command : words.commands) {
    for (const auto& each : command.words)
      text += LineForFish(words.program, "__fish_seen_subcommand_from " + command.name.word, each);
  }
  return text;
}

}  // namespace

std::optional<std::string> CompletionFor(const std::string& shell, const CommandWords& words) {
  if (shell == "bash") return ForBash(words);
  if (shell == "zsh") return ForZsh(words);
  if (shell == "fish") return ForFish(words);
  return std::nullopt;
}

}  // namespace ostrel
