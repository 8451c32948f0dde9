// What becomes of a file in the ingest folder: by its name, by who holds it, by what fails.
#include <algorithm>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

constexpr const char* kIngest = "KvData/RxFiles";

Lines Words(const std::string& text) {
  std::istringstream words(text);
  return {std::istream_iterator<std::string>(words), {}};
}

/// Given to `copyFault`, it keeps all that is routed in the holding folders.
int RefuseQueueing(const std::string&, const std::string& destination) {
  return destination.find("/RtXmit/") != std::string::npos ? copy_code::kDiskFull : 0;
}

TEST(IngestScan, AHeldFileIsReportedAtEveryFortyFirstFailureInARow) {
  constexpr int kFree = 0, kBroken = 57, kHeld = 70, kNoAccess = 75;
  VirtualStation station;
  station.Rule(0, "AA*");
  station.Start();
  int trouble = kFree;
  station.files.lockFault = [&](const std::string&) {
    if (trouble != kFree) throw Failure(trouble, "Trouble");
  };
  const auto reportsAfter = [&](int scans, int each) {
    trouble = each;
    station.Drop("aa.txt", "text");
    station.Run(scans * kCyclePeriod);
    return station.LogOf("CheckForNewFiles").size();
  };
  EXPECT_EQ(reportsAfter(40, kHeld) + reportsAfter(1, kFree), 0U);
  EXPECT_EQ(reportsAfter(40, kNoAccess), 0U);
  EXPECT_EQ(reportsAfter(1, kNoAccess), 1U);
  EXPECT_EQ(reportsAfter(50, kBroken), 51U) << "any other failure is reported each time";
  EXPECT_EQ(reportsAfter(1, kHeld), 52U) << "and counts";
  const auto held = fmt::format(
      "Error # 75, Trouble, occurred at reference (unspecified), in "
      "Ostrel.frmMain.CheckForNewFiles A file in the ingest directory is locked and cannot be "
      "processed. \r\n File Name: {}/aa.txt\r\nCorrect this problem and restart Ostrel. \r\n",
      station.Path(kIngest));
  EXPECT_NE(station.ReadFile(station.Path("RtLog.txt")).find(held), std::string::npos);
}

TEST(IngestScan, TheNameAloneDecidesWhereAFileGoes) {
  const struct {
    const char* rules;    // list and keyword
    const char* waiting;  // in RtPri4 already
    const char *dropped, *inPri4, *inPri6, *inBlock;
  } cases[] = {
      {"3 AB*", "", "XX.TXT", "", "", ""},
      {"10 AB* 5 AB* 3 *.TXT", "", "AB.TXT", "AB.TXT", "", ""},
      {"10 AB* 5 AB*", "", "AB.TXT", "", "AB.TXT", ""},
      {"10 AB*", "", "AB.TXT", "", "", "AB.TXT"},
      // discarded before anything else, by product
      {"11 AB.TXT 12 AB*_|_C=4 3 AB*", "", "AB.TXT.7", "", "", ""},
      // taken names
      {"3 AB*", "AB.TXT AB.TXT.1", "AB.TXT", "AB.TXT AB.TXT.1 AB.TXT.2", "", ""},
      {"3 AB*", "AB", "AB", "AB AB.1", "", ""},
      // copies
      {"12 AB*_|C=3_OR_SO 12 AB*_|_C=MANY 12 *_|_X_|_C=2 3 AB*", "", "ab.txt",
       "AB.TXT AB.TXT.1 AB.TXT.2", "", ""},
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
    station.files.copyFault = RefuseQueueing;
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
  }
}

TEST(IngestScan, AFolderWhoseFilesAreNoReceivedOnesIsLeftAloneWithOneReport) {
  VirtualStation station;
  const auto folder = station.Path("");
  fs::create_directory_symlink(folder, folder + "link");
  station.Start();
  std::size_t reports = 0;
  for (const auto* path :
       {"", "KvData/RtPri3/..", "KvData/RtSent", "link", "link/KvData/RxFiles/../.."}) {
    SCOPED_TRACE(path);
    station.WriteFile(station.Path(path) + "/NOTES.DOC", "nobody's");
    station.setup().txtIngestPath.Set(folder + path);
    station.station->actions().LeaveSetup();
    station.Run(2s);
    EXPECT_TRUE(fs::exists(station.Path(path) + "/NOTES.DOC"));
    EXPECT_EQ(station.LogOf("CheckForNewFiles").size(), ++reports);
  }
  EXPECT_EQ(station.Names("KvData/RtSent"), (Lines{"FILLFILE.TXT", "NOTES.DOC"}))
      << "the sending goes on";
}

TEST(IngestScan, WhatNoRuleNamesIsKeptWhileAListIsLostAndComesBackWithIt) {
  VirtualStation station;
  station.Rule(3, "AB*");
  station.files.copyFault = RefuseQueueing;
  std::filesystem::rename(station.Path("RtList3.txt"), station.Path("lost"));
  station.Start();
  station.Drop("AB.OLD", "stale");
  station.Run(1s);
  for (int i = 0; i < 2; ++i) {
    station.Drop("ab.txt", "text");
    station.Run(1s);
  }
  EXPECT_EQ(station.Names(kIngest), Lines{}) << "nothing is held up";
  EXPECT_EQ(station.Names("KvData/RtKept"), (Lines{"AB.OLD", "AB.TXT", "AB.TXT.1"}));
  station.files.SetLastWriteTime(station.Path("KvData/RtKept/AB.OLD"),
                                 station.machine.clock.UtcNow() - 151min);
  std::filesystem::rename(station.Path("lost"), station.Path("RtList3.txt"));
  station.files.deleteFault = [](const std::string&) {
    throw Failure(failure_number::kDeviceError, "I/O");
  };
  station.Restart();
  station.Run(1s);
  EXPECT_EQ(station.Names("KvData/RtKept").size(), 3U) << "a failure ends it";
  station.files.deleteFault = nullptr;
  station.setup().txtPurgeTime.Set("0.00001");  // in force at the next start
  station.station->actions().ShowSetup();
  station.station->actions().LeaveSetup();
  EXPECT_EQ(station.Names("KvData/RtKept").size(), 3U) << "the line is fed between two of them";
  station.Run(1s);
  EXPECT_EQ(station.Names("KvData/RtKept"), Lines{});
  EXPECT_EQ(station.Names("KvData/RtPri4"), (Lines{"AB.TXT", "AB.TXT.1"}));
  const auto said = station.Messages("Kept");
  ASSERT_EQ(said.size(), 3U);
  EXPECT_EQ(said[0], "The rule lists are there again: 3 files go back to the ingest folder.");
  EXPECT_TRUE(said[1].starts_with("Error # 57, I/O")) << said[1];
}

TEST(IngestScan, OfTooManyKeptFilesTheOldestMakeRoom) {
  VirtualStation station;
  station.Rule(3, "AB*");
  std::filesystem::rename(station.Path("RtList3.txt"), station.Path("lost"));
  std::filesystem::create_directories(station.Path("KvData/RtKept"));
  for (int i = 0; i < 10'000; ++i)
    station.WriteFile(station.Path(fmt::format("KvData/RtKept/C{:04}.TXT", i)), "");
  station.Start();
  station.Drop("AB.TXT", "warning");
  station.Run(1s);
  const auto kept = station.Names("KvData/RtKept");
  ASSERT_EQ(kept.size(), 9001U);
  EXPECT_EQ(kept[0], "AB.TXT") << "the newest is worth most";
  EXPECT_EQ(kept[1], "C1000.TXT");
}

TEST(IngestScan, AFileThatFindsNoRoomStaysAndOneThatCannotBeDeletedIsPlacedOnce) {
  VirtualStation station;
  station.Rule(3, "AB*");
  station.Start();
  station.files.copyFault = [](const std::string&, const std::string&) { return 112; };
  station.Drop("AB.TXT", "first");
  station.Run(4 * kCyclePeriod);
  const Lines failures(4, "Error # -2147220392, Copy File Failed: dll error - 112 ");
  auto reports = station.Messages("CheckForNewFiles");
  for (auto& report : reports) report.resize(failures[0].size());
  EXPECT_EQ(reports, failures);

  station.files.copyFault = RefuseQueueing;
  station.files.deleteFault = [&](const std::string& path) {
    if (path == station.Path(kIngest) + "/AB.TXT")
      throw Failure(failure_number::kPermissionDenied, "Held");
  };
  station.Run(5 * kCyclePeriod);
  EXPECT_EQ(station.Names(kIngest), Lines{"AB.TXT"});
  EXPECT_EQ(station.Messages("Ingest"),
            Lines{"AB.TXT was taken, will not be taken again, and cannot "
                  "be deleted: Held"});
  station.files.deleteFault = nullptr;
  station.Run(1s);
  EXPECT_EQ(station.Names("KvData/RtPri4"), Lines{"AB.TXT"});
  EXPECT_EQ(station.Names(kIngest), Lines{});
}

TEST(IngestScan, ANewVersionThatComesWhileTheOldOneIsTakenIsTakenToo) {
  for (const bool inPlace : {true, false}) {
    VirtualStation station;
    station.Rule(3, "AB*");
    station.Start();
    const auto path = station.Path(kIngest) + "/AB.TXT";
    station.files.copyFault = [&](const std::string& source, const std::string& destination) {
      if (source != path) return RefuseQueueing(source, destination);
      if (!inPlace) station.realFiles.WriteAll(path, "second");
      EXPECT_TRUE(!inPlace || open(path.c_str(), O_WRONLY | O_NONBLOCK) < 0) << "he must wait";
      return 0;
    };
    station.Drop("AB.TXT", "first");
    station.Run(kCyclePeriod);
    EXPECT_EQ(station.Names(kIngest), Lines{"AB.TXT"});
    station.files.copyFault = RefuseQueueing;
    if (inPlace) std::ofstream(path) << "second";
    station.Run(1s);
    EXPECT_EQ(station.Names("KvData/RtPri4"), (Lines{"AB.TXT", "AB.TXT.1"}));
    EXPECT_EQ(station.ReadFile(station.Path("KvData/RtPri4/AB.TXT")), inPlace ? "first" : "second");
    EXPECT_EQ(station.ReadFile(station.Path("KvData/RtPri4/AB.TXT.1")), "second");
    EXPECT_EQ(station.Names(kIngest), Lines{});
  }
}

TEST(IngestScan, NamesThatNoFolderHoldsAreCutOrLeftOut) {
  VirtualStation station;
  const auto longest = std::string(251, 'A') + ".TXT";
  station.Rule(3, "AA*");
  station.Rule(12, "AA* | C=3");
  station.files.copyFault = RefuseQueueing;
  station.Start();
  fs::remove(station.Path("KvData/RtPri4"));
  for (int i = 0; i < 2; ++i) {
    station.Drop(longest, "text");
    station.Run(1s);
  }
  const auto cut = longest.substr(0, 253) + ".1";
  EXPECT_EQ(station.Names("KvData/RtPri4"), (Lines{cut, longest}));
  const auto noCopies = "Copies left out, no name is so long: " + longest + ".1";
  const Lines told = {noCopies, noCopies, noCopies, longest + " is taken, cut to " + cut};
  EXPECT_EQ(station.Messages("Ingest"), told);
  EXPECT_EQ(station.LogOf("Folders").size(), 1U);
}

}  // namespace
}  // namespace ostrel
