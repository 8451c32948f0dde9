#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "client/station_client.h"
#include "programs/status/alarms.h"

namespace ostrel {

namespace {

constexpr std::size_t kLastAlarms = 8;

double Now() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double>(now).count();
}

/// In the child: becomes the shell, the JSON on its standard input.
[[noreturn]] void Become(const Alarm& alarm, int input) {
  dup2(input, STDIN_FILENO);
  close(input);
  execl("/bin/sh", "sh", "-c", alarm.command.c_str(), nullptr);
  _exit(127);
}

}  // namespace

void RunAlarmCommand(const AlarmNews& news, const Status& status) {
  const char* const event = news.begins ? "begin" : "end";
  fmt::print("{} {}\n", event, news.text);
  std::fflush(stdout);
  const auto json =
      Status{{"alarm", news.alarm.name}, {"event", event}, {"text", news.text}, {"status", status}}
          .dump();
  setenv("OSTREL_ALARM", news.alarm.name.c_str(), 1);
  setenv("OSTREL_EVENT", event, 1);
  setenv("OSTREL_TEXT", news.text.c_str(), 1);
  int ends[2];
  if (pipe(ends) != 0) return;
  if (fork() == 0) {
    close(ends[1]);
    Become(news.alarm, ends[0]);
  }
  close(ends[0]);
  // A pipe takes this much at once, whoever reads it and when.
  if (write(ends[1], json.data(), json.size()) < 0) std::perror("ostrel-status");
  close(ends[1]);
}

void LastAlarms::Add(const AlarmNews& news) {
  const std::lock_guard lock(mutex_);
  news_.push_front({{"at", fmt::format("{:%FT%TZ}", fmt::gmtime(std::time(nullptr)))},
                    {"event", news.begins ? "begin" : "end"},
                    {"text", news.text}});
  if (news_.size() > kLastAlarms) news_.pop_back();
}

Status LastAlarms::Get() const {
  const std::lock_guard lock(mutex_);
  return news_;
}

void WatchForAlarms(const std::string& folder, const AlarmConfig& config, LastAlarms& last) {
  std::signal(SIGCHLD, SIG_IGN);  // commands are not waited for
  Status status;
  AlarmWatch watch(config, [&](const AlarmNews& news) {
    last.Add(news);
    RunAlarmCommand(news, status);
  });
  for (;;) {
    try {
      status = Status::parse(AskForStatus(folder));
    } catch (const std::exception&) {
      status = nullptr;
    }
    watch.Look(status, Now());
    std::this_thread::sleep_for(std::chrono::duration<double>(config.interval));
  }
}

}  // namespace ostrel
