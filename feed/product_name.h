// The names under which receivers lay down products, and the short name that the station takes.
#pragma once

#include <optional>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// What a name tells.
struct ProductName {
  std::string name = {};  // short: "TORDMXIA.TXT"
  int urgency = 0;        // 1, the most urgent, to 4; 0 when the name tells none
  friend bool operator==(const ProductName&, const ProductName&) = default;
};

/// `given` in upper case when it is a short name: one to eight letters, digits, hyphens or
/// underscores, a period, and one to three letters or digits. Nothing for any other name.
std::optional<std::string> ReadShortName(std::string_view given);

/// Takes a long name apart: "A_WFUS53KDMX161430_C_KWIN_20260516143012_123456-1-TORDMXIA.TXT", the
/// form of the WMO's general file naming (Manual on the GTS, attachment II-15) with the service's
/// own last part. What stands there: a letter; the bulletin's heading (ten letters or digits, day,
/// hour and minute, and three letters for a correction or an amendment); "C"; who sent it; the time
/// in UTC; a serial number, the urgency, and behind the last hyphen the short name. Nothing for any
/// other name.
std::optional<ProductName> ReadLongName(std::string_view given);

/// What a name that has neither form becomes: where `pattern` (ECMAScript, the whole name, without
/// regard to case) fits, `name` with "$1" for its groups.
struct NameRule {
  std::string pattern, name;
};

class NameRules {
 public:
  /// Throws std::runtime_error for a pattern that is none.
  explicit NameRules(const std::vector<NameRule>& rules);

  /// The name that the station takes: by its form, or by the first rule whose pattern fits and
  /// whose outcome is a short name; of a numbered copy the name without its number, where the whole
  /// one has none. Nothing for an unknown one, and for one longer than a folder holds.
  std::optional<ProductName> NameOf(std::string_view given) const;

 private:
  struct Rule {
    std::regex pattern;
    std::string name;
  };
  std::vector<Rule> rules_;
};

/// `given` as a file may be called in any folder: nothing of a path, no control characters, not
/// hidden, not too long. "unnamed" where nothing is left.
std::string HarmlessName(std::string_view given);

}  // namespace ostrel
