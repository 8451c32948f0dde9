// Takes bytes off a line no faster than a radio would, so that whoever writes cannot run ahead.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <optional>

namespace ostrel {

class LinePacer {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// Without a rate nothing is held back. A byte takes ten bits: the shortest a line of 8 data bits
  /// knows, so a sender with longer bytes is never the one who waits.
  LinePacer(std::optional<int> baud, Time now) : baud_(baud), last_(now) {}

  /// How many bytes may be taken now, at most `room`. What a quiet line did not use up is lost but
  /// for a twentieth of a second.
  std::size_t Allowance(Time now, std::size_t room) {
    if (!baud_) return room;
    const double rate = *baud_ / 10.0;
    const double elapsed = std::chrono::duration<double>(now - last_).count();
    bytes_ = std::min(bytes_ + elapsed * rate, std::max(rate / 20.0, 1.0));
    last_ = now;
    return std::min(static_cast<std::size_t>(bytes_), room);
  }
  void Spend(std::size_t bytes) {
    if (baud_) bytes_ -= static_cast<double>(bytes);
  }

 private:
  std::optional<int> baud_;
  Time last_;
  double bytes_ = 0;
};

}  // namespace ostrel
