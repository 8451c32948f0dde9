// A connection to an MQTT broker that is kept up in a thread of its own.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "broker/broker_address.h"
#include "receive/product_assembler.h"

struct mosquitto;
struct mosquitto_message;
struct mqtt5__property;

namespace ostrel {

/// A message beyond this the broker keeps to itself: the most that a product can have, and room for
/// its name and number.
inline constexpr std::size_t kLargestMessage = kMostProductBlocks * kReceivedBlock + 64 * 1024;

class BrokerConnection {
 public:
  /// They come in the connection's thread. A message is acknowledged after its callback.
  struct Callbacks {
    std::function<void()> connected = [] {};
    std::function<void(const std::string& why)> lost = [](const std::string&) {};
    /// False when it could not be taken: the connection is cut, and the broker gives it again.
    std::function<bool(const mosquitto_message&, const mqtt5__property*)> message = {};
    std::function<void(int message, int reason)> published = {};
  };

  /// A session without a name is one that the broker forgets. Throws std::runtime_error.
  BrokerConnection(const BrokerAddress& address, const std::string& session, Callbacks callbacks);
  /// Waits until a try to connect, or a callback, has ended.
  ~BrokerConnection();
  BrokerConnection(const BrokerConnection&) = delete;
  BrokerConnection& operator=(const BrokerConnection&) = delete;

  /// Connects, and again whenever the connection is lost, with waits from a second to a minute.
  void Start();
  /// Has it made anew: what the broker has not got an answer to comes again.
  void Cut();
  /// For the library's functions.
  mosquitto* Get() const { return client_.get(); }
  const BrokerAddress& address() const { return address_; }

 private:
  void SetCallbacks();
  void KeepUp();
  std::string RunOnce();
  void Pause(std::chrono::seconds wait) const;

  struct Destroy {
    void operator()(mosquitto* client) const;
  };

  BrokerAddress address_;
  bool isKept_;
  Callbacks callbacks_;
  std::unique_ptr<mosquitto, Destroy> client_;
  std::string refusal_;  // the broker's reason, of the connection's thread
  std::atomic<bool> isConnected_{false};
  std::atomic<bool> ends_{false};
  std::thread thread_;
};

}  // namespace ostrel
