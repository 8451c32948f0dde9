#include "programs/feed/trial.h"

#include <filesystem>
#include <fmt/format.h>
#include <map>

#include "base/failure.h"
#include "base/names.h"
#include "base/numbers.h"
#include "base/station_files.h"
#include "base/text.h"
#include "feed/area_rules.h"
#include "feed/feed.h"
#include "feed/feed_config.h"
#include "feed/placing.h"
#include "platform/linux/sqlite_settings_store.h"
#include "settings/settings_table.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

struct Amount {
  long long products = 0, bytes = 0, blocks = 0;

  void Add(std::uintmax_t size) {
    ++products;
    bytes += static_cast<long long>(size);
    blocks += static_cast<long long>((size + kReceivedBlock - 1) / kReceivedBlock);
  }
};

/// Bits a second, as the station is set.
int RateOf(const std::string& station) {
  const std::string fallback = "1200";
  const auto path = JoinPath(station, kSettingsFile);
  if (!fs::exists(path)) return LeadingInteger(fallback);
  SqliteSettingsStores stores(path);
  return LeadingInteger(
      OpenAtRoot(stores)->ReadSetting(KeyPath(Section::kSettings), "ComBaud", fallback));
}

std::string LineOf(const std::string& what, const Amount& amount, int rate) {
  constexpr double kBitsOfByte = 11;  // a start bit, eight data bits, two stop bits
  const double seconds =
      static_cast<double>(amount.blocks) * kReceivedPacket * kBitsOfByte / std::max(rate, 1);
  return fmt::format("{:<44} {:>9} {:>13} {:>10.1f}\n", what, amount.products, amount.bytes,
                     seconds / 60);
}

}  // namespace

void TryTree(const std::string& tree, const std::string& station) {
  const auto config = ReadFeedConfig(FeedConfigPath(station), station);
  const auto areas = AreasOf(station);
  const AreaRules rules(config.areas, areas);
  const NameRules names(config.names);
  Amount all, taken, unknown;
  std::map<const AreaRule*, Amount> passedOver;
  if (!fs::is_directory(tree))
    throw Failure(failure_number::kPathNotFound, "There is no folder " + tree);
  for (const auto& entry : fs::recursive_directory_iterator(tree)) {
    if (!entry.is_regular_file()) continue;
    const auto size = entry.file_size();
    const bool isKnown = names.NameOf(entry.path().filename().string()).has_value();
    if (!isKnown || size > config.largest) {
      unknown.Add(size);
      continue;
    }
    all.Add(size);
    const auto came = std::chrono::file_clock::to_sys(entry.last_write_time());
    const auto* const rule = rules.PassedOverBy(ReadWhole(entry.path().string()),
                                                std::chrono::floor<milliseconds>(came));
    (rule ? passedOver[rule] : taken).Add(size);
  }
  const int rate = RateOf(station);
  fmt::print("{:<44} {:>9} {:>13} {:>10}\n", fmt::format("At {} bits a second", rate), "Products",
             "Bytes", "Minutes");
  fmt::print("{}", LineOf("Without the rules", all, rate));
  for (const auto& rule : rules.rules()) {
    if (const auto found = passedOver.find(&rule); found != passedOver.end())
      fmt::print("{}", LineOf("  passed over: " + Spell(rule), found->second, rate));
  }
  fmt::print("{}", LineOf("With them", taken, rate));
  if (unknown.products > 0)
    fmt::print("{}", LineOf("Kept apart: no short name, or too large", unknown, rate));
}

}  // namespace ostrel
