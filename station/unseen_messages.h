// Messages of a station that has no window: they go to standard error, where the service manager
// keeps what programs say, and to the log.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "base/reporting.h"
#include "platform/clock.h"
#include "platform/dialogs.h"

namespace ostrel {

class UnseenMessages {
 public:
  explicit UnseenMessages(const Clock& clock) : clock_(clock) {}

  /// From now on messages go to the log as well.
  void LogTo(Reporting& log) { log_ = &log; }

  /// `answered` gets the answer that changes nothing before this returns.
  void Show(const Message& message, const std::function<void(MessageAnswer)>& answered);
  /// A report that the log has already, or cannot take. One that comes again and again is said
  /// once, and then once a minute, with how often it came meanwhile.
  void ShowReport(const std::string& text);

 private:
  struct Repeated {
    milliseconds said;  // monotonic
    int unsaid = 0;
  };

  const Clock& clock_;
  std::map<std::string, Repeated> reports_;  // by their text, without the time
  Reporting* log_ = nullptr;
};

}  // namespace ostrel
