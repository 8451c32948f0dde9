#include "programs/simulate/station_copy.h"

#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <iterator>

#include "base/failure.h"
#include "base/text.h"
#include "ident/schedule.h"
#include "platform/linux/sqlite_settings_store.h"
#include "settings/settings_table.h"

namespace ostrel {

namespace fs = std::filesystem;

namespace {

bool StartsWithFolder(const std::string& path, const std::string& folder) {
  return ToLower(path.substr(0, folder.size() + 1)) == ToLower(folder + "/");
}

/// `path` with the station's folder turned to the copy's; unchanged when it lies elsewhere.
std::string Turned(const std::string& path, const std::string& from, const std::string& to) {
  return StartsWithFolder(path, from) ? to + path.substr(from.size()) : path;
}

}  // namespace

StationCopy::StationCopy(const std::string& folder) {
  if (!fs::is_directory(folder))
    throw Failure(failure_number::kPathNotFound, "There is no station " + folder);
  fs::create_directories(IngestFolder());
  CopyFiles(folder);
  CopySchedule(folder);
  CopySettings(folder);
}

void StationCopy::CopyFiles(const std::string& folder) {
  std::vector<std::string> names = {"RtMorse.txt", "FillFile.txt"};
  for (std::size_t list = 0; list < kRuleListCount; ++list)
    names.push_back(fmt::format("RtList{}.txt", list));
  for (const auto& name : names) {
    if (fs::exists(folder + "/" + name)) {
      fs::copy_file(folder + "/" + name, folder_ / name);
    } else {
      remarks_.push_back("The station has no " + name + ".");
    }
  }
}

/// Entries that send something else, or to elsewhere, than the station's own folders are left out.
void StationCopy::CopySchedule(const std::string& folder) {
  std::ifstream file(folder + "/RtSched.txt", std::ios::binary);
  const std::string content{std::istreambuf_iterator<char>(file), {}};
  std::ofstream copy(folder_ / "RtSched.txt", std::ios::binary);
  ForEachLine(content, [&](std::string_view line) {
    const auto entry = ParseScheduleEntry(TrimBlanks(line));
    if (!entry.time || !StartsWithFolder(entry.destination, folder)) {
      if (!line.empty()) remarks_.push_back(fmt::format("Left out of the schedule: {}", line));
      return;
    }
    copy << line.substr(0, 6) << Turned(entry.source, folder, path()) << ' '
         << Turned(entry.destination, folder, path()) << kLineEnd;
  });
}

void StationCopy::CopySettings(const std::string& folder) {
  if (!fs::exists(folder + "/KvRegistry.db")) {
    remarks_.push_back("The station has no settings yet; the defaults count.");
    return;
  }
  SqliteSettingsStores original(folder + "/KvRegistry.db");
  auto values = OpenAtRoot(original)->List(kFamilyTree);
  for (auto& value : values) value.value = Turned(value.value, folder, path());
  SqliteSettingsStores stores(StorePath());
  const auto copy = OpenAtRoot(stores);
  copy->WriteAll(values);
  Set("IngestPath", IngestFolder());
  const auto fillPath = copy->ReadSetting(KeyPath(Section::kSettings), "FillFilePriPath", "");
  if (!fillPath.empty() && !StartsWithFolder(fillPath, path())) {
    remarks_.push_back("The fill file goes to priority 10, not to " + fillPath + ".");
    Set("FillFilePriPath", folder_ / "KvData/RtPri10/FillFile.txt");
  }
}

void StationCopy::Set(const std::string& key, const std::string& value) {
  SqliteSettingsStores stores(StorePath());
  OpenAtRoot(stores)->WriteSetting(KeyPath(Section::kSettings), key, value);
}

}  // namespace ostrel
