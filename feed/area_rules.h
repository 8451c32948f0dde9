// Which products concern a station, by the areas that they are for. A product that has none, or
// that could not be read for certain, concerns everybody.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bulletin/areas.h"
#include "bulletin/bulletin.h"

namespace ostrel {

/// A rule fits a product that has all that it names; one that names nothing fits every product.
struct AreaRule {
  std::vector<std::string> codes = {};    // patterns of areas: "IAC153", "IAC*"
  std::optional<Circle> within = {};      // kilometres around a place
  std::vector<std::string> kinds = {};    // "TOR"
  std::vector<std::string> offices = {};  // "KDMX"
  bool isTaken = true;
};

/// The names of areas that come along, and before them those of Areas.tsv in the station's folder.
/// Throws Failure where that is there and cannot be read, or has another form.
Areas AreasOf(const std::string& station);

/// "IAC*, within 50 km of 42.03 -93.62": what the rule names, for operators; "the rest" for
/// nothing.
std::string Spell(const AreaRule& rule);

class AreaRules {
 public:
  /// `areas` must outlive this.
  AreaRules(std::vector<AreaRule> rules, const Areas& areas)
      : rules_(std::move(rules)), areas_(areas) {}

  /// The first rule that fits, where it passes the product over; nullptr where it is to be
  /// delivered. `now` is when it came.
  const AreaRule* PassedOverBy(std::string_view product, UtcTime now) const;
  const std::vector<AreaRule>& rules() const { return rules_; }

 private:
  /// What a bulletin has of what rules name.
  struct Traits;
  enum class Fit { kNo, kYes, kUnknown };

  Fit FitOf(const AreaRule& rule, const Traits& traits) const;
  Fit FitWithin(const Circle& circle, const Traits& traits) const;
  Traits TraitsOf(const Bulletin& bulletin) const;

  std::vector<AreaRule> rules_;
  const Areas& areas_;
};

}  // namespace ostrel
