// What a serial line can have sent by now. Drivers, adapters and pseudo-terminals report an empty
// buffer while bytes are still on their way to the antenna; a transmitter dropped then cuts the
// packet. So the station reckons the line itself, by its rate and the monotonic clock. Pure
// arithmetic, for the real port and the virtual one.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ostrel {

using std::chrono::nanoseconds;
using std::chrono::seconds;

enum class Parity { kNone, kOdd, kEven, kMark, kSpace };
enum class StopBits { kOne, kOneAndHalf, kTwo };

struct LineSettings {
  std::int32_t rate = 1200;  // bits per second
  Parity parity = Parity::kNone;
  int dataBits = 8;
  StopBits stopBits = StopBits::kTwo;
  friend bool operator==(const LineSettings&, const LineSettings&) = default;
};

/// Reads "1200,N,8,2": rate (any, 1 and up: the driver tells what it takes), parity (N, O, E, M, S,
/// either case), data bits (5 to 8), stop bits (1, 1.5, 2); blanks around each are ignored. Throws
/// Failure 5 for any other text.
LineSettings ParseLineSettings(std::string_view text);

/// The time that `bytes` bytes take on the wire, start, parity and stop bits included, rounded up.
nanoseconds TimeOnLine(const LineSettings& settings, std::size_t bytes);

/// A line at work. Times are the monotonic clock's, and never go back.
class LineTime {
 public:
  explicit LineTime(const LineSettings& settings = {}) : settings_(settings) {}

  /// `bytes` join the end of the line's queue.
  void Add(std::size_t bytes, nanoseconds now);
  /// Bytes added whose last bit cannot have left yet; a byte begun counts whole.
  std::size_t Unsent(nanoseconds now) const;
  /// The moment the last byte added has left; in the past when the line is idle.
  nanoseconds IdleAt() const { return busySince_ + TimeOnLine(settings_, added_); }
  /// What waits is thrown away.
  void Clear() { added_ = 0; }

  const LineSettings& settings() const { return settings_; }

 private:
  LineSettings settings_;
  nanoseconds busySince_{0};  // start of the present run of bytes without a gap
  std::size_t added_ = 0;     // bytes added since then
};

}  // namespace ostrel
