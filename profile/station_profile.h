// A station on disk as one text, and back: its settings, rules, schedule, ports and Morse table.
// Not for a station that runs: it would not see the change, and write over it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files.h"
#include "platform/settings_store.h"
#include "profile/profile_text.h"
#include "settings/all_settings.h"
#include "settings/lost_settings.h"

namespace ostrel {

/// What the log says after a Finish that had something to do.
inline constexpr const char* kTakenBack = "An apply that was cut off was taken back.";

class StationProfile {
 public:
  /// `folder` is the station's, without a separator at its end.
  StationProfile(Files& files, SettingsStores& stores, std::string folder);

  /// The whole station, but for its windows' place. A missing file is left out. Throws Failure when
  /// something cannot be read.
  std::string Dump();
  /// What `text` would change. What it does not name stays. Throws Failure, with the line, for a
  /// text that the station could not use; and where the settings are lost, for one that leaves a
  /// setting to its default.
  std::vector<ProfileChange> ChangesBy(std::string_view text);
  /// What is strange about them, each with its line: a device that is not there, say, or a rule
  /// that matches nothing. A station reads them all the same.
  std::vector<std::string> DoubtsAbout(const std::vector<ProfileChange>& changes);
  /// Makes these changes, all or none; where the settings are lost, in a store of their own: what
  /// is left of the old one is set aside. After a failure the station is the one before, unless it
  /// IsUnfinished: it is once Finish has run. So it is after a power failure in the midst.
  void Make(const std::vector<ProfileChange>& changes, UtcTime now);
  /// Takes back what a Make began and did not end, before anything else is done with the station.
  /// Returns whether there was one.
  bool Finish();
  /// Leaves the station as it is, and the note of what it was aside in ".given-up.toml".
  void GiveUp() { files_.Rename(NotePath(), folder_ + "/.given-up.toml"); }
  bool IsUnfinished() { return files_.Exists(NotePath()); }

 private:
  /// Where a key's value lives: a row of the settings, else lines of a file, else a link.
  struct Place {
    ProfileEntry entry;  // without values
    const SettingRow* row = nullptr;
    std::string path = {};
    bool isEmptyIfMissing = false;
  };

  void AddSettings();
  void AddRules();
  void AddPorts();
  const Place& PlaceOf(const ProfileEntry& entry) const;
  /// Nothing without a store for a setting.
  std::optional<ProfileEntry> Read(const Place& place, SettingsStore* store);
  /// Of a list or a link; nothing for a file that was lost.
  std::optional<std::vector<std::string>> ValuesIn(const Place& place);
  bool MayBeMissing(const Place& place);
  /// What has become of the settings; empty while they are there.
  std::string Loss() { return LossOf(stores_, files_, folder_); }
  void CheckNamesAll(const std::vector<ProfileEntry>& entries, const std::string& loss) const;
  void CheckKind(const ProfileEntry& entry) const;
  std::vector<ProfileEntry> RulesBeside(const std::vector<ProfileChange>& changes);
  ProfileEntry Before(const ProfileChange& change);
  void Keep(const std::vector<ProfileEntry>& entries);
  void Put(const ProfileEntry& entry);
  enum class Which { kChanged, kAll };
  void Store(const std::vector<ProfileEntry>& entries, Which which);
  void Restore(const ProfileEntry& entry);
  void EndNote();
  std::string WithoutFolder(const std::string& value) const;
  std::string WithoutAnyFolder(const std::string& path) const;
  std::string WithFolder(const std::string& value) const;
  std::string DeviceOf(const std::string& link) const;
  std::string LinkTo(const std::string& device) const;
  /// The station as it was before the changes that are being made.
  std::string NotePath() const { return folder_ + "/.applying.toml"; }
  static std::string KeptPath(const std::string& path);

  Files& files_;
  SettingsStores& stores_;
  std::string folder_;
  AllSettings settings_;
  std::vector<Place> places_;
};

}  // namespace ostrel
