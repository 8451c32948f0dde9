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

/// How a state is entered and known.
struct State {
  const char* name;
  RealStation::Settings settings;
  std::chrono::seconds secondAtStart;  // of the station's clock; -1 for any
  bool (*isReached)(const std::string& heard, const std::vector<Keying>& record);
};

bool WasKeyed(const std::vector<Keying>& record) {
  return std::any_of(record.begin(), record.end(),
                     [](const Keying& k) { return k.event == "set" && k.line1 && k.line2; });
}

const State kTransmitting = {
    "Transmitting", {}, -1s, [](const std::string& heard, const std::vector<Keying>&) {
      return heard.size() > 3000;
    }};
const State kDraining = {
    // A packet is on the line for seconds when the pause falls due.
    "Draining",
    {{"ComBaud", "4800"}, {"TxUpTime", "0.5"}},
    56s,
    [](const std::string& heard, const std::vector<Keying>&) {
      return heard.find("Transmit Timeout") != std::string::npos;
    }};
const State kPausing = {"Pausing",
                        {{"TxUpTime", "0.5"}, {"TxDownTime", "5"}},
                        56s,
                        [](const std::string&, const std::vector<Keying>& record) {
                          return WasKeyed(record) && !record.back().line1 && record.back().line2;
                        }};
const State kIdentifying = {"InAMorseElement",
                            {{"CWIDTime", "1"}, {"CWIDText", "OOOOOOOOOOOOOOOO"}, {"CWSpeed", "1"}},
                            27s,
                            [](const std::string&, const std::vector<Keying>& record) {
                              const auto drops =
                                  std::count_if(record.begin(), record.end(), [](const Keying& k) {
                                    return k.event == "set" && !k.line1 && !k.line2;
                                  });
                              return drops > 4 && record.back().line1 && record.back().line2;
                            }};
const State kOpening = {
    "Opening",
    {{"TxDelay", "30000"}},
    -1s,
    [](const std::string&, const std::vector<Keying>& record) { return WasKeyed(record); }};
const State kInAMessage = {
    // No packet host can be opened at this port: start-up says so in a box and waits.
    "WithAMessageOpen",
    {{"UdpPort", "0"}},
    -1s,
    [](const std::string& heard, const std::vector<Keying>&) { return heard.size() > 3000; }};

class KeyingStates : public testing::Test {
 protected:
  /// Starts the station and waits until it is in `state`.
  void Enter(const State& state) {
    station_.emplace(state.settings);
    station_->LinkLine(line_);
    station_->Rule(0, "TOR*");
    station_->Start(state.secondAtStart < 0s ? 0s : AheadTo(state.secondAtStart));
    ASSERT_TRUE(WaitUntil(60s,
                          [&] {
                            Listen(line_);
                            return state.isReached(heard_, station_->KeyingRecord());
                          }))
        << state.name << "\n"
        << station_->Log();
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
    if (record.empty() || record.back().line1 || record.back().line2) return std::nullopt;
    auto first = record.rbegin();
    while (std::next(first) != record.rend() && !std::next(first)->line1 &&
           !std::next(first)->line2)
      ++first;
    return first->at;
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
    EXPECT_TRUE(WIFEXITED(*status) && WEXITSTATUS(*status) == 0) << *status;
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
  EXPECT_TRUE(WaitUntil(90s,
                        [&] {
                          Listen(replugged);
                          return delivery_.IsComplete();
                        }))
      << delivery_.Missing() << station_->Log();
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
