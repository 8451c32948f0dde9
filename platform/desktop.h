// Other programs on the same desktop: the companion ingest programs, the text editor, the browser.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace ostrel {

class Desktop {
 public:
  virtual ~Desktop() = default;

  /// True when a top-level window has exactly this title; without a window system, when a process
  /// of the ingest program of that name runs.
  virtual bool WindowExists(const std::string& title) = 0;
  /// Restores the window just above the one with this title, if it belongs to the same program,
  /// else that one itself. Does nothing when there is none of this title.
  virtual void RestoreWindowAbove(const std::string& title) = 0;
  /// Starts a program that is not waited for, minimized where the window system can. Throws as
  /// Start does.
  virtual void StartMinimized(const std::vector<std::string>& command) = 0;
  /// Starts a program that is not waited for. Throws Failure 53 when it cannot be started, and 70
  /// when somebody other than root and the running account could have put it where it lies.
  virtual void Start(const std::vector<std::string>& command) = 0;
  /// The desktop's "open" action for a web address or a mail link.
  virtual void OpenAddress(const std::string& address) = 0;
  /// The desktop's editor for plain text. Does not wait for it: `failed` is called later, as one of
  /// the window's events, when it turns out that none starts.
  virtual void OpenText(const std::string& path, std::function<void()> failed) = 0;
};

}  // namespace ostrel
