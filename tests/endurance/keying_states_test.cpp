// The real program, ended or robbed of its device in each state of the transmitter; hanging, and
// robbed of its guard.
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
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
  bool IsDown() { return KeyingRecord().steps.ends_with("00 "); }
  bool IsUp() { return KeyingRecord().steps.ends_with("11 "); }
  long CountInLog(const std::string& text) {
    const auto log = Log();
    const std::regex words(text);
    return std::distance(std::sregex_iterator(log.begin(), log.end(), words), {});
  }
};

TEST(KeyingStates, EndWithBothLinesDownWithinASecond) {
  const struct {
    const State& state;
    int signal;
  } endings[] = {{kTransmitting, SIGTERM}, {kDraining, SIGTERM}, {kPausing, SIGTERM},
                 {kIdentifying, SIGTERM},  {kOpening, SIGTERM},  {kTransmitting, SIGABRT},
                 {kIdentifying, SIGKILL}};
  for (const auto& [state, signal] : endings) {
    SCOPED_TRACE(fmt::format("{}, signal {}", state.name, signal));
    StationIn station(state);
    const auto asked = std::chrono::steady_clock::now().time_since_epoch();
    const int status = station.End(signal);
    EXPECT_TRUE(station.ListenUntil(2s, [&] { return station.IsDown(); }));
    const auto keying = station.KeyingRecord();
    EXPECT_LT(keying.last - asked, 1s);
    fmt::print("{}: lines down after {} us\n", state.name, (keying.last - asked).count() / 1000);
    if (signal != SIGTERM) {  // the guard dropped them, and without it the system would have
      EXPECT_EQ(WTERMSIG(status), signal);
      EXPECT_TRUE(keying.dropsAtClose);
      continue;
    }
    EXPECT_EQ(status, 0);
    EXPECT_EQ(station.CountInLog("Program Stopped"), 1);
  }
}

TEST(KeyingStates, EndWithAFailedStartThatNobodySees) {
  const std::map<std::string, std::string> settings = {{"UdpPort", "0"}};  // opens no packet host
  RealStation station(settings);
  station.Start();
  EXPECT_EQ(WEXITSTATUS(station.End(0)), 1);
  EXPECT_TRUE(station.KeyingRecord().steps.ends_with("00 "));
  EXPECT_NE(station.Log().find("FormLoad     Error # 5,"), std::string::npos) << station.Log();
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

TEST(KeyingStates, HaveBothLinesDownWhileNothingDrains) {
  StationIn station({"transmitting", 0, "LINE 100", "11 ", {{"ComBaud", "115200"}}});
  for (int i = 0; i < 300 && !station.IsDown(); ++i) poll(nullptr, 0, 100);  // nobody reads
  EXPECT_TRUE(station.IsDown());
  station.delivery.Expect(SampleText(900));
  station.Drop("TOR.TXT", SampleText(900));
  const auto isComplete = [&] { return station.delivery.Missing().empty(); };
  EXPECT_TRUE(station.ListenUntil(60s, isComplete)) << station.Log();
  EXPECT_EQ(station.CountInLog("has vanished|is back"), 2) << station.Log();
  EXPECT_TRUE(station.IsUp());
}

TEST(KeyingStates, OfAStationThatHangsHaveBothLinesDownUntilItAnswersAgain) {
  StationIn station(kTransmitting);
  const auto mark = station.Path("KvData/RxFiles/.hangs");
  const struct {
    const char* what;
    std::function<void()> begin, end;
  } hangs[] = {{"stopped", [&] { station.Signal(SIGSTOP); }, [&] { station.Signal(SIGCONT); }},
               {"in a file system", [&] { std::ofstream{mark}; }, [&] { remove(mark.c_str()); }}};
  int released = 0;
  for (const auto& hang : hangs) {
    SCOPED_TRACE(hang.what);
    const auto begun = std::chrono::steady_clock::now().time_since_epoch();
    hang.begin();
    EXPECT_TRUE(station.ListenUntil(20s, [&] { return station.IsDown(); }));
    const auto down = station.KeyingRecord().last - begun;
    EXPECT_GE(down, 2s);
    fmt::print("{}: lines down after {} ms\n", hang.what, down.count() / 1'000'000);
    hang.end();
    station.heard.clear();
    EXPECT_TRUE(station.ListenUntil(20s, [&] { return station.heard.size() > 1116; }));
    EXPECT_TRUE(station.IsUp());
    EXPECT_EQ(station.CountInLog("was released"), ++released) << station.Log();
  }
  // Asked to end while it hangs, it is not waited for so long.
  std::ofstream{mark};
  poll(nullptr, 0, 300);
  const auto asked = std::chrono::steady_clock::now().time_since_epoch();
  station.Signal(SIGTERM);
  EXPECT_TRUE(station.ListenUntil(20s, [&] { return station.IsDown(); }));
  const auto down = station.KeyingRecord().last - asked;
  EXPECT_LT(down, 2s);
  fmt::print("asked to end: lines down after {} ms\n", down.count() / 1'000'000);
  remove(mark.c_str());
  EXPECT_EQ(station.End(SIGTERM), 0);
  EXPECT_TRUE(station.IsDown());
}

TEST(KeyingStates, ReplaceAGuardThatHasEndedOrWasStopped) {
  StationIn station(kTransmitting);
  int lost = 0;
  for (const int signal : {SIGKILL, SIGSTOP}) {
    station.SignalGuard(signal);
    ++lost;
    const auto isReplaced = [&] { return station.CountInLog("lost its keying guard") == lost; };
    EXPECT_TRUE(station.ListenUntil(20s, isReplaced)) << station.Log();
    EXPECT_TRUE(station.IsUp());
  }
  station.End(SIGKILL);
  EXPECT_TRUE(station.ListenUntil(2s, [&] { return station.IsDown(); }));
}

}  // namespace
}  // namespace ostrel
