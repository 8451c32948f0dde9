// Alarms over what a station answers. Each runs a command once when it begins and once when it
// ends.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "alarms/alarm_command.h"
#include "programs/status/reports.h"

namespace ostrel {

enum class AlarmKind {
  kNoArrivals,  // no file came for `seconds`
  kSilent,      // keyed, and no packet for `seconds`
  kPort,        // no port, failed or vanished for `seconds`
  kBlocked,     // something holds up the ingest folder for `seconds`
  kRefused,     // a file is refused in another folder, and tried again, for `seconds`
  kIntake,      // an operator has paused the intake for `seconds`
  kWaiting,     // a file of `priority` or a more urgent one waits longer than `seconds`
  kPurged,      // products were purged in the last `seconds`
  kDisk,        // less than `megabytes` are free
  kRestored,    // a copy has taken the place of the settings store
  kNoAnswer,    // the station has not answered for `seconds`
};

struct Alarm {
  std::string name = {};
  AlarmKind kind = AlarmKind::kNoAnswer;
  double seconds = 0;
  int priority = 1;
  double megabytes = 0;
  std::string command = {};  // for the shell
};

struct AlarmConfig {
  double interval = 10;  // seconds between two looks
  std::vector<Alarm> alarms;
};

/// Reads the file. Throws std::runtime_error with the place of what is wrong in it.
AlarmConfig ReadAlarms(const std::string& path);

class AlarmWatch {
 public:
  AlarmWatch(AlarmConfig config, std::function<void(const AlarmNews&)> tell)
      : config_(std::move(config)), tell_(std::move(tell)) {}

  /// Looks at an answer, or at none (null), at `now` in seconds of a steady clock.
  void Look(const Status& status, double now);

 private:
  /// What is wrong, in words; nothing when nothing is.
  std::optional<std::string> Trouble(const Alarm& alarm, const Status& status, double now);
  bool Lasts(const Alarm& alarm, bool isTrouble, double now);
  void NotePurges(const Status& status, double now);

  AlarmConfig config_;
  std::function<void(const AlarmNews&)> tell_;
  std::map<const Alarm*, std::optional<std::string>> on_;  // those that are, with their subject
  std::map<const Alarm*, double> since_;                   // when a trouble that must last began
  std::string station_;                                    // as it called itself last
  std::optional<double> firstLook_, lastAnswer_, lastPurge_;
  std::optional<int> purged_;
};

/// The last alarms, for who shows them. Used by two threads.
class LastAlarms {
 public:
  void Add(const AlarmNews& news);
  /// Newest first: "at" in UTC, "event" and "text".
  Status Get() const;

 private:
  mutable std::mutex mutex_;
  std::deque<Status> news_;
};

/// Watches the station in `folder` until the program ends.
[[noreturn]] void WatchForAlarms(const std::string& folder, const AlarmConfig& config,
                                 LastAlarms& last);

}  // namespace ostrel
