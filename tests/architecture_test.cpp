// The house keeps its arrows: what a folder may include, read from the sources themselves.
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <set>
#include <string>

namespace ostrel {
namespace {

namespace fs = std::filesystem;

/// Each folder and the folders it may include, itself aside.
const std::map<std::string, std::set<std::string>> kArrows = {
    {"base", {}},
    {"state", {"base"}},
    {"platform", {"base"}},
    {"intake", {"base", "state", "platform"}},
    {"radio", {"base", "state", "platform"}},
    {"ident", {"base", "state", "platform", "intake", "radio"}},
    {"engine", {"base", "state", "platform", "intake", "radio", "ident"}},
    {"config", {"base", "state", "platform", "intake", "radio", "ident", "engine"}},
    {"app", {"base", "state", "platform", "intake", "radio", "ident", "engine", "config"}},
    {"platform/linux", {"base", "platform"}},
    {"platform/virtual", {"base", "platform"}},
    {"platform/qt", {"base", "platform", "platform/linux"}},
    {"ui", {"base", "state", "platform", "config"}},
};

TEST(Architecture, FoldersIncludeOnlyWhatStandsBelowThem) {
  const std::regex include("^#include ([<\"])([^>\"]+)[>\"]");
  // Standard C++ and {fmt}; nothing of the system, nothing of the toolkit.
  const std::regex portable("fmt/.*|[a-z_]+");
  int includes = 0;
  for (const auto& [folder, below] : kArrows) {
    const bool isCore = folder.find('/') == std::string::npos && folder != "ui";
    for (const auto& entry : fs::directory_iterator(fs::path(OSTREL_SOURCE_DIR) / folder)) {
      const auto name = entry.path().filename().string();
      if (name == "main.cpp" || !(name.ends_with(".h") || name.ends_with(".cpp"))) continue;
      std::ifstream source(entry.path());
      std::smatch match;
      for (std::string line; std::getline(source, line);) {
        if (!std::regex_search(line, match, include)) continue;
        ++includes;
        const auto from = fs::path(match[2].str()).parent_path().string();
        const bool isAllowed = match[1] == "<"
                                   ? !isCore || std::regex_match(match[2].str(), portable)
                                   : from == folder || from.empty() || below.contains(from);
        EXPECT_TRUE(isAllowed) << entry.path() << ": " << line;
      }
    }
  }
  EXPECT_GT(includes, 500);
}

}  // namespace
}  // namespace ostrel
