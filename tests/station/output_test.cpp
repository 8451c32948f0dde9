// The two ways out: the opening of the port and what the windows say of it, the datagrams of the
// packet host, and writes that fail.
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

TEST(PacketHost, GetsEveryPacketUnderItsSequenceWhateverTheLineDoes) {
  VirtualStation station;
  station.Set({{"PacketHost", "True"}, {"ComBaud", "115200"}, {"CWIDTime", "0"}});
  station.Start();
  auto& machine = station.machine;
  EXPECT_EQ(machine.datagrams.configuration, "QOSFlags=68");
  Lines written;
  machine.line.onWrite = [&](std::string_view bytes) { written.emplace_back(bytes); };
  const auto& sent = machine.datagrams.sent;
  ASSERT_TRUE(machine.loop.RunUntil([&] { return sent.size() == 61; }, 60s));
  for (std::size_t i = 0; i < 61; ++i) {
    EXPECT_EQ(sent[i], fmt::format("R00{:02}", i % 60 + 1) + written.at(i));
    EXPECT_EQ(sent[i].size(), 1121U);
  }

  machine.line.writeFails = true;
  ASSERT_TRUE(machine.loop.RunUntil([&] { return sent.size() == 63; }, 10s));
  machine.line.writeFails = false;
  machine.datagrams.sendFails = true;
  ASSERT_TRUE(machine.loop.RunUntil([&] { return written.size() == 63; }, 10s));
  machine.datagrams.sendFails = false;
  ASSERT_TRUE(machine.loop.RunUntil([&] { return sent.size() == 64; }, 10s));
  EXPECT_EQ(sent.back().substr(0, 5), "R0006") << "the two that failed had their numbers";
  EXPECT_EQ(station.Messages("Timer").at(0),
            "Error # 57, Device I/O error, occurred at reference (unspecified), in "
            "Ostrel.frmMain.Timer ");
}

TEST(PortOpening, IsToldInBothWindowsAndNothingMovesWithoutAPort) {
  VirtualStation station;
  station.Rule(0, "TOR*");
  station.Set("TxDelay", "500");
  auto& line = station.machine.line;
  line.devices = {2};
  station.Start();
  const auto expectTold = [&](const std::string& text) {
    EXPECT_EQ(station.setup().lblCommMesg.Get(), text);
    EXPECT_EQ(station.window().lblDataRate.Get() == text, !line.IsOpen()) << text;
    const auto ground = line.IsOpen() ? Shade::kNone : Shade::kRed;
    EXPECT_EQ(station.window().lblDataRateBackColor.Get(), ground) << text;
    EXPECT_EQ(station.station->standstill(),
              line.IsOpen() ? "" : text + " Nothing goes on the air.");
  };
  expectTold("Unable to open Com Port # 1.");
  EXPECT_EQ(station.Messages("Port"), Lines{});
  const auto& reason = station.window().lblDataRateToolTip;
  EXPECT_EQ(reason.Get(), "Device unavailable");
  station.Drop("TORXXX.TXT", "warning");
  station.Run(5s);
  EXPECT_EQ(station.window().lblDataRate.Get(), "No Com Port Open") << "the cycle runs";
  EXPECT_EQ(station.Names("KvData/RxFiles"), Lines{"TORXXX.TXT"});

  auto& actions = station.station->actions();
  const auto opened = station.machine.clock.Monotonic();
  actions.StepPort(Button::kLeft);
  expectTold("Com Port # 2 opened for transmit.");
  EXPECT_EQ(reason.Get(), "");
  EXPECT_EQ(line.keying, (std::vector<KeyEvent>{{opened, 2, true}, {opened, 1, true}}));
  EXPECT_EQ(station.machine.clock.Monotonic(), opened + 500ms) << "the key-up delay";
  station.Run(15s);
  EXPECT_EQ(station.Products().at(0).name, "TORXXX.TXT");

  // A reopening drops both lines, a failed one leaves them down and the cycle stopped.
  line.keying.clear();
  const auto lines = [&] {
    std::string text;
    for (const auto& event : std::exchange(line.keying, {}))
      text += fmt::format("{}{} ", event.line, event.on ? "+" : "-");
    return text;
  };
  actions.StepBaud();
  EXPECT_EQ(lines(), "1- 2- 2+ 1+ ");
  actions.StepPort(Button::kLeft);
  EXPECT_EQ(lines(), "1- 2- ");
  expectTold("Unable to open Com Port # 3.");
  EXPECT_FALSE(station.machine.cycleTimer.IsRunning());
  actions.StepPort(Button::kOther);
  // A line that does not follow is a failed opening as well.
  line.lineFails = true;
  actions.StepBaud();
  expectTold("Unable to open Com Port # 2.");
  EXPECT_FALSE(line.IsOpen() || station.machine.cycleTimer.IsRunning());
}

TEST(PortOpening, StaysFailedWhenTheOperatorTakesThePortAwayWithinAWait) {
  const struct {
    const char* what;
    std::map<std::string, std::string> settings;
    milliseconds at;
  } waits[] = {{"drain before an identification", {{"CWIDTime", "1"}, {"TxUpTime", "0"}}, 30'500ms},
               {"drain before a pause", {{"CWIDTime", "0"}, {"TxUpTime", "0.5"}}, 60'500ms},
               {"pause", {{"CWIDTime", "0"}, {"TxUpTime", "0.5"}}, 66s}};
  for (const auto& wait : waits) {
    SCOPED_TRACE(wait.what);
    VirtualStation station;
    station.Set(wait.settings);
    station.Set("LogProgram", "1");
    auto& machine = station.machine;
    machine.line.devices = {1, 3};
    station.Start();
    auto& actions = station.station->actions();
    machine.clock.At(wait.at, [&] { actions.StepPort(Button::kLeft); });
    station.Run(80s);
    EXPECT_EQ(station.window().lblDataRate.Get(), "Unable to open Com Port # 2.");
    EXPECT_FALSE(machine.cycleTimer.IsRunning() || machine.line.KeyLine1());
    EXPECT_EQ(station.window().lblActivefile.Get(), "");
    EXPECT_EQ(station.setup().LastId.Get(), "");
    EXPECT_EQ(station.LogOf("CW ID"), Lines{});

    actions.StepPort(Button::kLeft);
    station.Run(1s);
    EXPECT_EQ(station.window().lblDataRate.Get(), "Transmitting 1200 BPS");
    EXPECT_EQ(station.setup().LastId.Get().empty(), wait.settings.at("CWIDTime") == "0")
        << "what was due is sent";
  }
}

TEST(PortOpening, AVanishedDeviceIsToldInBothWindowsUntilItIsBack) {
  VirtualStation station;
  station.Set("CWIDTime", "0");
  station.Start();
  station.Run(5s);
  auto& window = station.window();
  station.machine.line.SetPresent(false);
  int flickers = 0;
  const auto count = window.imgActivity.OnChange([&](Light) { ++flickers; });
  const auto expectTold = [&](const std::string& rate, const std::string& message, Shade ground) {
    station.Run(2s);
    EXPECT_EQ(window.lblDataRate.Get(), rate);
    EXPECT_EQ(station.setup().lblCommMesg.Get(), message);
    EXPECT_EQ(window.lblDataRateBackColor.Get(), ground);
    EXPECT_EQ(flickers > 0, ground == Shade::kNone);
    EXPECT_EQ(station.station->standstill().empty(), ground == Shade::kNone);
  };
  expectTold("Com Port # 1 has vanished.", "Com Port # 1 has vanished.", Shade::kRed);
  station.machine.line.SetPresent(true);
  expectTold("Transmitting 1200 BPS", "Com Port # 1 opened for transmit.", Shade::kNone);
  station.station->operations().PauseIntake("alice");
  EXPECT_TRUE(station.station->standstill().starts_with("An operator has paused the intake."));
  station.station->values().SetIngestPath("");
  EXPECT_TRUE(station.station->standstill().starts_with("The ingest path is empty."));
}

}  // namespace
}  // namespace ostrel
