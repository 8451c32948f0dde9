#include "platform/linux/stop_signal.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <signal.h>
#include <sys/eventfd.h>

#include "platform/linux/system_error.h"

namespace ostrel {
namespace {

static_assert(std::atomic<StopSignal*>::is_always_lock_free);
std::atomic<StopSignal*> receiver{nullptr};  // a signal handler has no other way to its object

constexpr std::array kStopSignals = {SIGTERM, SIGINT, SIGHUP};

void OnStopSignal(int) {
  if (StopSignal* const stop = receiver.load()) stop->RequestStop();
}

// Ignoring by a handler, not by SIG_IGN, which started programs would inherit.
void OnIgnoredSignal(int) {}

void Handle(int number, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigaction(number, &action, nullptr);
}

bool IsIgnored(int number) {
  struct sigaction present = {};
  return sigaction(number, nullptr, &present) == 0 && present.sa_handler == SIG_IGN;
}

}  // namespace

StopSignal::StopSignal() : event_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!event_) ThrowSystemFailure(errno);
  receiver = this;
  for (const int number : kStopSignals) {
    if (number != SIGHUP || !IsIgnored(number)) Handle(number, OnStopSignal);
  }
  for (const int number : {SIGPIPE, SIGXFSZ}) Handle(number, OnIgnoredSignal);
}

StopSignal::~StopSignal() {
  for (const int number : kStopSignals) {
    if (!IsIgnored(number)) Handle(number, SIG_DFL);
  }
  receiver = nullptr;
}

void StopSignal::RequestStop() {
  const int error = errno;
  requested_ = true;
  const std::uint64_t one = 1;
  // A full counter is readable already, which is all that is wanted.
  [[maybe_unused]] const ssize_t written = write(event_.Get(), &one, sizeof one);
  errno = error;
}

}  // namespace ostrel
