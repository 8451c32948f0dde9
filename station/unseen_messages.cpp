#include "station/unseen_messages.h"

#include <cstdio>
#include <fmt/format.h>

#include "base/text.h"

namespace ostrel {

namespace {

constexpr const char* kCategory = "Message";

constexpr milliseconds kInterval{60'000}, kForgottenAfter{600'000};

/// The words of `text` in one line.
std::string InOneLine(const std::string& text, std::string_view butThatWith = {}) {
  std::string line;
  ForEachLine(text, [&](std::string_view part) {
    part = TrimBlanks(part);
    const bool isLeftOut = !butThatWith.empty() && part.starts_with(butThatWith);
    if (!part.empty() && !isLeftOut) line += (line.empty() ? "" : " ") + Printable(part);
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
  const auto now = clock_.Monotonic();
  std::erase_if(reports_, [&](const auto& report) {
    const auto age = now - report.second.said;
    return age >= kInterval && (report.second.unsaid == 0 || age >= kForgottenAfter);
  });
  const auto [report, isNew] = reports_.try_emplace(InOneLine(text, "At "), Repeated{now});
  auto& [said, unsaid] = report->second;
  if (!isNew && now - said < kInterval) {
    ++unsaid;
    return;
  }
  const auto repeats = isNew ? "" : fmt::format(" (and {} times since the last line)", unsaid);
  fmt::print(stderr, "ostrel: {}{}\n", InOneLine(text), repeats);
  report->second = {now};
}

}  // namespace ostrel
