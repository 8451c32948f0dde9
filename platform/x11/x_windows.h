// The windows of other programs, as the X server and its window manager tell of them. Everything
// here works on a connection of its own and is empty or does nothing where there is no X server.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>
#include <xcb/xcb.h>
#include <xcb/xcb_ewmh.h>

namespace ostrel {

class XWindows {
 public:
  XWindows();
  ~XWindows();
  XWindows(const XWindows&) = delete;
  XWindows& operator=(const XWindows&) = delete;

  /// False when there is no X server to talk to; nothing else may be called then.
  bool IsConnected() const { return connected_; }

  /// The top-level window with exactly this title.
  std::optional<xcb_window_t> Find(const std::string& title) const;
  /// The top-level window directly above `window`; nothing when it is the topmost.
  std::optional<xcb_window_t> Above(xcb_window_t window) const;
  /// True when both say that the same process made them.
  bool AreOfOneProcess(xcb_window_t one, xcb_window_t other) const;
  /// True while the window manager has it minimized.
  bool IsIconic(xcb_window_t window) const;

  // Both return when the window manager has been asked; it may take its time, or not do it.
  /// Un-minimizes, un-maximizes, shows and activates.
  void Restore(xcb_window_t window) const;
  void Minimize(xcb_window_t window) const;

 private:
  /// Bottom to top.
  std::vector<xcb_window_t> Stacking() const;
  std::string Title(xcb_window_t window) const;
  std::uint32_t ProcessOf(xcb_window_t window) const;
  void RoundTrip() const;

  xcb_connection_t* connection_;
  xcb_window_t root_ = XCB_NONE;
  // The library's calls want it mutable, although it is never changed after the connection stands.
  mutable xcb_ewmh_connection_t ewmh_{};
  int screen_ = 0;
  bool connected_ = false;
};

}  // namespace ostrel
