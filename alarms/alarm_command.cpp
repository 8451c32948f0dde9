#include "alarms/alarm_command.h"

#include <csignal>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

#include "base/text.h"

namespace ostrel {

namespace {

/// This process's environment and the news. Other threads may read the environment meanwhile, so it
/// is changed for the command alone.
std::vector<std::string> EnvironmentOf(const AlarmNews& news, const std::string& text) {
  std::vector<std::string> variables;
  for (char** variable = environ; *variable; ++variable) {
    if (!std::string_view(*variable).starts_with("OSTREL_")) variables.emplace_back(*variable);
  }
  variables.push_back("OSTREL_ALARM=" + news.name);
  variables.push_back(std::string("OSTREL_EVENT=") + news.Event());
  variables.push_back("OSTREL_TEXT=" + text);
  variables.push_back("OSTREL_STATION=" + Printable(news.station));
  return variables;
}

/// In the child: becomes the shell, the JSON on its standard input, open to every signal.
[[noreturn]] void Become(const AlarmNews& news, char* const* environment, int input) {
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  dup2(input, STDIN_FILENO);
  close(input);
  execle("/bin/sh", "sh", "-c", news.command.c_str(), nullptr, environment);
  _exit(127);
}

}  // namespace

void RunAlarmCommand(const AlarmNews& news, const nlohmann::ordered_json& status) {
  const auto text = Printable(news.text);
  const auto json = nlohmann::ordered_json{
      {"alarm", news.name},
      {"event", news.Event()},
      {"station", Printable(news.station)},
      {"text", text},
      {"status",
       status}}.dump(-1, ' ', true, nlohmann::ordered_json::error_handler_t::replace);
  auto variables = EnvironmentOf(news, text);
  std::vector<char*> environment;
  environment.reserve(variables.size() + 1);
  for (auto& variable : variables) environment.push_back(variable.data());
  environment.push_back(nullptr);
  int ends[2];
  if (pipe(ends) != 0) return;
  if (fork() == 0) {
    close(ends[1]);
    Become(news, environment.data(), ends[0]);
  }
  close(ends[0]);
  // A pipe takes this much at once, whoever reads it and when.
  if (write(ends[1], json.data(), json.size()) < 0) std::perror("alarm");
  close(ends[1]);
}

}  // namespace ostrel
