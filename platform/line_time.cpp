#include "platform/line_time.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "base/failure.h"
#include "base/text.h"

namespace ostrel {
namespace {

[[noreturn]] void Refuse(std::string_view text) {
  throw Failure(failure_number::kInvalidArgument, "Invalid port settings: " + std::string(text));
}

/// Takes the text up to the next comma off `rest`.
std::string_view TakePart(std::string_view& rest) {
  const auto comma = rest.find(',');
  const auto part = rest.substr(0, comma);
  rest = comma == std::string_view::npos ? std::string_view{} : rest.substr(comma + 1);
  return TrimBlanks(part);
}

std::optional<std::int32_t> Whole(std::string_view text) {
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::optional<Parity> ParityOf(std::string_view letter) {
  const std::string upper = ToUpper(letter);
  if (upper == "N") return Parity::kNone;
  if (upper == "O") return Parity::kOdd;
  if (upper == "E") return Parity::kEven;
  if (upper == "M") return Parity::kMark;
  if (upper == "S") return Parity::kSpace;
  return std::nullopt;
}

std::optional<StopBits> StopBitsOf(std::string_view text) {
  if (text == "1") return StopBits::kOne;
  if (text == "1.5") return StopBits::kOneAndHalf;
  if (text == "2") return StopBits::kTwo;
  return std::nullopt;
}

/// Twice the bits of one byte on the wire, so that half a stop bit counts.
std::int64_t HalfBitsPerByte(const LineSettings& settings) {
  const int stop = settings.stopBits == StopBits::kOne          ? 2
                   : settings.stopBits == StopBits::kOneAndHalf ? 3
                                                                : 4;
  const int parity = settings.parity == Parity::kNone ? 0 : 2;
  return 2 + 2 * settings.dataBits + parity + stop;
}

}  // namespace

LineSettings ParseLineSettings(std::string_view text) {
  if (std::count(text.begin(), text.end(), ',') != 3) Refuse(text);
  std::string_view rest = text;
  const auto rate = Whole(TakePart(rest));
  const auto parity = ParityOf(TakePart(rest));
  const auto dataBits = Whole(TakePart(rest));
  const auto stopBits = StopBitsOf(TakePart(rest));
  if (!rate || !parity || !dataBits || !stopBits) Refuse(text);
  if (*rate < 1 || *dataBits < 5 || *dataBits > 8) Refuse(text);
  return {*rate, *parity, *dataBits, *stopBits};
}

nanoseconds TimeOnLine(const LineSettings& settings, std::size_t bytes) {
  constexpr std::int64_t kNanosecondsPerHalfSecond = 500'000'000;
  const std::int64_t halfBits = static_cast<std::int64_t>(bytes) * HalfBitsPerByte(settings);
  return nanoseconds((halfBits * kNanosecondsPerHalfSecond + settings.rate - 1) / settings.rate);
}

void LineTime::Add(std::size_t bytes, nanoseconds now) {
  if (added_ == 0 || IdleAt() <= now) {
    busySince_ = now;
    added_ = 0;
  }
  // Twice the rate leaves in exactly this time; taken off so that a run of months cannot overflow.
  const seconds period(HalfBitsPerByte(settings_));
  for (; busySince_ + period <= now; busySince_ += period) {
    added_ -= 2 * static_cast<std::size_t>(settings_.rate);
  }
  added_ += bytes;
}

std::size_t LineTime::Unsent(nanoseconds now) const {
  const std::int64_t left = (IdleAt() - now).count();
  if (added_ == 0 || left <= 0) return 0;
  const std::int64_t perUnit = 500'000'000 * HalfBitsPerByte(settings_);  // rate × time of a byte
  const auto bytes = (left * settings_.rate + perUnit - 1) / perUnit;
  return std::min(static_cast<std::size_t>(bytes), added_);
}

}  // namespace ostrel
