// Which file the next packet comes from, turn by turn, and what becomes of files that are not
// there.
#include <filesystem>
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

using Lines = std::vector<std::string>;
constexpr Priority kOne{1}, kTwo{2}, kTen{10};

/// A station with the rules AFD* for priority 2 and SAT* for 10, quiet but for what a test brings.
class QueueServiceTest : public testing::Test {
 protected:
  QueueServiceTest() {
    station.Rule(0, "TOR*");
    station.Rule(1, "AFD*");
    station.Rule(9, "SAT*");
    station.Set("CWIDTime", "0");
    station.Set("TxUpTime", "0");
  }
  Engine& engine() { return station.station->engine(); }
  void RunTicks(int ticks) { station.Run(ticks * kCyclePeriod); }
  void RemoveFillFile() { std::filesystem::remove(station.Path("FillFile.txt")); }
  /// What was received, "NAME block/count", the fill file left out.
  Lines Received() {
    Lines lines;
    for (const auto& packet : station.Packets()) {
      if (packet.name != "FILLFILE.TXT")
        lines.push_back(fmt::format("{} {}/{}", packet.name, packet.block, packet.count));
    }
    return lines;
  }
  /// The messages of a category.
  Lines Messages(const std::string& category) {
    auto lines = station.LogOf(category);
    for (auto& line : lines) line = line.substr(31);
    return lines;
  }

  VirtualStation station;
};

TEST_F(QueueServiceTest, ATurnIsTakenWithFiftyBytesWaitingAndNotWithMore) {
  RemoveFillFile();
  station.Start();
  station.machine.line.onWrite = [](std::string_view) {};
  struct {
    std::size_t waiting;
    const char* packet;
    int turns;
  } const rows[] = {{50, "", 1}, {51, "", 0}, {0, "a packet", 0}, {0, "", 1}};
  for (const auto& row : rows) {
    station.Run(2s);  // drains
    RunTicks(0);
    station.machine.clock.At(station.machine.clock.Monotonic() + kCyclePeriod, [&] {
      station.machine.line.Write(std::string(row.waiting, 'x'));
      engine().PendingPacket = row.packet;
    });
    const int before = engine().FillsSent;
    RunTicks(1);
    EXPECT_EQ(engine().FillsSent - before, row.turns) << row.waiting << row.packet;
    EXPECT_EQ(engine().PendingPacket, "");
  }
}

TEST_F(QueueServiceTest, TheFillFileGoesInOncePerTurnUntilItIsQueued) {
  station.Start();
  RunTicks(1);
  EXPECT_EQ(engine().FillsSent, 1);
  RunTicks(60);  // queued, sent and nearly drained
  EXPECT_EQ(engine().FillsSent, 1);
  EXPECT_EQ(engine().FilesSent[kTen], 1);
  station.Run(60s);
  // One lies between two packets of 10.2 s: the turns of a fill file do without a second one.
  EXPECT_EQ(static_cast<std::size_t>(engine().FillsSent), station.Packets().size());
  EXPECT_GE(station.Packets().size(), 6U);
  const auto stamp = station.realFiles.LastWriteTime(station.Path("FillFile.txt"));
  EXPECT_GT(stamp, kNoon + 50s) << "it carries the time of its last insertion";

  // Without one the attempts count, and nothing is reported.
  RemoveFillFile();
  station.Run(30s);
  const int before = engine().FillsSent;
  RunTicks(8);
  EXPECT_EQ(engine().FillsSent - before, 8);
  EXPECT_EQ(station.Log().size(), 1U);
}

TEST_F(QueueServiceTest, CountsFilesAndTheLongestQueueOfEachPriority) {
  station.Start();
  for (int i = 0; i < 7; ++i) station.Drop("AFD" + std::to_string(i) + ".TXT", "x");
  const auto figures = [this] {
    return fmt::format("{} {}", engine().FilesSent[kTwo], engine().MaximumCount[kTwo]);
  };
  RunTicks(1);
  EXPECT_EQ(figures(), "1 1");
  station.Run(10500ms);
  EXPECT_EQ(figures(), "2 6") << "the one that starts included";
  station.Drop("AFDEMPTY.TXT", "");
  station.Run(80s);
  EXPECT_EQ(figures(), "8 6");
  EXPECT_EQ(Received().size(), 7U) << "the empty one counts without a packet";
  EXPECT_EQ(engine().MaximumCount[kOne], 0);
  EXPECT_EQ(engine().MaximumCount[kTen], 1);
  EXPECT_EQ(engine().FilesSentInAll(), 8 + engine().FilesSent[kTen]);
}

TEST_F(QueueServiceTest, AnInterruptedFileKeepsItsCaptionBlockAndTime) {
  VirtualStation& s = station;
  s.Set("LogProgram", "1");
  s.Drop("AFDXXX.TXT", SampleText(2500));
  s.Start();
  s.Run(15s);  // block 2 is on the air
  s.Drop("TORXXX.TXT", "warning");
  s.Run(15s);
  EXPECT_EQ(s.window().lblSending[kTwo].Get(), "Sending AFDXXX.TXT: 2 of 3");
  EXPECT_EQ(s.window().lblSending[kOne].Get(), "Sending TORXXX.TXT: 1 of 1");
  EXPECT_EQ(s.window().lblActivefile.Get(), "TORXXX.TXT  ");
  EXPECT_EQ(s.window().lblBlkPktNum.Get() + s.window().lblBlkPktTot.Get(), " 1 1");
  s.Run(5s);
  EXPECT_EQ(s.window().lblSending[kOne].Get(), "Priority 1");
  EXPECT_EQ(s.window().lblSending[kTwo].Get(), "Sending AFDXXX.TXT: 3 of 3");
  const auto packets = s.Packets();
  ASSERT_EQ(packets.size(), 4U);
  EXPECT_EQ(packets[3].stamp, packets[0].stamp) << "the time at which the file began";
  EXPECT_EQ(Messages("Sending"),
            (Lines{"AFDXXX.TXT  - 2 - 11/18/26 12:00:00", "TORXXX.TXT  - 1 - 11/18/26 12:00:15"}));
  EXPECT_EQ(Messages("Packet Sent"),
            (Lines{"AFDXXX.TXT 1/3", "AFDXXX.TXT 2/3", "TORXXX.TXT 1/1", "AFDXXX.TXT 3/3"}));
}

TEST_F(QueueServiceTest, AFileThatVanishesOrCannotBeReadCostsNoMoreThanItself) {
  for (const auto* name : {"AFDA.TXT", "AFDB.TXT", "AFDC.TXT", "AFDD.TXT"})
    station.Drop(name, SampleText(2000));
  station.Start();
  station.files.readFault = [](const std::string& path, std::int64_t offset) {
    if (path.ends_with("AFDC.TXT") && offset == 0) throw Failure(57, "Device I/O error");
  };
  station.Run(5s);  // all are queued and one of them is on the air
  const auto queue = [&] {
    const auto& list = station.window().PriorityList[kTwo];
    return Lines(list.begin(), list.end());
  };
  ASSERT_EQ(queue().size(), 4U);
  const std::string vanished = queue()[0] == "AFDB.TXT" ? "AFDD.TXT" : "AFDB.TXT";
  std::filesystem::remove(station.Path("KvData/RtXmit/" + vanished));
  station.Run(15s);  // the second block of the first is on the air
  station.Run(70s);
  const auto received = Received();
  EXPECT_EQ(received.size(), 5U) << "two whole files and the second block of AFDC.TXT";
  EXPECT_EQ(std::count(received.begin(), received.end(), "AFDC.TXT 2/2"), 1);
  EXPECT_EQ(std::count(received.begin(), received.end(), vanished + " 1/2"), 0);
  const auto lines = Messages("MakePacket");
  ASSERT_EQ(lines.size(), 2U);
  const auto gone = "Queued file " + vanished + "     was deleted by purge.";
  const auto unread =
      "Error # 57, Device I/O error, occurred at reference (unspecified), in "
      "Ostrel.frmMain.MakePacket  File Name: " +
      station.Path("KvData/RtSent/AFDC.TXT");
  EXPECT_EQ(std::count(lines.begin(), lines.end(), gone), 1);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), unread), 1);

  // A sent file that is deleted on the air ends there; nothing is left of it in the window.
  station.Drop("AFDLONG.TXT", SampleText(9000));
  station.machine.loop.RunUntil([&] { return Received().back() == "AFDLONG.TXT 1/9"; }, 60s);
  std::filesystem::remove(station.Path("KvData/RtSent/AFDLONG.TXT"));
  station.Run(11s);
  EXPECT_EQ(Received().back(), "AFDLONG.TXT 1/9");
  EXPECT_EQ(Messages("MakePacket").back(), "Queued file AFDLONG.TXT  was deleted by purge.");
  EXPECT_EQ(station.window().lblSending[kTwo].Get(), "Priority 2");
}

TEST_F(QueueServiceTest, AFileThatCannotBeMovedIsReportedAndKept) {
  station.Start();
  const auto text = SampleText(2000);
  station.files.copyFault = [](const std::string&, const std::string& destination) {
    return destination.find("RtSent/AFD") != std::string::npos ? copy_code::kDiskFull : 0;
  };
  station.WriteFile(station.Path("KvData/RtSent/AFDXXX.TXT"), "an older one");
  station.Drop("AFDXXX.TXT", text);
  station.Run(1s);
  station.Drop("SATXXX.TXT", "x");
  station.Run(30s);
  EXPECT_EQ(Received(), Lines{"SATXXX.TXT 1/1"}) << "the others go on meanwhile";
  EXPECT_EQ(Messages("MakePacket"), Lines(2, "Queued file AFDXXX.TXT   was deleted by purge."));
  station.files.copyFault = nullptr;
  station.Run(40s);
  EXPECT_EQ(Received(), (Lines{"SATXXX.TXT 1/1", "AFDXXX.TXT 1/2", "AFDXXX.TXT 2/2"}));
  EXPECT_EQ(station.ReadFile(station.Path("KvData/RtSent/AFDXXX.TXT")), text);
}

}  // namespace
}  // namespace ostrel
