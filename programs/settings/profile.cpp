#include <algorithm>
#include <fmt/format.h>

#include "base/failure.h"
#include "base/text.h"
#include "platform/linux/file_io.h"
#include "platform/linux/linux_instance_lock.h"
#include "profile/station_profile.h"
#include "programs/settings/commands.h"

namespace ostrel {

namespace {

/// Nobody else changes the station while this lives.
class StationAlone {
 public:
  explicit StationAlone(StationFolder& station) : lock_(station.path()) {
    if (!lock_.TryLock())
      throw Failure(failure_number::kPermissionDenied, "The station runs. Stop it first.");
  }

 private:
  LinuxInstanceLock lock_;
};

void PrintLines(char sign, const std::vector<std::string>& lines,
                const std::vector<std::string>& others) {
  for (const auto& line : lines) {
    if (std::find(others.begin(), others.end(), line) == others.end())
      fmt::print("  {} {}\n", sign, Printable(line));
  }
}

void Print(const ProfileChange& change) {
  const auto& now = change.to.values;
  const auto before = change.from ? change.from->values : std::vector<std::string>();
  if (!change.to.isList)
    return fmt::print("{}: {} becomes \"{}\"\n", change.to.Name(),
                      before.empty() ? "what was lost" : '"' + Printable(before.front()) + '"',
                      Printable(now.front()));
  if (!now.empty() && std::is_permutation(before.begin(), before.end(), now.begin(), now.end()))
    return fmt::print("{}: the order of its {} lines changes\n", change.to.Name(), now.size());
  if (before.empty() && now.empty())
    return fmt::print("{}: its file is made, empty\n", change.to.Name());
  fmt::print("{}: {} lines become {}\n", change.to.Name(), before.size(), now.size());
  PrintLines('-', before, now);
  PrintLines('+', now, before);
}

void Finish(StationFolder& station, StationProfile& profile) {
  if (profile.Finish()) station.Log(kTakenBack);
}

/// A station that runs has nothing of the kind.
void FinishEarlier(StationFolder& station, StationProfile& profile) {
  if (!profile.IsUnfinished()) return;
  const StationAlone alone(station);
  Finish(station, profile);
}

}  // namespace

void DumpStation(StationFolder& station) {
  StationProfile profile(station.files(), station.stores(), station.path());
  FinishEarlier(station, profile);
  station.OpenStore();
  fmt::print("{}", profile.Dump());
}

void ApplyToStation(StationFolder& station, const std::string& file, ApplyHow how) {
  StationProfile profile(station.files(), station.stores(), station.path());
  std::vector<ProfileChange> changes;
  const auto look = [&] {
    FinishEarlier(station, profile);
    changes = profile.ChangesBy(station.files().ReadAll(file));
  };
  const auto apply = [&] {
    const StationAlone alone(station);
    Finish(station, profile);
    look();
    profile.Make(changes, std::chrono::floor<milliseconds>(std::chrono::system_clock::now()));
    FlushFolder(station.path());  // or a power failure would take it back after all
    station.KeepCopy();
  };
  const auto refusal = [&] {
    return fmt::format("{} was not applied, {}", file,
                       profile.IsUnfinished() ? "what was changed is taken back at the next start "
                                                "of the station, dump or apply"
                                              : "nothing was changed");
  };
  how == ApplyHow::kCheck ? look() : station.RunLogged(refusal, apply);
  for (const auto& change : changes) Print(change);
  for (const auto& doubt : profile.DoubtsAbout(changes))
    fmt::print(stderr, "Note: {}\n", Printable(doubt));
  fmt::print("{} {}\n", changes.size(), how == ApplyHow::kDo ? "changed" : "would change");
  if (how == ApplyHow::kDo && !changes.empty())
    station.Log(fmt::format("{} applied: {} changed", file, changes.size()));
}

}  // namespace ostrel
