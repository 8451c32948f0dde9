// The clock, the stop signal and the lock that keeps a second station out of the folder.
#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <thread>

#include "base/failure.h"
#include "platform/linux/linux_clock.h"
#include "platform/linux/linux_instance_lock.h"
#include "platform/linux/temporary_folder.h"

namespace ostrel {
namespace {

using namespace std::chrono_literals;

TEST(LinuxClock, FollowsTheZoneOfTheSystem) {
  StopSignal stop;
  LinuxClock clock(stop);
  const UtcTime summer = std::chrono::sys_days(std::chrono::year(2024) / 7 / 1) + 12h + 1ms;
  setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
  EXPECT_EQ(clock.ToLocal(summer).time_since_epoch() - summer.time_since_epoch(), 2h);
  setenv("TZ", "NST3:30", 1);  // the operator corrects the zone
  EXPECT_EQ(clock.UtcOffset(), -(3h + 30min));
  EXPECT_EQ(clock.ToLocal(summer).time_since_epoch() - summer.time_since_epoch(), -210min);
  unsetenv("TZ");
}

TEST(StopSignal, EndsASleepAtOnceUntilTheShutdownHasBegun) {
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
    StopSignal stop;
    LinuxClock clock(stop);
    const pthread_t sleeper = pthread_self();
    std::jthread sender([&] { pthread_kill(sleeper, number); });
    EXPECT_THROW(clock.Sleep(1h), StopRequested);
    EXPECT_TRUE(stop.IsRequested());
    EXPECT_THROW(clock.Sleep(0ms), StopRequested);
    stop.BeginShutdown();
    EXPECT_NO_THROW(clock.Sleep(1ms));
  }
}

TEST(LinuxInstanceLock, IsHeldByOneAndNotInheritedByStartedPrograms) {
  TemporaryFolder folder;
  LinuxInstanceLock second(folder.path());
  FILE* child = nullptr;
  {
    LinuxInstanceLock first(folder.path());
    EXPECT_TRUE(first.TryLock());
    EXPECT_FALSE(second.TryLock());
    remove((folder / ".ostrel.lock").c_str());
    EXPECT_FALSE(second.TryLock());
    child = popen("yes", "r");
    fgetc(child);  // it runs, and the system has closed what it is not to have
  }
  EXPECT_TRUE(second.TryLock());
  pclose(child);
}

}  // namespace
}  // namespace ostrel
