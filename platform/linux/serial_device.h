// One open serial device: a terminal line in raw mode with its two keying lines and the guard over
// them. It knows nothing of port numbers, buffers of the station's own or devices that come back.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/line_time.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/keying_guard.h"

namespace ostrel {

enum class KeyingLine { kRequestToSend, kDataTerminalReady };

class SerialDevice {
 public:
  /// Opens the device for this station alone, both lines down, and starts its guard; `stop` is as
  /// the guard wants it. Throws Failure 68 when it is missing, in use or no serial device, 57 when
  /// it does not take the settings, another one when no guard can be had.
  SerialDevice(const std::string& path, const LineSettings& settings, int stop);
  /// Drops both lines, throws away what still waits, closes.
  ~SerialDevice();
  SerialDevice(const SerialDevice&) = delete;
  SerialDevice& operator=(const SerialDevice&) = delete;

  KeyingGuard& guard() { return *guard_; }
  /// Puts another guard in the place of one that has ended. Throws Failure when none can be had.
  void RenewGuard();

  // Each of these returns false, or nothing, when the device has vanished.

  /// Switches a line and sees that it follows. A device without such lines (a pseudo-terminal)
  /// takes it silently. Throws Failure 57 when the line does not follow.
  bool SetLine(KeyingLine line, bool on);
  /// Bytes that the driver still has. Zero says nothing about the wire.
  std::optional<std::size_t> Unsent();
  /// Throws away what the driver still has.
  void Flush();
  /// How many of `bytes` the driver took; does not block. A device that fails has vanished, too.
  std::optional<std::size_t> Write(std::string_view bytes);

 private:
  void TakeForOurselves(const std::string& path);
  void Configure(const LineSettings& settings);
  bool IsGone() const;

  Descriptor device_;
  int stop_;
  std::optional<KeyingGuard> guard_;  // ends before the device is closed
};

}  // namespace ostrel
