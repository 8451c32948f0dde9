// The serial port that feeds the transmitter and keys it. KeyLine1 is RTS, KeyLine2 is DTR.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

namespace ostrel {

class SerialPort {
 public:
  virtual ~SerialPort() = default;

  /// Opens port `number` (1 to 8) with "rate,parity,data bits,stop bits", for example "1200,N,8,2",
  /// no handshaking, an output buffer of 10000 bytes, reads that return at once. Both lines are
  /// down when it returns. Throws Failure 68 when there is no such device or it is in use, 57 for a
  /// device that fails, 5 for settings that are none. A failed opening leaves the port closed.
  virtual void Open(int number, std::string_view settings) = 0;
  /// Drops both lines, throws away what still waits, closes. Never throws; harmless when closed.
  virtual void Close() = 0;
  virtual bool IsOpen() const = 0;

  /// Bytes written but not yet sent on the wire; 0 when closed. "The system took the bytes" is not
  /// "the bytes left the wire": an estimate by the line rate covers what the driver does not tell.
  /// Does not block. While the device is gone it never falls to 0 by itself.
  virtual std::size_t BytesWaiting() = 0;

  /// Queues `bytes` behind those that wait. Does not block. Throws Failure 57 when closed, when the
  /// buffer has no room for all of them (then none is taken) or when the device fails.
  virtual void Write(std::string_view bytes) = 0;

  /// Switches a keying line, checked with the device; kept in mind while the port is closed or the
  /// device gone. Throws Failure 57 when the line does not follow.
  virtual void SetKeyLine1(bool on) = 0;
  virtual void SetKeyLine2(bool on) = 0;
  /// What was last set.
  virtual bool KeyLine1() const = 0;
  virtual bool KeyLine2() const = 0;

  /// Called with false when the open device vanishes and with true when it is back, its settings
  /// and lines restored.
  virtual void OnPresence(std::function<void(bool present)> call) = 0;
};

}  // namespace ostrel
