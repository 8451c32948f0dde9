#include "platform/linux/linux_clock.h"

#include <poll.h>
#include <thread>
#include <time.h>

#include "base/failure.h"

namespace ostrel {
namespace {

seconds OffsetAt(UtcTime utc) {
  tzset();  // localtime_r alone would keep the zone of the program's start
  const time_t time = std::chrono::floor<seconds>(utc).time_since_epoch().count();
  tm local = {};
  if (localtime_r(&time, &local) == nullptr) return seconds(0);
  return seconds(local.tm_gmtoff);
}

}  // namespace

UtcTime LinuxClock::UtcNow() const {
  return std::chrono::floor<milliseconds>(std::chrono::system_clock::now());
}

milliseconds LinuxClock::Monotonic() const {
  return std::chrono::floor<milliseconds>(std::chrono::steady_clock::now().time_since_epoch());
}

seconds LinuxClock::UtcOffset() const {
  return OffsetAt(UtcNow());
}

LocalTime LinuxClock::ToLocal(UtcTime utc) const {
  return LocalTime(utc.time_since_epoch() + OffsetAt(utc));
}

void LinuxClock::Sleep(milliseconds duration) {
  if (stop_ == nullptr) return std::this_thread::sleep_for(duration);
  if (!stop_->EndsWaits()) TellOfSleep(duration);
  using SteadyClock = std::chrono::steady_clock;
  const auto end = SteadyClock::now() + duration;
  for (;;) {
    if (stop_->EndsWaits()) throw StopRequested{};
    const auto left = end - SteadyClock::now();
    if (left <= SteadyClock::duration::zero()) return;
    if (stop_->IsRequested()) return std::this_thread::sleep_for(left);
    const auto whole = std::chrono::floor<seconds>(left);
    const timespec timeout = {whole.count(), (left - whole).count()};
    pollfd wait = {stop_->Descriptor(), POLLIN, 0};
    ppoll(&wait, 1, &timeout, nullptr);
  }
}

}  // namespace ostrel
