// Decides by a file's name alone what becomes of it, as the thirteen rule lists stand at that
// moment.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "state/list_field.h"
#include "state/setup_fields.h"

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
/// True for a line that can be an entry of the Copies list.
bool IsCopiesEntry(std::string_view line);

class RuleMatcher {
 public:
  /// The lists, by their index; they must outlive the matcher.
  explicit RuleMatcher(const RuleListFields& lists) : lists_(lists) {}

  // `name` is the name as received, in upper case.
  /// The Discard keyword that throws the file away, if any.
  std::optional<std::string> DiscardedBy(std::string_view name) const;
  /// The Copies entries that the name itself matches, in list order. A numbered copy makes none.
  std::vector<CopiesEntry> CopiesOf(std::string_view name) const;
  /// The first list of 0 to 10 with a matching keyword; nothing when no rule names the file.
  std::optional<Target> TargetOf(std::string_view name) const;

 private:
  const RuleListFields& lists_;
};

}  // namespace ostrel
