// Turns the identification text into keying steps by the Morse table.
#pragma once

#include <string>
#include <string_view>

#include "base/time.h"

namespace ostrel {

/// The symbols of an element sequence.
namespace morse_symbol {
inline constexpr char kDot = '.';
inline constexpr char kDash = '-';
inline constexpr char kCharacterGap = '!';
inline constexpr char kWordGap = '#';
}  // namespace morse_symbol

/// The lines of the table file as one string, a line feed and a carriage return in front of each.
std::string JoinMorseTable(std::string_view file);

/// True for a line of the table that codes a sign.
bool IsMorseLine(std::string_view line);
/// False for one that ends so early that the next one's code would be read as its own.
bool IsFilledUp(std::string_view line);

/// The sequence for `text` (UTF-8, already in upper case): a word gap and a character gap, each
/// character's code and a character gap, a word gap for each blank and at the end. In the table, a
/// line's first column is the character and the next six its code; the first line of a character
/// counts. A character that no line begins with has its gap alone.
std::string MorseElements(std::string_view text, std::string_view joinedTable);

/// How long one symbol keys the transmitter, and how long it rests after. Both 0 for any other
/// symbol. `factor` is in milliseconds.
struct KeyingStep {
  milliseconds on{0};
  milliseconds off{0};
};
KeyingStep KeyingOf(char symbol, int factor);

/// The timing factor for a speed factor: 33 less the number in the text, rounded half to even; 8
/// when that is below 1.
int TimingFactor(std::string_view speedFactor);

}  // namespace ostrel
