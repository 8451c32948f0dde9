#include "alarms/alarm_command.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "base/text.h"

namespace ostrel {

namespace {

/// In the child: becomes the shell, the JSON on its standard input, open to every signal.
[[noreturn]] void Become(const AlarmNews& news, int input) {
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  dup2(input, STDIN_FILENO);
  close(input);
  execl("/bin/sh", "sh", "-c", news.command.c_str(), nullptr);
  _exit(127);
}

}  // namespace

void RunAlarmCommand(const AlarmNews& news, const nlohmann::ordered_json& status) {
  const auto text = Printable(news.text);
  const auto json = nlohmann::ordered_json{
      {"alarm", news.name},
      {"event", news.Event()},
      {"text", text},
      {"status",
       status}}.dump(-1, ' ', true, nlohmann::ordered_json::error_handler_t::replace);
  setenv("OSTREL_ALARM", news.name.c_str(), 1);
  setenv("OSTREL_EVENT", news.Event(), 1);
  setenv("OSTREL_TEXT", text.c_str(), 1);
  int ends[2];
  if (pipe(ends) != 0) return;
  if (fork() == 0) {
    close(ends[1]);
    Become(news, ends[0]);
  }
  close(ends[0]);
  // A pipe takes this much at once, whoever reads it and when.
  if (write(ends[1], json.data(), json.size()) < 0) std::perror("alarm");
  close(ends[1]);
}

}  // namespace ostrel
