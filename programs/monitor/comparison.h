// What a receiver heard, against what the station says that it sent. Both come in the order of
// sending, each after its own way: the one over the line and the air, the other over a network.
// Times are seconds of one steady clock.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <tuple>

#include "receive/packet_reader.h"

namespace ostrel {

/// How a stretch of the stream went.
struct Reception {
  int heard = 0;
  int lost = 0;  // sent, and never heard whole

  double LossPercent() const;
};

class Comparison {
 public:
  /// Called with a product of which a block was lost, once its last one is decided.
  using Broken = std::function<void(const std::string& name)>;
  explicit Comparison(Broken broken) : broken_(std::move(broken)) {}

  void Sent(const ReceivedPacket& packet, double now);
  /// A good packet. One that nobody says was sent is somebody else's, or from before.
  void Heard(const ReceivedPacket& packet, double now);
  /// The station has ended its stream; what was still on its way is nobody's fault.
  void Ended();
  /// Gives up what was not heard in time. Between two packets, often.
  void Look(double now);

  const Reception& all() const { return all_; }
  Reception LastHour(double now);
  int strangers() const { return strangers_; }
  int products() const { return products_; }
  int brokenProducts() const { return brokenProducts_; }
  /// From the datagram to the whole packet.
  std::optional<double> lastDelay() const { return lastDelay_; }
  std::optional<double> meanDelay() const;
  std::optional<double> lastHeard() const { return lastHeard_; }
  /// Since when the station sends, as it says, and nothing of it is heard. A pause, in which it
  /// sends nothing either, does not count.
  std::optional<double> unheardSince() const { return unheardSince_; }

 private:
  struct Noted {
    ReceivedPacket packet;
    double since;
  };
  using Packets = std::deque<Noted>;
  /// One sending of one product: its name, its blocks, and the moment it began.
  using Product = std::tuple<std::string, int, std::string>;
  struct Progress {
    bool isBroken = false;
    double lastSign = 0;
  };

  void Match(std::ptrdiff_t sent, double heard);
  void Decide(double now, bool isHeard);
  void NoteBlock(const ReceivedPacket& packet, bool isHeard, double now);
  void ForgetOldest();

  Broken broken_;
  Packets waiting_;                               // sent, and not heard yet
  Packets early_;                                 // heard, and not said to be sent yet
  std::deque<std::pair<double, bool>> lastHour_;  // when, and whether it was heard
  Reception all_;
  int strangers_ = 0, products_ = 0, brokenProducts_ = 0;
  std::map<Product, Progress> open_;
  std::optional<double> lastDelay_, lastHeard_, unheardSince_;
  double delays_ = 0;  // of all that was heard, together
};

}  // namespace ostrel
