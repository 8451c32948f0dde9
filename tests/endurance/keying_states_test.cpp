// The real program, ended or robbed of its device in each state of the transmitter.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include "tests/endurance/real_station.h"

namespace ostrel {
namespace {

/// How a state is entered and known.
struct State {
  const char* name;
  int secondAtStart;  // of the station's clock
  const char* heard;  // on the line so far
  const char* steps;  // the last ones of the keying lines
  std::map<std::string, std::string> settings;
};

constexpr const char* kTimeout = "Transmit Timeout";
// The system raises both lines as it opens the port.
constexpr const char* kOpened = "11 01 00 01 11 ";

const State kTransmitting = {"transmitting", 0, "LINE 100", "11 ", {}};
// A packet is on the line for seconds when the pause falls due.
const State kDraining = {
    "draining", 56, kTimeout, "01 11 ", {{"ComBaud", "4800"}, {"TxUpTime", "0.5"}}};
const State kPausing = {
    "pausing", 56, kTimeout, "11 01 ", {{"TxUpTime", "0.5"}, {"TxDownTime", "5"}}};
const State kIdentifying = {
    "in a Morse element", 27, "", "01 00 10 11 ", {{"CWIDTime", "1"}, {"CWSpeed", "1"}}};
const State kOpening = {"opening", 0, "", kOpened, {{"TxDelay", "5000"}}};
// No packet host can be opened at this port: start-up says so in a box and waits.
const State kInAMessage = {"with a message open", 0, "LINE 100", "11 ", {{"UdpPort", "0"}}};

struct StationIn : RealStation {
  explicit StationIn(const State& state) : RealStation(state.settings) {
    Start(state.secondAtStart);
    const auto isReached = [&] {
      return heard.find(state.heard) != std::string::npos &&
             KeyingRecord().steps.ends_with(state.steps);
    };
    EXPECT_TRUE(ListenUntil(60s, isReached)) << Log();
    EXPECT_EQ(KeyingRecord().steps.find(kOpened), 0u) << KeyingRecord().steps;
  }
  int CountInLog(const std::string& text) {
    const auto log = Log();
    int count = 0;
    for (auto at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) ++count;
    return count;
  }
};

TEST(KeyingStates, EndWithBothLinesDownWithinASecond) {
  const struct {
    const State& state;
    int signal;
  } endings[] = {{kTransmitting, SIGTERM}, {kDraining, SIGTERM},   {kPausing, SIGTERM},
                 {kIdentifying, SIGTERM},  {kOpening, SIGTERM},    {kInAMessage, SIGTERM},
                 {kTransmitting, SIGABRT}, {kIdentifying, SIGKILL}};
  for (const auto& [state, signal] : endings) {
    SCOPED_TRACE(fmt::format("{}, signal {}", state.name, signal));
    StationIn station(state);
    const auto asked = std::chrono::steady_clock::now().time_since_epoch();
    const int status = station.End(signal);
    const auto keying = station.KeyingRecord();
    if (signal != SIGTERM) {  // the system drops them with the descriptor
      EXPECT_EQ(WTERMSIG(status), signal);
      EXPECT_TRUE(keying.dropsAtClose);
      continue;
    }
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(keying.steps.ends_with("00 ")) << keying.steps;
    EXPECT_LT(keying.last - asked, 1s);
    fmt::print("{}: lines down after {} us\n", state.name, (keying.last - asked).count() / 1000);
    EXPECT_EQ(station.CountInLog("Program Stopped"), 1);
  }
}

TEST(KeyingStates, WithoutTheDeviceBurnNoQueueAndGoOnWhenItIsBack) {
  for (const auto& state : {kTransmitting, kDraining, kPausing, kIdentifying, kOpening}) {
    SCOPED_TRACE(state.name);
    StationIn station(state);
    station.line->Pull();
    for (int i = 0; i < 3; ++i) {
      station.delivery.Expect(SampleText(900, i));
      station.Drop(fmt::format("TOR{}.TXT", i), SampleText(900, i));
    }
    const auto isGone = [&] { return station.CountInLog("has vanished") == 1; };
    EXPECT_TRUE(station.ListenUntil(30s, isGone)) << station.Log();
    poll(nullptr, 0, 1000);  // the time in which a queue would burn
    station.Replug();
    const auto isComplete = [&] { return station.delivery.Missing().empty(); };
    EXPECT_TRUE(station.ListenUntil(90s, isComplete)) << station.Log();
    EXPECT_EQ(station.delivery.foreign, Lines{});
    EXPECT_EQ(station.CountInLog("has vanished"), 1);
    EXPECT_EQ(station.CountInLog("is back"), 1);
    EXPECT_TRUE(station.KeyingRecord().steps.ends_with("11 "));
  }
}

}  // namespace
}  // namespace ostrel
