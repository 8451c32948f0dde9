// The settings component over a small database file: one table, shared safely by every process that
// runs or tends this station.
#pragma once

#include <memory>
#include <string>

#include "platform/settings_store.h"

namespace ostrel {

/// Root, path and name of a value compare without ASCII case, as its users expect of keys. The
/// store carries a checksum of its values; what writes past this class takes it off, and is
/// believed.
class SqliteSettingsStores : public SettingsStores {
 public:
  /// The database file; it is made when missing, its folder is not.
  explicit SqliteSettingsStores(std::string path);

  std::unique_ptr<SettingsStore> Open() override;
  StoreLook Look() override;
  void KeepCopy() override;
  std::optional<std::string> TakeCopy(UtcTime now) override;
  void SetAside(UtcTime now) override;

 private:
  std::string path_, copyPath_;
};

}  // namespace ostrel
