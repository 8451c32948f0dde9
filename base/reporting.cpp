#include "base/reporting.h"

#include <fmt/format.h>

#include "base/text.h"

namespace ostrel {

namespace {
constexpr std::int32_t kUnforeseen = 5;
}

std::string AdditionalText::Shown() const {
  std::string text;
  for (const auto& line : lines_) {
    if (&line != &lines_.front()) text += kLineEnd;
    text += Printable(line);
  }
  return text;
}

Failure AsFailure(const std::exception& error) {
  if (const auto* failure = dynamic_cast<const Failure*>(&error)) return *failure;
  return Failure(kUnforeseen, error.what());
}

std::string DescribeFailure(const Failure& failure) {
  return fmt::format("Error # {}, {}, {}, in {}", failure.number(), Printable(failure.text()),
                     kNoReference, Printable(failure.source()));
}

}  // namespace ostrel
