// From the holding folders into the queues: what replaces what, what is tried again, what stays.
#include <algorithm>
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

TEST(QueueIntake, ANewerFileReplacesTheOneOfItsProductThatWaits) {
  const struct {
    const char* overwrite;
    bool onAir;  // of the priority itself, else of another one
    Lines waiting;
    const char* newer;
    Lines queue;
    const char* logged;  // the product's name; empty when nothing is replaced
  } cases[] = {{"1", true, {"A.TXT", "B.TXT"}, "A.TXT", {"A.TXT", "B.TXT", "A.TXT"}, ""},
               {"1", true, {"A.TXT", "B.TXT", "C"}, "B.TXT", {"A.TXT", "B.TXT", "C"}, "B.TXT"},
               {"1", false, {"A.TXT", "B.TXT"}, "A.ZIP", {"A.ZIP", "B.TXT"}, "A.ZIP"},
               {"1", false, {"A.TXT.4"}, "a.txt.2", {"A.TXT.2"}, "A.TXT"},
               {"0", false, {"A.TXT"}, "a.txt", {"A.TXT", "A.TXT.1"}, ""}};
  for (const auto& row : cases) {
    VirtualStation station;
    station.Set("OverWrite2", row.overwrite);
    row.onAir ? station.Start() : station.StartBusy();
    for (const auto& name : row.waiting) station.Hold(3, name, SampleText(9000));
    station.files.copyFault = [tries = 0](const auto&, const auto&) mutable {
      return ++tries < 4 ? copy_code::kDiskFull : 0;
    };
    station.Hold(3, row.newer, "newer");
    station.Run(3 * kCyclePeriod);
    EXPECT_EQ(station.Queue(3), row.queue);
    const auto replaced = fmt::format("Overwrite {}, newer file received", row.logged);
    EXPECT_EQ(station.Messages("Priority 3"), *row.logged ? Lines{replaced} : Lines{});
    int newer = 0;
    for (const auto& name : station.Names("KvData/RtXmit"))
      newer += station.ReadFile(station.InTransmitFolder(name)) == "newer";
    EXPECT_EQ(newer, 1);
  }
}

TEST(QueueIntake, AFileThatComesBackLateReplacesNoNewerOne) {
  VirtualStation station;
  station.Set("OverWrite2", "1");
  station.Start();
  station.files.copyFault = [](const std::string&, const std::string& destination) {
    return destination.ends_with("/RtSent/A.TXT") ? copy_code::kDiskFull : 0;
  };
  station.Hold(3, "A.TXT", "old");
  const auto queued = station.realFiles.Status(station.InTransmitFolder("A.TXT"));
  station.Run(50s);
  EXPECT_EQ(station.Names("KvData/RtXmit"), Lines{"A.TXT"}) << "it cannot be sent";
  EXPECT_EQ(station.realFiles.Status(station.InTransmitFolder("A.TXT")), queued) << "its age";
  EXPECT_EQ(station.station->status().FilesSent[Priority(3)], 1);
  EXPECT_EQ(station.LogOf("MakePacket").size() + station.LogOf("Pending").size(), 2U);
  station.files.copyFault = nullptr;
  station.Hold(1, "BUSY.TXT", SampleText(60'000));
  station.Hold(3, "A.TXT", "newer");
  station.Run(5min);
  EXPECT_EQ(station.Queue(3), Lines{"A.TXT.1"});
  EXPECT_EQ(station.ReadFile(station.InTransmitFolder("A.TXT.1")), "newer");
  EXPECT_EQ(station.Names("KvData/RtPri3"), Lines{});
}

TEST(QueueIntake, AFullHoldingFolderIsNotListedForEachOfItsFiles) {
  VirtualStation station;
  station.Set("OverWrite2", "1");
  station.StartBusy();
  for (int i = 0; i < 40; ++i)
    station.WriteFile(station.Path(fmt::format("KvData/RtPri3/{}.TXT", i)), "text");
  int listings = 0;
  station.files.listFault = [&](const std::string& folder) {
    listings += folder.ends_with("RtPri3");
  };
  station.Run(50 * kCyclePeriod);
  EXPECT_EQ(station.Queue(3).size(), 40U);
  EXPECT_EQ(listings, 1);
}

TEST(QueueIntake, TwentyRetriesServeAllPrioritiesOfACall) {
  VirtualStation station;
  station.StartBusy();
  std::map<std::string, int> attempts;
  bool isHeld = true;
  station.files.deleteFault = [&](const std::string& path) {
    const bool isSource = path.find("/RtPri") != std::string::npos && !path.ends_with("C.TXT");
    if (!isSource || !isHeld) return;
    ++attempts[path.substr(path.size() - 5)];
    throw Failure(failure_number::kPermissionDenied, "Held");
  };
  for (const auto* path : {"RtPri2/A.TXT", "RtPri3/B.TXT", "RtPri4/C.TXT"})
    station.WriteFile(station.Path(std::string("KvData/") + path), SampleText(2000));
  const auto begin = station.machine.clock.Monotonic();
  station.Run(kCyclePeriod);
  EXPECT_EQ(attempts, (std::map<std::string, int>{{"A.TXT", 21}, {"B.TXT", 1}}));
  EXPECT_LE(station.machine.clock.Monotonic() - begin, 2000ms + 2 * kCyclePeriod);
  const auto reports = station.LogOf("CheckForNewPriFiles");
  ASSERT_EQ(reports.size(), 2U);
  EXPECT_TRUE(reports[0].ends_with("CheckForNewPriFiles  File Name: A.TXT")) << reports[0];

  station.Run(3s);
  isHeld = false;
  station.Run(10s);
  for (int p = 2; p <= 4; ++p) {
    EXPECT_EQ(station.Queue(p).size(), 1U) << "none was taken twice";
    EXPECT_EQ(station.Names(fmt::format("KvData/RtPri{}", p)), Lines{});
  }
}

TEST(QueueIntake, AFileThatCannotBeTakenHoldsUpNoOther) {
  enum class Trouble { kReading, kDeleting };
  for (const auto trouble : {Trouble::kReading, Trouble::kDeleting}) {
    VirtualStation station;
    station.StartBusy();
    const auto bad = station.Path("KvData/RtPri3/BAD.TXT");
    const FaultyFiles::Fault fault = [&](const std::string& path) {
      if (path == bad) throw Failure(failure_number::kDeviceError, "Broken");
    };
    (trouble == Trouble::kReading ? station.files.readFault : station.files.deleteFault) = fault;
    station.files.copyFault = [&](const std::string& source, const std::string&) {
      return trouble == Trouble::kReading && source == bad ? copy_code::kDeviceError : 0;
    };
    station.Hold(3, "BAD.TXT", "bad");
    for (const auto* name : {"A.TXT", "B.TXT"}) station.Hold(3, name, "good");
    station.Run(149s);  // tried after 10, 30, 70 and 150 seconds
    EXPECT_EQ(station.LogOf("CheckForNewPriFiles").size(), 4U);
    station.files.readFault = station.files.deleteFault = nullptr;
    station.files.copyFault = nullptr;
    station.Run(2s);
    auto queue = station.Queue(3);
    std::sort(queue.begin(), queue.end());
    EXPECT_EQ(queue, (Lines{"A.TXT", "B.TXT", "BAD.TXT"}));
    EXPECT_EQ(station.Names("KvData/RtPri3"), Lines{});
  }
}

}  // namespace
}  // namespace ostrel
