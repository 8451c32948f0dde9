#include "web/connections.h"

#include <algorithm>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace ostrel {

namespace {

void GiveUp(auto& connection) {
  connection.isGivenUp = true;
  shutdown(connection.socket, SHUT_RDWR);
}

/// Bytes have come that nobody has read yet: it waits for the server.
bool HasSaidMore(int socket) {
  int count = 0;
  return ioctl(socket, FIONREAD, &count) == 0 && count > 0;
}

}  // namespace

bool Connections::Begin(int socket, const std::string& address) {
  const std::lock_guard lock(mutex_);
  connections_.push_back({socket, address, now_()});
  const auto isOfAddress = [&](const auto& one) { return one.address == address; };
  const bool isCrowded = Bound(limits_.ofOneAddress, isOfAddress);
  return Bound(limits_.connections, [](const auto&) { return true; }) || isCrowded;
}

template <typename Belongs>
bool Connections::Bound(std::size_t most, Belongs belongs) {
  const auto counts = [&](const auto& one) { return !one.isGivenUp && belongs(one); };
  const auto count = std::ranges::count_if(connections_, counts);
  if (static_cast<std::size_t>(count) <= most) return false;
  const auto isIdle = [&](const auto& one) { return one.isIdle && counts(one); };
  auto oldest = std::ranges::find_if(
      connections_, [&](const auto& one) { return isIdle(one) && !HasSaidMore(one.socket); });
  if (oldest == connections_.end()) oldest = std::ranges::find_if(connections_, isIdle);
  GiveUp(*oldest);  // the newest is idle in any case
  return true;
}

void Connections::Work(int socket) {
  SetIdle(socket, false);
}

void Connections::Rest(int socket) {
  SetIdle(socket, true);
}

void Connections::SetIdle(int socket, bool isIdle) {
  const std::lock_guard lock(mutex_);
  for (auto& one : connections_)
    if (one.socket == socket) one.isIdle = isIdle;
}

void Connections::End(int socket) {
  const std::lock_guard lock(mutex_);
  std::erase_if(connections_, [&](const auto& one) { return one.socket == socket; });
}

void Connections::GiveUpLate() {
  const std::lock_guard lock(mutex_);
  for (auto& one : connections_)
    if (!one.isGivenUp && now_() - one.begun >= limits_.patience) GiveUp(one);
}

}  // namespace ostrel
