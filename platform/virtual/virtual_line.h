// A serial line that drains by the virtual clock at the rate it was opened with, and remembers what
// it carried and how it was keyed.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/line_time.h"
#include "platform/serial_port.h"

namespace ostrel {

/// One change of a keying line.
struct KeyEvent {
  milliseconds at;  // monotonic
  int line;         // 1 or 2
  bool on;
  friend bool operator==(const KeyEvent&, const KeyEvent&) = default;
};

class VirtualLine : public SerialPort {
 public:
  explicit VirtualLine(const Clock& clock) : clock_(clock) {}

  void Open(int number, std::string_view settings) override;
  void Close() override;
  bool IsOpen() const override { return isOpen_; }
  std::size_t BytesWaiting() override;
  void Write(std::string_view bytes) override;
  void SetKeyLine1(bool on) override { SetLine(1, keyLine1_, on); }
  void SetKeyLine2(bool on) override { SetLine(2, keyLine2_, on); }
  bool KeyLine1() const override { return keyLine1_; }
  bool KeyLine2() const override { return keyLine2_; }
  void Announce(milliseconds silence) override { Beat(silence); }
  void OnNews(std::function<void(const PortNews&)> call) override { onNews_ = std::move(call); }

  /// The device goes away, or comes back. While it is away nothing of what waits moves; what is
  /// written then goes out when it is back.
  void SetPresent(bool present);

  std::set<int> devices{1, 2, 3, 4, 5, 6, 7, 8};  // the ports that exist
  bool lineFails = false;                         // a keying line does not follow
  bool writeFails = false;
  /// Hears of every write; by default all is kept in `carried`.
  std::function<void(std::string_view)> onWrite = [this](std::string_view b) { carried += b; };

  std::string carried;                // all bytes written, in order
  std::vector<KeyEvent> keying;       // changes of the lines while open
  std::vector<std::string> openings;  // settings strings, in order
  int releases = 0;                   // times that a guard would have dropped the lines

 private:
  void Beat(milliseconds silence = {});
  void Carry(std::string_view bytes);
  void SetLine(int line, bool& state, bool on);
  void Record(int line, bool& state, bool on);
  nanoseconds Now() const { return clock_.Monotonic(); }

  const Clock& clock_;
  LineTime line_;
  std::function<void(const PortNews&)> onNews_;
  milliseconds awaited_{0};  // until when the next call must come
  std::string held_;         // written while the device was away
  bool isOpen_ = false;
  bool isPresent_ = true;
  bool keyLine1_ = false;
  bool keyLine2_ = false;
};

}  // namespace ostrel
