// The thirteen lists of keywords that route a file by its name: entered, loaded and saved. The
// lists are those of the setup dialog; an edit is in force for the next file.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/reporting.h"
#include "platform/dialogs.h"
#include "platform/files.h"
#include "state/setup_fields.h"
#include "state/transmit_status.h"

namespace ostrel {

/// What the list files are to hold, by list index; nothing for a list that is not known.
using RuleTexts = std::array<std::optional<std::string>, kRuleListCount>;

/// What to tell the operator of a keyword, in upper case, that says too little or is none.
std::optional<Message> KeywordRefusal(const std::string& keyword);

class RuleLists {
 public:
  struct Parts {
    Files& files;
    Reporting& reporting;
    SetupFields& setup;
    TransmitStatus& status;
    const std::string& programFolder;
  };
  explicit RuleLists(const Parts& parts) : parts_(parts) {}

  // Editing
  /// Enter in the entry field of list `index`: its text is upper-cased, checked and added. One that
  /// is refused is left standing; returns what to tell the operator then.
  std::optional<Message> AddKeyword(std::size_t index);
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
  std::optional<Message> DuplicateOf(const std::string& keyword) const;
  bool AnyFileExists() const;
  std::string ReadFile(const std::string& path) const;
  /// It is not known for the reason `why`; empty when it is.
  void SetUnknown(std::size_t index, const std::string& why);
  void TakeLines(std::size_t index, std::string_view content);
  std::string PathOf(std::size_t index) const;

  Parts parts_;
  /// What stands in the file of an unknown list may be anything, so it is not replaced.
  std::array<bool, kRuleListCount> isKnown_{};
};

}  // namespace ostrel
