#include "profile/line_checks.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>

#include "base/text.h"
#include "ident/morse_code.h"
#include "ident/schedule.h"
#include "intake/match_pattern.h"
#include "intake/rule_lists.h"
#include "intake/rule_matcher.h"

namespace ostrel {

namespace {

bool IsCopies(const ProfileEntry& list) {
  return list.Name() == "rules.copies";
}

/// As the station reads it.
std::string KeywordIn(const ProfileEntry& list, const std::string& line) {
  const auto entry = ToUpper(TrimBlanks(line));
  return IsCopies(list) ? ParseCopiesEntry(entry).keyword : entry;
}

/// The dialog's words, in one line.
std::string InOneLine(std::string text) {
  for (auto at = text.find(kLineEnd); at != std::string::npos; at = text.find(kLineEnd))
    text.erase(at, kLineEnd.size());
  return text;
}

std::string RuleDoubt(const ProfileEntry& list, const std::string& line) {
  const auto entry = ToUpper(TrimBlanks(line));
  const bool hasCount = IsCopiesEntry(entry) && ParseCopiesEntry(entry).count > 0;
  if (IsCopies(list) && !hasCount) return "it must end in a number of copies, \" | C=2\" say.";
  const auto refusal = KeywordRefusal(KeywordIn(list, line));
  if (refusal) return InOneLine(refusal->text);
  return IsPattern(KeywordIn(list, line)) ? "" : "it is no pattern and matches nothing.";
}

std::string DoubtOf(const ProfileEntry& list, const std::string& line) {
  if (list.table == "rules") return RuleDoubt(list, line);
  if (list.table == "schedule" && !IsScheduleEntry(TrimBlanks(line)))
    return "it must be a time (hh:mm), a blank, the source, a blank, and the destination.";
  if (list.table == "morse" && !line.empty() && !IsMorseLine(line))
    return "it must be a sign and its code of dots and dashes.";
  if (list.table == "morse" && !line.empty() && !IsFilledUp(line))
    return "without blanks up to column 7 the next line's code is keyed with it.";
  return {};
}

/// Calls `visit` with each line, whether it is new, and where it stands.
template <typename Visit>
void ForEachLineOf(const ProfileChange& change, const Visit& visit) {
  const auto& list = change.to;
  const auto before = change.from ? change.from->values : std::vector<std::string>();
  for (std::size_t i = 0; list.isList && i < list.values.size(); ++i) {
    const auto& line = list.values[i];
    const bool isNew = std::find(before.begin(), before.end(), line) == before.end();
    visit(line, isNew, fmt::format("line {}: \"{}\": ", list.lines[i], line));
  }
}

/// In which list each keyword stands. Copies may be of what stands elsewhere.
class Keywords {
 public:
  /// Returns the list in which it stands already; empty when it stood in none.
  std::string Add(const ProfileEntry& list, const std::string& line) {
    if (list.table != "rules" || IsCopies(list)) return {};
    const auto [at, isFirst] = listOf_.try_emplace(KeywordIn(list, line), list.key);
    return isFirst ? "" : at->second;
  }

 private:
  std::map<std::string, std::string> listOf_;
};

}  // namespace

std::vector<std::string> DoubtsOf(const std::vector<ProfileChange>& changes,
                                  const std::vector<ProfileEntry>& staying) {
  Keywords keywords;
  for (const auto& list : staying) {
    for (const auto& line : list.values) keywords.Add(list, line);
  }
  for (const auto& change : changes) {
    ForEachLineOf(change, [&](const auto& line, bool isNew, const auto&) {
      if (!isNew) keywords.Add(change.to, line);
    });
  }
  std::vector<std::string> doubts;
  for (const auto& change : changes) {
    ForEachLineOf(change, [&](const auto& line, bool isNew, const auto& where) {
      if (!isNew) return;
      auto doubt = DoubtOf(change.to, line);
      const auto other = keywords.Add(change.to, line);
      if (doubt.empty() && !other.empty()) doubt = fmt::format("it stands in {} already.", other);
      if (!doubt.empty()) doubts.push_back(where + doubt);
    });
  }
  return doubts;
}

}  // namespace ostrel
