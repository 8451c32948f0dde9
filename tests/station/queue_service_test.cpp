// Which file the next packet comes from, turn by turn, and what becomes of files that are not
// there.
#include <filesystem>
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

constexpr Priority kOne{1}, kTwo{2}, kTen{10};

/// A station with the rules TOR* for priority 1 and AFD* for priority 2, quiet but for what a test
/// brings.
class QueueServiceTest : public testing::Test {
 protected:
  QueueServiceTest() {
    station.Rule(0, "TOR*");
    station.Rule(1, "AFD*");
    station.Set({{"CWIDTime", "0"}, {"TxUpTime", "0"}});
  }
  TransmitStatus& status() { return station.station->status(); }
  void RunTicks(int ticks) { station.Run(ticks * kCyclePeriod); }
  VirtualStation station;
};

TEST_F(QueueServiceTest, ATurnIsTakenWithFiftyBytesWaitingAndNotWithMore) {
  std::filesystem::remove(station.Path("FillFile.txt"));
  station.Start();
  station.machine.line.onWrite = [](std::string_view) {};
  for (const auto& [waiting, turns] : {std::pair{50U, 1}, {51U, 0}}) {
    station.Run(2s);  // drains
    station.machine.clock.At(station.machine.clock.Monotonic() + kCyclePeriod,
                             [&] { station.machine.line.Write(std::string(waiting, 'x')); });
    const int before = status().FillsSent;
    RunTicks(1);
    EXPECT_EQ(status().FillsSent - before, turns) << waiting;
  }
}

TEST_F(QueueServiceTest, TheFillFileGoesInOncePerTurnUntilItIsQueued) {
  station.Start();
  RunTicks(1);
  EXPECT_EQ(status().FillsSent, 1);
  RunTicks(60);  // queued, sent and nearly drained
  EXPECT_EQ(status().FillsSent, 1);
  EXPECT_EQ(status().FilesSent[kTen], 1);
  station.Run(60s);
  // One lies between two packets of 10.2 s: the turns of a fill file do without a second one.
  EXPECT_EQ(static_cast<std::size_t>(status().FillsSent), station.Packets().size());
  EXPECT_GE(station.Packets().size(), 6U);
  const auto stamp = station.realFiles.Status(station.Path("FillFile.txt")).written;
  EXPECT_GT(stamp, kNoon + 50s) << "it carries the time of its last insertion";
  // A link into a holding folder will do; the file of somebody else is not replaced.
  std::filesystem::create_directory_symlink(station.Path("KvData/RtPri2"), station.Path("two"));
  station.setup().NameAs.Set(station.Path("two/FILL.TXT"));
  station.WriteFile(station.Path("two/FILL.TXT"), "");
  station.Run(60s);
  EXPECT_GE(status().FilesSent[kTwo], 5);
  station.setup().NameAs.Set(station.Path("RtMorse.txt"));
  const auto table = station.ReadFile(station.Path("RtMorse.txt"));
  station.Run(60s);
  EXPECT_EQ(station.ReadFile(station.Path("RtMorse.txt")), table);
  EXPECT_EQ(station.LogOf("CheckPriorityLists").size(), 1U);
}

TEST_F(QueueServiceTest, AFileThatMeetsAMoreUrgentOneOfItsNameIsSentAgain) {
  station.Set("ComBaud", "9600");
  station.Start();
  station.Drop("AFDXXX.TXT", SampleText(20'000));
  station.Run(6s);
  station.Hold(1, "AFDXXX.TXT", "urgent");
  station.Run(60s);
  const auto products = station.Products();
  ASSERT_EQ(products.size(), 2U);
  EXPECT_EQ(products[0].data, "urgent");
  EXPECT_EQ(products[1].data, SampleText(20'000));
}

TEST_F(QueueServiceTest, FoldersThatAreGoneAreMadeAnewAndOneThatRefusesGathersNoFills) {
  station.Start();
  for (const auto* folder : {"RtSent", "RtPri10"})
    std::filesystem::remove_all(station.Path("KvData/") + folder);
  station.Run(20s);
  EXPECT_EQ(station.Messages("Folders").size(), 2U);
  EXPECT_GE(station.Packets().size(), 1U);
  station.files.copyFault = [](const std::string&, const std::string& destination) {
    return destination.find("RtSent") != std::string::npos ? copy_code::kDiskFull
                                                           : copy_code::kDone;
  };
  station.Run(60s);
  EXPECT_EQ(station.Names("KvData/RtXmit").size(), 1U);
}

TEST_F(QueueServiceTest, TheTransmitterStaysKeyedThroughWaitsForALogThatIsHeld) {
  station.Set({{"LogProgram", "1"}, {"ComBaud", "38400"}});
  station.Start();
  station.files.appendFault = [](const std::string&) {
    throw Failure(75, "Path/File access error");
  };
  station.Run(30s);  // the line is empty meanwhile, and the station looks at the end
}

TEST_F(QueueServiceTest, AFileThatVanishesOrCannotBeReadCostsNoMoreThanItself) {
  for (const auto* name : {"AFDA.TXT", "AFDB.TXT", "AFDC.TXT", "AFDD.TXT"})
    station.Drop(name, SampleText(2000));
  station.Start();
  station.files.readFault = [reads = 0](const std::string& path) mutable {
    if (path.ends_with("AFDC.TXT") && ++reads == 1) throw Failure(57, "Device I/O error");
  };
  station.Run(5s);  // all are queued and one of them is on the air
  const auto& queue = station.window().PriorityList[kTwo];
  ASSERT_EQ(std::distance(queue.begin(), queue.end()), 4);
  const std::string vanished = *queue.begin() == "AFDB.TXT" ? "AFDD.TXT" : "AFDB.TXT";
  std::filesystem::remove(station.Path("KvData/RtXmit/" + vanished));
  station.Run(85s);
  EXPECT_EQ(status().MaximumCount[kTwo], 3) << "the longest queue";
  const auto received = station.Blocks();
  EXPECT_EQ(received.size(), 7U) << "three whole files, and the second block of AFDC.TXT before";
  EXPECT_EQ(std::count(received.begin(), received.end(), "AFDC.TXT 1/2"), 1);
  EXPECT_EQ(std::count(received.begin(), received.end(), "AFDC.TXT 2/2"), 2);
  const auto lines = station.Messages("MakePacket");
  EXPECT_EQ(lines.size(), 2U) << "the other one could not be read";
  const auto gone = "Queued file " + vanished + "     was deleted by purge.";
  EXPECT_EQ(std::count(lines.begin(), lines.end(), gone), 1);
}

}  // namespace
}  // namespace ostrel
