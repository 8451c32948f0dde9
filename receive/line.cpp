#include "receive/line.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <fmt/format.h>
#include <stdexcept>
#include <system_error>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace ostrel {
namespace {

[[noreturn]] void Fail(std::string_view what) {
  throw std::system_error(errno, std::generic_category(), std::string(what));
}

speed_t SpeedOf(int baud) {
  constexpr std::array<std::pair<int, speed_t>, 10> kSpeeds{{{300, B300},
                                                             {600, B600},
                                                             {1200, B1200},
                                                             {2400, B2400},
                                                             {4800, B4800},
                                                             {9600, B9600},
                                                             {19200, B19200},
                                                             {38400, B38400},
                                                             {57600, B57600},
                                                             {115200, B115200}}};
  for (const auto& [rate, speed] : kSpeeds) {
    if (rate == baud) return speed;
  }
  throw std::runtime_error(fmt::format("no serial line runs at {} baud", baud));
}

void MakeRaw(int fd, std::optional<int> baud) {
  termios settings{};
  if (tcgetattr(fd, &settings) != 0) Fail("cannot read the line's settings");
  cfmakeraw(&settings);
  settings.c_cflag |= CLOCAL | CREAD;
  if (baud) cfsetspeed(&settings, SpeedOf(*baud));
  if (tcsetattr(fd, TCSANOW, &settings) != 0) Fail("cannot set the line");
}

}  // namespace

OpenFile::OpenFile(OpenFile&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}

OpenFile::~OpenFile() {
  if (fd_ >= 0) close(fd_);
}

LineLink::LineLink(std::filesystem::path path, std::filesystem::path target)
    : path_(std::move(path)), target_(std::move(target)) {
  const auto status = std::filesystem::symlink_status(path_);
  if (std::filesystem::exists(status) && !std::filesystem::is_symlink(status)) {
    throw std::runtime_error(fmt::format("{} is there and no link", path_.string()));
  }
  const std::filesystem::path fresh = path_.string() + ".new";
  std::filesystem::remove(fresh);
  std::filesystem::create_symlink(target_, fresh);
  std::filesystem::rename(fresh, path_);
}

LineLink::~LineLink() {
  std::error_code ignored;
  if (std::filesystem::read_symlink(path_, ignored) == target_) {
    std::filesystem::remove(path_, ignored);
  }
}

PseudoTerminal MakePseudoTerminal() {
  OpenFile receiver(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
  if (receiver.Get() < 0 || grantpt(receiver.Get()) != 0 || unlockpt(receiver.Get()) != 0) {
    Fail("cannot make a pseudo-terminal");
  }
  std::array<char, 128> name{};
  if (ptsname_r(receiver.Get(), name.data(), name.size()) != 0) Fail("cannot name the line");
  MakeRaw(receiver.Get(), std::nullopt);
  return {std::move(receiver), name.data()};
}

OpenFile OpenLine(const std::string& path, std::optional<int> baud) {
  OpenFile line(open(path.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
  if (line.Get() < 0) Fail(fmt::format("cannot open {}", path));
  if (isatty(line.Get()) != 0) {
    MakeRaw(line.Get(), baud);
  } else if (errno != ENOTTY) {  // a device that does not answer would stay at its old rate
    Fail(fmt::format("cannot open {}", path));
  }
  return line;
}

LineState ReadLine(const OpenFile& line, std::span<char> buffer, std::size_t& size) {
  const ssize_t count = read(line.Get(), buffer.data(), buffer.size());
  size = count > 0 ? static_cast<std::size_t>(count) : 0;
  if (count > 0) return LineState::kData;
  if (count == 0) return LineState::kEnd;
  // EIO: nobody has the other end of the pseudo-terminal open at the moment.
  if (errno == EAGAIN || errno == EINTR || errno == EIO) return LineState::kNothing;
  Fail("the line failed");
}

}  // namespace ostrel
