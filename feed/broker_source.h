// Products that come from an MQTT broker, and those that go to one: one message each, its name the
// last level of the topic, its content as it is. What was not acknowledged comes again, and a
// number in each message tells that it is the same one.
#pragma once

#include <QTimer>
#include <map>
#include <mutex>
#include <set>
#include <string>

#include "feed/broker_connection.h"
#include "feed/feed_config.h"
#include "feed/source.h"

namespace ostrel {

class BrokerSource : public Source {
 public:
  BrokerSource(const BrokerSettings& settings, Delivery& delivery, FeedBook& book);
  void Start() override { connection_.Start(); }

 private:
  void Subscribe();
  /// Throws Failure when it could not be taken.
  void TakeMessage(const mosquitto_message& message, const mqtt5__property* properties);

  BrokerConnection connection_;
};

/// Publishes what lies in the outbox; a file goes when the broker has it.
class BrokerPublisher : public Source {
 public:
  BrokerPublisher(const BrokerAddress& address, std::string outbox, Delivery& delivery,
                  FeedBook& book);
  void Start() override;

 private:
  void Connected();
  void Lost(const std::string& why);
  void Published(int message, int reason);
  void PublishMore();
  void Publish(const std::string& path, std::string& trouble);
  int Hand(const std::string& path);

  std::string outbox_;
  std::recursive_mutex mutex_;
  bool isConnected_ = false;
  std::map<int, std::string> underWay_;  // paths by the library's number of the message
  std::set<std::string> refused_;        // paths that are not tried again in this connection
  QTimer again_;
  BrokerConnection connection_;
};

}  // namespace ostrel
