#include "tests/support/call_shim/call_shim.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <pthread.h>
#include <stdio.h>
#include <sys/epoll.h>
#include <sys/inotify.h>
#include <sys/mman.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

namespace call_shim {
namespace {

std::atomic<const Watcher*> watcher = nullptr;
thread_local bool isWatching = false;
std::atomic<int> speed = 1;
timespec began = {}, shown = {};  // the time at the last change of speed, and what it was told as

/// The error that the call fails with; 0 lets it be.
int ErrorOf(const char* call, const char* path = "") {
  const auto* const present = watcher.load();
  if (present == nullptr || isWatching) return 0;
  isWatching = true;
  const int before = errno;
  const int error = (*present)(call, path);
  errno = before;
  isWatching = false;
  return error;
}

template <typename Call>
Call* Real(const char* name) {
  return reinterpret_cast<Call*>(dlsym(RTLD_NEXT, name));
}

constexpr long kSecond = 1'000'000'000;

timespec Faster(const timespec& now) {
  const long passed = (now.tv_sec - began.tv_sec) * kSecond + now.tv_nsec - began.tv_nsec;
  const long total = shown.tv_nsec + passed * speed;
  return {shown.tv_sec + total / kSecond, total % kSecond};
}

timespec Shorter(const timespec& wait) {
  const long part = (wait.tv_sec * kSecond + wait.tv_nsec) / speed;
  return {part / kSecond, part % kSecond};
}

int Shorter(int wait) {
  return wait > 0 ? (wait + speed - 1) / speed : wait;
}

}  // namespace

void Watch(Watcher next) {
  static Watcher kept;
  watcher = nullptr;
  kept = std::move(next);
  if (kept) watcher = &kept;
}

void SpeedUp(int times) {
  timespec now;
  Real<int(clockid_t, timespec*)>("clock_gettime")(CLOCK_MONOTONIC, &now);
  shown = Faster(now);
  began = now;
  speed = times;
}

}  // namespace call_shim

using call_shim::ErrorOf;
using call_shim::Real;

// NAME with its parameters and arguments, what it returns when it fails, and the path that it is
// about.
#define WATCHED(result, name, parameters, arguments, failed, path)                        \
  result name parameters {                                                                \
    static auto* const real = Real<result parameters>(#name);                             \
    if (const int error = ErrorOf(#name, path); error != 0) return errno = error, failed; \
    return real arguments;                                                                \
  }

// The same for one that may make a file.
#define WATCHED_OPEN(name, parameters, arguments)                                          \
  int name(parameters const char* path, int flags, ...) {                                  \
    static auto* const real = Real<int(parameters const char*, int, ...)>(#name);          \
    if (const int error = ErrorOf(#name, path); error != 0) return errno = error, -1;      \
    va_list more;                                                                          \
    va_start(more, flags);                                                                 \
    const mode_t mode = (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(more, mode_t) : 0; \
    va_end(more);                                                                          \
    return real(arguments path, flags, mode);                                              \
  }
#define NOTHING
#define FOLDER_PARAMETER int folder,
#define FOLDER folder,

extern "C" {

WATCHED_OPEN(open, NOTHING, NOTHING)
WATCHED_OPEN(open64, NOTHING, NOTHING)
WATCHED_OPEN(openat, FOLDER_PARAMETER, FOLDER)

WATCHED(ssize_t, read, (int d, void* b, size_t n), (d, b, n), -1, "")
WATCHED(ssize_t, pread, (int d, void* b, size_t n, off_t o), (d, b, n, o), -1, "")
WATCHED(ssize_t, pread64, (int d, void* b, size_t n, off64_t o), (d, b, n, o), -1, "")
WATCHED(ssize_t, write, (int d, const void* b, size_t n), (d, b, n), -1, "")
WATCHED(ssize_t, pwrite64, (int d, const void* b, size_t n, off64_t o), (d, b, n, o), -1, "")
WATCHED(int, fsync, (int d), (d), -1, "")
WATCHED(int, fdatasync, (int d), (d), -1, "")
WATCHED(int, syncfs, (int d) noexcept, (d), -1, "")
WATCHED(int, ftruncate, (int d, off_t n) noexcept, (d, n), -1, "")
WATCHED(int, ftruncate64, (int d, off64_t n) noexcept, (d, n), -1, "")
WATCHED(int, stat, (const char* p, struct stat* s) noexcept, (p, s), -1, p)
WATCHED(int, stat64, (const char* p, struct stat64* s) noexcept, (p, s), -1, p)
WATCHED(int, lstat, (const char* p, struct stat* s) noexcept, (p, s), -1, p)
WATCHED(int, lstat64, (const char* p, struct stat64* s) noexcept, (p, s), -1, p)
WATCHED(int, fstat, (int d, struct stat* s) noexcept, (d, s), -1, "")
WATCHED(int, fstat64, (int d, struct stat64* s) noexcept, (d, s), -1, "")
WATCHED(int, fstatfs, (int d, struct statfs* s) noexcept, (d, s), -1, "")
WATCHED(int, access, (const char* p, int m) noexcept, (p, m), -1, p)
WATCHED(int, rename, (const char* p, const char* to) noexcept, (p, to), -1, p)
WATCHED(int, renameat2, (int d, const char* p, int e, const char* to, unsigned f) noexcept,
        (d, p, e, to, f), -1, p)
WATCHED(int, unlink, (const char* p) noexcept, (p), -1, p)
WATCHED(int, unlinkat, (int d, const char* p, int f) noexcept, (d, p, f), -1, p)
WATCHED(int, mkdir, (const char* p, mode_t m) noexcept, (p, m), -1, p)
WATCHED(int, rmdir, (const char* p) noexcept, (p), -1, p)
WATCHED(int, link, (const char* p, const char* to) noexcept, (p, to), -1, p)
WATCHED(DIR*, opendir, (const char* p), (p), nullptr, p)
WATCHED(DIR*, fdopendir, (int d), (d), nullptr, "")
WATCHED(dirent*, readdir, (DIR * d), (d), nullptr, "")
WATCHED(dirent64*, readdir64, (DIR * d), (d), nullptr, "")
WATCHED(void*, mmap64, (void* a, size_t n, int p, int f, int d, off64_t o) noexcept,
        (a, n, p, f, d, o), MAP_FAILED, "")
WATCHED(int, inotify_init1, (int f) noexcept, (f), -1, "")
WATCHED(int, inotify_add_watch, (int d, const char* p, uint32_t m) noexcept, (d, p, m), -1, p)
WATCHED(int, tcgetattr, (int d, termios* t) noexcept, (d, t), -1, "")
WATCHED(int, tcsetattr, (int d, int a, const termios* t) noexcept, (d, a, t), -1, "")
WATCHED(int, socket, (int a, int b, int c) noexcept, (a, b, c), -1, "")
WATCHED(int, bind, (int d, const sockaddr* a, socklen_t n) noexcept, (d, a, n), -1, "")
WATCHED(int, connect, (int d, const sockaddr* a, socklen_t n), (d, a, n), -1, "")
WATCHED(int, getsockopt, (int d, int l, int o, void* v, socklen_t* n) noexcept, (d, l, o, v, n), -1,
        "")
WATCHED(int, setsockopt, (int d, int l, int o, const void* v, socklen_t n) noexcept,
        (d, l, o, v, n), -1, "")
WATCHED(ssize_t, recv, (int d, void* b, size_t n, int f), (d, b, n, f), -1, "")
WATCHED(ssize_t, recvfrom, (int d, void* b, size_t n, int f, sockaddr* a, socklen_t* m),
        (d, b, n, f, a, m), -1, "")
WATCHED(ssize_t, send, (int d, const void* b, size_t n, int f), (d, b, n, f), -1, "")
WATCHED(ssize_t, sendmsg, (int d, const msghdr* m, int f), (d, m, f), -1, "")
WATCHED(int, epoll_create1, (int f) noexcept, (f), -1, "")
WATCHED(int, epoll_ctl, (int e, int o, int d, epoll_event* v) noexcept, (e, o, d, v), -1, "")

int clock_gettime(clockid_t clock, timespec* time) noexcept {
  static auto* const real = Real<int(clockid_t, timespec*)>("clock_gettime");
  const int result = real(clock, time);
  if (result == 0 && clock == CLOCK_MONOTONIC && call_shim::speed != 1)
    *time = call_shim::Faster(*time);
  return result;
}

int nanosleep(const timespec* wait, timespec* left) {
  static auto* const real = Real<int(const timespec*, timespec*)>("nanosleep");
  const auto shorter = call_shim::Shorter(*wait);
  return real(&shorter, left);
}

int clock_nanosleep(clockid_t clock, int flags, const timespec* wait, timespec* left) {
  static auto* const real =
      Real<int(clockid_t, int, const timespec*, timespec*)>("clock_nanosleep");
  const auto shorter = flags == 0 ? call_shim::Shorter(*wait) : *wait;
  return real(clock, flags, &shorter, left);
}

int poll(pollfd* fds, nfds_t count, int wait) {
  static auto* const real = Real<int(pollfd*, nfds_t, int)>("poll");
  return real(fds, count, call_shim::Shorter(wait));
}

int ppoll(pollfd* fds, nfds_t count, const timespec* wait, const sigset_t* mask) {
  static auto* const real = Real<int(pollfd*, nfds_t, const timespec*, const sigset_t*)>("ppoll");
  const auto shorter = wait != nullptr ? call_shim::Shorter(*wait) : timespec{};
  return real(fds, count, wait != nullptr ? &shorter : nullptr, mask);
}

int pselect(int count, fd_set* in, fd_set* out, fd_set* bad, const timespec* wait,
            const sigset_t* mask) {
  static auto* const real =
      Real<int(int, fd_set*, fd_set*, fd_set*, const timespec*, const sigset_t*)>("pselect");
  const auto shorter = wait != nullptr ? call_shim::Shorter(*wait) : timespec{};
  return real(count, in, out, bad, wait != nullptr ? &shorter : nullptr, mask);
}

}  // extern "C"
