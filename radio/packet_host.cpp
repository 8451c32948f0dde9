#include "radio/packet_host.h"

#include <fmt/format.h>

#include "base/scope_guard.h"

namespace ostrel {

namespace {

constexpr int kTypeOfService = 68;
constexpr int kLastSequence = 60;

}  // namespace

void PacketHost::Send(const std::string& packet) {
  if (!values_.packetHost) return;
  const int number = sequence_;
  sequence_ = number == kLastSequence ? 1 : number + 1;
  datagrams_.Send(fmt::format("R00{:02}", number) + packet);
}

void PacketHost::Begin() {
  datagrams_.SetDestination(values_.udpAddress, values_.udpPort);
  datagrams_.SetConfiguration(fmt::format("QOSFlags={}", kTypeOfService));
  datagrams_.Activate();
}

void PacketHost::End() {
  if (!datagrams_.IsActive() || !values_.packetHost) return;
  const ScopeGuard close([this] { datagrams_.Deactivate(); });
  datagrams_.Send("E0000");
}

}  // namespace ostrel
