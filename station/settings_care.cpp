#include "station/settings_care.h"

#include <fmt/format.h>

#include "settings/lost_settings.h"
#include "settings/settings_table.h"

namespace ostrel {

namespace {
constexpr const char* kCategory = "Settings";
constexpr std::chrono::hours kDay{24};
}  // namespace

void SettingsCare::Prepare() {
  const auto loss = LossOf(parts_.stores, parts_.files, parts_.values.programFolder);
  if (!loss.empty()) TakeCopy(loss);
  // A store with nothing in it is this station's from now on, and no longer a missing one.
  if (parts_.stores.Look().state == StoreState::kMissing) OpenAtRoot(parts_.stores)->WriteAll({});
}

void SettingsCare::Change(const std::function<void(SettingsStore&)>& change) {
  Prepare();
  change(*OpenAtRoot(parts_.stores));
  KeepCopy();
}

void SettingsCare::TakeCopy(const std::string& loss) {
  const auto now = parts_.clock.UtcNow();
  const auto aside = parts_.stores.TakeCopy(now);
  if (!aside)
    throw Failure(failure_number::kDeviceError,
                  fmt::format("{} There is no good copy of it. {}", loss, kWayOut));
  auto text = loss + " Its copy of the last save has taken its place.";
  if (!aside->empty()) text += fmt::format(" It is kept as {}.", *aside);
  parts_.reporting.WriteLog(kCategory, text);
  parts_.status.restored = RestoredSettings{now, text};
}

void SettingsCare::KeepCopy() {
  kept_ = parts_.clock.Monotonic();
  if (const auto failure = FailureIn([this] { parts_.stores.KeepCopy(); }))
    parts_.reporting.WriteLog(
        kCategory, fmt::format("No copy of the settings store was made: {}", failure->text()));
}

void SettingsCare::KeepDailyCopy() {
  if (parts_.clock.Monotonic() - kept_ >= kDay) KeepCopy();
}

}  // namespace ostrel
