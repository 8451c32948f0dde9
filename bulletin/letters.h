// The characters of bulletins: upper-case ASCII letters and digits, in fields of fixed width.
#pragma once

#include <algorithm>
#include <optional>
#include <string_view>

namespace ostrel {

constexpr bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
constexpr bool IsUpper(char c) {
  return c >= 'A' && c <= 'Z';
}
constexpr bool IsUpperOrDigit(char c) {
  return IsUpper(c) || IsDigit(c);
}

/// False for an empty text.
template <typename Test>
constexpr bool ConsistsOf(std::string_view text, Test&& test) {
  return !text.empty() && std::all_of(text.begin(), text.end(), test);
}

/// The number that `text` is: one to nine digits, nothing else.
constexpr std::optional<int> WholeNumber(std::string_view text) {
  if (text.size() > 9 || !ConsistsOf(text, IsDigit)) return std::nullopt;
  int number = 0;
  for (const char c : text) number = number * 10 + (c - '0');
  return number;
}

/// Takes the next word, up to a blank or a comma, off `text`; empty where there is none.
constexpr std::string_view TakeWord(std::string_view& text) {
  constexpr std::string_view kBetween = " \t,";
  text.remove_prefix(std::min(text.find_first_not_of(kBetween), text.size()));
  const auto word = text.substr(0, text.find_first_of(kBetween));
  text.remove_prefix(word.size());
  return word;
}

}  // namespace ostrel
