#include "programs/monitor/comparison.h"

#include <algorithm>

namespace ostrel {

namespace {

constexpr double kHour = 3600;
/// What was not heard by then is lost: far more than a packet takes at 300 bits a second.
constexpr double kPatience = 120;
/// A datagram that crosses a busy network may come later than its packet over the air.
constexpr double kDatagramsWay = 10;
constexpr std::size_t kMostOpen = 64;

bool IsSame(const ReceivedPacket& one, const ReceivedPacket& other) {
  return std::tie(one.name, one.block, one.count, one.stamp, one.data) ==
         std::tie(other.name, other.block, other.count, other.stamp, other.data);
}

auto Find(auto& packets, const ReceivedPacket& packet) {
  return std::find_if(packets.begin(), packets.end(),
                      [&](const auto& noted) { return IsSame(noted.packet, packet); });
}

}  // namespace

double Reception::LossPercent() const {
  const int sent = heard + lost;
  return sent == 0 ? 0 : 100.0 * lost / sent;
}

void Comparison::Sent(const ReceivedPacket& packet, double now) {
  waiting_.push_back({packet, now});
  if (!unheardSince_) unheardSince_ = now;
  const auto early = Find(early_, packet);
  if (early == early_.end()) return;
  Match(std::ssize(waiting_) - 1, early->since);
  early_.erase(early);
}

void Comparison::Heard(const ReceivedPacket& packet, double now) {
  const auto sent = Find(waiting_, packet);
  if (sent == waiting_.end()) {
    early_.push_back({packet, now});
    return;
  }
  Match(sent - waiting_.begin(), now);
}

void Comparison::Match(std::ptrdiff_t sent, double heard) {
  // What was sent before this one would have come before it.
  for (auto lost = sent; lost > 0; --lost) Decide(heard, false);
  lastDelay_ = std::max(0.0, heard - waiting_.front().since);
  delays_ += *lastDelay_;
  lastHeard_ = heard;
  Decide(heard, true);
  unheardSince_.reset();
  if (!waiting_.empty()) unheardSince_ = waiting_.front().since;
}

void Comparison::Ended() {
  waiting_.clear();
  unheardSince_.reset();
}

void Comparison::Look(double now) {
  for (; !early_.empty() && now - early_.front().since > kDatagramsWay; early_.pop_front())
    ++strangers_;
  while (!waiting_.empty() && now - waiting_.front().since > kPatience) Decide(now, false);
}

/// What becomes of the packet that waits longest.
void Comparison::Decide(double now, bool isHeard) {
  ++(isHeard ? all_.heard : all_.lost);
  lastHour_.emplace_back(now, isHeard);
  NoteBlock(waiting_.front().packet, isHeard, now);
  waiting_.pop_front();
}

void Comparison::NoteBlock(const ReceivedPacket& packet, bool isHeard, double now) {
  const Product product{packet.name, packet.count, packet.stamp};
  // Of a product under way when the listening began nobody knows how it went.
  if (packet.block == 1) open_[product] = {};
  const auto found = open_.find(product);
  if (found == open_.end()) return;
  found->second.lastSign = now;
  found->second.isBroken |= !isHeard;
  if (packet.block < packet.count) {
    if (open_.size() > kMostOpen) ForgetOldest();
    return;
  }
  ++products_;
  if (found->second.isBroken) {
    ++brokenProducts_;
    broken_(packet.name);
  }
  open_.erase(found);
}

/// One that was purged, or whose station ended, will not be finished.
void Comparison::ForgetOldest() {
  open_.erase(std::min_element(open_.begin(), open_.end(), [](const auto& a, const auto& b) {
    return a.second.lastSign < b.second.lastSign;
  }));
}

Reception Comparison::LastHour(double now) {
  while (!lastHour_.empty() && now - lastHour_.front().first > kHour) lastHour_.pop_front();
  Reception reception;
  for (const auto& [when, isHeard] : lastHour_) ++(isHeard ? reception.heard : reception.lost);
  return reception;
}

std::optional<double> Comparison::meanDelay() const {
  if (all_.heard == 0) return std::nullopt;
  return delays_ / all_.heard;
}

}  // namespace ostrel
