#include "bulletin/lines.h"

#include <algorithm>

namespace ostrel {
namespace {

constexpr bool IsShown(char c) {
  const auto code = static_cast<unsigned char>(c);
  return code > ' ' && code != 0x7F;
}

constexpr bool IsEnd(char c) {
  return c == '\r' || c == '\n';
}

std::string_view Trimmed(std::string_view line) {
  while (!line.empty() && !IsShown(line.front())) line.remove_prefix(1);
  while (!line.empty() && !IsShown(line.back())) line.remove_suffix(1);
  return line;
}

}  // namespace

std::vector<std::string_view> BulletinLines(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const auto end = std::find_if(text.begin(), text.end(), IsEnd);
    const auto size = static_cast<std::size_t>(end - text.begin());
    lines.push_back(Trimmed(text.substr(0, size)));
    text.remove_prefix(size);
    while (text.starts_with('\r')) text.remove_prefix(1);
    if (text.starts_with('\n')) text.remove_prefix(1);
  }
  return lines;
}

}  // namespace ostrel
