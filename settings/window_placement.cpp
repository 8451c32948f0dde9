#include "settings/window_placement.h"

#include <cmath>
#include <fmt/format.h>
#include <limits>

#include "base/failure.h"
#include "base/numbers.h"

namespace ostrel {

namespace {

struct PlacementValue {
  const char* key;
  float WindowPlacement::*member;
};

constexpr PlacementValue kPlacementValues[] = {
    {"MainLeft", &WindowPlacement::left},
    {"MainTop", &WindowPlacement::top},
    {"MainWidth", &WindowPlacement::width},
    {"MainHeight", &WindowPlacement::height},
};
constexpr const char* kStateKey = "MainState";

float LengthOf(const std::string& text) {
  const double length = StrictNumber(text);
  if (std::abs(length) > std::numeric_limits<float>::max()) throw Overflow();
  return static_cast<float>(length);
}

WindowState StateOf(const std::string& text) {
  const auto number = StrictInteger(text);
  if (number < 0 || number > 2)
    throw Failure(failure_number::kInvalidProperty, "Invalid property value");
  return static_cast<WindowState>(number);
}

}  // namespace

std::vector<SettingRow> ScreenSettings() {
  std::vector<SettingRow> rows;
  const auto add = [&](const char* key, const char* fallback, auto read) {
    rows.push_back({key, "", Section::kScreen, fallback, Reader::kStart, read, {}});
  };
  for (const auto& value : kPlacementValues) add(value.key, "", LengthOf);
  add(kStateKey, "0", StateOf);
  return rows;
}

void CentreMainWindow(Dialogs& dialogs) {
  const auto [width, height] = dialogs.ScreenSize();
  auto placement = dialogs.Placement();
  placement.left = (width - placement.width) / 2;
  placement.top = (height - placement.height) / 2;
  dialogs.Place(placement);
}

void RestorePlacement(SettingsStore& store, Dialogs& dialogs) {
  const auto path = KeyPath(Section::kScreen);
  auto placement = dialogs.Placement();
  for (const auto& [key, member] : kPlacementValues) {
    const auto text = store.ReadSetting(path, key, FormatPlain(placement.*member));
    placement.*member = LengthOf(text);
    dialogs.Place(placement);
  }
  placement.state = StateOf(store.ReadSetting(path, kStateKey, "0"));
  dialogs.Place(placement);
}

void StorePlacement(SettingsStore& store, const WindowPlacement& placement) {
  std::vector<StoredValue> values;
  const auto add = [&](const char* key, std::string text) {
    values.push_back({.keyPath = KeyPath(Section::kScreen), .name = key, .value = std::move(text)});
  };
  if (placement.state != WindowState::kMinimized) {
    for (const auto& [key, member] : kPlacementValues) add(key, FormatPlain(placement.*member));
  }
  add(kStateKey, fmt::format("{}", static_cast<int>(placement.state)));
  store.WriteAll(values);
}

}  // namespace ostrel
