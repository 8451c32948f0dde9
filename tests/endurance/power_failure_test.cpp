// One short stretch of the station's work that touches every road a file can take, lived through
// again and again: once with the power failing at each single change of the file system, once with
// each single change refused.
#include <algorithm>
#include <deque>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <gtest/gtest.h>
#include <random>

#include "tests/endurance/delivery.h"
#include "tests/endurance/troubled_files.h"
#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;
using Kind = Trouble::Kind;

constexpr UtcTime kStart = kNoon + 8s;  // seven seconds before a block is looked for

std::string Noise(std::size_t length) {
  std::mt19937 random(3);
  std::string bytes;
  while (bytes.size() < length) bytes += static_cast<char>('!' + random() % 90);
  return bytes;
}

/// A station from power-up to power failure, over a folder that outlives it.
struct Life {
  Life(const std::string& folder, UtcTime now, const Trouble& trouble)
      : machine(now),
        files(realFiles, machine.clock, trouble),
        stores(folder + "/KvRegistry.db"),
        station(std::make_unique<Station>(machine.For(folder, files, archives, stores))) {}

  VirtualMachine machine;
  LinuxFiles realFiles{machine.clock};
  TroubledFiles files;
  ZipArchives archives{files};
  SqliteSettingsStores stores;
  std::unique_ptr<Station> station;
};

class Scenario {
 public:
  Scenario() {
    fs::create_directories(folder_ / "KvData/RxFiles");
    Lay("FillFile.txt", SampleText(20 * 1024, 99));
    const std::pair<int, const char*> rules[] = {
        {0, "TOR*"}, {2, "SND*"}, {4, "OVR*"}, {10, "BLK*"}, {11, "DIS*"}, {12, "TOR1.TXT | C=2"}};
    for (const auto& [list, keyword] : rules) Lay(fmt::format("RtList{}.txt", list), keyword);
    const auto store = SqliteSettingsStores(folder_ / "KvRegistry.db").Open();
    store->SetRootKey(kHkeyLocalMachine);
    const std::pair<const char*, const char*> settings[] = {
        {"ComBaud", "115200"}, {"CWIDTime", "0"},         {"UnZipFiles", "1"},
        {"CompressPri2", "1"}, {"OverWrite4", "1"},       {"CompressNbrFiles", "2"},
        {"LogProgram", "1"},   {"CompressBlockPri", "7"}, {"TxDelay", "0"}};
    for (const auto& [key, value] : settings)
      store->WriteSetting(KeyPath(Section::kSettings), key, value);

    Product(0s, "TOR1.TXT", SampleText(1500, 1));
    Product(0s, "SND1.TXT", SampleText(4000, 2));
    Product(0s, "SND2.TXT", Noise(700));
    Product(0s, "OVRA.TXT", SampleText(1800, 3), "OVRA");
    Product(0s, "OVRB.TXT", SampleText(9000, 4), "OVRB");
    Product(0s, "BLK1.TXT", SampleText(800, 5));
    Product(0s, "BLK2.TXT", SampleText(900, 6));
    Arrive(0s, "DIS1.TXT", SampleText(100, 7));
    const std::map<std::string, std::string> members = {{"TOR2.TXT", SampleText(600, 8)},
                                                        {"SND3.TXT", SampleText(1100, 9)}};
    for (const auto& [name, content] : members) delivery_.Expect(content);
    Arrive(0s, "PACK.ZIS", MakeArchive(members));
    Product(1500ms, "OVRA.TXT", SampleText(1900, 10), "OVRA");
    Product(2500ms, "OVRB.TXT", SampleText(2100, 11), "OVRB");
  }

  /// Lives until everything has come and is tidy, the power fails, or the time is up. Returns the
  /// number of changes made to the file system.
  int Live(const Trouble& trouble = {}) {
    Life life(folder_.path(), now_, trouble);
    heard_ = 0;
    try {
      EXPECT_TRUE(life.station->Start());
      changesOfStart_ = life.files.changes();
      Run(life);
    } catch (const PowerFailure&) {
    }
    Hear(life);
    now_ = life.machine.clock.UtcNow() + 1s;
    return life.files.changes();
  }
  bool IsDone() const { return delivery_.IsComplete() && arrivals_.empty(); }

  const Delivery& delivery() const { return delivery_; }
  /// A file for the next block may well wait for others.
  std::vector<std::string> LeftOver() const {
    auto left = LeftBehind(folder_ / "KvData");
    std::erase_if(left, [](const std::string& path) { return path.starts_with("RtPri11/BLK"); });
    return left;
  }
  int changesOfStart() const { return changesOfStart_; }

 private:
  struct Arrival {
    UtcTime at;
    std::string name;
    std::string content;
  };
  void Lay(const std::string& name, const std::string& content) {
    std::ofstream(folder_ / name, std::ios::binary) << content;
  }
  void Arrive(milliseconds after, const std::string& name, const std::string& content) {
    arrivals_.push_back({kStart + after, name, content});
  }
  /// Arrives, and must come out again, unless a later one of the same title does.
  void Product(milliseconds after, const std::string& name, const std::string& content,
               const std::string& title = "") {
    delivery_.Expect(content, title);
    Arrive(after, name, content);
  }
  void Run(Life& life) {
    constexpr auto kLongest = 60s;
    const auto end = life.machine.clock.UtcNow() + kLongest;
    while (life.machine.clock.UtcNow() < end) {
      while (!arrivals_.empty() && arrivals_.front().at <= life.machine.clock.UtcNow()) {
        Lay("arriving", arrivals_.front().content);
        fs::rename(folder_ / "arriving", folder_ / ("KvData/RxFiles/" + arrivals_.front().name));
        arrivals_.pop_front();
      }
      life.machine.loop.RunFor(500ms);
      Hear(life);
      if (IsDone() && LeftOver().empty()) return;
    }
  }
  /// What was still in the transmitter's buffer has not been heard.
  void Hear(Life& life) {
    const std::string_view carried = life.machine.line.carried;
    const auto sent = carried.size() - std::min(carried.size(), life.machine.line.BytesWaiting());
    if (sent <= heard_) return;
    delivery_.Hear(carried.substr(heard_, sent - heard_));
    heard_ = sent;
  }

  // In memory: the walk writes a hundred thousand files.
  TempFolder folder_{fs::exists("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path()};
  Delivery delivery_;
  std::deque<Arrival> arrivals_;
  UtcTime now_ = kStart;
  std::size_t heard_ = 0;  // bytes of this life
  int changesOfStart_ = 0;
};

void ExpectNothingLost(const Scenario& scenario, const std::string& what) {
  EXPECT_TRUE(scenario.IsDone()) << what << ": missing " << scenario.delivery().Missing();
  EXPECT_EQ(scenario.delivery().foreign(), std::vector<std::string>{}) << what;
}

void ExpectNothingLostOrLeft(const Scenario& scenario, int at) {
  const auto what = fmt::format("change {}", at);
  ExpectNothingLost(scenario, what);
  EXPECT_EQ(scenario.LeftOver(), std::vector<std::string>{}) << what;
}

TEST(PowerFailure, AtAnyChangeOfTheFileSystemLosesNothingAndLeavesNothingBehind) {
  const int changes = Scenario().Live();
  ASSERT_GT(changes, 100);
  fmt::print("{} changes of the file system\n", changes);
  for (const auto kind : {Kind::kPowerFailsAfter, Kind::kPowerFailsAmidst}) {
    for (int at = 1; at <= changes; ++at) {
      Scenario scenario;
      scenario.Live({kind, at, {}, 0, 0});
      scenario.Live();
      ExpectNothingLostOrLeft(scenario, at);
    }
  }
}

TEST(PowerFailure, InTheMidstOfTheHandBackLosesNothingEither) {
  const Trouble first = {Kind::kPowerFailsAfter, Scenario().Live() / 2, {}, 0, 0};
  Scenario trial;
  trial.Live(first);
  trial.Live();
  constexpr int kSoonAfter = 40;
  for (int at = 1; at <= trial.changesOfStart() + kSoonAfter; ++at) {
    Scenario scenario;
    scenario.Live(first);
    scenario.Live({at % 2 == 0 ? Kind::kPowerFailsAfter : Kind::kPowerFailsAmidst, at, {}, 0, 0});
    scenario.Live();
    ExpectNothingLostOrLeft(scenario, at);
  }
}

TEST(RefusedChange, HoldsUpAtMostWhatItTouchesUntilItIsOver) {
  Scenario trial;
  const int changes = trial.Live();
  const struct {
    const char* name;
    int copyCode;
    std::int32_t failure;
  } faults[] = {{"disk full", copy_code::kDiskFull, failure_number::kDiskFull},
                {"read-only", copy_code::kWriteProtected, failure_number::kPathAccess},
                {"I/O error", copy_code::kDeviceError, failure_number::kDeviceError}};
  for (const milliseconds lasting : {0ms, 10'000ms}) {
    for (int at = 1; at <= changes; ++at) {
      const auto& fault = faults[static_cast<std::size_t>(at) % std::size(faults)];
      Scenario scenario;
      scenario.Live({Kind::kRefused, at, lasting, fault.copyCode, fault.failure});
      // A start-up that meets trouble says so and waits for the operator to start it again.
      if (at <= trial.changesOfStart()) scenario.Live();
      ExpectNothingLost(scenario,
                        fmt::format("{} at change {} for {} ms", fault.name, at, lasting.count()));
    }
  }
}

}  // namespace
}  // namespace ostrel
