// The house keeps its arrows: what a folder may include, read from the sources themselves.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace ostrel {
namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

const Names kCore = {"base",  "state",  "platform", "intake", "radio",
                     "ident", "engine", "settings", "station"};

/// Each folder and the folders it may include, itself aside. The core is standard C++ and {fmt}.
const std::map<std::string, Names> kArrows = {
    {"base", {}},
    {"state", {"base"}},
    {"platform", {"base"}},
    {"intake", {"base", "state", "platform"}},
    {"radio", {"base", "state", "platform"}},
    {"ident", {"base", "state", "platform", "intake", "radio"}},
    {"engine", {"base", "state", "platform", "intake", "radio", "ident"}},
    {"settings", {"base", "state", "platform"}},
    {"station", kCore},
    {"profile", {"base", "platform", "intake", "ident", "settings"}},
    {"seam", {"base", "platform", "state", "station"}},
    {"platform/linux", {"base", "platform"}},
    {"platform/virtual", {"base", "platform"}},
    {"platform/qt", {"base", "platform", "platform/linux"}},
    {"platform/x11", {"base", "platform", "platform/qt"}},
    {"ui", {"base", "state", "platform", "station"}},
    {"receive", {}},
    {"client", {}},
    {"alarms", {"base"}},
    {"broker", {}},
    {"config", {}},
    {"web", {"base"}},
    {"bulletin", {"base"}},
    {"listen", {"base", "bulletin", "web"}},
    {"feed",
     {"base", "bulletin", "platform", "settings", "platform/linux", "receive", "broker", "config"}},
    {"programs",
     {"base", "platform", "platform/linux", "platform/qt", "profile", "seam", "station"}},
    {"programs/station", {"base", "programs", "station", "ui", "platform/linux", "platform/x11"}},
    {"programs/headless",
     {"base", "platform", "programs", "station", "platform/linux", "platform/qt"}},
    {"programs/monitor", {"programs", "base", "receive", "alarms", "listen", "web"}},
    {"programs/status",
     {"programs", "base", "alarms", "broker", "client", "config", "web", "platform/linux"}},
    {"programs/feed", {"programs", "base", "bulletin", "feed", "platform/linux", "settings"}},
    {"programs/ingest", {"programs", "base", "feed", "platform/linux"}},
    {"programs/watch", {"programs", "base", "client", "platform/linux"}},
    {"programs/queue", {"programs", "base", "client", "intake", "platform/linux"}},
    {"repeat", {"base", "bulletin", "config"}},
    {"programs/repeat",
     {"programs", "base", "bulletin", "platform/linux", "programs/queue", "repeat"}},
    {"programs/settings",
     {"programs", "base", "state", "intake", "settings", "profile", "station", "platform/linux"}},
    {"programs/simulate",
     {"programs", "base", "ident", "intake", "settings", "station", "receive", "platform/linux",
      "platform/virtual"}},
};

struct Include {
  std::string file, line, included;
  bool isOwn;  // in quotes
};

std::vector<Include> IncludesOf(const std::string& folder) {
  const std::regex include("^#include ([<\"])([^>\"]+)[>\"]");
  std::vector<Include> includes;
  for (const auto& entry : fs::directory_iterator(fs::path(OSTREL_SOURCE_DIR) / folder)) {
    const auto file = folder + "/" + entry.path().filename().string();
    if (!file.ends_with(".h") && !file.ends_with(".cpp")) continue;
    std::ifstream source(entry.path());
    std::smatch match;
    for (std::string line; std::getline(source, line);) {
      if (std::regex_search(line, match, include))
        includes.push_back({file, line, match[2], match[1] == "\""});
    }
  }
  return includes;
}

TEST(Architecture, FoldersIncludeOnlyWhatStandsBelowThem) {
  const std::regex portable("fmt/.*|[a-z_]+");
  int count = 0;
  for (const auto& [folder, below] : kArrows) {
    for (const auto& include : IncludesOf(folder)) {
      ++count;
      const auto from = fs::path(include.included).parent_path().string();
      const bool isAllowed =
          include.isOwn ? from == folder || from.empty() || below.contains(from)
                        : !kCore.contains(folder) || std::regex_match(include.included, portable);
      EXPECT_TRUE(isAllowed) << include.file << ": " << include.line;
    }
  }
  EXPECT_GT(count, 900);
}

TEST(Architecture, NoFilesIncludeEachOtherInACircle) {
  std::map<std::string, Names> open;  // of each file, what it includes
  for (const auto& [folder, below] : kArrows) {
    for (const auto& include : IncludesOf(folder)) {
      if (include.isOwn && include.file.ends_with(".h"))
        open[include.file].insert(include.included);
    }
  }
  // What includes nothing that is still open is closed; a circle never is.
  const auto isClosed = [&](const auto& file) {
    return std::none_of(file.second.begin(), file.second.end(),
                        [&](const auto& name) { return open.contains(name); });
  };
  while (std::erase_if(open, isClosed) > 0) {
  }
  for (const auto& [file, includes] : open)
    ADD_FAILURE() << file << " is in a circle, or below one";
}

}  // namespace
}  // namespace ostrel
