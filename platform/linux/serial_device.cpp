#include "platform/linux/serial_device.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <system_error>
#include <termios.h>

#include "base/failure.h"
#include "platform/linux/line_rate.h"

namespace ostrel {
namespace {

[[noreturn]] void DeviceFails(const std::string& what) {
  throw Failure(failure_number::kDeviceError, "Device I/O error: " + what);
}

[[noreturn]] void DeviceUnavailable(const std::string& path, int error) {
  throw Failure(failure_number::kDeviceUnavailable,
                "Device unavailable: " + path + ": " + std::generic_category().message(error));
}

bool IsPseudoTerminal(int descriptor) {
  constexpr unsigned kFirstMajor = 136, kLastMajor = 143;
  struct stat status = {};
  return fstat(descriptor, &status) == 0 && major(status.st_rdev) >= kFirstMajor &&
         major(status.st_rdev) <= kLastMajor;
}

bool MeansGone(int error) {
  return error == EIO || error == ENXIO || error == ENODEV;
}

int MaskOf(KeyingLine line) {
  return line == KeyingLine::kRequestToSend ? TIOCM_RTS : TIOCM_DTR;
}

tcflag_t ParityFlags(Parity parity) {
  switch (parity) {
    case Parity::kNone:
      return 0;
    case Parity::kOdd:
      return PARENB | PARODD;
    case Parity::kEven:
      return PARENB;
    case Parity::kMark:
      return PARENB | CMSPAR | PARODD;
    case Parity::kSpace:
      return PARENB | CMSPAR;
  }
  return 0;
}

tcflag_t CharacterFlags(const LineSettings& settings) {
  static constexpr std::array<tcflag_t, 4> kSizes = {CS5, CS6, CS7, CS8};
  tcflag_t flags = kSizes.at(static_cast<std::size_t>(settings.dataBits - 5));
  flags |= ParityFlags(settings.parity);
  // Hardware has one or two stop bits, and sends one and a half for two when a byte has five bits.
  if (settings.stopBits != StopBits::kOne) flags |= CSTOPB;
  return flags;
}

}  // namespace

SerialDevice::SerialDevice(const std::string& path, const LineSettings& settings, int stop)
    : device_(open(path.c_str(), O_RDWR | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)), stop_(stop) {
  if (!device_) DeviceUnavailable(path, errno);
  TakeForOurselves(path);
  DropLines(device_.Get());  // the system raised both at opening
  Configure(settings);
  DropLines(device_.Get());  // a rate after none raises them again
  guard_.emplace(device_.Get(), stop_);
}

SerialDevice::~SerialDevice() {
  DropLines(device_.Get());
  Flush();
}

void SerialDevice::Flush() {
  tcflush(device_.Get(), TCIOFLUSH);
}

void SerialDevice::RenewGuard() {
  guard_.reset();
  guard_.emplace(device_.Get(), stop_);
}

void SerialDevice::TakeForOurselves(const std::string& path) {
  if (!isatty(device_.Get())) DeviceUnavailable(path, ENOTTY);
  // The lock keeps out a second station that runs as root, whom the exclusive mode does not stop.
  if (flock(device_.Get(), LOCK_EX | LOCK_NB) != 0) DeviceUnavailable(path, EBUSY);
  // A pseudo-terminal outlives a killed station, and would stay closed to the next one.
  if (IsPseudoTerminal(device_.Get())) return;
  if (ioctl(device_.Get(), TIOCEXCL) != 0) DeviceUnavailable(path, errno);
}

void SerialDevice::Configure(const LineSettings& settings) {
  termios line = {};
  if (tcgetattr(device_.Get(), &line) != 0) DeviceFails("settings cannot be read");
  cfmakeraw(&line);
  line.c_iflag &= ~static_cast<tcflag_t>(IXON | IXOFF | IXANY);
  line.c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB | PARODD | CMSPAR | CSTOPB | CRTSCTS);
  // HUPCL: the lines drop if the program dies.
  line.c_cflag |= CLOCAL | CREAD | HUPCL | CharacterFlags(settings);
  line.c_cc[VMIN] = 0;
  line.c_cc[VTIME] = 0;
  if (tcsetattr(device_.Get(), TCSANOW, &line) != 0) DeviceFails("settings are refused");
  if (!SetLineRate(device_.Get(), settings.rate)) DeviceFails("the rate is refused");
}

bool SerialDevice::SetLine(KeyingLine line, bool on) {
  const int mask = MaskOf(line);
  const std::string name = line == KeyingLine::kRequestToSend ? "RTS" : "DTR";
  const auto failed = [&name](int error) {
    if (MeansGone(error)) return false;
    if (error == ENOTTY || error == EINVAL) return true;
    DeviceFails(name + ": " + std::generic_category().message(error));
  };
  if (ioctl(device_.Get(), on ? TIOCMBIS : TIOCMBIC, &mask) != 0) return failed(errno);
  int lines = 0;
  if (ioctl(device_.Get(), TIOCMGET, &lines) != 0) return failed(errno);
  if (((lines & mask) != 0) != on) DeviceFails(name + " does not follow");
  return true;
}

std::optional<std::size_t> SerialDevice::Unsent() {
  if (IsGone()) return std::nullopt;
  int count = 0;
  if (ioctl(device_.Get(), TIOCOUTQ, &count) != 0) {
    if (MeansGone(errno)) return std::nullopt;
    return 0;
  }
  return static_cast<std::size_t>(count);
}

std::optional<std::size_t> SerialDevice::Write(std::string_view bytes) {
  const ssize_t count = write(device_.Get(), bytes.data(), bytes.size());
  if (count >= 0) return static_cast<std::size_t>(count);
  if (errno == EAGAIN || errno == EINTR) return 0;
  return std::nullopt;
}

bool SerialDevice::IsGone() const {
  pollfd state = {device_.Get(), 0, 0};
  return poll(&state, 1, 0) > 0 && (state.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
}

}  // namespace ostrel
