// The settings component: text values under key paths, shared by whoever runs this station. One is
// made by each procedure that uses it and goes with it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/time.h"

namespace ostrel {

/// The root under which all of the family's keys stand.
inline constexpr std::uint32_t kHkeyLocalMachine = 0x80000002;
inline constexpr int kLongestSetting = 1024;

/// One stored value.
struct StoredValue {
  std::string keyPath;
  std::string name;
  std::string value;
  /// True for a value that is no text (another program's number, say): `value` is then the
  /// registry's own notation of it, for example "dword:0000000a", kept to be exported again as it
  /// came.
  bool isRaw = false;
  friend bool operator==(const StoredValue&, const StoredValue&) = default;
};

class SettingsStore {
 public:
  virtual ~SettingsStore() = default;

  /// Comes first: all later paths are taken under this root.
  virtual void SetRootKey(std::uint32_t root) = 0;
  /// The stored text, cut to `longest` characters; `fallback` when there is none. An existing empty
  /// value is empty text. Throws Failure 57 when the store cannot be read.
  virtual std::string ReadSetting(const std::string& keyPath, const std::string& name,
                                  const std::string& fallback, int longest = kLongestSetting) = 0;
  /// Stores the text. Returns false when it could not be stored.
  virtual bool WriteSetting(const std::string& keyPath, const std::string& name,
                            const std::string& value) = 0;

  /// Everything at or below `keyPath`, ordered by path and name. Key paths compare without case.
  virtual std::vector<StoredValue> List(const std::string& keyPath) = 0;
  /// Stores all of `values`, in their order, or none. Throws Failure 57 when none was.
  virtual void WriteAll(const std::vector<StoredValue>& values) = 0;
};

enum class StoreState {
  kGood,
  kMissing,  // nothing was ever stored: there is no file, or it is blank
  kDamaged,  // it is none, cannot be read, or does not hold what was stored
};

struct StoreLook {
  StoreState state = StoreState::kGood;
  std::string why;  // it is damaged
};

class SettingsStores {
 public:
  virtual ~SettingsStores() = default;
  /// Throws Failure 57 when the store cannot be opened. A store that another process holds is
  /// waited for: half a second in all for everything that is done with one opening.
  virtual std::unique_ptr<SettingsStore> Open() = 0;

  /// Looks the whole store through. Throws Failure 57 when nothing can be said of it: another
  /// process holds it, it may not be read, or a later version has made it.
  virtual StoreLook Look() = 0;
  /// Lays a copy of the store beside it, in the place of the last one, once it was looked through.
  /// Nothing is written where the last one is the same. Throws Failure; the last one stays then.
  virtual void KeepCopy() = 0;
  /// Puts the copy in the place of the store, which is set aside. Returns the name that the store
  /// has now, empty when there was none; nothing, and nothing is changed, when there is no good
  /// copy. Throws Failure.
  virtual std::optional<std::string> TakeCopy(UtcTime now) = 0;
  /// Sets the store aside: the next one that is opened is a new one. Throws Failure.
  virtual void SetAside(UtcTime now) = 0;
};

}  // namespace ostrel
