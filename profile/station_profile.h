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

namespace ostrel {

/// A key whose value becomes another one.
struct ProfileChange {
  std::optional<ProfileEntry> from;  // nothing where a file was missing
  ProfileEntry to;
};

class StationProfile {
 public:
  /// `folder` is the station's, without a separator at its end.
  StationProfile(Files& files, SettingsStores& stores, std::string folder);

  /// The whole station, but for its windows' place. A missing file is left out. Throws Failure when
  /// something cannot be read.
  std::string Dump();
  /// What `text` would change. What it does not name stays. Throws Failure, with the line, for a
  /// text that the station could not use.
  std::vector<ProfileChange> ChangesBy(std::string_view text);
  /// Makes these changes, all or none: after a failure the station is the one before, and where the
  /// power failed in the midst it is the one behind them once Finish has run.
  void Make(const std::vector<ProfileChange>& changes);
  /// Ends what an earlier Make was kept from, if there is such, before anything else is done with
  /// the station.
  void Finish();
  /// Leaves the station as it is, and the note of that Make aside in ".given-up.toml".
  void GiveUp() { files_.Rename(JournalPath(), folder_ + "/.given-up.toml"); }
  /// Whether there is.
  bool IsUnfinished() { return files_.Exists(JournalPath()); }

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
  std::optional<ProfileEntry> Read(const Place& place, SettingsStore& store);
  std::optional<std::vector<std::string>> LinesOf(const Place& place);
  void Check(const ProfileEntry& entry) const;
  void Note(const std::vector<ProfileEntry>& entries);
  void Write(const std::vector<ProfileEntry>& entries);
  void TakeBack(const std::vector<ProfileChange>& changes);
  std::string WithoutFolder(const std::string& value) const;
  std::string WithFolder(const std::string& value) const;
  std::string JournalPath() const { return folder_ + "/.applying.toml"; }

  Files& files_;
  SettingsStores& stores_;
  std::string folder_;
  AllSettings settings_;
  std::vector<Place> places_;
};

}  // namespace ostrel
