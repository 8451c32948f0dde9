// What every program does with its command line: --help with an example, --version, and one line
// for wrong usage.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "programs/plain_arguments.h"

namespace ostrel {

/// Adds --version and --completion, and to --help an example and the page to read on.
void Describe(CLI::App& app, const std::string& program, const std::string& example);

/// Returns the status with which the program ends at once: 0 after --help, --version or
/// --completion, which prints what teaches a shell the program's words (bash, zsh or fish), 2 for
/// wrong usage, which standard error has in one line. What a subcommand throws passes.
std::optional<int> Parse(CLI::App& app, int count, char* arguments[]);

}  // namespace ostrel
