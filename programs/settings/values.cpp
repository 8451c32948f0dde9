#include <fmt/format.h>

#include "base/failure.h"
#include "base/text.h"
#include "programs/settings/commands.h"
#include "settings/all_settings.h"

namespace ostrel {

void ListSettings(StationFolder& station) {
  const auto store = station.OpenStore();
  fmt::print("{:<17} {:<38} {}\n", "KEY", "SECTION", "VALUE");
  for (const auto& row : AllSettings(station.path())) {
    const auto value = store->ReadSetting(KeyPath(row.section), row.key, row.fallback);
    fmt::print("{:<17} {:<38} {}\n", row.key, KeyPath(row.section), Printable(value));
  }
}

void PrintSetting(StationFolder& station, const std::string& key) {
  const AllSettings settings(station.path());
  const auto& row = settings.RowOf(key);
  fmt::print("{}\n", station.OpenStore()->ReadSetting(KeyPath(row.section), row.key, row.fallback));
}

void StoreSetting(StationFolder& station, const std::string& key, const std::string& value) {
  const AllSettings settings(station.path());
  const auto& row = settings.RowOf(key);
  CheckSetting(row, value);
  if (const auto doubt = DoubtAbout(row, value); !doubt.empty())
    throw Failure(failure_number::kInvalidArgument,
                  fmt::format("{} cannot be \"{}\". {}.", row.key, value, doubt));
  station.ChangeStore([&](SettingsStore& store) {
    store.WriteAll({{.keyPath = KeyPath(row.section), .name = row.key, .value = value}});
  });
}

}  // namespace ostrel
