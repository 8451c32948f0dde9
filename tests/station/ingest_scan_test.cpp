// What becomes of a file in the ingest folder: by its name, by who holds it, by what fails.
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

constexpr const char* kIngest = "KvData/RxFiles";

/// Given to `copyFault`, it keeps all that is routed in the holding folders.
int RefuseQueueing(const std::string&, const std::string& destination) {
  return destination.find("/RtXmit/") != std::string::npos ? copy_code::kDiskFull : 0;
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

TEST(IngestScan, OfTooManyKeptFilesTheOldestMakeRoom) {
  VirtualStation station;
  station.Rule(3, "AB*");
  std::filesystem::rename(station.Path("RtList3.txt"), station.Path("lost"));
  std::filesystem::create_directories(station.Path("KvData/RtKept"));
  for (int i = 0; i < 9'999; ++i)
    station.WriteFile(station.Path(fmt::format("KvData/RtKept/C{:04}.TXT", i)), "");
  station.Start();
  for (const auto* name : {"AB.TXT", "AC.TXT"}) station.Drop(name, "warning");
  station.Run(1s);
  const auto kept = station.Names("KvData/RtKept");
  ASSERT_EQ(kept.size(), 9001U);
  EXPECT_EQ(kept[1], "AC.TXT") << "the newest is worth most";
  EXPECT_EQ(kept[2], "C1000.TXT");
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
