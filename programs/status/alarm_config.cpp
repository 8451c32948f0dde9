#include <fmt/format.h>
#include <map>
#include <stdexcept>

#include "config/toml_reading.h"
#include "programs/status/alarms.h"

namespace ostrel {

namespace {

const std::map<std::string, AlarmKind> kKinds = {{"no arrivals", AlarmKind::kNoArrivals},
                                                 {"silent", AlarmKind::kSilent},
                                                 {"port", AlarmKind::kPort},
                                                 {"blocked", AlarmKind::kBlocked},
                                                 {"refused", AlarmKind::kRefused},
                                                 {"intake paused", AlarmKind::kIntake},
                                                 {"waiting", AlarmKind::kWaiting},
                                                 {"purged", AlarmKind::kPurged},
                                                 {"disk", AlarmKind::kDisk},
                                                 {"restored", AlarmKind::kRestored},
                                                 {"no answer", AlarmKind::kNoAnswer}};

Alarm AlarmOf(const toml::table& table, const std::string& command) {
  CheckKeys(table, {"when", "name", "seconds", "priority", "megabytes", "command"});
  const auto when = Get<std::string>(table, "when", "");
  const auto kind = kKinds.find(when);
  if (kind == kKinds.end()) Refuse(table, fmt::format("\"{}\" is no alarm.", when));
  Alarm alarm{.name = Get<std::string>(table, "name", when),
              .kind = kind->second,
              .seconds = Get<double>(table, "seconds", 0),
              .priority = Get<int>(table, "priority", 1),
              .megabytes = Get<double>(table, "megabytes", 0),
              .command = Get<std::string>(table, "command", command)};
  if (alarm.command.empty()) Refuse(table, "there is no command.");
  if (alarm.seconds < 0 || alarm.priority < 1 || alarm.priority > 10 || alarm.megabytes < 0)
    Refuse(table, "a number is out of its range.");
  return alarm;
}

}  // namespace

AlarmConfig ReadAlarms(const std::string& path) {
  return ReadTomlFile(path, [](const toml::table& file) {
    CheckKeys(file, {"interval", "command", "alarm"});
    AlarmConfig config{.interval = Get<double>(file, "interval", 10), .alarms = {}};
    if (config.interval < 1) Refuse(*file.get("interval"), "an interval is 1 s at least.");
    const auto command = Get<std::string>(file, "command", "");
    for (const auto* const table : GetTables(file, "alarm"))
      config.alarms.push_back(AlarmOf(*table, command));
    if (config.alarms.empty()) throw std::runtime_error("there is no [[alarm]].");
    return config;
  });
}

}  // namespace ostrel
