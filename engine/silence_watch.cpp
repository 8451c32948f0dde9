#include "engine/silence_watch.h"

#include <fmt/format.h>

#include "base/names.h"
#include "base/time.h"

namespace ostrel {

namespace {

constexpr const char* kCategory = "Silence";
/// Shorter ones come between a fill and the next.
constexpr milliseconds kToldAfter{10'000};

}  // namespace

void SilenceWatch::Look() {
  auto& status = parts_.status;
  if (std::exchange(lastPacket_, status.lastPacket) != status.lastPacket) End();
  auto& transmitter = parts_.transmitter;
  const bool isOpen = transmitter.state() == Transmitter::State::kOpen;
  if (!isOpen || !transmitter.IsKeyed() || transmitter.IsSending()) return;
  const auto now = parts_.clock.Monotonic();
  if (!status.silentSince) status.silentSince = now;
  if (status.silentBecause.empty() && now - *status.silentSince >= kToldAfter) Tell();
}

void SilenceWatch::Tell() {
  auto& reason = parts_.status.silentBecause;
  reason = Reason();
  if (reason.empty()) return;
  parts_.reporting.WriteLog(
      kCategory, fmt::format("The transmitter is keyed and carries nothing. {}", reason));
}

void SilenceWatch::End() {
  auto& status = parts_.status;
  if (!status.silentBecause.empty() && status.silentSince) {
    const auto lasted = parts_.clock.Monotonic() - *status.silentSince;
    parts_.reporting.WriteLog(
        kCategory, fmt::format("Packets go out again, after {}.", SpellDuration(lasted)));
  }
  status.silentSince.reset();
  status.silentBecause.clear();
}

/// Empty where nothing is meant to be sent: there is no fill text.
std::string SilenceWatch::Reason() {
  if (!parts_.status.noPacketBecause.empty()) return parts_.status.noPacketBecause;
  const auto refused = parts_.obstacles.refused();
  if (refused.empty()) return {};
  const auto& [place, obstacle] = refused.front();
  return fmt::format("{}: {}", place, obstacle.reason);
}

}  // namespace ostrel
