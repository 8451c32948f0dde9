// ostrel-feed --explain: says of files what they say.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace ostrel {

struct ExplainOptions {
  bool isWanted = false;
  std::vector<std::string> files;
  bool asText = false;
  std::string now;  // empty: each file's own time
};

void AddExplainOptions(CLI::App& app, ExplainOptions& options);

/// Writes a line of JSON, or sentences, for each file to standard output; the areas' names by
/// Areas.tsv in `station` where there is one. A file that cannot be read is told on standard error.
/// Returns the program's exit status: 1 when one could not be read. Throws Failure for a time or an
/// Areas.tsv that is none.
int ExplainFiles(const ExplainOptions& options, const std::string& station);

}  // namespace ostrel
