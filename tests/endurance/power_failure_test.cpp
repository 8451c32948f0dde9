// One short stretch of the station's work that touches every road a file can take, lived through
// again and again: with the power failing at each single change of the file system, with each
// single change refused, and with the file system giving no answer from some question on.
#include <gtest/gtest.h>

#include "tests/endurance/delivery.h"
#include "tests/endurance/troubled_files.h"

namespace ostrel {
namespace {

using Kind = Trouble::Kind;

enum class Operators { kPresent, kAbsent };

class Scenario : public VirtualStation {
 public:
  /// Begins seven seconds before a block is looked for. What has `elsewhere` in its path lies on
  /// another disk.
  explicit Scenario(const std::string& elsewhere = "none",
                    Operators operators = Operators::kPresent)
      : VirtualStation(kNoon + 8s),
        operators_(operators),
        troubledFiles_(realFiles, machine.clock, elsewhere) {
    WriteFile(Path("FillFile.txt"), SampleText(20 * 1024, 99));
    for (const auto& [list, keyword] : kManyRules) Rule(list, keyword);
    Set(kManySettings);
    Set(kNoWaits);
    Product(0s, "TORC.TXT", SampleText(1500, 1));
    Product(0s, "SND1.TXT", SampleText(4000, 2));
    Product(0s, "SND2.TXT", "Nothing to compress");
    Product(0s, "OVRA.TXT", SampleText(1800, 3));
    Product(0s, "OVRB.TXT", SampleText(9000, 4));
    Product(0s, "BLK1.TXT", SampleText(800, 5));
    Product(0s, "BLK2.TXT", SampleText(900, 6));
    Drop("DIS1.TXT", SampleText(100, 7));
    const std::map<std::string, std::string> members = {{"TOR2.TXT", SampleText(600, 8)},
                                                        {"SND3.TXT", SampleText(1100, 9)}};
    for (const auto& [name, content] : members) delivery.Expect(content);
    Drop("PACK.ZIS", MakeArchive(members));
    Product(1500ms, "OVRA.TXT", SampleText(1900, 10));
    Product(2500ms, "OVRB.TXT", SampleText(2100, 11));
  }

  /// Lives until everything has come and is tidy, the power fails, or the time is up. Returns the
  /// number of changes made to the file system.
  int Live(const Trouble& trouble = {}) {
    constexpr int kLongest = 120;
    troubledFiles_.Meet(trouble);
    station = std::make_unique<Station>(
        machine.For(folder.path(), troubledFiles_, troubledArchives_, stores));
    try {
      const bool isStarted = station->Start();
      EXPECT_TRUE(isStarted || trouble.kind >= Kind::kRefused);
      changesOfStart = troubledFiles_.changes();
      questionsOfStart = troubledFiles_.questions();
      for (int i = 0; i < kLongest && !IsDone(); ++i) {
        Run(500ms);
        if (operators_ == Operators::kPresent) Operate(i);
      }
    } catch (const PowerFailure&) {
    }
    Hear();
    PowerDown();
    return troubledFiles_.changes();
  }

  Delivery delivery;
  int changesOfStart = 0, questionsOfStart = 0;
  int questions() const { return troubledFiles_.questions(); }

 private:
  /// Arrives, and must come out again, unless a later one of the same name does.
  void Product(milliseconds at, const std::string& name, const std::string& content) {
    delivery.Expect(content, name);
    machine.clock.At(at, [=, this] {
      Drop(name, content);
      troubledFiles_.Flush(Path("KvData/RxFiles/" + name));
    });
  }
  /// Operators hold, move, put first and send again what is there, and let all go in the end.
  void Operate(int step) {
    auto& operations = station->operations();
    const auto last = LastWaiting();
    TryStep([&] {
      const auto held = station->held().List();
      if (step % 4 == 3 && !held.empty()) operations.Release("bob", held.back().name);
      if (last.empty()) return;
      if (step == 0) operations.Hold("alice", last);
      if (step == 1) operations.Move("bob", last, Priority(6));
      if (step == 2) operations.PutFirst("alice", last);
      if (step == 4) operations.Hold("alice", last);
    });
    TryStep([&] {
      const auto sent = Names("KvData/RtSent");
      if (step == 6 && !sent.empty())
        operations.SendAgain("alice", {sent.front(), Priority(2), false, sent.front(), 1});
    });
  }
  std::string LastWaiting() {
    std::string name;
    station->ForEachEntry([&](Priority, const TransmitQueue::Entry& entry, auto) {
      if (entry.state == TransmitQueue::State::kWaits) name = entry.name;
    });
    return name;
  }
  bool IsDone() {
    Hear();
    return delivery.Missing().empty() && LeftBehind(Path("KvData")).empty();
  }
  /// What is still in the transmitter's buffer has not been heard.
  void Hear() {
    auto& carried = machine.line.carried;
    const auto sent = carried.size() - std::min(carried.size(), machine.line.BytesWaiting());
    delivery.Hear({carried.data(), sent});
    carried.erase(0, sent);
  }
  void PowerDown() {
    station.reset();
    machine.cycleTimer.Stop();
    machine.purgeTimer.Stop();
    machine.line.Close();
    machine.line.carried.clear();
    machine.clock.Advance(1s);
  }

  Operators operators_;
  TroubledFiles troubledFiles_;
  ZipArchives troubledArchives_{troubledFiles_, machine.clock};
};

/// One life after the other in one folder; the last one must set everything right. Returns how
/// often each content was received.
std::map<std::string, int> LiveThrough(const std::vector<Trouble>& lives,
                                       const std::string& elsewhere = "none",
                                       Operators operators = Operators::kPresent) {
  Scenario scenario(elsewhere, operators);
  auto story = elsewhere + " elsewhere; ";
  for (const auto& trouble : lives) {
    scenario.Live(trouble);
    story += fmt::format("{} at change {}; ", static_cast<int>(trouble.kind), trouble.at);
  }
  EXPECT_EQ(scenario.delivery.Missing(), Lines{}) << story;
  EXPECT_EQ(scenario.delivery.foreign, Lines{}) << story;
  // A refused tidying is left to the next start.
  if (lives.back().kind == Kind::kRefused) return scenario.delivery.times;
  EXPECT_EQ(LeftBehind(scenario.Path("KvData")), Lines{}) << story;
  return scenario.delivery.times;
}

TEST(PowerFailure, AtAnyChangeOfTheFileSystemLosesNothingAndLeavesNothingBehind) {
  const int changes = Scenario().Live();
  ASSERT_GT(changes, 100);
  fmt::print("{} changes of the file system\n", changes);
  for (int at = 1; at <= changes; ++at) {
    for (const auto kind : {Kind::kPowerFailsAfter, Kind::kPowerFailsAmidst})
      LiveThrough({{.kind = kind, .at = at}, {}});
  }
}

TEST(PowerFailure, WithAFolderOnAnotherDiskLosesNothingEither) {
  constexpr int kStride = 3;
  for (const auto* elsewhere : {"/RxFiles/", "/RtPri", "/RtXmit/", "/RtSent/", "/.pending/"}) {
    const int changes = Scenario(elsewhere).Live();
    for (int at = 1; at <= changes; at += kStride) {
      LiveThrough({{.kind = Kind::kPowerFailsAfter, .at = at, .losing = at % 2}, {}}, elsewhere);
    }
  }
}

TEST(PowerFailure, InTheMidstOfTheHandBackLosesNothingEither) {
  constexpr int kSoonAfter = 40;
  for (const std::string elsewhere : {"none", "/RtPri"}) {
    const Trouble first = {.kind = Kind::kPowerFailsAfter, .at = Scenario(elsewhere).Live() / 2};
    Scenario trial(elsewhere);
    trial.Live(first);
    trial.Live();
    for (int at = 1; at <= trial.changesOfStart + kSoonAfter; ++at) {
      Trouble second = {.kind = Kind::kPowerFailsAmidst, .at = at};
      if (at % 2 == 0) second.kind = Kind::kPowerFailsAfter;
      if (elsewhere != "none") second.losing = at / 2 % 2;
      LiveThrough({first, second, {}}, elsewhere);
    }
  }
}

TEST(RefusedChange, HoldsUpAtMostWhatItTouchesUntilItIsOver) {
  Scenario trial;
  const int changes = trial.Live();
  const std::pair<int, std::int32_t> faults[] = {
      {copy_code::kDiskFull, failure_number::kDiskFull},
      {copy_code::kWriteProtected, failure_number::kPathAccess},
      {copy_code::kDeviceError, failure_number::kDeviceError}};
  for (const auto& [copyCode, failure] : faults) {
    for (const milliseconds lasting : {0ms, 10'000ms}) {
      for (int at = 1; at <= changes; ++at) {
        // A start-up that meets trouble says so and waits for the operator to start it again.
        std::vector<Trouble> lives = {{Kind::kRefused, at, lasting, copyCode, failure}};
        if (at <= trial.changesOfStart) lives.emplace_back();
        LiveThrough(lives);
      }
    }
  }
}

/// With nobody who sends anything again, each content comes as often as in a life without trouble.
TEST(UnansweredQuestion, EndsNothingAndRepeatsNothing) {
  constexpr int kStride = 7;  // another failure each time
  const std::int32_t failures[] = {failure_number::kPermissionDenied, failure_number::kDeviceError,
                                   ENOTCONN, ESTALE};
  Scenario calm("none", Operators::kAbsent);
  calm.Live();
  ASSERT_GT(calm.questionsOfStart, kStride);
  for (const milliseconds lasting : {0ms, 200ms, 20'000ms}) {
    for (int at = 1; at <= calm.questions(); at += kStride) {
      const Trouble trouble = {Kind::kUnanswered, at, lasting, 0, failures[at % 4]};
      const auto times = LiveThrough({trouble, {}}, "none", Operators::kAbsent);
      for (const auto& [content, count] : times)
        EXPECT_LE(count, std::max(calm.delivery.times[content], 1))
            << content.substr(0, 16) << " at question " << at << " for " << lasting.count();
    }
  }
}

}  // namespace
}  // namespace ostrel
