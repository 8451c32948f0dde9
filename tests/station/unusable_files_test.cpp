// Lists, tables and texts of the station that are damaged, too large, or no files at all.
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

TEST(UnusableFiles, AreToldAndNeverReadWithoutEnd) {
  using Damage = std::function<void(const std::string& path)>;
  const auto lay = [](const std::string& content) -> Damage {
    return [=](const std::string& path) { std::ofstream(path) << content; };
  };
  const std::string large(kLargestText + 1, 'A');
  const Damage leadsToZeros = [](const std::string& path) {
    fs::create_symlink("/dev/zero", path);
  };
  const Damage pipe = [](const std::string& path) { mkfifo(path.c_str(), 0600); };
  const Damage folder = [](const std::string& path) { fs::create_directory(path); };
  const std::string tooLarge = "Too large", noFile = "Path/File access error";
  const std::string damaged = "Damaged, it is no text",
                    fill = "nothing. The fill file cannot be sent. ";
  const struct {
    const char* name;
    const char* told;  // as what the status names it
    Damage damage;
    std::string why;
    const char* category;  // of its line in the log; none where it is quiet
    std::string line;
  } cases[] = {
      {"RtList3.txt", "RtList3.txt", lay(large), tooLarge, "LoadRuleLists", "RtList3.txt (Too"},
      {"RtList3.txt", "RtList3.txt", lay(std::string(99, '\0')), damaged, "LoadRuleLists",
       "RtList3.txt (Damaged"},
      {"RtList3.txt", "RtList3.txt", leadsToZeros, noFile, "LoadRuleLists", "RtList3.txt (Path"},
      {"RtMorse.txt", "RtMorse.txt", pipe, noFile, "CW ID", noFile},
      {"RtMorse.txt", "RtMorse.txt", lay("no code\r\n"), "It codes no sign.", nullptr, ""},
      {"RtSched.txt", "RtSched.txt", lay(large), tooLarge, nullptr, ""},
      {"FillFile.txt", "fill file", lay(""), "It is empty", "Silence", fill},
      {"FillFile.txt", "fill file", lay(large), tooLarge, "Silence", fill},
      {"FillFile.txt", "fill file", folder, noFile, "Silence", fill},
      {"FillFile.txt", "fill file", pipe, noFile, "Silence", fill},
  };
  for (const auto& [name, told, damage, why, category, line] : cases) {
    SCOPED_TRACE(fmt::format("{}: {}", name, why));
    VirtualStation station;
    station.Rule(3, "TOR*");
    fs::remove(station.Path(name));
    damage(station.Path(name));
    station.Start();
    station.Run(12s);
    const auto& unusable = station.station->figures().unusable;
    ASSERT_EQ(unusable.size(), 1U);
    EXPECT_EQ(unusable.begin()->first, told);
    EXPECT_NE(unusable.begin()->second.find(why), std::string::npos) << unusable.begin()->second;
    const auto lines = category == nullptr ? Lines() : station.Messages(category);
    EXPECT_EQ(lines.size(), category == nullptr ? 0U : 1U) << "once";
    for (const auto& text : lines) EXPECT_NE(text.find(line), std::string::npos) << text;
    EXPECT_EQ(station.station->status().sinceStart.errors.size(), 0U);

    // What was put right is no news any more, as soon as it is used again.
    fs::remove(station.Path(name));
    station.WriteFile(station.Path(name), "A.-    \r\n");
    station.station->actions().ShowSetup();
    station.station->actions().SendMorseId();
    station.station->actions().AddScheduleEntry();
    station.setup().lstSchedule.Assign({"12:00 /a /b"});
    station.station->actions().RemoveScheduleEntries({0});
    station.Run(2s);
    EXPECT_TRUE(station.station->figures().unusable.empty());
  }
}

}  // namespace
}  // namespace ostrel
