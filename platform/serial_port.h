// The serial port that feeds the transmitter and keys it. KeyLine1 is RTS, KeyLine2 is DTR.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

#include "base/time.h"

namespace ostrel {

inline constexpr int kPortCount = 8;  // they are numbered from 1

/// What happens to an open port of its own accord.
enum class PortEvent {
  kVanished,   // the device is gone, or sends nothing of what it took
  kReturned,   // it is back, its settings and lines restored
  kReleased,   // nobody called for too long: the lines were dropped, and are up again
  kUnguarded,  // what would have dropped them had ended; another guard has taken its place
};

struct PortNews {
  PortEvent event;
  milliseconds silence{0};  // of a release: how long nobody called
};

/// How long the lines stay up without a call, beyond what was announced and what is on the wire.
inline constexpr milliseconds kGuardPatience{3000};

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

  /// Tells that the next call may be `silence` in coming, as of a sleep or the time between two
  /// ticks. Every call shows that the station lives;
  /// when none comes for longer than announced before, than the bytes that wait need on the line,
  /// and than kGuardPatience, both lines are dropped, whatever the calling thread hangs in. The
  /// next call raises them again, and the bytes wait until the transmitter is up.
  virtual void Announce(milliseconds silence) = 0;

  /// `call` gets what happens of its own accord, from inside any of the calls above.
  virtual void OnNews(std::function<void(const PortNews&)> call) = 0;
};

}  // namespace ostrel
