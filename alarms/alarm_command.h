// The command of an alarm, run once when it begins and once when it ends.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace ostrel {

/// What is told when an alarm begins or ends.
struct AlarmNews {
  std::string name;
  std::string command;  // for the shell
  bool begins = false;
  std::string text = {};     // "no arrivals: no file came for 21 min 3 s"
  std::string station = {};  // what it is called; empty where that is not known

  const char* Event() const { return begins ? "begin" : "end"; }
};

/// Runs the command, with the news in its environment and, together with `status`, as JSON on its
/// standard input. Does not wait for it; whoever calls this ignores SIGCHLD.
void RunAlarmCommand(const AlarmNews& news, const nlohmann::ordered_json& status);

}  // namespace ostrel
