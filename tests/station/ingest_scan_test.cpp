// What becomes of a file in the ingest folder: by its name, by who holds it, by what fails.
#include <algorithm>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

constexpr const char* kIngest = "KvData/RxFiles";

/// Nothing leaves the holding folders, so that what the scan did stays to be seen.
void KeepInHoldingFolders(VirtualStation& station) {
  station.files.copyFault = [](const std::string&, const std::string& destination) {
    return destination.find("/RtXmit/") != std::string::npos ? copy_code::kDiskFull : 0;
  };
}

Lines Words(const std::string& text) {
  std::istringstream words(text);
  return {std::istream_iterator<std::string>(words), {}};
}

TEST(IngestScan, AHeldFileIsReportedAtEveryFortyFirstFailureInARow) {
  enum Scan { kHeld = 70, kNoAccess = 75, kBroken = 57, kFree = 0, kEmpty = -1 };
  const struct {
    std::vector<std::pair<int, Scan>> scans;
    std::size_t heldReports, otherReports;
  } cases[] = {{{{40, kHeld}}, 0, 0},
               {{{41, kHeld}}, 1, 0},
               {{{81, kNoAccess}}, 1, 0},
               {{{82, kNoAccess}}, 2, 0},
               {{{40, kHeld}, {1, kFree}, {40, kHeld}}, 0, 0},
               {{{20, kHeld}, {3, kEmpty}, {21, kNoAccess}}, 1, 0},
               {{{50, kBroken}}, 0, 50},
               {{{50, kBroken}, {1, kHeld}}, 1, 50}};
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    VirtualStation station;
    station.Rule(0, "AA*");
    station.Start();
    auto now = kFree;
    int tests = 0;
    station.files.lockFault = [&](const std::string&) {
      ++tests;
      if (now != kFree) throw Failure(now, "Trouble");
    };
    int expected = 0;
    for (const auto& [count, scan] : cases[i].scans) {
      now = scan;
      if (scan == kEmpty) fs::remove(station.Path(kIngest) + "/aa.txt");
      if (scan != kEmpty) station.Drop("aa.txt", "text");
      station.Run(count * kCyclePeriod);
      expected += scan == kEmpty ? 0 : count;
    }
    ASSERT_EQ(tests, expected) << i;
    const auto path = station.Path(kIngest) + "/aa.txt";
    const auto log = station.ReadFile(station.Path("RtLog.txt"));
    EXPECT_EQ(station.LogOf("CheckForNewFiles").size(),
              cases[i].heldReports + cases[i].otherReports)
        << i;
    const auto held = fmt::format(
        "Error # {}, Trouble, occurred at reference (unspecified), in "
        "Ostrel.frmMain.CheckForNewFiles A file in the ingest directory is locked and cannot be "
        "processed. \r\n File Name: {}\r\nCorrect this problem and restart Ostrel. \r\n",
        static_cast<int>(now), path);
    const auto other = "CheckForNewFiles  File Name: " + path + "\r\n";
    EXPECT_EQ(log.find(held) != std::string::npos, cases[i].heldReports > 0) << i;
    EXPECT_EQ(log.find(other) != std::string::npos, cases[i].otherReports > 0) << i;
  }
}

TEST(IngestScan, TheNameAloneDecidesWhereAFileGoes) {
  const struct {
    const char* rules;    // list and keyword
    const char* waiting;  // in RtPri4 already
    const char* dropped;
    const char *inPri4, *inPri6, *inBlock;
  } cases[] = {
      {"3 AB*", "", "ab.txt", "AB.TXT", "", ""},
      {"3 AB*", "", "XX.TXT", "", "", ""},
      {"5 AB* 3 *.TXT", "", "AB.TXT", "AB.TXT", "", ""},
      {"10 AB* 5 AB*", "", "AB.TXT", "", "AB.TXT", ""},
      {"10 AB*", "", "AB.TXT", "", "", "AB.TXT"},
      // discarded before anything else, by product
      {"11 AB* 12 AB*_|_C=4 3 AB*", "", "AB.TXT", "", "", ""},
      {"11 AB.TXT 3 AB*", "", "AB.TXT.7", "", "", ""},
      // taken names
      {"3 AB*", "AB.TXT AB.TXT.1", "AB.TXT", "AB.TXT AB.TXT.1 AB.TXT.2", "", ""},
      {"3 AB*", "AB.TXT.1", "AB.TXT.1", "AB.TXT.1 AB.TXT.2", "", ""},
      {"3 AB*", "AB", "AB", "AB AB.1", "", ""},
      // copies
      {"12 AB.TXT_|_C=3 3 AB*", "", "ab.txt", "AB.TXT AB.TXT.1 AB.TXT.2", "", ""},
      {"12 AB*_|_C=3 3 AB*", "", "AB.TXT", "AB.TXT AB.TXT.1 AB.TXT.2", "", ""},
      {"12 AB*_|_C=3 12 *_|_C=2 3 AB*", "", "AB.TXT", "AB.TXT AB.TXT.1 AB.TXT.2", "", ""},
      {"12 AB*_|_C=1 3 AB*", "", "AB.TXT", "AB.TXT", "", ""},
      {"12 AB_|_C=2 3 AB 5 AB.1", "", "AB", "AB", "AB.1", ""},
  };
  for (const auto& row : cases) {
    VirtualStation station;
    const auto rules = Words(row.rules);
    for (std::size_t i = 0; i < rules.size(); i += 2) {
      auto keyword = rules[i + 1];
      std::replace(keyword.begin(), keyword.end(), '_', ' ');
      station.Rule(std::stoul(rules[i]), keyword);
    }
    KeepInHoldingFolders(station);
    station.Start();
    for (const auto& name : Words(row.waiting))
      station.WriteFile(station.Path("KvData/RtPri4/" + name), "");
    station.Drop(row.dropped, "text");
    station.Run(2s);
    const auto what = std::string(row.rules) + ": " + row.dropped;
    EXPECT_EQ(station.Names(kIngest), Lines{}) << what;
    EXPECT_EQ(station.Names("KvData/RtPri4"), Words(row.inPri4)) << what;
    EXPECT_EQ(station.Names("KvData/RtPri6"), Words(row.inPri6)) << what;
    EXPECT_EQ(station.Names("KvData/RtPri11"), Words(row.inBlock)) << what;
    EXPECT_EQ(station.LogOf("CheckForNewFiles"), Lines{}) << what;
    EXPECT_TRUE(station.machine.dialogs.messages.empty()) << what;
  }
}

TEST(IngestScan, ArchivesAreUnpackedOrDeletedOrRouted) {
  const auto drop = [](VirtualStation& station, const char* name) {
    station.WriteFile(station.Path("ab.txt"), "inside");
    station.WriteFile(station.Path("xx.txt"), "inside");
    auto created = station.archives.Create(station.Path(name));
    created.writer->Add(station.Path(""), "ab.txt");
    created.writer->Add(station.Path(""), "xx.txt");
    created.writer->Close();
    fs::rename(station.Path(name), station.Path(kIngest) + "/" + name);
  };
  const auto inPri4 = [](const char* unzip, const char* name, bool sound, auto&& lay) {
    VirtualStation station;
    station.Set("UnZipFiles", unzip);
    station.Rule(3, "AB*");
    KeepInHoldingFolders(station);
    station.Start();
    if (sound) lay(station, name);
    if (!sound) station.Drop(name, "this is no archive");
    station.Run(2s);
    EXPECT_EQ(station.Names(kIngest), Lines{}) << name;
    EXPECT_EQ(station.LogOf("CheckForNewFiles"), Lines{}) << name;
    EXPECT_EQ(station.LogOf("UnZip"), Lines{}) << name;
    EXPECT_TRUE(station.machine.dialogs.messages.empty()) << name;
    return station.Names("KvData/RtPri4");
  };
  for (const auto* name : {"abc.zip", "ABC.ZIS", "AB.ZI,X"})
    EXPECT_EQ(inPri4("1", name, true, drop), Lines{"AB.TXT"}) << name;
  EXPECT_EQ(inPri4("1", "ABC.ZIP", false, drop), Lines{}) << "unreadable: deleted, not a word";
  EXPECT_EQ(inPri4("0", "abc.zip", true, drop), Lines{"ABC.ZIP"});

  // The only copy of what is in it: kept when its members find no room, unpacked once afterwards
  // although it cannot be deleted at first.
  VirtualStation station;
  station.Set("UnZipFiles", "1");
  station.Rule(3, "AB*");
  KeepInHoldingFolders(station);
  station.Start();
  drop(station, "ABC.ZIP");
  station.files.writeFault = [&](const std::string& path) {
    if (path.ends_with("AB.TXT")) throw Failure(failure_number::kDiskFull, "Disk full");
  };
  station.Run(2 * kCyclePeriod);
  EXPECT_EQ(station.Names(kIngest), Lines{"ABC.ZIP"});
  EXPECT_EQ(station.LogOf("CheckForNewFiles").size(), 2U) << "at every call";
  station.files.writeFault = nullptr;
  station.files.deleteFault = [&](const std::string& path) {
    if (path.ends_with("ABC.ZIP")) throw Failure(failure_number::kPermissionDenied, "Held");
  };
  station.Run(1s);
  station.files.deleteFault = nullptr;
  station.Run(1s);
  EXPECT_EQ(station.Names("KvData/RtPri4"), Lines{"AB.TXT"});
  EXPECT_EQ(station.Names(kIngest), Lines{});
}

TEST(IngestScan, WhatFailsIsTriedAgainAndWhatIsPlacedIsNotTakenTwice) {
  VirtualStation station;
  station.Rule(3, "AB*");
  station.Rule(12, "AB.TXT | C=2");
  station.Start();
  station.files.copyFault = [](const std::string&, const std::string& destination) {
    const bool isRefused = destination.find("/RtPri4/") != std::string::npos ||
                           destination.find("/RtXmit/") != std::string::npos;
    return isRefused ? copy_code::kDiskFull : 0;
  };
  station.Drop("AB.TXT", "first");
  station.Run(4 * kCyclePeriod);
  EXPECT_EQ(station.Names(kIngest), (Lines{"AB.TXT", "AB.TXT.1"}));
  const auto reports = station.LogOf("CheckForNewFiles");
  EXPECT_EQ(reports.size(), 4U);
  EXPECT_NE(reports.at(0).find("Error # -2147220392, Copy File Failed: dll error - 112 "),
            std::string::npos);

  fs::remove(station.Path(kIngest) + "/AB.TXT.1");
  KeepInHoldingFolders(station);
  station.files.deleteFault = [&](const std::string& path) {
    if (path == station.Path(kIngest) + "/AB.TXT")
      throw Failure(failure_number::kPermissionDenied, "Held");
  };
  for (int i = 0; i < 5; ++i) {
    station.Run(kCyclePeriod);
    fs::remove(station.Path(kIngest) + "/AB.TXT.1");
  }
  EXPECT_EQ(station.Names("KvData/RtPri4"), Lines{"AB.TXT"}) << "placed once";
  station.Drop("AB.TXT", "another file of that name");
  station.files.deleteFault = nullptr;
  station.Run(kCyclePeriod);
  EXPECT_EQ(station.Names("KvData/RtPri4").size(), 2U) << "one file a call";
  station.Run(1s);
  EXPECT_EQ(station.Names("KvData/RtPri4"), (Lines{"AB.TXT", "AB.TXT.1", "AB.TXT.2"}));
  EXPECT_EQ(station.Names(kIngest), Lines{});
}

}  // namespace
}  // namespace ostrel
