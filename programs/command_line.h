// How the programs beside the station refuse what they were called with.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "base/text.h"

namespace ostrel {

/// For `failure_message`: says what is wrong. An argument may be the name of a stranger's file, put
/// there by a pattern of the shell.
inline std::string RefusedArguments(const CLI::App* app, const CLI::Error& error) {
  const CLI::Error printable(error.get_name(), Printable(error.what()), error.get_exit_code());
  return CLI::FailureMessage::simple(app, printable);
}

}  // namespace ostrel
