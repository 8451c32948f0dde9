// A station as the settings tool finds it on disk: its folder, its store, its files.
#pragma once

#include <fmt/format.h>
#include <functional>
#include <memory>
#include <string>

#include "base/reporting.h"
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
  /// The settings store, its root key set. Throws Failure 57 for a damaged one; standard error
  /// tells of one that is missing.
  std::unique_ptr<SettingsStore> OpenStore();
  /// Has `change` write to it, and lays the copy of it. Throws Failure 57 where the settings are
  /// lost.
  void ChangeStore(const std::function<void(SettingsStore&)>& change);
  /// Lays the copy of the store. Standard error tells of one that cannot be.
  void KeepCopy();
  SettingsStores& stores() { return stores_; }
  /// One line in the station's log. What was done is done, whether or not the log can be written.
  void Log(const std::string& text);
  /// Runs `step`. Its failure is logged, and thrown on, behind what `refusal` says then.
  template <typename Refusal, typename Step>
  void RunLogged(Refusal&& refusal, Step&& step) {
    try {
      step();
    } catch (const std::exception& error) {
      const auto failure = AsFailure(error);
      const auto text = fmt::format("{}: {}", refusal(), failure.text());
      Log(text);
      throw Failure(failure.number(), text);
    }
  }

 private:
  std::string path_;
  LinuxClock clock_;
  LinuxFiles files_{clock_};
  SqliteSettingsStores stores_;
};

}  // namespace ostrel
