// A station over many days at 1200 baud: ordinary traffic, two storms a day, pauses,
// identifications, archives in and out, purge. Looks each midnight whether the statistics are what
// the line carried, and whether anything has grown.
//
//   month_test [DAYS]
#include <cstdio>
#include <fstream>
#include <random>
#include <unistd.h>

#include "tests/endurance/delivery.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

constexpr UtcTime kFirstMidnight = std::chrono::floor<std::chrono::days>(kNoon);
#ifdef __SANITIZE_ADDRESS__
constexpr long kMostGrowth = 256 * 1024;  // KiB; the sanitizer keeps what was freed for a while
#else
constexpr long kMostGrowth = 4 * 1024;
#endif

struct Footprint {
  long residentKib = 0;
  long descriptors = 0;
  long files = 0;
  std::uintmax_t logBytes = 0;
};

class Month {
 public:
  explicit Month(int days) : days_(days) {
    for (const auto& [list, keyword] :
         {std::pair{0u, "TOR*"}, {2u, "SND*"}, {4u, "AFD*"}, {10u, "BLK*"}})
      station_.Rule(list, keyword);
    station_.Set({{"PurgeTime", "6"},
                  {"UnZipFiles", "1"},
                  {"CompressPri2", "1"},
                  {"LogProgram", "1"},
                  {"CompressNbrFiles", "5"}});
    station_.machine.line.onWrite = [this](std::string_view bytes) { delivery_.Hear(bytes); };
    station_.Start();
  }

  /// Returns the number of things that were not as they should be.
  int Run() {
    Footprint warm;
    for (int hour = 0; hour < 24 * days_; ++hour) {
      LiveHour(hour);
      // The first day, or the half of a single one, fills what then stays full.
      if (hour + 1 == std::min(24, 12 * days_)) warm = Measure();
      if (hour % 24 == 23) CompareFootprints(warm, Measure());
    }
    for (int i = 0; i < 6 && !delivery_.Missing().empty(); ++i) station_.Run(1h);
    constexpr std::size_t kWaitForABlock = 4;
    if (delivery_.Missing().size() > kWaitForABlock) Complain("products did not come out");
    if (!delivery_.foreign.empty()) Complain("received, but not dropped: " + delivery_.foreign[0]);
    return complaints_;
  }

 private:
  void Complain(const std::string& what) {
    ++complaints_;
    fmt::print("WRONG: {}\n", what);
  }

  /// One file, of the kinds that a day brings.
  void Arrive(int within) {
    const int number = ++dropped_;
    const int dice = Between(0, 99);
    const int size = dice < 5 ? Between(4000, 9000) : Between(150, 2000);
    const char* const kind = dice < 10 ? "TOR" : dice < 20 ? "SND" : dice < 25 ? "BLK" : "AFD";
    const auto name = fmt::format("{}{}.TXT", kind, number);
    const auto content = SampleText(static_cast<std::size_t>(size), number);
    delivery_.Expect(content);
    const auto drop = [this, name, content, isArchive = dice >= 97] {
      if (isArchive) return station_.Drop(name + ".ZIS", MakeArchive({{name, content}}));
      station_.Drop(name, content);
    };
    station_.machine.clock.At(station_.machine.clock.Monotonic() + milliseconds(within), drop);
  }

  /// Storms come at 07 and at 19 hours: hundreds of files in five minutes.
  void LiveHour(int hour) {
    constexpr int kOrdinary = 90, kStorm = 300, kHour = 3'600'000, kStormLasts = 300'000;
    for (int i = 0; i < kOrdinary; ++i) Arrive(Between(0, kHour - 1));
    for (int i = 0; hour % 12 == 7 && i < kStorm; ++i) Arrive(Between(0, kStormLasts));
    const auto end = kFirstMidnight + (hour + 1) * 1h;
    RunTo(end - 10s);
    if (hour % 24 == 23) CompareDay();
    RunTo(end);
    station_.machine.line.keying.clear();
    station_.machine.dialogs.errors.clear();
  }
  /// A pause or an identification may go on beyond the end.
  void RunTo(UtcTime end) { station_.Run(end - station_.machine.clock.UtcNow()); }

  /// Shortly before midnight, while the counters are still those of the day.
  void CompareDay() {
    constexpr int kSlack = 2;  // files that start while a day ends
    const auto& status = station_.station->status();
    if (std::abs(status.FilesSentInAll() - delivery_.files) > kSlack ||
        std::abs(status.FillsSent - delivery_.fills) > kSlack)
      Complain("the day's figures are not what the line carried");
    delivery_.files = delivery_.fills = 0;
  }

  Footprint Measure() {
    Footprint now;
    std::ifstream("/proc/self/statm") >> now.residentKib >> now.residentKib;
    now.residentKib *= sysconf(_SC_PAGESIZE) / 1024;
    now.descriptors = std::distance(fs::directory_iterator("/proc/self/fd"), {});
    for (const auto& entry : fs::recursive_directory_iterator(station_.folder.path())) {
      now.files += entry.is_regular_file();
      if (entry.path().stem() == "RtLog") now.logBytes += entry.file_size();
    }
    fmt::print(
        "{} dropped, {} received, {} awaited; {} KiB resident, {} descriptors, {} files, "
        "{} bytes of log\n",
        dropped_, delivery_.received, delivery_.Missing().size(), now.residentKib, now.descriptors,
        now.files, now.logBytes);
    std::fflush(stdout);
    return now;
  }

  void CompareFootprints(const Footprint& before, const Footprint& after) {
    constexpr std::uintmax_t kMostLog = 2 * (100'000 + 1'000);
    constexpr int kMostFiles = 3500;  // six hours of a full line, and then some
    if (after.residentKib - before.residentKib > kMostGrowth) Complain("memory has grown");
    if (after.descriptors != before.descriptors) Complain("descriptors have grown");
    if (after.files > kMostFiles) Complain("files pile up");
    if (after.logBytes > kMostLog) Complain("the log is not bounded");
  }

  int Between(int low, int high) { return std::uniform_int_distribution<>(low, high)(random_); }

  int days_;
  VirtualStation station_{kFirstMidnight};
  std::mt19937 random_{11};
  Delivery delivery_{Repeats::kForeign};
  int dropped_ = 0, complaints_ = 0;
};

}  // namespace
}  // namespace ostrel

int main(int count, char** arguments) {
  return ostrel::Month(count > 1 ? std::stoi(arguments[1]) : 30).Run() == 0 ? 0 : 1;
}
