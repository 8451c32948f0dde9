#include <fmt/format.h>
#include <stdexcept>
#include <toml++/toml.h>

#include "programs/status/alarms.h"

namespace ostrel {

namespace {

const std::map<std::string, AlarmKind> kKinds = {{"no arrivals", AlarmKind::kNoArrivals},
                                                 {"silent", AlarmKind::kSilent},
                                                 {"port", AlarmKind::kPort},
                                                 {"waiting", AlarmKind::kWaiting},
                                                 {"purged", AlarmKind::kPurged},
                                                 {"disk", AlarmKind::kDisk},
                                                 {"no answer", AlarmKind::kNoAnswer}};

[[noreturn]] void Refuse(const toml::node& at, const std::string& why) {
  throw std::runtime_error(fmt::format("line {}: {}", at.source().begin.line, why));
}

template <typename Value>
Value Get(const toml::table& table, std::string_view key, Value fallback) {
  const auto* const node = table.get(key);
  if (node == nullptr) return fallback;
  const auto value = node->value<Value>();
  if (!value) Refuse(*node, fmt::format("\"{}\" is of the wrong kind.", key));
  return *value;
}

void CheckKeys(const toml::table& table, const std::vector<std::string_view>& known) {
  for (const auto& [key, node] : table) {
    if (std::find(known.begin(), known.end(), key.str()) == known.end())
      Refuse(node, fmt::format("\"{}\" means nothing here.", key.str()));
  }
}

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
  try {
    const auto file = toml::parse_file(path);
    CheckKeys(file, {"interval", "command", "alarm"});
    AlarmConfig config{.interval = Get<double>(file, "interval", 10), .alarms = {}};
    if (config.interval < 1) Refuse(*file.get("interval"), "an interval is 1 s at least.");
    const auto command = Get<std::string>(file, "command", "");
    const auto* const alarms = file["alarm"].as_array();
    if (alarms == nullptr) throw std::runtime_error("there is no [[alarm]].");
    for (const auto& node : *alarms) {
      if (!node.is_table()) Refuse(node, "an alarm is a table, [[alarm]].");
      config.alarms.push_back(AlarmOf(*node.as_table(), command));
    }
    return config;
  } catch (const toml::parse_error& error) {
    throw std::runtime_error(
        fmt::format("{}: line {}: {}.", path, error.source().begin.line, error.description()));
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(fmt::format("{}: {}", path, error.what()));
  }
}

}  // namespace ostrel
