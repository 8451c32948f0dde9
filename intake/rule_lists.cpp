#include "intake/rule_lists.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/names.h"
#include "base/text.h"
#include "intake/match_pattern.h"
#include "intake/rule_matcher.h"

namespace ostrel {

namespace {

Message Exclamation(std::string title, std::string text) {
  return {std::move(title), std::move(text), MessageIcon::kExclamation};
}

std::size_t CountOf(std::string_view text, char first, char last) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [=](char c) { return c >= first && c <= last; }));
}

/// The tab on which a list stands, as the operator reads it.
std::string TabOf(std::size_t list) {
  if (list == kCompressList) return "Compress";
  if (list == kDiscardList) return "Discard";
  return fmt::format("Priority {}", list + 1);
}

}  // namespace

std::optional<Message> RuleLists::AddKeyword(std::size_t index) {
  auto& entryField = parts_.setup.pri1inbox[index];
  if (entryField.Get().empty()) return std::nullopt;
  const auto keyword = ToUpper(entryField.Get());
  entryField.Set(keyword);
  auto refusal = KeywordRefusal(keyword);
  if (!refusal && index != kCopiesList) refusal = DuplicateOf(keyword);
  if (refusal) return refusal;
  SetUnknown(index, "");
  const auto copies = TrimBlanks(parts_.setup.lblCopies.Get());
  parts_.setup.SetupPriList[index].Append(
      index == kCopiesList ? fmt::format("{} | C={}", keyword, copies) : keyword);
  entryField.Set("");
  return std::nullopt;
}

std::optional<Message> KeywordRefusal(const std::string& keyword) {
  constexpr auto kTooLittle = "Not enough information...";
  if (CountOf(keyword, '?', '?') + 2 > keyword.size()) {
    return Exclamation(kTooLittle,
                       "You have entered too many wildcard characters. \r\n"
                       "Please be more specific.");
  }
  if (CountOf(keyword, 'A', 'Z') < 2) {
    return Exclamation(kTooLittle,
                       "A product must contain at least two characters \r\n"
                       "other than numbers or wildcards. Please be more specific.");
  }
  if (MatchPattern(keyword, "*.*.*")) {
    return Exclamation("Incorrect format ...",
                       "A keyword cannot contain two period characters. Try again.");
  }
  return std::nullopt;
}

std::optional<Message> RuleLists::DuplicateOf(const std::string& keyword) const {
  for (std::size_t list = 0; list <= kDiscardList; ++list) {
    if (parts_.setup.SetupPriList[list].Contains(keyword)) {
      return Exclamation(
          "Duplicate Keyword...",
          fmt::format("The keyword \"{}\" already exists on the {} Tab.", keyword, TabOf(list)));
    }
  }
  return std::nullopt;
}

void RuleLists::RemoveSelectedKeywords(std::size_t index,
                                       const std::vector<std::size_t>& selected) {
  parts_.setup.SetupPriList[index].RemoveEach(selected);
}

std::vector<std::string> RuleLists::LoadRuleLists() {
  const bool hasHistory = AnyFileExists();
  std::vector<std::string> unknown;
  for (std::size_t index = 0; index < kRuleListCount; ++index) {
    if (isKnown_[index]) continue;
    const auto failure = FailureIn([&] {
      if (hasHistory) TakeLines(index, ReadFile(PathOf(index)));
    });
    SetUnknown(index, failure ? failure->text() : "");
    if (failure)
      unknown.push_back(fmt::format("{} ({})", FileNameOf(PathOf(index)), failure->text()));
  }
  if (!unknown.empty()) {
    parts_.reporting.WriteLog(
        "LoadRuleLists", fmt::format("Could not be read: {}. Until they can, files that no rule "
                                     "names are kept in KvData/RtKept.",
                                     fmt::join(unknown, ", ")));
  }
  return unknown;
}

void RuleLists::SetUnknown(std::size_t index, const std::string& why) {
  isKnown_[index] = why.empty();
  parts_.status.SetUnusable(FileNameOf(PathOf(index)), why);
}

std::string RuleLists::ReadFile(const std::string& path) const {
  if (!parts_.files.Exists(path)) throw Failure(failure_number::kFileNotFound, "missing");
  return ReadList(parts_.files, path);
}

/// One of which that cannot be said may well be there.
bool RuleLists::AnyFileExists() const {
  for (std::size_t index = 0; index < kRuleListCount; ++index) {
    bool exists = true;
    TryStep([&] { exists = parts_.files.Exists(PathOf(index)); });
    if (exists) return true;
  }
  return false;
}

bool RuleLists::AllAreKnown() const {
  return std::find(isKnown_.begin(), isKnown_.end(), false) == isKnown_.end();
}

void RuleLists::TakeLines(std::size_t index, std::string_view content) {
  std::vector<std::string> entries;
  ForEachLine(content, [&](std::string_view text) {
    auto line = ToUpper(TrimBlanks(text));
    const bool taken = index == kCopiesList ? IsCopiesEntry(line) : !line.empty();
    if (taken) entries.push_back(std::move(line));
  });
  parts_.setup.SetupPriList[index].Assign(entries);
}

RuleTexts RuleLists::Texts() const {
  RuleTexts texts;
  for (std::size_t index = 0; index < kRuleListCount; ++index) {
    if (!isKnown_[index]) continue;
    auto& text = texts[index].emplace();
    for (const auto& entry : parts_.setup.SetupPriList[index]) text.append(entry).append(kLineEnd);
  }
  return texts;
}

std::vector<std::string> RuleLists::SaveRuleLists(const RuleTexts& texts) {
  std::vector<std::string> unsaved;
  for (std::size_t index = 0; index < kRuleListCount; ++index) {
    if (!texts[index]) continue;
    TryPart(unsaved, FileNameOf(PathOf(index)),
            [&] { parts_.files.WriteAll(PathOf(index), *texts[index]); });
  }
  return unsaved;
}

std::string RuleLists::PathOf(std::size_t index) const {
  return fmt::format("{}/RtList{}.txt", parts_.programFolder, index);
}

}  // namespace ostrel
