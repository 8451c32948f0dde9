// The serial port over the system's terminal lines. Port n is the link COMn in the ports folder,
// which points to a device; without the link there is no such port. A device that vanishes while
// open is to the station a line that does not move, until it is back; one that takes bytes and
// sends none is the same, with its keying lines down. Every call is a sign of life to the guard
// over the lines.
#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/clock.h"
#include "platform/line_time.h"
#include "platform/linux/serial_device.h"
#include "platform/linux/stop_signal.h"
#include "platform/serial_port.h"

namespace ostrel {

class LinuxSerialPort : public SerialPort {
 public:
  /// With `stop`, nothing raises a line again once the program is asked to end.
  LinuxSerialPort(const Clock& clock, std::string portsFolder, const StopSignal* stop = nullptr);
  ~LinuxSerialPort() override;

  void Open(int number, std::string_view settings) override;
  void Close() override;
  bool IsOpen() const override { return open_; }
  /// While the device is gone the whole buffer counts as waiting. Looks for it every two seconds.
  std::size_t BytesWaiting() override;
  /// A write while the device is gone is held for its return; a write that was on its way then is
  /// repeated whole.
  void Write(std::string_view bytes) override;
  void SetKeyLine1(bool on) override;
  void SetKeyLine2(bool on) override;
  bool KeyLine1() const override { return keyLine1_; }
  bool KeyLine2() const override { return keyLine2_; }
  void Announce(milliseconds silence) override { Beat(silence); }
  void OnNews(std::function<void(const PortNews&)> call) override;

 private:
  void OpenDevice();
  void SetLine(KeyingLine line, bool on);
  void Beat(milliseconds silence = {});
  void SeeThatItIsGuarded(milliseconds now);
  void TakeUpAgain(milliseconds silence);
  bool SetLines(bool line1, bool line2);
  void Settle();
  std::size_t Pump();
  void SeeThatItDrains(std::size_t unsent);
  void TakeAsStuck();
  void TakeAsUnstuck();
  void ForgetSent(std::size_t unsent);
  void TakeUpWhole();
  void Vanish();
  void LookForDevice();
  bool IsEnding() const { return stop_ != nullptr && stop_->IsRequested(); }
  bool IsPresent() const { return device_ && !isStuck_; }
  bool IsSettling() const { return clock_.Monotonic() < settledAt_; }

  const Clock& clock_;
  std::string portsFolder_;
  const StopSignal* stop_;
  std::function<void(const PortNews&)> onNews_;
  bool open_ = false;
  bool isStuck_ = false;  // the device is there, and nothing of what waits leaves it
  std::string path_;
  LineTime line_;
  std::optional<SerialDevice> device_;  // empty while gone
  std::string held_;                    // what the driver has not taken yet
  std::deque<std::string> onItsWay_;    // the writes that have not left the line whole
  std::size_t lastUnsent_ = 0;          // what waited at the last look
  milliseconds movedAt_{0};             // when less waited than before
  milliseconds lastLook_{0};            // for the device
  milliseconds lastCheck_{0};           // of the guard
  milliseconds lastBeat_{0};
  milliseconds settledAt_{0};
  bool keyLine1_ = false;
  bool keyLine2_ = false;
};

}  // namespace ostrel
