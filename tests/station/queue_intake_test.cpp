// From the holding folders into the queues: what replaces what, what is tried again, what stays.
#include <algorithm>
#include <gtest/gtest.h>

#include "tests/support/intake_station.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

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
               {"1", false, {"AB.TXT"}, "A.TXT", {"AB.TXT", "A.TXT"}, ""},
               {"0", false, {"A.TXT"}, "a.txt", {"A.TXT", "A.TXT.1"}, ""}};
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    const auto& row = cases[i];
    IntakeStation station;
    station.Set("OverWrite2", row.overwrite);
    row.onAir ? station.Start() : station.StartBusy();
    for (const auto& name : row.waiting) station.Hold(3, name, SampleText(9000));
    station.Hold(3, row.newer, "newer");
    EXPECT_EQ(station.Queue(3), row.queue) << i;
    Lines logged;
    for (const auto& line : station.LogOf("Priority 3")) logged.push_back(line.substr(31));
    const auto replaced = fmt::format("Overwrite {}, newer file received", row.logged);
    EXPECT_EQ(logged, *row.logged ? Lines{replaced} : Lines{}) << i;
    const auto waiting = station.Names("KvData/RtXmit");
    EXPECT_EQ(waiting.size(), row.queue.size() - (row.onAir ? 1 : 0)) << i;
    const auto isNewer = [&](const std::string& name) {
      return station.ReadFile(station.InTransmitFolder(name)) == "newer";
    };
    EXPECT_EQ(std::count_if(waiting.begin(), waiting.end(), isNewer), 1) << i;
    EXPECT_EQ(station.Names("KvData/RtPri3"), Lines{}) << i;
  }
}

TEST(QueueIntake, ACompressedFileIsReplacedByTheNameItWasReceivedUnder) {
  IntakeStation station;
  station.Set("OverWrite2", "1");
  station.Set("CompressPri2", "1");
  station.StartBusy();
  station.Hold(3, "A.TXT", SampleText(9000));
  station.Hold(3, "B.TXT", SampleText(9000));
  EXPECT_EQ(station.Queue(3), (Lines{"A.ZIP", "B.ZIP"}));
  station.Hold(3, "A.TXT", "short");
  EXPECT_EQ(station.Queue(3), (Lines{"A.TXT", "B.ZIP"})) << "too short for an archive";
  station.Hold(3, "A.TXT", SampleText(8000));
  EXPECT_EQ(station.Queue(3), (Lines{"A.ZIP", "B.ZIP"}));
  EXPECT_EQ(station.Names("KvData/RtXmit"), (Lines{"A.ZIP", "B.ZIP"}));
}

TEST(QueueIntake, OneCallTakesOneFileOfEachPriority) {
  IntakeStation station;
  station.Start();
  Lines order, expected;
  station.files.copyFault = [&](const std::string& source, const std::string& destination) {
    if (destination.find("/RtXmit/") != std::string::npos)
      order.push_back(fs::path(source).parent_path().filename());
    return 0;
  };
  for (int p = 1; p <= kPriorityCount; ++p) {
    for (const auto* name : {"A", "B"})
      station.WriteFile(station.Holding(p, fmt::format("{}{}.TXT", name, p)), "text");
    expected.push_back(fmt::format("RtPri{}", p));
  }
  station.Run(kCyclePeriod);
  EXPECT_EQ(order, expected);
}

TEST(QueueIntake, TwentyRetriesServeAllPrioritiesOfACall) {
  IntakeStation station;
  station.StartBusy();
  std::map<std::string, int> attempts;
  int failing = 1000;
  auto number = failure_number::kPermissionDenied;
  station.files.deleteFault = [&](const std::string& path) {
    const bool isSource = path.find("/RtPri") != std::string::npos && !path.ends_with("C.TXT");
    if (isSource && attempts[path.substr(path.size() - 5)]++ < failing)
      throw Failure(number, "Held");
  };
  for (const auto* name : {"A.TXT", "B.TXT", "C.TXT"})
    station.WriteFile(station.Holding(name[0] - 'A' + 2, name), SampleText(2000));
  const auto begin = station.machine.clock.Monotonic();
  station.Run(kCyclePeriod);
  EXPECT_EQ(attempts, (std::map<std::string, int>{{"A.TXT", 21}, {"B.TXT", 1}}));
  EXPECT_GE(station.machine.clock.Monotonic() - begin, 2000ms);
  EXPECT_LE(station.machine.clock.Monotonic() - begin, 2000ms + 2 * kCyclePeriod);
  const auto reports = station.LogOf("CheckForNewPriFiles");
  ASSERT_EQ(reports.size(), 2U);
  EXPECT_TRUE(reports[0].ends_with("CheckForNewPriFiles  File Name: A.TXT")) << reports[0];
  EXPECT_TRUE(reports[1].ends_with("CheckForNewPriFiles  File Name: B.TXT")) << reports[1];

  station.Run(3s);
  failing = 0;
  station.Run(kCyclePeriod);
  for (int p = 2; p <= 4; ++p) {
    EXPECT_EQ(station.Queue(p).size(), 1U) << "none was taken twice";
    EXPECT_EQ(station.Names(fmt::format("KvData/RtPri{}", p)), Lines{});
  }

  const auto reported = station.LogOf("CheckForNewPriFiles").size();
  attempts.clear();
  failing = 3;
  number = failure_number::kPathAccess;
  station.Hold(2, "D.TXT", "text");
  EXPECT_EQ(attempts["D.TXT"], 4);
  EXPECT_EQ(station.LogOf("CheckForNewPriFiles").size(), reported) << "it worked in the end";
  attempts.clear();
  failing = 1;
  number = failure_number::kDeviceError;
  station.Hold(2, "E.TXT", "text");
  EXPECT_EQ(station.LogOf("CheckForNewPriFiles").size(), reported + 1) << "no case for another try";
}

TEST(QueueIntake, AFileThatFindsNoRoomStaysAndTheOthersGoOn) {
  for (const auto* compressed : {"0", "1"}) {
    IntakeStation station;
    station.Set("CompressPri1", compressed);
    station.Set("OverWrite1", "1");
    station.StartBusy();
    station.Hold(2, "A.TXT", SampleText(3000, 1));
    const auto before = station.Queue(2);
    station.files.copyFault = [](const std::string&, const std::string& destination) {
      return destination.ends_with("RtXmit/A.TXT") ? copy_code::kDiskFull : 0;
    };
    station.files.writeFault = [](const std::string& path) {
      if (path.ends_with("RtXmit/A.ZIP")) throw Failure(failure_number::kDiskFull, "Disk full");
    };
    station.WriteFile(station.Holding(2, "A.TXT"), SampleText(3000, 2));
    station.WriteFile(station.Holding(3, "B.TXT"), "text");
    station.Run(4 * kCyclePeriod);
    EXPECT_EQ(station.Names("KvData/RtPri2"), Lines{"A.TXT"});
    EXPECT_EQ(station.Queue(2), before);
    EXPECT_EQ(station.Queue(3), Lines{"B.TXT"});
    const bool isCompressed = *compressed == '1';
    const auto reports = station.LogOf(isCompressed ? "CompressFile" : "CheckForNewPriFiles");
    ASSERT_EQ(reports.size(), isCompressed ? 8U : 4U);
    EXPECT_NE(reports.back().find("Error # -2147220392, Copy File Failed"), std::string::npos);
    station.files.copyFault = nullptr;
    station.files.writeFault = nullptr;
    station.Run(kCyclePeriod);
    EXPECT_EQ(station.Queue(2), before);
    EXPECT_EQ(station.Names("KvData/RtPri2"), Lines{});
    EXPECT_EQ(station.Names("KvData/RtXmit"), (Lines{before[0], "B.TXT"}));
  }
}

TEST(QueueIntake, TheOperatorRemovesWhatIsNotOnTheAir) {
  IntakeStation station;
  station.Start();
  for (const auto* name : {"A.TXT", "B.TXT", "C.TXT", "D.TXT", "E.TXT", "F.TXT"})
    station.Hold(*name < 'E' ? 1 : 2, name, SampleText(9000));
  station.files.deleteFault = [](const std::string& path) {
    if (path.ends_with("/D.TXT")) throw Failure(failure_number::kPermissionDenied, "Held");
  };
  const auto remove = [&](int p, std::vector<std::size_t> selected) {
    station.station->operators().RemoveQueued(Priority(p), std::move(selected));
    return station.Queue(p);
  };
  EXPECT_EQ(remove(1, {}), (Lines{"A.TXT", "B.TXT", "C.TXT", "D.TXT"}));
  EXPECT_EQ(remove(1, {0, 1, 3}), (Lines{"A.TXT", "C.TXT"})) << "a failing delete means nothing";
  EXPECT_EQ(remove(2, {0}), Lines{"F.TXT"}) << "nothing of this priority is on the air";
  EXPECT_EQ(station.Names("KvData/RtXmit"), (Lines{"C.TXT", "D.TXT", "F.TXT"}));
}

}  // namespace
}  // namespace ostrel
