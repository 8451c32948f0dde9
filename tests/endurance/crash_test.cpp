// Kills the real program at random instants, again and again, while products arrive, and looks
// whether every one of them was received whole, and the history says of none that it was sent when
// it was not.
//
//   crash_test [KILLS [SEED]]
#include <cstdio>
#include <random>
#include <signal.h>

#include "base/names.h"
#include "base/text.h"
#include "platform/linux/sqlite_database.h"
#include "tests/endurance/real_station.h"

namespace ostrel {
namespace {

class CrashTest {
 public:
  CrashTest(int kills, unsigned seed) : kills_(kills), random_(seed) {}

  /// Returns true when nothing was lost.
  bool Run() {
    for (int i = 0; i < kills_; ++i) LiveAndDie();
    const bool cameOut = ComesOutInTheEnd();
    const bool opens = DatabaseOpens();
    const auto& delivery = station_.delivery;
    fmt::print(
        "{} kills, {} files dropped, {} products received; missing: {}; foreign: {}; left behind: "
        "{}; database: {}\n",
        kills_, dropped_, delivery.received, fmt::join(delivery.Missing(), ", "),
        fmt::join(delivery.foreign, " "), fmt::join(LeftBehind(station_.Path("KvData")), " "),
        opens ? "opens" : "DAMAGED");
    return HistoryIsTrue() && cameOut && delivery.foreign.empty() && opens;
  }

 private:
  void LiveAndDie() {
    constexpr int kShortest = 20, kLongest = 2000;  // ms
    station_.Start();
    for (int left = Between(kShortest, kLongest); left > 0;) {
      const int nap = std::min(left, Between(1, 500));
      station_.ListenUntil(milliseconds(nap), [] { return false; });
      left -= nap;
      if (Between(0, 1) == 0) DropSome();
    }
    station_.End(SIGKILL);
  }

  /// One file of a random kind, or an archive of two.
  void DropSome() {
    const int number = ++dropped_;
    const auto content = SampleText(static_cast<std::size_t>(Between(100, 2500)), number);
    static constexpr const char* kKinds[] = {"TOR", "TORC", "SND", "OVR", "BLK", "PACK"};
    const std::string kind = kKinds[Between(0, 5)];
    const auto name = fmt::format("{}{}.TXT", kind, kind == "OVR" ? number % 3 : number);
    station_.delivery.Expect(content, name);
    if (kind != "PACK") return station_.Drop(name, content);
    const auto other = SampleText(300, 1'000'000 + number);
    station_.delivery.Expect(other);
    station_.Drop(fmt::format("PACK{}.ZIS", number),
                  MakeArchive({{fmt::format("TORA{}.TXT", number), content},
                               {fmt::format("SNDB{}.TXT", number), other}}));
  }

  bool ComesOutInTheEnd() {
    station_.Start();
    const bool allOut = station_.ListenUntil(60s + kills_ * 4s, [this] {
      return station_.delivery.Missing().empty() && LeftBehind(station_.Path("KvData")).empty();
    });
    return station_.End(SIGTERM) == 0 && allOut;
  }

  bool DatabaseOpens() {
    const auto store = station_.OpenSettings();
    return store->ReadSetting(KeyPath(Section::kSettings), "ComBaud", "") == "115200" &&
           store->WriteSetting(KeyPath(Section::kSettings), "ComBaud", "9600");
  }

  /// What it calls sent was heard whole as often; all that was received has ended.
  bool HistoryIsTrue() {
    std::map<std::string, int> heard;
    StreamDecoder decoder;
    ProductAssembler assembler;
    for (const auto& event : decoder.Feed(station_.heard)) {
      const auto* const packet = std::get_if<ReceivedPacket>(&event);
      const auto product = packet ? assembler.Accept(*packet).product : std::nullopt;
      if (product) ++heard[product->name];
    }
    SqliteDatabase database(station_.Path("KvHistory.db"), "History", DatabaseUse::kReadOnly);
    SqliteStatement rows(database, "SELECT sent_as, times_sent, fate FROM product");
    std::map<std::string, int> fates;
    int invented = 0;
    while (rows.Step()) {
      ++fates[rows.Text(2)];
      const auto sentAs = rows.Text(0);
      invented += (heard[ToUpper(StripDupSuffix(sentAs))] -= static_cast<int>(rows.Number(1))) < 0;
    }
    fmt::print("history: {} invented;", invented);
    for (const auto& [fate, count] : fates) fmt::print(" {} {}", count, fate);
    fmt::print("\n");
    return invented == 0 && fates["waiting"] == 0 && fates["on the air"] == 0 &&
           fates["unknown"] <= 2 * kills_;
  }

  int Between(int low, int high) { return std::uniform_int_distribution<>(low, high)(random_); }

  int kills_;
  std::mt19937 random_;
  RealStation station_;
  int dropped_ = 0;
};

}  // namespace
}  // namespace ostrel

int main(int count, char** arguments) {
  const int kills = count > 1 ? std::stoi(arguments[1]) : 300;
  const unsigned seed =
      count > 2 ? static_cast<unsigned>(std::stoul(arguments[2])) : std::random_device()();
  fmt::print("seed {}\n", seed);
  std::fflush(stdout);
  return ostrel::CrashTest(kills, seed).Run() ? 0 : 1;
}
