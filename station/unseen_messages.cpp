#include "station/unseen_messages.h"

#include <cstdio>
#include <fmt/format.h>

#include "base/text.h"

namespace ostrel {

namespace {

constexpr const char* kCategory = "Message";

/// The words of `text` in one line.
std::string InOneLine(const std::string& text) {
  std::string line;
  ForEachLine(text, [&](std::string_view part) {
    part = TrimBlanks(part);
    if (!part.empty()) line += (line.empty() ? "" : " ") + Printable(part);
  });
  return line;
}

}  // namespace

void UnseenMessages::Show(const Message& message,
                          const std::function<void(MessageAnswer)>& answered) {
  const auto line = InOneLine(message.text);
  fmt::print(stderr, "ostrel: {}\n", line);
  if (log_ != nullptr) log_->WriteLog(kCategory, line);
  if (answered) answered(SafeAnswer(message));
}

void UnseenMessages::ShowReport(const std::string& text) {
  fmt::print(stderr, "ostrel: {}\n", InOneLine(text));
}

}  // namespace ostrel
