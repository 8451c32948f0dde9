// A notice of the desktop: what its notification service shows beside the windows, for as long as
// it shows such. Where there is no such service nothing happens.
#pragma once

#include <QString>

namespace ostrel {

class DesktopNotices {
 public:
  /// Looks for the session's bus, which may take its time: before there is something to send.
  DesktopNotices();

  /// Hands the notice over and waits for nobody.
  void Show(const QString& title, const QString& text);
};

}  // namespace ostrel
