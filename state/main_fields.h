// What the main window shows. The window binds each element to the field of its name.
#pragma once

#include <fmt/format.h>
#include <string>

#include "base/priority.h"
#include "state/element.h"
#include "state/field.h"
#include "state/list_field.h"

namespace ostrel {

/// Background of a field; kNone is the window's own.
enum class Shade { kNone, kLightGrey, kYellow, kRed };

/// The activity light: dark until data first flows.
enum class Light { kNone, kRed, kYellow };

struct MainFields {
  Field<std::string> lblStatus2{"lblStatus2"};
  Field<std::string> lblActivefile{"lblActivefile"};
  Field<Shade> lblActivefileBackColor{"lblActivefileBackColor", Shade::kLightGrey};
  Field<std::string> lblBlkPktNum{"lblBlkPktNum"};
  Field<std::string> lblBlkPktTot{"lblBlkPktTot"};
  Field<Light> imgActivity{"imgActivity", Light::kNone};
  Field<std::string> imgActivityToolTip{"imgActivityToolTip"};  // which station it is
  Field<std::string> lblFilesSent{"lblFilesSent"};
  Field<std::string> lblDataRate{"lblDataRate"};
  Field<Shade> lblDataRateBackColor{"lblDataRateBackColor", Shade::kNone};
  Field<std::string> lblDataRateToolTip{"lblDataRateToolTip"};  // why the port did not open
  Field<std::string> lblCompressionRatio{"lblCompressionRatio"};
  Field<std::string> lblThroughput{"lblThroughput"};
  PerPriority<Field<std::string>> lblSending{[](Priority p) {
    return Field<std::string>(ElementName("lblSending", p.index()), IdleCaption(p));
  }};
  PerPriority<ListField> PriorityList{Element<ListField>("PriorityList")};

  /// "Priority 1": the caption of a queue with no file in transmission.
  static std::string IdleCaption(Priority p) { return fmt::format("Priority {}", p.number()); }
};

}  // namespace ostrel
