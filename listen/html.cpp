#include "listen/html.h"

#include <ctime>
#include <fmt/chrono.h>
#include <fmt/format.h>

#include "base/text.h"

namespace ostrel {

std::string Html(std::string_view text) {
  std::string html;
  for (const char c : Printable(text)) {
    switch (c) {
      case '&':
        html += "&amp;";
        break;
      case '<':
        html += "&lt;";
        break;
      case '>':
        html += "&gt;";
        break;
      case '"':
        html += "&quot;";
        break;
      case '\'':
        html += "&#39;";
        break;
      default:
        html += c;
    }
  }
  return html;
}

std::string HtmlLines(std::string_view text) {
  std::string html;
  std::string line;
  const auto end = [&] {
    html += Html(line) + "\n";
    line.clear();
  };
  // Transmission ends lines with one or two CR and an LF, and frames the text with SOH and ETX.
  for (const char c : text) {
    if (c == '\n')
      end();
    else if (c == '\t')
      line += "    ";
    else if (c != '\r' && c != '\x01' && c != '\x03')
      line += c;
  }
  if (!line.empty()) end();
  return html;
}

std::string HtmlTime(UtcTime time) {
  const std::time_t second = std::chrono::floor<seconds>(time).time_since_epoch().count();
  return fmt::format(R"(<time datetime="{:%Y-%m-%dT%H:%M:%SZ}">{:%a %H:%M}</time>)",
                     fmt::gmtime(second), fmt::localtime(second));
}

std::string PathPart(std::string_view name) {
  std::string part;
  for (const unsigned char c : name) {
    const bool isPlain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    part += isPlain ? std::string(1, static_cast<char>(c)) : fmt::format("%{:02X}", c);
  }
  return part;
}

}  // namespace ostrel
