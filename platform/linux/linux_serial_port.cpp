#include "platform/linux/linux_serial_port.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/failure.h"
#include "base/names.h"

namespace ostrel {
namespace {

constexpr std::size_t kOutputBuffer = 10000;
constexpr seconds kLookInterval{2};
constexpr seconds kCheckInterval{1};
/// How many times as long as it should the line may take for what waits, and how long at least.
constexpr int kSlowness = 4;
constexpr seconds kShortestStall{5};
/// A transmitter that fell needs its time to come up again.
constexpr seconds kKeyUp{1};

}  // namespace

LinuxSerialPort::LinuxSerialPort(const Clock& clock, std::string portsFolder,
                                 const StopSignal* stop)
    : clock_(clock),
      portsFolder_(std::move(portsFolder)),
      stop_(stop),
      onNews_([](const PortNews&) {}) {}

LinuxSerialPort::~LinuxSerialPort() {
  Close();
}

void LinuxSerialPort::Open(int number, std::string_view settings) {
  Close();
  line_ = LineTime(ParseLineSettings(settings));
  path_ = JoinPath(portsFolder_, fmt::format("COM{}", number));
  OpenDevice();
  open_ = true;
}

void LinuxSerialPort::OpenDevice() {
  device_.emplace(path_, line_.settings(), stop_ != nullptr ? stop_->Descriptor() : -1);
  Beat();
}

void LinuxSerialPort::Close() {
  device_.reset();
  held_.clear();
  onItsWay_.clear();
  settledAt_ = {};
  lastUnsent_ = 0;
  open_ = isStuck_ = keyLine1_ = keyLine2_ = false;
}

std::size_t LinuxSerialPort::BytesWaiting() {
  if (!open_) return 0;
  Beat();
  if (!device_) LookForDevice();
  const std::size_t inDriver = Pump();
  if (device_) SeeThatItDrains(inDriver);
  if (!IsPresent() || IsSettling()) return kOutputBuffer;
  const std::size_t unsent = std::max(inDriver, line_.Unsent(clock_.Monotonic()));
  ForgetSent(unsent);
  return unsent;
}

void LinuxSerialPort::Write(std::string_view bytes) {
  if (!open_) throw Failure(failure_number::kDeviceError, "Device I/O error: the port is closed");
  Beat();
  Pump();
  if (held_.size() + bytes.size() > kOutputBuffer) {
    throw Failure(failure_number::kDeviceError, "Device I/O error: the output buffer is full");
  }
  held_ += bytes;
  onItsWay_.emplace_back(bytes);
  line_.Add(bytes.size(), std::max(clock_.Monotonic(), settledAt_));
  Pump();
  Beat();
}

void LinuxSerialPort::SetKeyLine1(bool on) {
  keyLine1_ = on;
  SetLine(KeyingLine::kRequestToSend, on);
}

void LinuxSerialPort::SetKeyLine2(bool on) {
  keyLine2_ = on;
  SetLine(KeyingLine::kDataTerminalReady, on);
}

void LinuxSerialPort::OnNews(std::function<void(const PortNews&)> call) {
  onNews_ = std::move(call);
}

void LinuxSerialPort::SetLine(KeyingLine line, bool on) {
  Beat();
  if (IsPresent() && !device_->SetLine(line, on)) Vanish();
}

/// The station lives, and may be silent for `silence` now. What the line still has to send is not
/// cut, however long the station is busy.
void LinuxSerialPort::Beat(milliseconds silence) {
  if (!device_) return;
  const auto now = clock_.Monotonic();
  const auto sending = std::chrono::ceil<milliseconds>(line_.IdleAt() - now);
  device_->guard().Beat(silence + kGuardPatience + std::max(sending, milliseconds(0)));
  const auto silent = now - std::exchange(lastBeat_, now);
  if (device_->guard().TakeDropped()) TakeUpAgain(silent);
  SeeThatItIsGuarded(now);
}

/// A transmitter without a guard is not kept keyed: when no other one can be had, the device counts
/// as gone.
void LinuxSerialPort::SeeThatItIsGuarded(milliseconds now) {
  if (!device_ || now - lastCheck_ < kCheckInterval) return;
  lastCheck_ = now;
  if (device_->guard().IsWatching()) return;
  try {
    device_->RenewGuard();
  } catch (const Failure&) {
    return Vanish();
  }
  Beat();
  onNews_({PortEvent::kUnguarded});
}

void LinuxSerialPort::TakeUpAgain(milliseconds silence) {
  const bool isKeyed = keyLine1_ || keyLine2_;
  if (!isKeyed || isStuck_ || IsEnding()) return;
  if (!SetLines(keyLine1_, keyLine2_)) return Vanish();
  Settle();
  onNews_({PortEvent::kReleased, silence});
}

/// False when one does not follow.
bool LinuxSerialPort::SetLines(bool line1, bool line2) {
  try {
    return device_->SetLine(KeyingLine::kDataTerminalReady, line2) &&
           device_->SetLine(KeyingLine::kRequestToSend, line1);
  } catch (const Failure&) {
    return false;
  }
}

/// The bytes wait until the transmitter is up.
void LinuxSerialPort::Settle() {
  settledAt_ = clock_.Monotonic() + kKeyUp;
  line_.Clear();
  if (!held_.empty()) line_.Add(held_.size(), settledAt_);
}

/// Gives the driver what it takes. Returns the bytes that it and we still have.
std::size_t LinuxSerialPort::Pump() {
  while (device_ && !IsSettling() && !held_.empty()) {
    const auto taken = device_->Write(held_);
    if (!taken) Vanish();
    if (taken.value_or(0) == 0) break;
    held_.erase(0, *taken);
  }
  const auto unsent = device_ ? device_->Unsent() : std::nullopt;
  if (device_ && !unsent) Vanish();
  return held_.size() + unsent.value_or(0);
}

/// `unsent` bytes wait. An adapter that hangs takes them and sends none: the transmitter would be
/// keyed without data, for no pause comes before the line has drained.
void LinuxSerialPort::SeeThatItDrains(std::size_t unsent) {
  const auto now = clock_.Monotonic();
  const auto before = std::exchange(lastUnsent_, unsent);
  const bool isMoving = unsent == 0 || unsent < before;
  if (isMoving || before == 0 || IsSettling()) movedAt_ = now;
  const auto patience =
      std::max<nanoseconds>(kShortestStall, kSlowness * TimeOnLine(line_.settings(), unsent));
  if (isStuck_ && isMoving && !IsEnding()) return TakeAsUnstuck();
  if (!isStuck_ && now - movedAt_ > patience) TakeAsStuck();
}

void LinuxSerialPort::TakeAsStuck() {
  if (!SetLines(false, false)) return Vanish();
  isStuck_ = true;
  onNews_({PortEvent::kVanished});
}

/// What left meanwhile went to a transmitter that was down.
void LinuxSerialPort::TakeAsUnstuck() {
  device_->Flush();
  TakeUpWhole();
  if (!SetLines(keyLine1_, keyLine2_)) return Vanish();
  isStuck_ = false;
  Settle();
  onNews_({PortEvent::kReturned});
}

void LinuxSerialPort::ForgetSent(std::size_t unsent) {
  std::size_t behind = 0;
  for (const auto& write : onItsWay_) behind += write.size();
  while (!onItsWay_.empty() && (behind -= onItsWay_.front().size()) >= unsent)
    onItsWay_.pop_front();
}

/// Half a packet is none: a receiver needs the whole of it again.
void LinuxSerialPort::TakeUpWhole() {
  held_.clear();
  for (const auto& write : onItsWay_) held_ += write;
  lastUnsent_ = 0;
}

void LinuxSerialPort::Vanish() {
  device_.reset();
  const bool isKnown = std::exchange(isStuck_, false);
  if (!isKnown) ForgetSent(std::max(held_.size(), line_.Unsent(clock_.Monotonic())));
  TakeUpWhole();
  lastLook_ = clock_.Monotonic();
  if (!isKnown) onNews_({PortEvent::kVanished});
}

void LinuxSerialPort::LookForDevice() {
  if (IsEnding() || clock_.Monotonic() - lastLook_ < kLookInterval) return;
  lastLook_ = clock_.Monotonic();
  try {
    OpenDevice();
  } catch (const Failure&) {  // not yet there, or not yet ours to use
    return;
  }
  if (!SetLines(keyLine1_, keyLine2_)) return device_.reset();
  Settle();
  onNews_({PortEvent::kReturned});
}

}  // namespace ostrel
