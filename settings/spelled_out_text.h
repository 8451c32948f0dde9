// Texts that a registry file spells out in bytes, "hex(1):44,00,45,00,00,00": the way of editors
// that write every text so, and the only one for a text that is no UTF-8.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

inline constexpr std::string_view kSpelledOut = "hex(1):";

/// The bytes of "01,02,fe"; nothing for any other text.
std::optional<std::string> BytesOf(std::string_view digits);

/// The text that stands behind kSpelledOut: UTF-16LE, with a zero at its end. Nothing when it is
/// none.
std::optional<std::string> SpelledOutText(std::string_view digits);

/// The same in the older form of file: a byte a character, in a code page that the file does not
/// name. What all of them share is taken.
std::optional<std::string> SpelledOutAscii(std::string_view digits);

/// Spells `text` out so that it comes back byte for byte. A byte that belongs to no UTF-8 character
/// becomes half a surrogate pair, U+DC00 and the byte, which no text of characters holds.
std::string SpellOut(std::string_view text);

}  // namespace ostrel
