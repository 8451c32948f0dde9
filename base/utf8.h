// The characters of a text that people wrote: UTF-8, where most of the station knows bytes only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

struct Utf8Character {
  std::uint32_t code;
  std::size_t size;  // bytes
};

/// The character at the front of `text`; nothing when no whole and shortest one stands there.
std::optional<Utf8Character> FirstCharacter(std::string_view text);

bool IsUtf8(std::string_view text);

/// `code` is a character, no half of a surrogate pair.
void AppendUtf8(std::string& text, std::uint32_t code);

}  // namespace ostrel
