// Preloaded in front of a program, gives pseudo-terminals the modem lines that they lack, and
// writes down each change of them: what a transmitter on that port would have seen. One line an
// event, in the file that KEYING_LOG names:
//
//   wall-clock µs, monotonic µs, process, device, event, RTS=0|1 DTR=0|1
//
// Events: "open" (the system raises both lines), "set" (a line changed), "gone" (closed, or the
// process ended: both dropped). A killed process writes no "gone"; its lines fall all the same when
// "hupcl" stands in its "open" or "set" lines.
//
// CLOCK_AHEAD, if set, is by how many seconds the program's wall clock goes ahead of the real one,
// so that nobody needs to wait for the turn of a minute.
#include <cerrno>
#include <dlfcn.h>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

namespace {

constexpr int kBothLines = TIOCM_RTS | TIOCM_DTR;

struct Device {
  int lines = 0;
  int opened = 0;  // descriptors of this process
};

struct Lines {
  std::mutex mutex;
  std::map<dev_t, Device> devices;
  std::map<int, dev_t> descriptors;
};
Lines& State() {
  static auto* const state = new Lines;  // outlives every exit handler
  return *state;
}

template <typename Call>
Call Real(const char* name) {
  return reinterpret_cast<Call>(dlsym(RTLD_NEXT, name));
}

int RealIoctl(int descriptor, unsigned long request, void* argument) {
  static const auto call = Real<int (*)(int, unsigned long, ...)>("ioctl");
  return call(descriptor, request, argument);
}

int RealTime(clockid_t clock, timespec* time) {
  static const auto call = Real<int (*)(clockid_t, timespec*)>("clock_gettime");
  return call(clock, time);
}

long long Microseconds(clockid_t clock) {
  timespec now = {};
  RealTime(clock, &now);
  return now.tv_sec * 1'000'000LL + now.tv_nsec / 1000;
}

/// `descriptor` is -1 when it is closed already.
void Record(dev_t device, int descriptor, const char* event, int lines) {
  const char* const path = getenv("KEYING_LOG");
  if (path == nullptr) return;
  termios line = {};
  const bool dropsAtClose =
      descriptor >= 0 && RealIoctl(descriptor, TCGETS, &line) == 0 && (line.c_cflag & HUPCL) != 0;
  static const auto openFile = Real<int (*)(const char*, int, ...)>("open");
  static const auto closeFile = Real<int (*)(int)>("close");
  const int log = openFile(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  if (log < 0) return;
  dprintf(log, "%lld %lld %d pts/%u %s RTS=%d DTR=%d%s\n", Microseconds(CLOCK_REALTIME),
          Microseconds(CLOCK_MONOTONIC), getpid(), minor(device), event, (lines & TIOCM_RTS) != 0,
          (lines & TIOCM_DTR) != 0, dropsAtClose ? " hupcl" : "");
  closeFile(log);
}

int Opened(int descriptor) {
  struct stat status;
  constexpr unsigned kFirstTerminal = 136, kLastTerminal = 143;  // the major numbers of pts
  if (descriptor < 0 || fstat(descriptor, &status) != 0 || !S_ISCHR(status.st_mode) ||
      major(status.st_rdev) < kFirstTerminal || major(status.st_rdev) > kLastTerminal) {
    return descriptor;
  }
  const int error = errno;
  const std::lock_guard lock(State().mutex);
  Device& device = State().devices[status.st_rdev];
  State().descriptors[descriptor] = status.st_rdev;
  ++device.opened;
  device.lines = kBothLines;
  Record(status.st_rdev, descriptor, "open", device.lines);
  errno = error;
  return descriptor;
}

void Closed(int descriptor) {
  const std::lock_guard lock(State().mutex);
  const auto found = State().descriptors.find(descriptor);
  if (found == State().descriptors.end()) return;
  const dev_t number = found->second;
  State().descriptors.erase(found);
  Device& device = State().devices[number];
  if (--device.opened > 0) return;
  device.lines = 0;
  Record(number, -1, "gone", device.lines);
}

/// Does what the request asks for; true when it was one about modem lines of a known device.
bool Handled(int descriptor, unsigned long request, int* argument) {
  if (request != TIOCMGET && request != TIOCMSET && request != TIOCMBIS && request != TIOCMBIC) {
    return false;
  }
  const std::lock_guard lock(State().mutex);
  const auto found = State().descriptors.find(descriptor);
  if (found == State().descriptors.end()) return false;
  int alive = 0;  // a vanished terminal fails this as it would fail the real request
  if (RealIoctl(descriptor, TIOCOUTQ, &alive) != 0) return false;
  Device& device = State().devices[found->second];
  const int before = device.lines;
  if (request == TIOCMGET) *argument = device.lines;
  if (request == TIOCMSET) device.lines = *argument & kBothLines;
  if (request == TIOCMBIS) device.lines |= *argument & kBothLines;
  if (request == TIOCMBIC) device.lines &= ~*argument;
  if (device.lines != before) Record(found->second, descriptor, "set", device.lines);
  return true;
}

struct AtExit {
  ~AtExit() {
    while (!State().descriptors.empty()) Closed(State().descriptors.begin()->first);
  }
} atExit;

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const bool makes = (flags & (O_CREAT | __O_TMPFILE)) != 0;
  const mode_t mode = makes ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return Opened(Real<int (*)(const char*, int, ...)>("open")(path, flags, mode));
}

int close(int descriptor) {
  Closed(descriptor);  // first, for its number may be another file's at once
  return Real<int (*)(int)>("close")(descriptor);
}

int clock_gettime(clockid_t clock, timespec* time) noexcept {
  const int result = RealTime(clock, time);
  const char* const ahead = getenv("CLOCK_AHEAD");
  if (result == 0 && clock == CLOCK_REALTIME && ahead != nullptr) time->tv_sec += atoi(ahead);
  return result;
}

int ioctl(int descriptor, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  if (Handled(descriptor, request, static_cast<int*>(argument))) return 0;
  return RealIoctl(descriptor, request, argument);
}

}  // extern "C"
