// Text as the station means it: bytes, ASCII case only, and the blank as the one thing that is
// trimmed.
#pragma once

#include <string>
#include <string_view>

namespace ostrel {

inline constexpr std::string_view kLineEnd = "\r\n";
/// What some editors put in front of a text of UTF-8.
inline constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

/// ASCII letters only; every other byte stays as it is.
std::string ToUpper(std::string_view text);
std::string ToLower(std::string_view text);

/// Without leading and trailing blanks (0x20).
std::string_view TrimBlanks(std::string_view text);

/// `text` with blanks on the right up to `width`, or cut to its first `width` characters.
std::string PadOrCut(std::string_view text, std::size_t width);

/// `text` with its control characters and its bytes outside ASCII written out, a line end as
/// "\x0A": what strangers named or wrote stays within the line that it is shown in, and turns
/// nothing round.
std::string Printable(std::string_view text);

/// `line` without an editor's mark in front, or several, and the blanks before them.
std::string_view WithoutMark(std::string_view line);

/// The lines of a text file, without their ends. CR LF, LF and CR all end a line; a last line
/// needs no end. The mark of an editor is part of none: files joined by hand have it in their
/// midst.
template <typename Visit>
void ForEachLine(std::string_view content, Visit&& visit) {
  while (!content.empty()) {
    const auto end = content.find_first_of("\r\n");
    visit(WithoutMark(content.substr(0, end)));
    if (end == std::string_view::npos) return;
    const bool pair = content[end] == '\r' && end + 1 < content.size() && content[end + 1] == '\n';
    content.remove_prefix(end + (pair ? 2 : 1));
  }
}

}  // namespace ostrel
