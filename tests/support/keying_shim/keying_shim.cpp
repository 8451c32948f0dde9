// Preloaded in front of a program, gives the terminals that it opens the modem lines that
// pseudo-terminals lack, and writes down each change of them: what a transmitter on that port would
// have seen. One line a change, in the file that KEYING_LOG names:
//
//   process, monotonic µs, descriptor, RTS=0|1 DTR=0|1
//
// The first one is the opening, at which the system raises both. With "hupcl" behind it, the system
// drops them when the descriptor goes, however the process ends.
//
// A folder RxFiles that holds a file ".hangs" is a file system that hangs: whoever opens anything
// there waits until that file is gone.
//
// CLOCK_AHEAD, if set, is by how many seconds the program's wall clock goes ahead of the real one,
// so that nobody needs to wait for the turn of a minute.
#include <array>
#include <dlfcn.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

namespace {

constexpr int kBothLines = TIOCM_RTS | TIOCM_DTR;

/// The lines, by descriptor: the device's, so one for all processes that hold it.
using States = std::array<int, 1024>;
States& states = *static_cast<States*>(
    mmap(nullptr, sizeof(States), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));

template <typename Call>
Call Real(const char* name) {
  return reinterpret_cast<Call>(dlsym(RTLD_NEXT, name));
}

void Record(int descriptor, int lines) {
  const char* const path = getenv("KEYING_LOG");
  FILE* const log = path != nullptr ? fopen(path, "ae") : nullptr;
  if (log == nullptr) return;
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  termios settings = {};
  tcgetattr(descriptor, &settings);
  fprintf(log, "%d %lld %d RTS=%d DTR=%d%s\n", getpid(),
          now.tv_sec * 1'000'000LL + now.tv_nsec / 1000, descriptor, (lines & TIOCM_RTS) != 0,
          (lines & TIOCM_DTR) != 0, (settings.c_cflag & HUPCL) != 0 ? " hupcl" : "");
  fclose(log);
}

/// The lines of an open terminal; null for anything else, and for a terminal that has vanished.
int* LinesOf(int descriptor) {
  const auto index = static_cast<std::size_t>(descriptor);
  return descriptor >= 0 && index < states.size() && isatty(descriptor) ? &states[index] : nullptr;
}

void WaitWhileItHangs(const char* path) {
  constexpr const char* kFolder = "/RxFiles";
  const char* const at = strstr(path, kFolder);
  if (at == nullptr) return;
  std::array<char, 4096> mark;
  const auto length = static_cast<int>(at - path);
  snprintf(mark.data(), mark.size(), "%.*s%s/.hangs", length, path, kFolder);
  while (access(mark.data(), F_OK) == 0) usleep(10'000);
}

/// Does what the request asks for; true when it was one about modem lines.
bool Handled(int descriptor, unsigned long request, int* argument) {
  const bool isKnown = request == TIOCMGET || request == TIOCMBIS || request == TIOCMBIC;
  int* const lines = isKnown ? LinesOf(descriptor) : nullptr;
  if (lines == nullptr) return false;
  const int before = *lines;
  if (request == TIOCMGET) *argument = *lines;
  if (request == TIOCMBIS) *lines |= *argument & kBothLines;
  if (request == TIOCMBIC) *lines &= ~*argument;
  if (*lines != before) Record(descriptor, *lines);
  return true;
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const bool makes = (flags & (O_CREAT | __O_TMPFILE)) != 0;
  const mode_t mode = makes ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  WaitWhileItHangs(path);
  const int descriptor = Real<int (*)(const char*, int, ...)>("open")(path, flags, mode);
  if (int* const lines = LinesOf(descriptor)) Record(descriptor, *lines = kBothLines);
  return descriptor;
}

int clock_gettime(clockid_t clock, timespec* time) noexcept {
  const int result = Real<int (*)(clockid_t, timespec*)>("clock_gettime")(clock, time);
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
  return Real<int (*)(int, unsigned long, ...)>("ioctl")(descriptor, request, argument);
}

}  // extern "C"
