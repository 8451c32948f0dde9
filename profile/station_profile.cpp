#include "profile/station_profile.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>

#include "base/failure.h"
#include "base/names.h"
#include "base/reporting.h"
#include "base/text.h"
#include "ident/schedule.h"
#include "profile/line_checks.h"
#include "profile/port_links.h"

namespace ostrel {

namespace {

constexpr std::string_view kFolder = "FOLDER";
constexpr const char* kRules = "rules";
constexpr const char* kSchedule = "schedule";
constexpr const char* kPorts = "ports";
constexpr const char* kMorse = "morse";
constexpr const char* kHeading =
    "# An Ostrel station. \"ostrel-settings apply\" makes it of this text; what the text does not\n"
    "# name stays as it is. FOLDER stands for the station's folder.\n";

[[noreturn]] void Refuse(const std::string& why) {
  throw Failure(failure_number::kTypeMismatch, why);
}

/// A failure of `check` names the line.
template <typename CheckIt>
void AtLine(int line, const CheckIt& check) {
  try {
    check();
  } catch (const Failure& failure) {
    throw Failure(failure.number(), fmt::format("line {}: {}", line, failure.text()));
  }
}

/// A line of the schedule, `map` done to both of its paths.
template <typename Map>
std::string WithPaths(std::string line, const Map& map) {
  constexpr std::size_t kPathsColumn = 6;
  const auto source = std::min(line.find_first_not_of(' '), line.size()) + kPathsColumn;
  if (source >= line.size()) return line;
  const auto blank = std::min(line.find(' ', source), line.size());
  const auto destination = std::min(line.find_first_not_of(' ', blank), line.size());
  return line.substr(0, source) + map(line.substr(source, blank - source)) +
         line.substr(blank, destination - blank) + map(line.substr(destination));
}

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
  places_.push_back({.entry = {.table = kSchedule,
                               .key = "entries",
                               .isList = true,
                               .comment = "RtSched.txt: hh:mm, source, destination."},
                     .path = folder_ + "/RtSched.txt",
                     .isEmptyIfMissing = true});
  places_.push_back({.entry = {.table = kMorse,
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

void StationProfile::AddRules() {
  for (std::size_t list = 0; list < kRuleListCount; ++list) {
    const auto name = fmt::format("RtList{}.txt", list);
    places_.push_back(
        {.entry = {.table = kRules, .key = RuleKey(list), .isList = true, .comment = name},
         .path = JoinPath(folder_, name)});
  }
}

void StationProfile::AddPorts() {
  for (int number = 1; number <= kPortCount; ++number)
    places_.push_back({.entry = {.table = kPorts,
                                 .key = fmt::format("COM{}", number),
                                 .comment = number == 1 ? "Empty: there is no such port." : ""},
                       .path = PortLink(folder_, number)});
}

std::string StationProfile::Dump() {
  const auto store = OpenAtRoot(stores_);
  std::vector<ProfileEntry> entries;
  for (const auto& place : places_) {
    if (auto entry = Read(place, store.get())) entries.push_back(std::move(*entry));
  }
  return kHeading + FormatProfile(entries);
}

std::optional<ProfileEntry> StationProfile::Read(const Place& place, SettingsStore* store) {
  auto entry = place.entry;
  if (place.row != nullptr) {
    if (store == nullptr) return std::nullopt;
    const auto& row = *place.row;
    const auto value = store->ReadSetting(KeyPath(row.section), row.key, row.fallback);
    entry.values = {WithoutFolder(value)};
    return entry;
  }
  auto values = ValuesIn(place);
  if (!values) return std::nullopt;
  entry.values = std::move(*values);
  return entry;
}

std::optional<std::vector<std::string>> StationProfile::ValuesIn(const Place& place) {
  if (!place.entry.isList) return std::vector{DeviceOf(LinkedDevice(place.path))};
  std::vector<std::string> lines;
  const auto withoutFolder = [this](const std::string& path) { return WithoutAnyFolder(path); };
  if (files_.Exists(place.path)) {
    ForEachLine(files_.ReadAll(place.path), [&](std::string_view text) {
      const std::string line(text);
      if (place.entry.table != kMorse && TrimBlanks(line).empty()) return;  // says nothing there
      lines.push_back(place.entry.table == kSchedule ? WithPaths(line, withoutFolder) : line);
    });
  } else if (!MayBeMissing(place)) {
    return std::nullopt;
  }
  return lines;
}

/// A new station has no list of rules; where there are some, one that is missing was lost.
bool StationProfile::MayBeMissing(const Place& place) {
  if (place.entry.table != kRules) return place.isEmptyIfMissing;
  return std::none_of(places_.begin(), places_.end(), [this](const Place& other) {
    return other.entry.table == kRules && files_.Exists(other.path);
  });
}

const StationProfile::Place& StationProfile::PlaceOf(const ProfileEntry& entry) const {
  std::string hint;
  for (const auto& place : places_) {
    if (place.entry.Name() == entry.Name()) return place;
    if (place.entry.key == entry.key)
      hint = fmt::format(" {} belongs under [{}].", entry.key, place.entry.table);
  }
  Refuse(fmt::format("There is no {}.{}", entry.Name(), hint));
}

void StationProfile::CheckKind(const ProfileEntry& entry) const {
  AtLine(entry.line, [&] {
    const bool isList = PlaceOf(entry).entry.isList;
    if (isList != entry.isList)
      Refuse(fmt::format("{} must be {}.", entry.Name(),
                         isList ? "a list, in [ ]" : "one text, in quotes"));
  });
}

/// A setting that the text leaves out would be one that nobody has chosen.
void StationProfile::CheckNamesAll(const std::vector<ProfileEntry>& entries,
                                   const std::string& loss) const {
  for (const auto& place : places_) {
    const bool isNamed = std::any_of(entries.begin(), entries.end(), [&](const auto& entry) {
      return entry.Name() == place.entry.Name();
    });
    if (place.row != nullptr && !isNamed)
      Refuse(
          fmt::format("{} The text must name every setting, as a dump does, and does not name {}.",
                      loss, place.entry.key));
  }
}

/// The lists of rules that none of the changes is of.
std::vector<ProfileEntry> StationProfile::RulesBeside(const std::vector<ProfileChange>& changes) {
  std::vector<ProfileEntry> staying;
  for (const auto& place : places_) {
    const bool changesToo = std::any_of(changes.begin(), changes.end(), [&](const auto& change) {
      return change.to.Name() == place.entry.Name();
    });
    if (place.entry.table != kRules || changesToo) continue;
    staying.push_back(place.entry);
    staying.back().values = ValuesIn(place).value_or(std::vector<std::string>());
  }
  return staying;
}

std::vector<std::string> StationProfile::DoubtsAbout(const std::vector<ProfileChange>& changes) {
  auto doubts = DoubtsOf(changes, RulesBeside(changes));
  for (const auto& change : changes) {
    const auto& to = change.to;
    const bool isDevice = to.table == kPorts && !to.values.front().empty();
    if (isDevice && !files_.Exists(WithFolder(to.values.front())))
      doubts.push_back(fmt::format("line {}: {} is not there now.", to.line, to.values.front()));
    const auto& place = PlaceOf(to);
    const auto odd = place.row ? DoubtAbout(*place.row, to.values.front()) : "";
    if (!odd.empty())
      doubts.push_back(
          fmt::format("line {}: {} is \"{}\". {}.", to.line, to.Name(), to.values.front(), odd));
    for (std::size_t i = 0; to.table == kSchedule && i < to.values.size(); ++i) {
      const auto source = ParseScheduleEntry(TrimBlanks(to.values[i])).source;
      if (WithFolder(source).find(' ') != std::string::npos)
        doubts.push_back(fmt::format(
            "line {}: a source cannot hold a blank, and this station's folder does.", to.lines[i]));
    }
  }
  return doubts;
}

std::vector<ProfileChange> StationProfile::ChangesBy(std::string_view text) {
  auto entries = ParseProfile(text);
  const auto loss = Loss();
  if (!loss.empty()) CheckNamesAll(entries, loss);
  const auto store = loss.empty() ? OpenAtRoot(stores_) : nullptr;
  // Where a new station gets rules, a list without a file would count as lost.
  const bool getsRules = std::any_of(entries.begin(), entries.end(), [](const auto& entry) {
    return entry.table == kRules && !entry.values.empty();
  });
  std::vector<ProfileChange> changes;
  for (auto& entry : entries) {
    CheckKind(entry);
    const auto& place = PlaceOf(entry);
    if (entry.table == kPorts) entry.values = {DeviceOf(entry.values.front())};
    auto present = Read(place, store.get());
    const bool isLaid = entry.table == kRules && getsRules && !files_.Exists(place.path);
    if (!isLaid && present && present->values == entry.values) continue;
    // What the station has already is its own business.
    if (place.row != nullptr)
      AtLine(entry.line, [&] { CheckSetting(*place.row, WithFolder(entry.values.front())); });
    changes.push_back({std::move(present), entry});
  }
  return changes;
}

void StationProfile::Make(const std::vector<ProfileChange>& changes, UtcTime now) {
  if (changes.empty()) return;
  const bool isLost = !Loss().empty();
  std::vector<ProfileEntry> before, after;
  for (const auto& change : changes) {
    before.push_back(Before(change));
    after.push_back(change.to);
  }
  const auto note = FormatProfile(before);
  if (std::ssize(note) > kLargestText) Refuse("What the station has now is too large to be kept.");
  files_.WriteAll(NotePath(), note);
  try {
    Keep(after);
    for (const auto& entry : after) Put(entry);
    // The last step: a failure of it changes no setting.
    if (isLost) stores_.SetAside(now);
    Store(after, isLost ? Which::kAll : Which::kChanged);
  } catch (const std::exception&) {
    for (const auto& entry : before) Restore(entry);
    EndNote();
    throw;
  }
  EndNote();
}

/// A list whose file was missing stands in the note as an empty text.
ProfileEntry StationProfile::Before(const ProfileChange& change) {
  auto before = change.from.value_or(change.to);
  if (before.isList && !files_.Exists(PlaceOf(before).path)) {
    before.isList = false;
    before.values = {""};
  }
  return before;
}

/// Gives what is about to be replaced a second name: a full disk has no room to write it again.
/// Where there are no such names, it is written again.
void StationProfile::Keep(const std::vector<ProfileEntry>& entries) {
  for (const auto& entry : entries) {
    const auto& path = PlaceOf(entry).path;
    if (!path.empty() && files_.Exists(path)) TryStep([&] { files_.Link(path, KeptPath(path)); });
  }
}

void StationProfile::Put(const ProfileEntry& entry) {
  const auto& place = PlaceOf(entry);
  if (place.row != nullptr) return;
  if (!entry.isList) return LinkDevice(place.path, LinkTo(entry.values.front()));
  std::string content;
  const auto withFolder = [this](const std::string& path) { return WithFolder(path); };
  for (const auto& line : entry.values)
    content.append(entry.table == kSchedule ? WithPaths(line, withFolder) : line).append(kLineEnd);
  files_.WriteAll(place.path, content);
}

/// All of them together. Those that are so already can be left out: for them a full disk need have
/// no room.
void StationProfile::Store(const std::vector<ProfileEntry>& entries, Which which) {
  const auto store = OpenAtRoot(stores_);
  std::vector<StoredValue> stored;
  for (const auto& entry : entries) {
    const auto& place = PlaceOf(entry);
    if (place.row == nullptr) continue;
    if (which == Which::kAll || Read(place, store.get())->values != entry.values)
      stored.push_back({.keyPath = KeyPath(place.row->section),
                        .name = place.row->key,
                        .value = WithFolder(entry.values.front())});
  }
  if (!stored.empty()) store->WriteAll(stored);
}

/// What was kept counts only if it is what the note says: it may have been written over in place,
/// or be left of another time.
void StationProfile::Restore(const ProfileEntry& entry) {
  const auto& place = PlaceOf(entry);
  if (place.row != nullptr) return;
  if (place.entry.isList && !entry.isList) {
    if (files_.Exists(place.path)) files_.Delete(place.path);
    return;
  }
  if (ValuesIn(place) == entry.values) return;
  auto kept = place;
  kept.path = KeptPath(place.path);
  const bool isKept = files_.Exists(kept.path) && ValuesIn(kept) == entry.values;
  isKept ? files_.Rename(kept.path, place.path) : Put(entry);
}

void StationProfile::EndNote() {
  files_.Delete(NotePath());
  for (const auto& place : places_) {
    const auto kept = KeptPath(place.path);
    if (!place.path.empty() && files_.Exists(kept)) TryStep([&] { files_.Delete(kept); });
  }
}

bool StationProfile::Finish() {
  if (!IsUnfinished()) return false;
  const auto before = ParseProfile(files_.ReadAll(NotePath()));
  for (const auto& entry : before) Restore(entry);
  if (Loss().empty()) Store(before, Which::kChanged);  // else nothing was stored
  EndNote();
  return true;
}

/// Beside it, so that a rename brings it back.
std::string StationProfile::KeptPath(const std::string& path) {
  return JoinPath(std::string(FolderOf(path)), fmt::format(".before-{}", FileNameOf(path)));
}

std::string StationProfile::WithoutFolder(const std::string& value) const {
  if (!value.starts_with(folder_ + "/")) return value;
  return std::string(kFolder) + value.substr(folder_.size());
}

/// The station finds what the schedule names whatever its case.
std::string StationProfile::WithoutAnyFolder(const std::string& path) const {
  const auto size = std::min(folder_.size(), path.size());
  const bool isInside = files_.ActualPath(path.substr(0, size)) == folder_;
  return isInside ? WithoutFolder(folder_ + path.substr(size)) : path;
}

/// The device to which a link in the folder of ports leads.
std::string StationProfile::DeviceOf(const std::string& link) const {
  if (link.empty()) return link;
  const auto ports = std::filesystem::path(PortLink(folder_, 1)).parent_path();
  return WithoutFolder((ports / WithFolder(link)).lexically_normal().string());
}

/// A link to what lies in the station's folder goes with it when it is moved.
std::string StationProfile::LinkTo(const std::string& device) const {
  const bool isInside = WithFolder(device) != device;
  return isInside ? ".." + device.substr(kFolder.size()) : device;
}

std::string StationProfile::WithFolder(const std::string& value) const {
  if (!value.starts_with(std::string(kFolder) + "/")) return value;
  return folder_ + value.substr(kFolder.size());
}

}  // namespace ostrel
