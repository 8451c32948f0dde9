// A station as the settings tool finds it on disk: its folder, its store, its files.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/linux/linux_clock.h"
#include "platform/linux/linux_files.h"
#include "platform/linux/sqlite_settings_store.h"
#include "settings/settings_table.h"

namespace ostrel {

class StationFolder {
 public:
  /// `folder` without a separator at its end. Throws Failure 76 when there is no such folder.
  explicit StationFolder(const std::string& folder);

  const std::string& path() const { return path_; }
  Files& files() { return files_; }
  /// The settings store, its root key set.
  std::unique_ptr<SettingsStore> OpenStore() { return OpenAtRoot(stores_); }
  /// One line in the station's log.
  void WriteLog(std::string_view category, std::string_view message);

 private:
  std::string path_;
  LinuxClock clock_;
  LinuxFiles files_{clock_};
  SqliteSettingsStores stores_;
};

}  // namespace ostrel
