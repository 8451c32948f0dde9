// A station over many days at 1200 baud: ordinary traffic, two storms a day, pauses,
// identifications, archives in and out, purge. Looks each midnight whether
// the statistics are what the line carried, and at the end whether anything has grown.
//
//   month_test [DAYS]
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <random>
#include <unistd.h>
#include <unordered_map>

#include "tests/endurance/delivery.h"
#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

constexpr UtcTime kFirstMidnight = std::chrono::floor<std::chrono::days>(kNoon);
#ifdef __SANITIZE_ADDRESS__
constexpr long kMostGrowth = 64 * 1024;  // KiB; the sanitizer keeps what was freed for a while
#else
constexpr long kMostGrowth = 4 * 1024;
#endif
constexpr int kMostFiles = 3500;  // six hours of a full line, and then some
constexpr int kSlack = 2;         // files that start while a day ends

struct Footprint {
  long residentKib = 0;
  long descriptors = 0;
  long files = 0;
  std::uintmax_t logBytes = 0;
};

/// What the line carried since midnight.
struct Carried {
  int files = 0;
  int fills = 0;
};

class Month {
 public:
  explicit Month(int days) : days_(days) {}
  /// Returns the number of things that were not as they should be.
  int Run();

 private:
  void Lay();
  void LiveHour(int hour);
  /// A pause or an identification may go on beyond the end.
  void RunTo(UtcTime end) { station_.Run(end - station_.machine.clock.UtcNow()); }
  void Arrive(milliseconds within);
  void Hear(std::string_view bytes);
  void Take(const ReceivedProduct& product);
  void TakeContent(const std::string& content, const std::string& name);
  void CompareDay(int day);
  void Complain(const std::string& what);
  Footprint Measure();
  void CompareFootprints(const Footprint& before, const Footprint& after);
  int Between(int low, int high) { return std::uniform_int_distribution<>(low, high)(random_); }

  int days_;
  VirtualStation station_{kFirstMidnight};
  std::mt19937 random_{11};
  StreamDecoder decoder_;
  ProductAssembler assembler_;
  /// What has been dropped and not come yet: digests of the contents.
  std::unordered_map<std::size_t, int> awaited_;
  Carried carried_;
  int dropped_ = 0, received_ = 0, complaints_ = 0;
};

void Month::Complain(const std::string& what) {
  ++complaints_;
  fmt::print("WRONG: {}\n", what);
}

void Month::Lay() {
  station_.Rule(0, "TOR*");
  station_.Rule(2, "SND*");
  station_.Rule(4, "AFD*");
  station_.Rule(10, "BLK*");
  for (const auto& [key, value] : {std::pair{"PurgeTime", "6"},
                                   {"UnZipFiles", "1"},
                                   {"CompressPri2", "1"},
                                   {"LogProgram", "1"},
                                   {"CompressNbrFiles", "5"},
                                   {"CWSpeed", "25"}})
    station_.Set(key, value);
  station_.machine.line.onWrite = [this](std::string_view bytes) { Hear(bytes); };
}

/// One file, of the kinds that a day brings.
void Month::Arrive(milliseconds within) {
  const int number = ++dropped_;
  const int dice = Between(0, 99);
  const auto size = static_cast<std::size_t>(dice < 5 ? Between(4000, 9000) : Between(150, 2000));
  const char* const kind = dice < 10 ? "TOR" : dice < 20 ? "SND" : dice < 25 ? "BLK" : "AFD";
  const auto name = fmt::format("{}{}.TXT", kind, number);
  const auto content = SampleText(size, number);
  ++awaited_[std::hash<std::string>{}(content)];
  const bool isArchive = dice >= 97;
  station_.machine.clock.At(station_.machine.clock.Monotonic() + within,
                            [this, name, content, isArchive] {
                              if (isArchive)
                                return station_.Drop(name + ".ZIS", MakeArchive({{name, content}}));
                              station_.Drop(name, content);
                            });
}

/// Storms come at 07 and at 19 hours: hundreds of files in five minutes.
void Month::LiveHour(int hour) {
  constexpr int kOrdinary = 90, kStorm = 300, kHour = 3'600'000, kStormLasts = 300'000;
  for (int i = 0; i < kOrdinary; ++i) Arrive(milliseconds(Between(0, kHour - 1)));
  for (int i = 0; hour % 12 == 7 && i < kStorm; ++i) Arrive(milliseconds(Between(0, kStormLasts)));
  constexpr seconds kLastSeconds{10};
  const auto end = kFirstMidnight + std::chrono::hours(hour + 1);
  RunTo(end - kLastSeconds);
  if (hour % 24 == 23) CompareDay(hour / 24);
  RunTo(end);
  station_.machine.line.keying.clear();
  station_.machine.dialogs.errors.clear();
}

void Month::Hear(std::string_view bytes) {
  for (const auto& event : decoder_.Feed(bytes)) {
    const auto* const packet = std::get_if<ReceivedPacket>(&event);
    if (packet == nullptr) {
      if (!std::holds_alternative<PauseText>(event)) Complain("noise on the line");
      continue;
    }
    if (packet->block == 1) {
      ++carried_.files;
      if (packet->name == "FILLFILE.TXT") ++carried_.fills;
    }
    const auto outcome = assembler_.Accept(*packet);
    if (outcome.missing > 0) Complain("blocks missing of " + packet->name);
    if (outcome.product && outcome.product->name != "FILLFILE.TXT") Take(*outcome.product);
  }
}

void Month::Take(const ReceivedProduct& product) {
  ++received_;
  if (!product.name.ends_with(".ZIP")) return TakeContent(product.data, product.name);
  for (const auto& content : MembersOf(product.data)) TakeContent(content, product.name);
}

void Month::TakeContent(const std::string& content, const std::string& name) {
  const auto found = awaited_.find(std::hash<std::string>{}(content));
  if (found == awaited_.end()) return Complain(name + " is none of those dropped");
  if (--found->second == 0) awaited_.erase(found);
}

/// Shortly before midnight, while the counters are still those of the day.
void Month::CompareDay(int day) {
  const auto& engine = station_.station->engine();
  const auto differs = [](int counted, int carried) {
    return std::abs(counted - carried) > kSlack;
  };
  if (differs(engine.FilesSentInAll(), carried_.files) ||
      differs(engine.FillsSent, carried_.fills)) {
    Complain(fmt::format("day {}: {} files and {} fills counted, {} and {} carried", day,
                         engine.FilesSentInAll(), engine.FillsSent, carried_.files,
                         carried_.fills));
  }
  carried_ = {};
}

Footprint Month::Measure() {
  Footprint footprint;
  std::ifstream("/proc/self/statm") >> footprint.residentKib >> footprint.residentKib;
  footprint.residentKib *= sysconf(_SC_PAGESIZE) / 1024;
  footprint.descriptors = std::distance(fs::directory_iterator("/proc/self/fd"), {});
  for (const auto& entry : fs::recursive_directory_iterator(station_.folder.path()))
    footprint.files += entry.is_regular_file();
  for (const auto* log : {"RtLog.txt", "RtLog.old"}) {
    std::error_code missing;
    const auto size = fs::file_size(station_.Path(log), missing);
    if (!missing) footprint.logBytes += size;
  }
  fmt::print(
      "{} dropped, {} received, {} awaited; {} KiB resident, {} descriptors, {} files, "
      "{} bytes of log\n",
      dropped_, received_, awaited_.size(), footprint.residentKib, footprint.descriptors,
      footprint.files, footprint.logBytes);
  std::fflush(stdout);
  return footprint;
}

void Month::CompareFootprints(const Footprint& before, const Footprint& after) {
  constexpr std::uintmax_t kMostLog = 2 * (100'000 + 1'000);
  if (after.residentKib - before.residentKib > kMostGrowth) Complain("memory has grown");
  if (after.descriptors != before.descriptors) Complain("descriptors have grown");
  if (after.files > kMostFiles) Complain("files pile up");
  if (after.logBytes > kMostLog) Complain("the log is not bounded");
}

int Month::Run() {
  Lay();
  station_.Start();
  Footprint warm;
  for (int hour = 0; hour < 24 * days_; ++hour) {
    LiveHour(hour);
    // The first day, or the half of a single one, fills what then stays full.
    if (hour + 1 == std::min(24, 12 * days_)) warm = Measure();
    if (hour % 24 == 23) CompareFootprints(warm, Measure());
  }
  for (int i = 0; i < 6 && !awaited_.empty(); ++i) station_.Run(std::chrono::hours(1));
  constexpr std::size_t kWaitForABlock = 4;
  if (awaited_.size() > kWaitForABlock)
    Complain(fmt::format("{} products did not come out", awaited_.size()));
  return complaints_;
}

}  // namespace
}  // namespace ostrel

int main(int count, char** arguments) {
  const int days = count > 1 ? std::stoi(arguments[1]) : 30;
  return ostrel::Month(days).Run() == 0 ? 0 : 1;
}
