// Sees to it that the settings outlive their store: a copy of it, looked through, lies beside it
// and takes its place when it is damaged or gone. A station whose settings are lost for good does
// not go on the air: the defaults are not what anybody chose.
#pragma once

#include <functional>
#include <string>

#include "base/reporting.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/settings_store.h"
#include "state/program_values.h"
#include "state/transmit_status.h"

namespace ostrel {

class SettingsCare {
 public:
  struct Parts {
    SettingsStores& stores;
    Files& files;
    Clock& clock;
    Reporting& reporting;
    TransmitStatus& status;
    const ProgramValues& values;
  };
  explicit SettingsCare(const Parts& parts) : parts_(parts) {}

  /// Before the store is used: takes the copy where the settings are lost, which log and status
  /// tell; begins the store of a new station. Throws Failure 57 when there is no good copy, or when
  /// nothing can be said of the store.
  void Prepare();
  /// Has `change` write to the store, and lays the copy. Throws Failure 57, as `change` does, when
  /// nothing was stored.
  void Change(const std::function<void(SettingsStore&)>& change);
  /// Lays the copy. The log tells of one that cannot be.
  void KeepCopy();
  /// Lays the copy when that was last done a day ago.
  void KeepDailyCopy();

 private:
  void TakeCopy(const std::string& loss);

  Parts parts_;
  milliseconds kept_{0};  // monotonic: when the copy was last laid
};

}  // namespace ostrel
