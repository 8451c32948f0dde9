#include "programs/feed/explain_files.h"

#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <optional>

#include "base/failure.h"
#include "base/names.h"
#include "base/text.h"
#include "feed/area_rules.h"
#include "programs/feed/explain.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

/// At most one byte more than a bulletin has. Throws Failure.
std::string Read(const std::string& path) {
  std::string content(kLongestBulletin + 1, '\0');
  std::ifstream file(path, std::ios::binary);
  if (!file.read(content.data(), static_cast<std::streamsize>(content.size())) && !file.eof())
    throw Failure(failure_number::kPathAccess, "It cannot be read.");
  content.resize(static_cast<std::size_t>(file.gcount()));
  return content;
}

UtcTime TimeOf(const std::string& path) {
  const auto time = std::chrono::file_clock::to_sys(fs::last_write_time(path));
  return std::chrono::floor<milliseconds>(time);
}

}  // namespace

void AddExplainOptions(CLI::App& app, ExplainOptions& options) {
  auto* const explain =
      app.add_flag("--explain", options.isWanted, "Says what the files say, as JSON, one a line");
  app.add_option("FILE", options.files, "With --explain: bulletins and CAP messages")
      ->needs(explain);
  app.add_flag("--text", options.asText, "With --explain: in sentences")->needs(explain);
  app.add_option("--now", options.now,
                 "With --explain: when the files came, \"2026-05-16T15:00Z\"; their own times "
                 "unless told")
      ->needs(explain);
}

int ExplainFiles(const ExplainOptions& options, const std::string& station) {
  if (options.files.empty()) throw Failure(failure_number::kInvalidArgument, "Which files?");
  const auto now = options.now.empty() ? std::nullopt : std::optional(ReadNow(options.now));
  const auto areas = AreasOf(station);
  int status = EXIT_SUCCESS;
  for (const auto& path : options.files) {
    const auto name = FileNameOf(path);
    try {
      const auto content = Read(path);
      const auto bulletin = ReadBulletin(content, now ? *now : TimeOf(path));
      fmt::print("{}", options.asText ? ExplainAsText(name, bulletin, areas)
                                      : ExplainAsJson(name, bulletin) + "\n");
    } catch (const std::exception& error) {
      fmt::print(stderr, "{}: {}\n", Printable(path), Printable(error.what()));
      status = EXIT_FAILURE;
    }
  }
  return status;
}

}  // namespace ostrel
