// The settings component over a small database file: one table, shared safely by every process that
// runs or tends this station.
#pragma once

#include <memory>
#include <string>

#include "platform/settings_store.h"

namespace ostrel {

/// Root, path and name of a value compare without ASCII case, as its users expect of keys.
class SqliteSettingsStores : public SettingsStores {
 public:
  /// The database file; it is made when missing, its folder is not.
  explicit SqliteSettingsStores(std::string path) : path_(std::move(path)) {}

  std::unique_ptr<SettingsStore> Open() override;

 private:
  std::string path_;
};

}  // namespace ostrel
