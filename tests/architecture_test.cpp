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
    {"ident", {"base", "state", "platform", "intake"}},
    {"engine", {"base", "state", "platform", "intake"}},
    {"config", {"base", "state", "platform", "intake", "ident", "engine"}},
    {"app", {"base", "state", "platform", "intake", "ident", "engine", "config"}},
    {"platform/linux", {"base", "platform"}},
    {"platform/virtual", {"base", "platform"}},
    {"platform/qt", {"base", "platform", "platform/linux"}},
    {"ui", {"base", "state", "platform", "config"}},
};
const std::set<std::string> kCore = {"base",  "state",  "platform", "intake",
                                     "ident", "engine", "config",   "app"};

/// Standard C++ and {fmt}; nothing of the system, nothing of the toolkit.
bool IsPortable(const std::string& header) {
  return header.starts_with("fmt/") ||
         (header.find('.') == std::string::npos && header.find('/') == std::string::npos &&
          !header.starts_with('Q'));
}

TEST(Architecture, FoldersIncludeOnlyWhatStandsBelowThem) {
  const fs::path root = OSTREL_SOURCE_DIR;
  const std::regex include("^#include ([<\"])([^>\"]+)[>\"]");
  int files = 0;
  for (const auto& [folder, below] : kArrows) {
    for (const auto& entry : fs::directory_iterator(root / folder)) {
      const auto extension = entry.path().extension();
      if ((extension != ".h" && extension != ".cpp") || entry.path().filename() == "main.cpp")
        continue;
      ++files;
      std::ifstream source(entry.path());
      for (std::string line; std::getline(source, line);) {
        std::smatch match;
        if (!std::regex_search(line, match, include)) continue;
        const std::string target = match[2];
        if (match[1] == "<") {
          EXPECT_TRUE(!kCore.contains(folder) || IsPortable(target))
              << entry.path() << ": " << line;
        } else {
          const auto from = fs::path(target).parent_path().string();
          EXPECT_TRUE(from == folder || below.contains(from) || from.empty())
              << entry.path() << ": " << line;
        }
      }
    }
  }
  EXPECT_GT(files, 100);
}

}  // namespace
}  // namespace ostrel
