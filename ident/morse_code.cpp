#include "ident/morse_code.h"

#include "base/numbers.h"
#include "base/text.h"
#include "base/utf8.h"

namespace ostrel {

namespace {

constexpr std::size_t kCodeColumns = 6;
constexpr int kSlowestFactor = 33;
constexpr int kUsualFactor = 8;

std::string_view CodeOf(std::string_view sign, std::string_view joinedTable) {
  const auto start = '\r' + std::string(sign);
  const auto found = joinedTable.find(start);
  if (found == std::string_view::npos) return {};
  return TrimBlanks(joinedTable.substr(found + start.size(), kCodeColumns));
}

}  // namespace

std::string JoinMorseTable(std::string_view file) {
  std::string joined;
  ForEachLine(file, [&](std::string_view line) { joined.append("\n\r").append(line); });
  return joined;
}

bool IsMorseLine(std::string_view line) {
  const auto sign = FirstCharacter(line);
  if (!sign) return false;
  const auto code = TrimBlanks(line.substr(sign->size, kCodeColumns));
  return !code.empty() && code.find_first_not_of(".-") == std::string_view::npos;
}

bool IsFilledUp(std::string_view line) {
  constexpr std::size_t kEndOfLine = 2;
  const auto sign = FirstCharacter(line);
  return sign && line.size() - sign->size + kEndOfLine >= kCodeColumns;
}

std::string MorseElements(std::string_view text, std::string_view joinedTable) {
  using namespace morse_symbol;
  std::string elements{kWordGap, kCharacterGap};
  while (!text.empty()) {
    const auto character = FirstCharacter(text);
    const auto sign = text.substr(0, character ? character->size : 1);
    text.remove_prefix(sign.size());
    if (sign == " ") {
      elements += kWordGap;
    } else {
      // A byte that belongs to no character could begin a line of another one.
      elements.append(character ? CodeOf(sign, joinedTable) : "") += kCharacterGap;
    }
  }
  return elements += kWordGap;
}

KeyingStep KeyingOf(char symbol, int factor) {
  using namespace morse_symbol;
  switch (symbol) {
    case kDot:
      return {milliseconds(5 * factor), milliseconds(5 * factor)};
    case kDash:
      return {milliseconds(15 * factor), milliseconds(5 * factor)};
    case kCharacterGap:
      return {milliseconds(0), milliseconds(15 * factor)};
    case kWordGap:
      return {milliseconds(0), milliseconds(35 * factor)};
    default:
      return {};
  }
}

int TimingFactor(std::string_view speedFactor) {
  const double factor = RoundHalfEven(kSlowestFactor - LeadingNumber(speedFactor));
  constexpr double kSlowestUsable = 100'000;  // a dot of eight minutes: nothing overflows beyond it
  return factor < 1 ? kUsualFactor
                    : static_cast<int>(factor < kSlowestUsable ? factor : kSlowestUsable);
}

}  // namespace ostrel
