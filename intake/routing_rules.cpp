#include "intake/routing_rules.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/names.h"
#include "base/numbers.h"
#include "base/text.h"
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

bool IsCopiesLine(std::string_view line) {
  return line.find(kCountMark) != std::string_view::npos &&
         line.find(kCopiesMark) != std::string_view::npos;
}

}  // namespace

CopiesEntry ParseCopiesEntry(std::string_view entry) {
  const auto count = entry.find(kCountMark);
  return {std::string(entry.substr(0, entry.find(kCopiesMark))),
          count == std::string_view::npos
              ? 0
              : LeadingInteger(entry.substr(count + kCountMark.size()))};
}

std::optional<std::string> RoutingRules::DiscardedBy(std::string_view name) const {
  const auto* keyword = FirstMatch(parts_.setup.SetupPriList[kDiscardList], StripDupSuffix(name));
  return keyword ? std::optional(*keyword) : std::nullopt;
}

std::vector<CopiesEntry> RoutingRules::CopiesOf(std::string_view name) const {
  std::vector<CopiesEntry> matching;
  if (IsNumberedCopy(name)) return matching;  // or copies would be copied without end
  for (const auto& line : parts_.setup.SetupPriList[kCopiesList]) {
    auto entry = ParseCopiesEntry(line);
    if (MatchPattern(name, entry.keyword)) matching.push_back(std::move(entry));
  }
  return matching;
}

std::optional<Target> RoutingRules::TargetOf(std::string_view name) const {
  const auto product = StripDupSuffix(name);
  for (std::size_t list = 0; list <= kCompressList; ++list) {
    if (const auto* keyword = FirstMatch(parts_.setup.SetupPriList[list], product))
      return Target{list, *keyword};
  }
  return std::nullopt;
}

void RoutingRules::AddKeyword(std::size_t index) {
  auto& entryField = parts_.setup.pri1inbox[index];
  if (entryField.Get().empty()) return;
  const auto keyword = ToUpper(entryField.Get());
  entryField.Set(keyword);
  if (const auto refusal = Refusal(index, keyword)) {
    parts_.dialogs.ShowMessage(*refusal);
    return;
  }
  unread_[index] = false;
  const auto copies = TrimBlanks(parts_.setup.lblCopies.Get());
  parts_.setup.SetupPriList[index].Append(
      index == kCopiesList ? fmt::format("{} | C={}", keyword, copies) : keyword);
  entryField.Set("");
}

std::optional<Message> RoutingRules::Refusal(std::size_t index, const std::string& keyword) const {
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
  return index == kCopiesList ? std::nullopt : DuplicateOf(keyword);
}

std::optional<Message> RoutingRules::DuplicateOf(const std::string& keyword) const {
  for (std::size_t list = 0; list <= kDiscardList; ++list) {
    if (parts_.setup.SetupPriList[list].Contains(keyword)) {
      return Exclamation(
          "Duplicate Keyword...",
          fmt::format("The keyword \"{}\" already exists on the {} Tab.", keyword, TabOf(list)));
    }
  }
  return std::nullopt;
}

void RoutingRules::RemoveSelectedKeywords(std::size_t index,
                                          const std::vector<std::size_t>& selected) {
  if (selected.empty()) return;
  unread_[index] = false;
  parts_.setup.SetupPriList[index].RemoveEach(selected);
}

void RoutingRules::LoadRuleLists() {
  for (std::size_t index = 0; index < kRuleListCount; ++index) {
    unread_[index] = !RunStep(
        parts_.reporting, "LoadRuleLists", [&] { LoadList(index); },
        " File Name: " + PathOf(index));
  }
}

void RoutingRules::LoadList(std::size_t index) {
  std::vector<std::string> entries;
  if (parts_.files.Exists(PathOf(index))) {
    ForEachLine(parts_.files.ReadAll(PathOf(index)), [&](std::string_view text) {
      auto line = ToUpper(TrimBlanks(text));
      const bool taken = index == kCopiesList ? IsCopiesLine(line) : !line.empty();
      if (taken) entries.push_back(std::move(line));
    });
  }
  parts_.setup.SetupPriList[index].Assign(entries);
}

std::vector<std::string> RoutingRules::SaveRuleLists() {
  std::vector<std::string> unsaved;
  for (std::size_t index = 0; index < kRuleListCount; ++index) {
    if (unread_[index]) continue;
    std::string content;
    for (const auto& entry : parts_.setup.SetupPriList[index])
      content.append(entry).append(kLineEnd);
    const bool saved = RunStep(
        parts_.reporting, "SaveRuleLists", [&] { parts_.files.WriteAll(PathOf(index), content); },
        " File Name: " + PathOf(index));
    if (!saved) unsaved.emplace_back(FileNameOf(PathOf(index)));
  }
  return unsaved;
}

std::string RoutingRules::PathOf(std::size_t index) const {
  return fmt::format("{}/RtList{}.txt", parts_.programFolder, index);
}

}  // namespace ostrel
