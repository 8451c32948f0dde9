// The two ways out: the opening of the port and what the windows say of it, the datagrams of the
// packet host, and writes that fail.
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

using Lines = std::vector<std::string>;

TEST(PacketHost, GetsEveryPacketUnderItsSequenceWhateverTheLineDoes) {
  VirtualStation station;
  station.Set("PacketHost", "True");
  station.Set("ComBaud", "115200");
  station.Set("CWIDTime", "0");
  station.Start();
  auto& machine = station.machine;
  Lines written;
  machine.line.onWrite = [&](std::string_view bytes) { written.emplace_back(bytes); };
  const auto& sent = machine.datagrams.sent;
  ASSERT_TRUE(machine.loop.RunUntil([&] { return sent.size() == 61; }, 60s));
  ASSERT_EQ(written.size(), 61U);
  for (std::size_t i = 0; i < 61; ++i) {
    EXPECT_EQ(sent[i].substr(0, 5), fmt::format("R00{:02}", i % 60 + 1));
    EXPECT_EQ(sent[i].substr(5), written[i]);
    EXPECT_EQ(sent[i].size(), 1121U);
  }

  machine.line.writeFails = true;
  ASSERT_TRUE(machine.loop.RunUntil([&] { return sent.size() == 63; }, 10s));
  EXPECT_EQ(station.station->engine().PendingPacket, "") << "lost for the line";
  machine.line.writeFails = false;
  machine.datagrams.sendFails = true;
  ASSERT_TRUE(machine.loop.RunUntil([&] { return written.size() == 63; }, 10s));
  machine.datagrams.sendFails = false;
  station.station->values().packetHost = false;
  station.Run(5s);
  EXPECT_EQ(sent.size(), 63U);
  station.station->values().packetHost = true;
  ASSERT_TRUE(machine.loop.RunUntil([&] { return sent.size() == 64; }, 10s));
  EXPECT_EQ(sent.back().substr(0, 5), "R0006") << "the two that failed had their numbers";
  const auto report = station.LogOf("Timer");
  ASSERT_EQ(report.size(), 4U);
  EXPECT_EQ(report[0].substr(31),
            "Error # 57, Device I/O error, occurred at reference "
            "(unspecified), in Ostrel.frmMain.Timer ");
}

TEST(PortOpening, IsToldInBothWindowsAndNothingMovesWithoutAPort) {
  VirtualStation station;
  station.Rule(0, "TOR*");
  station.Set("TxDelay", "500");
  auto& line = station.machine.line;
  line.devices = {2};
  station.Start();
  const auto& message = station.setup().lblCommMesg;
  const auto& rate = station.window().lblDataRate;
  EXPECT_EQ(message.Get(), "Unable to open Com Port # 1.");
  EXPECT_EQ(rate.Get(), "Unable to open Com Port # 1.");
  station.Drop("TORXXX.TXT", "warning");
  station.Run(5s);
  EXPECT_EQ(rate.Get(), "No Com Port Open") << "at start-up the cycle runs all the same";
  EXPECT_EQ(station.Names("KvData/RxFiles"), Lines{"TORXXX.TXT"});
  EXPECT_EQ(station.station->engine().FillsSent, 0);
  EXPECT_TRUE(line.keying.empty());

  auto& operators = station.station->operators();
  const auto opened = station.machine.clock.Monotonic();
  operators.StepPort(Button::kLeft);
  EXPECT_EQ(message.Get(), "Com Port # 2 opened for transmit.");
  EXPECT_EQ(line.keying, (std::vector<KeyEvent>{{opened, 2, true}, {opened, 1, true}}));
  EXPECT_EQ(station.machine.clock.Monotonic(), opened + 500ms) << "the key-up delay";
  station.Run(15s);
  EXPECT_EQ(station.Products().at(0).name, "TORXXX.TXT");

  // A reopening drops both lines, a failed one leaves them down and the cycle stopped.
  line.keying.clear();
  operators.StepBaud();
  const auto lines = [&] {
    std::string text;
    for (const auto& event : std::exchange(line.keying, {}))
      text += fmt::format("{}{} ", event.line, event.on ? "+" : "-");
    return text;
  };
  EXPECT_EQ(lines(), "1- 2- 2+ 1+ ");
  EXPECT_EQ(line.openings.back(), "2400,N,8,2");
  operators.StepPort(Button::kLeft);
  EXPECT_EQ(lines(), "1- 2- ");
  EXPECT_EQ(message.Get(), "Unable to open Com Port # 3.");
  EXPECT_EQ(rate.Get(), "Unable to open Com Port # 3.");
  EXPECT_FALSE(station.machine.cycleTimer.IsRunning());
  operators.StepPort(Button::kOther);
  EXPECT_EQ(lines(), "2+ 1+ ");

  // A line that does not follow is a failed opening as well.
  line.lineFails = true;
  operators.StepBaud();
  line.lineFails = false;
  EXPECT_EQ(message.Get(), "Unable to open Com Port # 2.");
  EXPECT_FALSE(line.IsOpen() || station.machine.cycleTimer.IsRunning());
}

TEST(PortOpening, AnEmptyFieldStopsTheCycleAndTouchesNothingElse) {
  VirtualStation station;
  station.Start();
  station.setup().lblOutBaud.Set("");
  station.machine.line.keying.clear();
  station.station->operators().StepStopBits();
  EXPECT_EQ(station.setup().lblCommMesg.Get(), "Com Port # 1 opened for transmit.");
  EXPECT_EQ(station.machine.line.openings.size(), 1U);
  EXPECT_TRUE(station.machine.line.IsOpen() && station.machine.line.keying.empty());
  EXPECT_FALSE(station.machine.cycleTimer.IsRunning() || station.station->engine().portReady);
}

TEST(TransmitCycle, DoesNothingWithoutAnIngestPath) {
  VirtualStation station;
  station.Set("IngestPath", "");
  station.Start();
  station.Run(15min);
  EXPECT_EQ(station.machine.line.carried, "");
  EXPECT_EQ(station.station->engine().FillsSent, 0);
  EXPECT_EQ(station.setup().TimeLeft.Get(), "10") << "no identification either";
}

}  // namespace
}  // namespace ostrel
