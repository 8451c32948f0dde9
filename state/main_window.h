// What the main window shows. The names are those of its elements; the window binds each element to
// its field.
#pragma once

#include <fmt/format.h>
#include <string>

#include "base/priority.h"
#include "state/field.h"
#include "state/list_field.h"

namespace ostrel {

/// Background of a field; kNone is the window's own.
enum class Shade { kNone, kLightGrey, kYellow, kRed };

/// The activity light: dark until data first flows.
enum class Light { kNone, kRed, kYellow };

struct MainWindow {
  Field<std::string> lblStatus2;
  Field<std::string> lblActivefile;
  Field<Shade> lblActivefileBackColor{Shade::kLightGrey};
  Field<std::string> lblBlkPktNum;
  Field<std::string> lblBlkPktTot;
  Field<Light> imgActivity{Light::kNone};
  Field<std::string> lblFilesSent;
  Field<std::string> lblDataRate;
  Field<Shade> lblDataRateBackColor{Shade::kNone};
  Field<std::string> lblCompressionRatio;
  Field<std::string> lblThroughput;
  PerPriority<Field<std::string>> lblSending;
  PerPriority<ListField> PriorityList;

  MainWindow() {
    for (const Priority p : AllPriorities()) lblSending[p].Set(IdleCaption(p));
  }

  /// "Priority 1": the caption of a queue with no file in transmission.
  static std::string IdleCaption(Priority p) { return fmt::format("Priority {}", p.number()); }
};

}  // namespace ostrel
