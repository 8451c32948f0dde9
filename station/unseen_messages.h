// Messages of a station that has no window: they go to standard error, where the service manager
// keeps what programs say, and to the log.
#pragma once

#include <functional>

#include "base/reporting.h"
#include "platform/dialogs.h"

namespace ostrel {

class UnseenMessages {
 public:
  /// From now on messages go to the log as well.
  void LogTo(Reporting& log) { log_ = &log; }

  /// `answered` gets the answer that changes nothing before this returns.
  void Show(const Message& message, const std::function<void(MessageAnswer)>& answered);
  /// A report that the log has already, or cannot take.
  static void ShowReport(const std::string& text);

 private:
  Reporting* log_ = nullptr;
};

}  // namespace ostrel
