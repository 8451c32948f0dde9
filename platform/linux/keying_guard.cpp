#include "platform/linux/keying_guard.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <new>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#include "platform/linux/system_error.h"
#include "platform/serial_port.h"

namespace ostrel {

/// The station writes the first two, the guard the last.
struct GuardBoard {
  std::atomic<std::uint32_t> beats{0};
  std::atomic<std::int64_t> patience{0};  // milliseconds from the last beat on
  std::atomic<bool> dropped{false};
};

namespace {

static_assert(std::atomic<std::uint32_t>::is_always_lock_free &&
              std::atomic<std::int64_t>::is_always_lock_free &&
              std::atomic<bool>::is_always_lock_free);

constexpr int kLook = 100;             // milliseconds
constexpr std::int64_t kEnding = 500;  // of patience when asked to end

GuardBoard* MapBoard() {
  void* const page =
      mmap(nullptr, sizeof(GuardBoard), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (page == MAP_FAILED) ThrowSystemFailure(errno);
  return new (page) GuardBoard;
}

struct Pipe {
  Pipe() {
    std::array<int, 2> ends = {-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) ThrowSystemFailure(errno);
    readEnd = Descriptor(ends[0]);
    writeEnd = Descriptor(ends[1]);
  }
  Descriptor readEnd, writeEnd;
};

pid_t ForkWithSignalsBlocked() {
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  const pid_t process = fork();
  const int error = errno;
  if (process != 0) pthread_sigmask(SIG_SETMASK, &before, nullptr);
  if (process < 0) ThrowSystemFailure(error);
  return process;
}

// The guard is a copy of a process of many threads, made at any moment: from here to its end it
// allocates nothing, opens nothing and calls only what a signal handler might.

/// Whatever else the station holds open must not be held by the guard.
void CloseAllBut(std::array<int, 3> kept) {
  std::sort(kept.begin(), kept.end());
  unsigned from = 0;
  for (const int number : kept) {
    if (number < 0) continue;
    const auto next = static_cast<unsigned>(number);
    if (next > from) close_range(from, next - 1, 0);
    from = next + 1;
  }
  close_range(from, ~0U, 0);
}

/// All signals are blocked in the guard; the system's, at a shutdown, goes to both.
bool IsAskedToEnd() {
  sigset_t pending;
  return sigpending(&pending) == 0 && sigismember(&pending, SIGTERM) == 1;
}

[[noreturn]] void Watch(int device, int lifeline, int stop, GuardBoard& board) {
  prctl(PR_SET_NAME, "ostrel-guard");
  setsid();  // a terminal that stops the station must not stop its guard
  CloseAllBut({device, lifeline, stop});
  std::array<pollfd, 2> awaited = {{{lifeline, POLLIN, 0}, {stop, POLLIN, 0}}};
  std::uint32_t beats = board.beats;
  std::int64_t silence = 0;
  bool isDown = false;
  while (true) {
    const int count = poll(awaited.data(), awaited.size(), kLook);
    if (awaited[0].revents != 0) break;
    if (awaited[1].revents != 0) awaited[1].fd = -1;  // heard; poll passes it over from now on
    // Counted by looks, not by the clock: a computer that slept makes no silence.
    if (count == 0) silence += kLook;
    if (const std::uint32_t now = board.beats; now != beats) {
      beats = now;
      silence = 0;
      isDown = false;
    }
    const bool isEnding = (stop >= 0 && awaited[1].fd < 0) || IsAskedToEnd();
    const std::int64_t patience = isEnding ? kEnding : board.patience.load();
    if (isDown || silence <= patience) continue;
    DropLines(device);
    board.dropped = true;  // only now, or the station might raise them before they fall
    isDown = true;
  }
  DropLines(device);
  _exit(0);
}

}  // namespace

void DropLines(int device) noexcept {
  for (const int line : {TIOCM_RTS, TIOCM_DTR}) ioctl(device, TIOCMBIC, &line);
}

void KeyingGuard::Unmap::operator()(GuardBoard* board) const {
  munmap(board, sizeof(GuardBoard));
}

KeyingGuard::KeyingGuard(int device, int stop) : board_(MapBoard()) {
  Pipe lifeline, handover;
  Beat(kGuardPatience);
  process_ = ForkWithSignalsBlocked();
  if (process_ == 0) Watch(device, lifeline.readEnd.Get(), stop, *board_);
  handover.writeEnd.Reset();
  char nothing = 0;  // comes to its end when the guard has closed what it does not need
  while (read(handover.readEnd.Get(), &nothing, 1) < 0 && errno == EINTR) {
  }
  lifeline_ = std::move(lifeline.writeEnd);
}

KeyingGuard::~KeyingGuard() {
  if (process_ < 0) return;
  kill(process_, SIGKILL);
  while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

void KeyingGuard::Beat(milliseconds patience) {
  board_->patience.store(patience.count(), std::memory_order_relaxed);
  board_->beats.fetch_add(1, std::memory_order_release);
}

bool KeyingGuard::TakeDropped() {
  return board_->dropped.load(std::memory_order_relaxed) && board_->dropped.exchange(false);
}

bool KeyingGuard::IsWatching() {
  if (process_ < 0) return false;
  int status = 0;
  const pid_t changed = waitpid(process_, &status, WNOHANG | WUNTRACED);
  if (changed == 0) return true;
  if (changed < 0 || !WIFSTOPPED(status)) process_ = -1;  // its number may be another's by now
  return false;
}

}  // namespace ostrel
