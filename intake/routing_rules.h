// The routing rules: thirteen lists of keywords that decide by a file's name alone what becomes of
// it. The lists are those of the setup dialog; an edit is in force for the next file.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/reporting.h"
#include "platform/dialogs.h"
#include "platform/files.h"
#include "state/setup.h"

namespace ostrel {

/// Where a rule sends a file, and which entry says so.
struct Target {
  std::size_t list;  // 0 to 10
  std::string keyword;
  /// 1 to 10 for the priorities, 11 for block compression.
  int folder() const { return static_cast<int>(list) + 1; }
};

/// One entry of the Copies list: "ZFP* | C=3". The count includes the received file.
struct CopiesEntry {
  std::string keyword;
  int count;
};
CopiesEntry ParseCopiesEntry(std::string_view entry);

/// What the list files are to hold, by list index; nothing for a list that is not known.
using RuleTexts = std::array<std::optional<std::string>, kRuleListCount>;

class RoutingRules {
 public:
  struct Parts {
    Files& files;
    Dialogs& dialogs;
    Reporting& reporting;
    Setup& setup;
    const std::string& programFolder;
  };
  explicit RoutingRules(const Parts& parts) : parts_(parts) {}

  // Evaluation. `name` is the name as received, in upper case.
  /// The Discard keyword that throws the file away, if any.
  std::optional<std::string> DiscardedBy(std::string_view name) const;
  /// The Copies entries that the name itself matches, in list order. A numbered copy makes none.
  std::vector<CopiesEntry> CopiesOf(std::string_view name) const;
  /// The first list of 0 to 10 with a matching keyword; nothing when no rule names the file.
  std::optional<Target> TargetOf(std::string_view name) const;

  // Editing
  /// Enter in the entry field of list `index`: its text is upper-cased, checked and added, or
  /// refused with a message and left standing.
  void AddKeyword(std::size_t index);
  /// Removes the entries at the selected positions.
  void RemoveSelectedKeywords(std::size_t index, const std::vector<std::size_t>& selected);

  // Files RtList0.txt to RtList12.txt in the program folder
  /// Reads every list that is not known yet, and leaves those that are as they stand. A new station
  /// has no file and empty lists; where any of the files lies, one that is missing was lost. What
  /// is lost or cannot be read stays unknown. Returns a name and a reason for each of these; one
  /// log line names them.
  std::vector<std::string> LoadRuleLists();
  /// True when every list was read from its file, or edited since: a file that no rule names is
  /// truly named by none.
  bool AllAreKnown() const;
  RuleTexts Texts() const;
  /// Writes the files of these lists anew. Returns a name and a reason for each that could not
  /// be written; the others are.
  std::vector<std::string> SaveRuleLists(const RuleTexts& texts);

 private:
  std::optional<Message> Refusal(std::size_t index, const std::string& keyword) const;
  std::optional<Message> DuplicateOf(const std::string& keyword) const;
  bool AnyFileExists() const;
  std::string ReadFile(const std::string& path) const;
  void TakeLines(std::size_t index, std::string_view content);
  std::string PathOf(std::size_t index) const;

  Parts parts_;
  /// What stands in the file of an unknown list may be anything, so it is not replaced.
  std::array<bool, kRuleListCount> isKnown_{};
};

}  // namespace ostrel
