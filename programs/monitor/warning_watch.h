// Runs a command once for each event that comes into force at home, and once at its end, also over
// a restart.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "alarms/alarm_command.h"
#include "listen/shown_event.h"

namespace ostrel {

/// An event as docs/listening.md describes it.
nlohmann::ordered_json JsonOf(const ShownEvent& event);

class WarningWatch {
 public:
  using Tell = std::function<void(const AlarmNews& news, const nlohmann::ordered_json& event)>;

  /// What was told is remembered in `file`. One that is missing, or damaged, tells of nothing.
  WarningWatch(std::string command, std::filesystem::path file, Tell tell = RunAlarmCommand);

  /// Takes what is in force at home now: ends are told first, then what is new.
  void Take(const std::vector<ShownEvent>& atHome);

 private:
  void TellOf(const nlohmann::ordered_json& event, bool begins) const;
  void Remember() const;

  std::string command_;
  std::filesystem::path file_;
  Tell tell_;
  std::map<std::string, nlohmann::ordered_json> told_;  // by identity
};

}  // namespace ostrel
