#include "base/utf8.h"

namespace ostrel {

namespace {

constexpr std::uint32_t kLeading[] = {0x00, 0xC0, 0xE0, 0xF0};
/// The first code of each length, and of what has none.
constexpr std::uint32_t kFirstCode[] = {0x00, 0x80, 0x800, 0x10000, 0x110000};
constexpr std::uint32_t kFirstSurrogate = 0xD800, kBehindSurrogates = 0xE000;

/// How many bytes follow the leading byte; more than three for a byte that leads nothing.
std::size_t Following(unsigned char leading) {
  if (leading < 0x80) return 0;
  if (leading < 0xC0) return 4;
  return leading < 0xE0 ? 1 : leading < 0xF0 ? 2 : leading < 0xF8 ? 3 : 4;
}

}  // namespace

std::optional<Utf8Character> FirstCharacter(std::string_view text) {
  if (text.empty()) return std::nullopt;
  const auto leading = static_cast<unsigned char>(text.front());
  const auto following = Following(leading);
  if (following > 3 || text.size() <= following) return std::nullopt;
  std::uint32_t code = leading - kLeading[following];
  for (std::size_t i = 1; i <= following; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if ((byte & 0xC0) != 0x80) return std::nullopt;
    code = code << 6 | (byte & 0x3F);
  }
  const bool isShortest = code >= kFirstCode[following] && code < kFirstCode[following + 1];
  const bool isSurrogate = code >= kFirstSurrogate && code < kBehindSurrogates;
  if (!isShortest || isSurrogate) return std::nullopt;
  return Utf8Character{code, following + 1};
}

bool IsUtf8(std::string_view text) {
  while (const auto character = FirstCharacter(text)) text.remove_prefix(character->size);
  return text.empty();
}

void AppendUtf8(std::string& text, std::uint32_t code) {
  std::size_t following = 0;
  while (code >= kFirstCode[following + 1]) ++following;
  text += static_cast<char>(kLeading[following] | code >> 6 * following);
  while (following-- > 0) text += static_cast<char>(0x80 | (code >> 6 * following & 0x3F));
}

}  // namespace ostrel
