// The readings of a number in a text. A settings field is free text; who reads it decides how
// forgiving the reading is, and each reading has one name here.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/failure.h"

namespace ostrel {

/// The number at the start of the text (leading blanks allowed; sign, digits, one period,
/// exponent), 0 when there is none. Always finite.
double LeadingNumber(std::string_view text);

/// The same, rounded to a whole number; halves go to the even neighbour. Kept within 32 bits.
std::int32_t LeadingInteger(std::string_view text);

/// The same as a duration; never negative.
std::chrono::milliseconds LeadingMilliseconds(std::string_view text);

/// True when the whole text, blanks around it aside, is one number.
bool IsNumber(std::string_view text);

/// Failure 13: a text is not of the kind that its place wants.
Failure TypeMismatch();
/// Failure 6: a number is beyond what its place holds.
Failure Overflow();

/// The strict readings of start-up. Each throws TypeMismatch on anything else, the first Overflow
/// on a number beyond 32 bits.
std::int32_t StrictInteger(std::string_view text);
double StrictNumber(std::string_view text);
/// "True" or "False" in any case, or a number: 0 is false, any other is true.
bool StrictBoolean(std::string_view text);

/// Nearest whole number, halves to the even one.
double RoundHalfEven(double value);

/// At most `decimals` decimals, no trailing zeros, no trailing period: 1.2500 reads 1.25.
std::string FormatRounded(double value, int decimals);

/// Decimal without trailing zeros or exponent, as a settings value is stored: 100000.5, 50000. As
/// many digits as it takes to read the same number again.
std::string FormatPlain(double value);
std::string FormatPlain(float value);

}  // namespace ostrel
