#include "profile/station_profile.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/failure.h"
#include "base/text.h"
#include "profile/port_links.h"

namespace ostrel {

namespace {

constexpr std::string_view kFolder = "FOLDER";
constexpr const char* kHeading =
    "# An Ostrel station. \"ostrel-settings apply\" makes it of this text; what the text does not\n"
    "# name stays as it is. FOLDER stands for the station's folder.\n";

std::string RuleKey(std::size_t list) {
  if (list == kCompressList) return "compress";
  if (list == kDiscardList) return "discard";
  if (list == kCopiesList) return "copies";
  return fmt::format("priority{}", list + 1);
}

}  // namespace

StationProfile::StationProfile(Files& files, SettingsStores& stores, std::string folder)
    : files_(files), stores_(stores), folder_(std::move(folder)), settings_(folder_) {
  AddSettings();
  AddRules();
  places_.push_back({.entry = {.table = "schedule",
                               .key = "entries",
                               .isList = true,
                               .comment = "RtSched.txt: hh:mm, source, destination."},
                     .path = folder_ + "/RtSched.txt",
                     .isEmptyIfMissing = true});
  places_.push_back({.entry = {.table = "morse",
                               .key = "codes",
                               .isList = true,
                               .comment = "RtMorse.txt: a sign and its code."},
                     .path = folder_ + "/RtMorse.txt"});
  AddPorts();
}

/// The windows' place is left out: it belongs to the screen.
void StationProfile::AddSettings() {
  for (const auto& row : settings_) {
    if (row.section != Section::kScreen)
      places_.push_back(
          {.entry = {.table = "settings", .key = row.key, .comment = row.meaning}, .row = &row});
  }
  std::sort(places_.begin(), places_.end(),
            [](const Place& a, const Place& b) { return a.entry.key < b.entry.key; });
}

/// A new station has no list; where there are some, one that is missing was lost.
void StationProfile::AddRules() {
  const auto path = [this](std::size_t list) {
    return fmt::format("{}/RtList{}.txt", folder_, list);
  };
  bool isNew = true;
  for (std::size_t list = 0; list < kRuleListCount; ++list)
    isNew = isNew && !files_.Exists(path(list));
  for (std::size_t list = 0; list < kRuleListCount; ++list)
    places_.push_back({.entry = {.table = "rules",
                                 .key = RuleKey(list),
                                 .isList = true,
                                 .comment = fmt::format("RtList{}.txt", list)},
                       .path = path(list),
                       .isEmptyIfMissing = isNew});
}

void StationProfile::AddPorts() {
  for (int number = 1; number <= kPortCount; ++number)
    places_.push_back({.entry = {.table = "ports",
                                 .key = fmt::format("COM{}", number),
                                 .comment = number == 1 ? "Empty: there is no such port." : ""},
                       .path = PortLink(folder_, number)});
}

std::string StationProfile::Dump() {
  const auto store = OpenAtRoot(stores_);
  std::vector<ProfileEntry> entries;
  for (const auto& place : places_) {
    if (auto entry = Read(place, *store)) entries.push_back(std::move(*entry));
  }
  return kHeading + FormatProfile(entries);
}

std::optional<ProfileEntry> StationProfile::Read(const Place& place, SettingsStore& store) {
  auto entry = place.entry;
  if (place.row != nullptr) {
    const auto& row = *place.row;
    const auto value = store.ReadSetting(KeyPath(row.section), row.key, row.fallback);
    entry.values = {WithoutFolder(value)};
  } else if (entry.isList) {
    const auto lines = LinesOf(place);
    if (!lines) return std::nullopt;
    entry.values = *lines;
  } else {
    entry.values = {LinkedDevice(place.path)};
  }
  return entry;
}

std::optional<std::vector<std::string>> StationProfile::LinesOf(const Place& place) {
  std::vector<std::string> lines;
  if (files_.Exists(place.path)) {
    ForEachLine(files_.ReadAll(place.path),
                [&](std::string_view line) { lines.emplace_back(line); });
  } else if (!place.isEmptyIfMissing) {
    return std::nullopt;
  }
  return lines;
}

const StationProfile::Place& StationProfile::PlaceOf(const ProfileEntry& entry) const {
  for (const auto& place : places_) {
    if (place.entry.Name() == entry.Name() && place.entry.isList == entry.isList) return place;
  }
  throw Failure(failure_number::kTypeMismatch,
                fmt::format("There is no {} {}.", entry.isList ? "list" : "text", entry.Name()));
}

void StationProfile::Check(const ProfileEntry& entry) const {
  try {
    const auto& place = PlaceOf(entry);
    if (place.row != nullptr) CheckSetting(*place.row, WithFolder(entry.values.front()));
  } catch (const Failure& failure) {
    throw Failure(failure.number(), fmt::format("line {}: {}", entry.line, failure.text()));
  }
}

std::vector<ProfileChange> StationProfile::ChangesBy(std::string_view text) {
  const auto entries = ParseProfile(text);
  const auto store = OpenAtRoot(stores_);
  std::vector<ProfileChange> changes;
  for (const auto& entry : entries) {
    Check(entry);
    auto present = Read(PlaceOf(entry), *store);
    if (!present || present->values != entry.values) changes.push_back({std::move(present), entry});
  }
  return changes;
}

void StationProfile::Make(const std::vector<ProfileChange>& changes) {
  if (changes.empty()) return;
  std::vector<ProfileEntry> entries;
  entries.reserve(changes.size());
  for (const auto& change : changes) entries.push_back(change.to);
  Note(entries);
  try {
    Write(entries);
    files_.Delete(JournalPath());
  } catch (const std::exception&) {
    TakeBack(changes);
    throw;
  }
}

/// From here on a start that finds the note makes its station.
void StationProfile::Note(const std::vector<ProfileEntry>& entries) {
  files_.WriteAll(JournalPath(), FormatProfile(entries));
}

void StationProfile::Write(const std::vector<ProfileEntry>& entries) {
  std::vector<StoredValue> stored;
  for (const auto& entry : entries) {
    const auto& place = PlaceOf(entry);
    if (place.row != nullptr) {
      stored.push_back({.keyPath = KeyPath(place.row->section),
                        .name = place.row->key,
                        .value = WithFolder(entry.values.front())});
    } else if (entry.isList) {
      std::string content;
      for (const auto& line : entry.values) content.append(line).append(kLineEnd);
      files_.WriteAll(place.path, content);
    } else {
      LinkDevice(place.path, entry.values.front());
    }
  }
  if (!stored.empty()) OpenAtRoot(stores_)->WriteAll(stored);
}

/// What was missing is missing again.
void StationProfile::TakeBack(const std::vector<ProfileChange>& changes) {
  std::vector<ProfileEntry> entries;
  for (const auto& change : changes) {
    if (change.from) entries.push_back(*change.from);
  }
  Note(entries);
  for (const auto& change : changes) {
    const auto& path = PlaceOf(change.to).path;
    if (!change.from && files_.Exists(path)) files_.Delete(path);
  }
  Write(entries);
  files_.Delete(JournalPath());
}

void StationProfile::Finish() {
  if (!IsUnfinished()) return;
  Write(ParseProfile(files_.ReadAll(JournalPath())));
  files_.Delete(JournalPath());
}

std::string StationProfile::WithoutFolder(const std::string& value) const {
  if (!value.starts_with(folder_ + "/")) return value;
  return std::string(kFolder) + value.substr(folder_.size());
}

std::string StationProfile::WithFolder(const std::string& value) const {
  if (!value.starts_with(std::string(kFolder) + "/")) return value;
  return folder_ + value.substr(kFolder.size());
}

}  // namespace ostrel
