#include "base/numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <optional>

#include "base/failure.h"
#include "base/text.h"

namespace ostrel {

namespace {

struct Reading {
  double value = 0;
  std::string_view rest;
};

/// The number at the start of `text` and what follows it; nothing when no number stands there.
std::optional<Reading> ReadNumber(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return std::nullopt;
  }
  const auto digits = text.substr(text.starts_with('-') ? 1 : 0);
  if (digits.empty() || (digits.front() != '.' && (digits.front() < '0' || digits.front() > '9')))
    return std::nullopt;
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || !std::isfinite(value)) return std::nullopt;
  return Reading{value, text.substr(static_cast<std::size_t>(end - text.data()))};
}

std::optional<double> WholeNumber(std::string_view text) {
  const auto reading = ReadNumber(text);
  if (!reading || !TrimBlanks(reading->rest).empty()) return std::nullopt;
  return reading->value;
}

template <typename Number>
std::string ShortestDecimal(Number value) {
  std::array<char, 1100> digits;  // the smallest number has 1,075 behind its period
  const auto end =
      std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed)
          .ptr;
  const std::string text(digits.data(), end);
  return text == "-0" ? "0" : text;
}

}  // namespace

Failure TypeMismatch() {
  return Failure(failure_number::kTypeMismatch, "Type mismatch");
}

Failure Overflow() {
  return Failure(failure_number::kOverflow, "Overflow");
}

double LeadingNumber(std::string_view text) {
  const auto reading = ReadNumber(text);
  return reading ? reading->value : 0;
}

std::int32_t LeadingInteger(std::string_view text) {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(
      std::clamp(RoundHalfEven(LeadingNumber(text)), double{Limits::min()}, double{Limits::max()}));
}

std::chrono::milliseconds LeadingMilliseconds(std::string_view text) {
  return std::chrono::milliseconds(std::max(0, LeadingInteger(text)));
}

bool IsNumber(std::string_view text) {
  return WholeNumber(text).has_value();
}

double StrictNumber(std::string_view text) {
  const auto value = WholeNumber(text);
  if (!value) throw TypeMismatch();
  return *value;
}

std::int32_t StrictInteger(std::string_view text) {
  using Limits = std::numeric_limits<std::int32_t>;
  const double value = RoundHalfEven(StrictNumber(text));
  if (value < Limits::min() || value > Limits::max()) throw Overflow();
  return static_cast<std::int32_t>(value);
}

bool StrictBoolean(std::string_view text) {
  const auto word = ToUpper(TrimBlanks(text));
  if (word == "TRUE") return true;
  if (word == "FALSE") return false;
  return StrictNumber(text) != 0;
}

double RoundHalfEven(double value) {
  return std::nearbyint(value);  // the default rounding mode is half to even
}

std::string FormatRounded(double value, int decimals) {
  auto text = fmt::format("{:.{}f}", value, decimals);
  if (text.find('.') == std::string::npos) return text;
  text.erase(text.find_last_not_of('0') + 1);
  if (text.ends_with('.')) text.pop_back();
  return text == "-0" ? "0" : text;
}

std::string FormatPlain(double value) {
  return ShortestDecimal(value);
}

std::string FormatPlain(float value) {
  return ShortestDecimal(value);
}

}  // namespace ostrel
