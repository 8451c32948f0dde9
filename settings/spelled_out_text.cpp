#include "settings/spelled_out_text.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <fmt/format.h>

#include "base/utf8.h"

namespace ostrel {

namespace {

constexpr std::uint32_t kFirstHigh = 0xD800, kFirstLow = 0xDC00, kBehindLow = 0xE000;
constexpr std::uint32_t kBeyondOneUnit = 0x10000;

bool IsHigh(std::uint32_t unit) {
  return unit >= kFirstHigh && unit < kFirstLow;
}

bool IsLow(std::uint32_t unit) {
  return unit >= kFirstLow && unit < kBehindLow;
}

/// A byte beyond ASCII that stands alone as a low half.
bool IsByte(std::uint32_t unit) {
  return unit >= kFirstLow + 0x80 && unit <= kFirstLow + 0xFF;
}

void AppendUnit(std::string& digits, std::uint32_t unit) {
  digits += fmt::format("{:02x},{:02x},", unit & 0xFF, unit >> 8);
}

void AppendCharacter(std::string& digits, std::uint32_t code) {
  if (code < kBeyondOneUnit) return AppendUnit(digits, code);
  code -= kBeyondOneUnit;
  AppendUnit(digits, kFirstHigh + (code >> 10));
  AppendUnit(digits, kFirstLow + (code & 0x3FF));
}

}  // namespace

std::optional<std::string> BytesOf(std::string_view digits) {
  std::string bytes;
  while (!digits.empty()) {
    unsigned int byte = 0;
    const auto* const end = digits.data() + std::min<std::size_t>(2, digits.size());
    if (std::from_chars(digits.data(), end, byte, 16).ptr != digits.data() + 2) return std::nullopt;
    bytes += static_cast<char>(byte);
    digits.remove_prefix(2);
    if (digits.empty()) break;
    if (digits.front() != ',' || digits.size() == 1) return std::nullopt;
    digits.remove_prefix(1);
  }
  return bytes;
}

std::optional<std::string> SpelledOutText(std::string_view digits) {
  const auto bytes = BytesOf(digits).value_or("");
  std::string text;
  std::uint32_t high = 0;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto unit = static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i]) |
                                                 static_cast<unsigned char>(bytes[i + 1]) << 8);
    if (high == 0 && IsByte(unit)) {
      text += static_cast<char>(unit & 0xFF);
      continue;
    }
    if (IsLow(unit) != (high != 0)) return std::nullopt;
    if (unit == 0) return i + 2 == bytes.size() ? std::optional(text) : std::nullopt;
    if (IsHigh(unit)) {
      high = unit;
      continue;
    }
    AppendUtf8(text, high != 0 ? kBeyondOneUnit + ((high & 0x3FF) << 10) + (unit & 0x3FF) : unit);
    high = 0;
  }
  return std::nullopt;
}

std::optional<std::string> SpelledOutAscii(std::string_view digits) {
  auto bytes = BytesOf(digits).value_or("");
  const auto isAscii = [](unsigned char c) { return c > 0 && c < 0x80; };
  if (!bytes.ends_with('\0')) return std::nullopt;
  bytes.pop_back();
  return std::all_of(bytes.begin(), bytes.end(), isAscii) ? std::optional(bytes) : std::nullopt;
}

std::string SpellOut(std::string_view text) {
  std::string digits;
  while (!text.empty()) {
    const auto character = FirstCharacter(text);
    AppendCharacter(
        digits, character ? character->code : kFirstLow + static_cast<unsigned char>(text.front()));
    text.remove_prefix(character ? character->size : 1);
  }
  return std::string(kSpelledOut) + digits + "00,00";
}

}  // namespace ostrel
