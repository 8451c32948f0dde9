#include "platform/linux/linux_serial_port.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/failure.h"
#include "base/names.h"

namespace ostrel {
namespace {

constexpr std::size_t kOutputBuffer = 10000;
constexpr seconds kLookInterval{2};
/// The transmitter fell with its device, and needs its time to come up again.
constexpr seconds kKeyUp{1};

}  // namespace

LinuxSerialPort::LinuxSerialPort(const Clock& clock, std::string portsFolder)
    : clock_(clock), portsFolder_(std::move(portsFolder)), onPresence_([](bool) {}) {}

LinuxSerialPort::~LinuxSerialPort() {
  Close();
}

void LinuxSerialPort::Open(int number, std::string_view settings) {
  Close();
  line_ = LineTime(ParseLineSettings(settings));
  path_ = JoinPath(portsFolder_, fmt::format("COM{}", number));
  device_.emplace(path_, line_.settings());
  open_ = true;
}

void LinuxSerialPort::Close() {
  device_.reset();
  held_.clear();
  onItsWay_.clear();
  settledAt_ = {};
  open_ = keyLine1_ = keyLine2_ = false;
}

std::size_t LinuxSerialPort::BytesWaiting() {
  if (!open_) return 0;
  if (!device_) LookForDevice();
  const std::size_t inDriver = Pump();
  if (!device_ || IsSettling()) return kOutputBuffer;
  const std::size_t unsent = std::max(inDriver, line_.Unsent(clock_.Monotonic()));
  ForgetSent(unsent);
  return unsent;
}

void LinuxSerialPort::Write(std::string_view bytes) {
  if (!open_) throw Failure(failure_number::kDeviceError, "Device I/O error: the port is closed");
  Pump();
  if (held_.size() + bytes.size() > kOutputBuffer) {
    throw Failure(failure_number::kDeviceError, "Device I/O error: the output buffer is full");
  }
  held_ += bytes;
  onItsWay_.emplace_back(bytes);
  line_.Add(bytes.size(), clock_.Monotonic());
  Pump();
}

void LinuxSerialPort::SetKeyLine1(bool on) {
  keyLine1_ = on;
  SetLine(KeyingLine::kRequestToSend, on);
}

void LinuxSerialPort::SetKeyLine2(bool on) {
  keyLine2_ = on;
  SetLine(KeyingLine::kDataTerminalReady, on);
}

void LinuxSerialPort::OnPresence(std::function<void(bool present)> call) {
  onPresence_ = std::move(call);
}

void LinuxSerialPort::SetLine(KeyingLine line, bool on) {
  if (device_ && !device_->SetLine(line, on)) Vanish();
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

void LinuxSerialPort::ForgetSent(std::size_t unsent) {
  std::size_t behind = 0;
  for (const auto& write : onItsWay_) behind += write.size();
  while (!onItsWay_.empty() && (behind -= onItsWay_.front().size()) >= unsent)
    onItsWay_.pop_front();
}

/// Half a packet is none: a receiver needs the whole of it again.
void LinuxSerialPort::Vanish() {
  device_.reset();
  ForgetSent(std::max(held_.size(), line_.Unsent(clock_.Monotonic())));
  held_.clear();
  for (const auto& write : onItsWay_) held_ += write;
  lastLook_ = clock_.Monotonic();
  onPresence_(false);
}

void LinuxSerialPort::LookForDevice() {
  if (clock_.Monotonic() - lastLook_ < kLookInterval) return;
  lastLook_ = clock_.Monotonic();
  try {
    device_.emplace(path_, line_.settings());
    if (!device_->SetLine(KeyingLine::kDataTerminalReady, keyLine2_) ||
        !device_->SetLine(KeyingLine::kRequestToSend, keyLine1_)) {
      device_.reset();
      return;
    }
  } catch (const Failure&) {  // not yet there, or not yet ours to use
    device_.reset();
    return;
  }
  settledAt_ = clock_.Monotonic() + kKeyUp;
  line_.Clear();
  if (!held_.empty()) line_.Add(held_.size(), settledAt_);
  onPresence_(true);
}

}  // namespace ostrel
