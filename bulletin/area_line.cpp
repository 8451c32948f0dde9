#include "bulletin/area_line.h"

#include <algorithm>
#include <fmt/format.h>

#include "bulletin/letters.h"

namespace ostrel {
namespace {

constexpr std::size_t kLetters = 3;  // "IAC"

bool IsArea(std::string_view text) {
  return text.size() == 6 && IsUpper(text[0]) && IsUpper(text[1]) &&
         (text[2] == 'C' || text[2] == 'Z') &&
         (ConsistsOf(text.substr(kLetters), IsDigit) || text.substr(kLetters) == "ALL");
}

bool IsSeparator(char c) {
  return c == '-' || c == '>';
}

/// Takes the fields of a line in turn: a range is its last field but one, and a field.
class AreaFields {
 public:
  explicit AreaFields(AreaLine& line) : line_(line) {}

  /// False when `field`, which follows `separator`, cannot stand there.
  bool Take(std::string_view field, char separator) {
    std::string code(field);
    if (field.size() == 3 && !letters_.empty() && ConsistsOf(field, IsDigit))
      code.insert(0, letters_);
    if (!IsArea(code)) return false;
    const auto letters = code.substr(0, kLetters);
    const auto number = WholeNumber(std::string_view(code).substr(kLetters));
    if (separator == '>') return letters == letters_ && TakeRange(number);
    letters_ = letters;
    number_ = number;
    line_.areas.push_back(std::move(code));
    return line_.areas.size() <= kMostAreas;
  }

 private:
  bool TakeRange(std::optional<int> last) {
    if (!last || !number_ || *last <= *number_) return false;
    if (line_.areas.size() + static_cast<std::size_t>(*last - *number_) > kMostAreas) return false;
    while (*number_ < *last) line_.areas.push_back(fmt::format("{}{:03}", letters_, ++*number_));
    number_.reset();  // "001>003>005" is no range
    return true;
  }

  AreaLine& line_;
  std::string letters_;
  std::optional<int> number_;
};

/// Reads one line's text. True at the end of all, false when it goes on; nothing when it is
/// damaged.
std::optional<bool> TakeText(std::string_view text, char& separator, AreaFields& fields,
                             AreaLine& line) {
  while (!text.empty()) {
    const auto end = std::find_if(text.begin(), text.end(), IsSeparator);
    const auto field = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    const auto rest = text.substr(field.size());
    if (field.size() == 6 && ConsistsOf(field, IsDigit) && separator == '-') {
      line.until = ReadDayTime(field);
      return rest.empty() || rest == "-" ? std::optional(true) : std::nullopt;
    }
    if (rest.empty() || !fields.Take(field, separator)) return std::nullopt;
    separator = rest.front();
    text = rest.substr(1);
  }
  return false;
}

/// What only an area line begins with: an area and a separator, and no blank in all of it.
bool IsFront(std::string_view line) {
  return line.size() > 6 && IsArea(line.substr(0, 6)) && IsSeparator(line[6]) &&
         line.find(' ') == std::string_view::npos;
}

}  // namespace

std::optional<AreaLine> ReadAreaLine(std::span<const std::string_view> lines) {
  if (lines.empty() || !IsFront(lines.front())) return std::nullopt;
  AreaLine read;
  AreaFields fields(read);
  char separator = 0;
  std::optional<bool> isEnd = false;
  while (isEnd == false && read.lines < lines.size()) {
    const auto text = lines[read.lines];
    if (text.empty() && lines[read.lines - 1].empty()) break;
    isEnd = TakeText(text, separator, fields, read);
    if (isEnd) ++read.lines;
  }
  read.isWhole = isEnd == true;
  read.named = read.areas.size();
  if (!read.isWhole) {
    read.lines = std::max<std::size_t>(read.lines, 1);
    read.areas.clear();
    read.until.reset();
  }
  std::sort(read.areas.begin(), read.areas.end());
  read.areas.erase(std::unique(read.areas.begin(), read.areas.end()), read.areas.end());
  return read;
}

}  // namespace ostrel
