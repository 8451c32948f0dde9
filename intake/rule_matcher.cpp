#include "intake/rule_matcher.h"

#include <utility>

#include "base/names.h"
#include "base/numbers.h"
#include "intake/match_pattern.h"

namespace ostrel {

namespace {

constexpr std::string_view kCopiesMark = " |";
constexpr std::string_view kCountMark = "C=";

const std::string* FirstMatch(const ListField& keywords, std::string_view name) {
  for (const auto& keyword : keywords) {
    if (MatchPattern(name, keyword)) return &keyword;
  }
  return nullptr;
}

}  // namespace

CopiesEntry ParseCopiesEntry(std::string_view entry) {
  const auto count = entry.find(kCountMark);
  return {std::string(entry.substr(0, entry.find(kCopiesMark))),
          count == std::string_view::npos
              ? 0
              : LeadingInteger(entry.substr(count + kCountMark.size()))};
}

bool IsCopiesEntry(std::string_view line) {
  return line.find(kCountMark) != std::string_view::npos &&
         line.find(kCopiesMark) != std::string_view::npos;
}

std::optional<std::string> RuleMatcher::DiscardedBy(std::string_view name) const {
  const auto* keyword = FirstMatch(lists_[kDiscardList], StripDupSuffix(name));
  return keyword ? std::optional(*keyword) : std::nullopt;
}

std::vector<CopiesEntry> RuleMatcher::CopiesOf(std::string_view name) const {
  std::vector<CopiesEntry> matching;
  if (IsNumberedCopy(name)) return matching;  // or copies would be copied without end
  for (const auto& line : lists_[kCopiesList]) {
    auto entry = ParseCopiesEntry(line);
    if (MatchPattern(name, entry.keyword)) matching.push_back(std::move(entry));
  }
  return matching;
}

std::optional<Target> RuleMatcher::TargetOf(std::string_view name) const {
  const auto product = StripDupSuffix(name);
  for (std::size_t list = 0; list <= kCompressList; ++list) {
    if (const auto* keyword = FirstMatch(lists_[list], product)) return Target{list, *keyword};
  }
  return std::nullopt;
}

}  // namespace ostrel
