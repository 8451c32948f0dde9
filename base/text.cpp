#include "base/text.h"

#include <algorithm>
#include <fmt/format.h>

namespace ostrel {

namespace {

std::string MapEach(std::string_view text, char first, char last, int shift) {
  std::string result(text);
  for (char& c : result) {
    if (c >= first && c <= last) c = static_cast<char>(c + shift);
  }
  return result;
}

}  // namespace

std::string ToUpper(std::string_view text) {
  return MapEach(text, 'a', 'z', 'A' - 'a');
}

std::string ToLower(std::string_view text) {
  return MapEach(text, 'A', 'Z', 'a' - 'A');
}

std::string_view TrimBlanks(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  const auto last = text.find_last_not_of(' ');
  return text.substr(first, last - first + 1);
}

std::string Printable(std::string_view text) {
  constexpr unsigned char kFirstPrintable = 0x20, kLastPrintable = 0x7E;
  std::string result;
  result.reserve(text.size());
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const bool isPrintable = byte >= kFirstPrintable && byte <= kLastPrintable;
    result += !isPrintable ? fmt::format("\\x{:02X}", byte) : std::string(1, c);
  }
  return result;
}

std::string PadOrCut(std::string_view text, std::size_t width) {
  std::string result(text.substr(0, std::min(width, text.size())));
  result.resize(width, ' ');
  return result;
}

std::string_view WithoutMark(std::string_view line) {
  for (;;) {
    const auto text = line.substr(std::min(line.find_first_not_of(' '), line.size()));
    if (!text.starts_with(kUtf8Mark)) return line;
    line = text.substr(kUtf8Mark.size());
  }
}

}  // namespace ostrel
