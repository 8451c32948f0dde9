#include "platform/x11/x_windows.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace ostrel {
namespace {

struct FreeReply {
  void operator()(void* reply) const { std::free(reply); }
};
template <typename T>
using Reply = std::unique_ptr<T, FreeReply>;

constexpr std::uint32_t kLongestTitle = 256;  // in units of four bytes
constexpr std::uint32_t kIconicState = 3;     // of the WM_CHANGE_STATE message

}  // namespace

XWindows::XWindows() : connection_(xcb_connect(nullptr, &screen_)) {
  if (xcb_connection_has_error(connection_) != 0) return;
  auto* const cookies = xcb_ewmh_init_atoms(connection_, &ewmh_);
  if (xcb_ewmh_init_atoms_replies(&ewmh_, cookies, nullptr) == 0) return;
  root_ = ewmh_.screens[screen_]->root;
  connected_ = true;
}

XWindows::~XWindows() {
  if (connected_) xcb_ewmh_connection_wipe(&ewmh_);
  xcb_disconnect(connection_);
}

std::optional<xcb_window_t> XWindows::Find(const std::string& title) const {
  const auto windows = Stacking();
  const auto found = std::find_if(windows.rbegin(), windows.rend(),
                                  [&](xcb_window_t window) { return Title(window) == title; });
  return found == windows.rend() ? std::nullopt : std::optional(*found);
}

std::optional<xcb_window_t> XWindows::Above(xcb_window_t window) const {
  const auto windows = Stacking();
  const auto found = std::find(windows.begin(), windows.end(), window);
  if (found == windows.end() || found + 1 == windows.end()) return std::nullopt;
  return *(found + 1);
}

bool XWindows::AreOfOneProcess(xcb_window_t one, xcb_window_t other) const {
  const auto process = ProcessOf(one);
  return process != 0 && process == ProcessOf(other);
}

bool XWindows::IsIconic(xcb_window_t window) const {
  xcb_ewmh_get_atoms_reply_t states;
  const auto cookie = xcb_ewmh_get_wm_state(&ewmh_, window);
  if (xcb_ewmh_get_wm_state_reply(&ewmh_, cookie, &states, nullptr) == 0) return false;
  xcb_atom_t* const end = states.atoms + states.atoms_len;
  const bool isHidden = std::find(states.atoms, end, ewmh_._NET_WM_STATE_HIDDEN) != end;
  xcb_ewmh_get_atoms_reply_wipe(&states);
  return isHidden;
}

void XWindows::Restore(xcb_window_t window) const {
  xcb_map_window(connection_, window);
  xcb_ewmh_request_change_wm_state(
      &ewmh_, screen_, window, XCB_EWMH_WM_STATE_REMOVE, ewmh_._NET_WM_STATE_MAXIMIZED_VERT,
      ewmh_._NET_WM_STATE_MAXIMIZED_HORZ, XCB_EWMH_CLIENT_SOURCE_TYPE_OTHER);
  xcb_ewmh_request_change_active_window(&ewmh_, screen_, window, XCB_EWMH_CLIENT_SOURCE_TYPE_OTHER,
                                        XCB_CURRENT_TIME, XCB_NONE);
  RoundTrip();
}

void XWindows::Minimize(xcb_window_t window) const {
  const std::string name = "WM_CHANGE_STATE";
  const Reply<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
      connection_,
      xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.c_str()),
      nullptr));
  if (!atom) return;
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = window;
  event.type = atom->atom;
  event.data.data32[0] = kIconicState;
  xcb_send_event(connection_, 0, root_,
                 XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                 reinterpret_cast<const char*>(&event));
  RoundTrip();
}

std::vector<xcb_window_t> XWindows::Stacking() const {
  xcb_ewmh_get_windows_reply_t clients;
  for (const auto& [ask, take] :
       {std::pair(&xcb_ewmh_get_client_list_stacking, &xcb_ewmh_get_client_list_stacking_reply),
        std::pair(&xcb_ewmh_get_client_list, &xcb_ewmh_get_client_list_reply)}) {
    if (take(&ewmh_, ask(&ewmh_, screen_), &clients, nullptr) == 0) continue;
    std::vector<xcb_window_t> windows(clients.windows, clients.windows + clients.windows_len);
    xcb_ewmh_get_windows_reply_wipe(&clients);
    return windows;
  }
  // No window manager that keeps a list: the root's own children, which come in stacking order.
  const Reply<xcb_query_tree_reply_t> tree(
      xcb_query_tree_reply(connection_, xcb_query_tree(connection_, root_), nullptr));
  if (!tree) return {};
  const auto* const first = xcb_query_tree_children(tree.get());
  return {first, first + xcb_query_tree_children_length(tree.get())};
}

std::string XWindows::Title(xcb_window_t window) const {
  for (const xcb_atom_t property : {ewmh_._NET_WM_NAME, xcb_atom_t{XCB_ATOM_WM_NAME}}) {
    const Reply<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(connection_,
                               xcb_get_property(connection_, 0, window, property,
                                                XCB_GET_PROPERTY_TYPE_ANY, 0, kLongestTitle),
                               nullptr));
    if (!reply || xcb_get_property_value_length(reply.get()) == 0) continue;
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
  }
  return {};
}

std::uint32_t XWindows::ProcessOf(xcb_window_t window) const {
  std::uint32_t process = 0;
  const auto cookie = xcb_ewmh_get_wm_pid(&ewmh_, window);
  return xcb_ewmh_get_wm_pid_reply(&ewmh_, cookie, &process, nullptr) == 0 ? 0 : process;
}

// A server may drop what a client has sent and not yet had answered when the client hangs up.
void XWindows::RoundTrip() const {
  const Reply<xcb_get_input_focus_reply_t> answer(
      xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

}  // namespace ostrel
