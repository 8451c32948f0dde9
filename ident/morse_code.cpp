#include "ident/morse_code.h"

#include "base/numbers.h"
#include "base/text.h"

namespace ostrel {

namespace {

constexpr std::size_t kCodeColumns = 6;
constexpr int kSlowestFactor = 33;
constexpr int kUsualFactor = 8;

std::string_view CodeOf(char c, std::string_view joinedTable) {
  const char line[] = {'\r', c};
  const auto found = joinedTable.find(std::string_view(line, sizeof line));
  if (found == std::string_view::npos) return {};
  return TrimBlanks(joinedTable.substr(found + sizeof line, kCodeColumns));
}

}  // namespace

std::string JoinMorseTable(std::string_view file) {
  std::string joined;
  ForEachLine(file, [&](std::string_view line) { joined.append("\n\r").append(line); });
  return joined;
}

std::string MorseElements(std::string_view text, std::string_view joinedTable) {
  using namespace morse_symbol;
  std::string elements{kWordGap, kCharacterGap};
  for (const char c : text) {
    if (c == ' ') {
      elements += kWordGap;
    } else {
      elements.append(CodeOf(c, joinedTable)) += kCharacterGap;
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
