#include <csignal>
#include <ctime>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <thread>

#include "base/text.h"
#include "client/station_client.h"
#include "programs/status/alarms.h"

namespace ostrel {

namespace {

constexpr std::size_t kLastAlarms = 8;

double Now() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double>(now).count();
}

}  // namespace

void LastAlarms::Add(const AlarmNews& news) {
  const std::lock_guard lock(mutex_);
  news_.push_front({{"at", fmt::format("{:%FT%TZ}", fmt::gmtime(std::time(nullptr)))},
                    {"event", news.Event()},
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
    fmt::print("{} {}\n", news.Event(), Printable(news.text));
    std::fflush(stdout);
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
