// The real program, ended or robbed of its device in each state of the transmitter.
#include <algorithm>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include "tests/endurance/delivery.h"
#include "tests/endurance/real_station.h"
#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

using Record = std::vector<Keying>;

/// How a state is entered and known.
struct State {
  const char* name;
  RealStation::Settings settings;
  std::chrono::seconds secondAtStart;  // of the station's clock; -1 for any
  bool (*isReached)(const std::string& heard, const Record& record);
};

bool WasKeyed(const std::string&, const Record& record) {
  return std::ranges::any_of(
      record, [](const Keying& k) { return k.event == "set" && k.line1 && k.line2; });
}
bool HasSent(const std::string& heard, const Record&) {
  return heard.size() > 3000;
}
bool IsInThePauseText(const std::string& heard, const Record&) {
  return heard.find("Transmit Timeout") != std::string::npos;
}
bool IsPausing(const std::string& heard, const Record& record) {
  return WasKeyed(heard, record) && !record.back().line1 && record.back().line2;
}
bool IsInAMorseElement(const std::string&, const Record& record) {
  const auto isDrop = [](const Keying& k) { return k.event == "set" && !k.line1 && !k.line2; };
  return std::ranges::count_if(record, isDrop) > 4 && record.back().line1 && record.back().line2;
}

const State kTransmitting = {"Transmitting", {}, -1s, HasSent};
// A packet is on the line for seconds when the pause falls due.
const State kDraining = {
    "Draining", {{"ComBaud", "4800"}, {"TxUpTime", "0.5"}}, 56s, IsInThePauseText};
const State kPausing = {"Pausing", {{"TxUpTime", "0.5"}, {"TxDownTime", "5"}}, 56s, IsPausing};
const State kIdentifying = {"InAMorseElement",
                            {{"CWIDTime", "1"}, {"CWIDText", "OOOOOOOOOOOOOOOO"}, {"CWSpeed", "1"}},
                            27s,
                            IsInAMorseElement};
const State kOpening = {"Opening", {{"TxDelay", "30000"}}, -1s, WasKeyed};
// No packet host can be opened at this port: start-up says so in a box and waits.
const State kInAMessage = {"WithAMessageOpen", {{"UdpPort", "0"}}, -1s, HasSent};

class KeyingStates : public testing::Test {
 protected:
  /// Starts the station and waits until it is in `state`.
  void Enter(const State& state) {
    station_.emplace(state.settings);
    station_->LinkLine(line_);
    station_->Rule(0, "TOR*");
    station_->Start(state.secondAtStart < 0s ? 0s : AheadTo(state.secondAtStart));
    const auto isReached = [&] {
      Listen(line_);
      return state.isReached(heard_, station_->KeyingRecord());
    };
    ASSERT_TRUE(WaitUntil(60s, isReached)) << station_->Log();
  }
  void Listen(PseudoTerminal& line) {
    const auto bytes = line.Read(false);
    heard_ += bytes;
    delivery_.Hear(bytes);
  }
  static std::chrono::seconds AheadTo(std::chrono::seconds second) {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return (second + 60s - std::chrono::floor<std::chrono::seconds>(now) % 60s) % 60s;
  }
  static std::chrono::microseconds Now() {
    return std::chrono::floor<std::chrono::microseconds>(
        std::chrono::steady_clock::now().time_since_epoch());
  }
  /// When both lines were last seen to fall.
  std::optional<std::chrono::microseconds> Down() {
    const auto record = station_->KeyingRecord();
    const auto isUp = [](const Keying& k) { return k.line1 || k.line2; };
    const auto lastUp = std::find_if(record.rbegin(), record.rend(), isUp);
    if (lastUp == record.rbegin()) return std::nullopt;
    return std::prev(lastUp)->at;
  }
  int CountInLog(const std::string& text) {
    const auto log = station_->Log();
    int count = 0;
    for (auto at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) ++count;
    return count;
  }

  PseudoTerminal line_;
  std::optional<RealStation> station_;
  std::string heard_;
  Delivery delivery_;
};

struct Ending {
  State state;
  int signal;
};

class KeyingAtTheEnd : public KeyingStates, public testing::WithParamInterface<Ending> {};

TEST_P(KeyingAtTheEnd, DropsBothLinesWithinASecond) {
  const auto& [state, signal] = GetParam();
  Enter(state);
  const auto asked = Now();
  station_->Signal(signal);
  const auto status = station_->WaitForEnd(20s);
  ASSERT_TRUE(status);
  if (signal == SIGTERM) {
    EXPECT_EQ(*status, 0);
    const auto down = Down();
    ASSERT_TRUE(down);
    fmt::print("lines down after {} us\n", (*down - asked).count());
    EXPECT_LT(*down - asked, 1s);
    EXPECT_EQ(CountInLog("Program Stopped"), 1);
  } else {  // the system drops them with the descriptor
    EXPECT_TRUE(WIFSIGNALED(*status) && WTERMSIG(*status) == signal) << *status;
    EXPECT_TRUE(station_->KeyingRecord().back().dropsAtClose);
  }
}

INSTANTIATE_TEST_SUITE_P(, KeyingAtTheEnd,
                         testing::Values(Ending{kTransmitting, SIGTERM}, Ending{kDraining, SIGTERM},
                                         Ending{kPausing, SIGTERM}, Ending{kIdentifying, SIGTERM},
                                         Ending{kOpening, SIGTERM}, Ending{kInAMessage, SIGTERM},
                                         Ending{kTransmitting, SIGABRT},
                                         Ending{kIdentifying, SIGKILL}),
                         [](const auto& row) {
                           return row.param.state.name + std::string("Signal") +
                                  std::to_string(row.param.signal);
                         });

class KeyingWithoutDevice : public KeyingStates, public testing::WithParamInterface<State> {};

TEST_P(KeyingWithoutDevice, BurnsNoQueueAndGoesOnWhenTheDeviceIsBack) {
  Enter(GetParam());
  line_.Pull();
  for (int i = 0; i < 3; ++i) {
    const auto content = SampleText(900, i);
    delivery_.Expect(content);
    station_->Drop("TOR" + std::to_string(i) + ".TXT", content);
  }
  ASSERT_TRUE(WaitUntil(30s, [&] { return CountInLog("has vanished") == 1; })) << station_->Log();
  EXPECT_FALSE(station_->KeyingRecord().back().line1);
  poll(nullptr, 0, 1000);  // the time in which a queue would burn
  PseudoTerminal replugged;
  station_->LinkLine(replugged);
  const auto isComplete = [&] {
    Listen(replugged);
    return delivery_.IsComplete();
  };
  EXPECT_TRUE(WaitUntil(90s, isComplete)) << delivery_.Missing() << station_->Log();
  EXPECT_EQ(delivery_.foreign(), std::vector<std::string>{});
  EXPECT_EQ(CountInLog("has vanished"), 1);
  EXPECT_EQ(CountInLog("is back"), 1);
  const auto record = station_->KeyingRecord();
  EXPECT_TRUE(record.back().line1 && record.back().line2);
}

INSTANTIATE_TEST_SUITE_P(, KeyingWithoutDevice, testing::Values(kTransmitting, kDraining, kPausing),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace ostrel
