// What waits and what was, for people and for programs.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "programs/queue/past_products.h"

namespace ostrel {

/// In lines, in ASCII; what is no UTF-8 is replaced.
std::string JsonLines(const nlohmann::ordered_json& value);

/// The name of the "station", its "entries" and what it has "held", as its answers have them, and
/// "intakePaused".
std::string QueueTable(const nlohmann::ordered_json& lists);

/// What was set aside, as the station's answer has it.
std::string QuarantineTable(const nlohmann::ordered_json& items);

/// The history as it is written out, part by part.
class HistoryText {
 public:
  enum class Form {
    kTable,
    kCsv,   // with a line of headings; times in UTC
    kJson,  // one array, a product a line
  };

  explicit HistoryText(Form form) : form_(form) {}

  /// Some more of it.
  std::string Of(const std::vector<PastProduct>& part);
  /// What follows the last part.
  std::string End();

 private:
  std::string Begin();

  Form form_;
  bool isBegun_ = false;
};

}  // namespace ostrel
