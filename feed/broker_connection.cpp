#include "feed/broker_connection.h"

#include <chrono>
#include <mosquitto.h>
#include <mqtt_protocol.h>
#include <stdexcept>
#include <sys/socket.h>

#include "broker/broker_client.h"
#include "feed/source.h"

namespace ostrel {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr int kKeepAlive = 30;          // seconds
constexpr int kLook = 200;              // milliseconds until the end of the program is seen
constexpr unsigned kKept = 7 * 86'400;  // seconds that the broker keeps what comes meanwhile

BrokerConnection& Of(void* self) {
  return *static_cast<BrokerConnection*>(self);
}

}  // namespace

void BrokerConnection::Destroy::operator()(mosquitto* client) const {
  mosquitto_destroy(client);
}

BrokerConnection::BrokerConnection(const BrokerAddress& address, const std::string& session,
                                   Callbacks callbacks)
    : address_(address), isKept_(!session.empty()), callbacks_(std::move(callbacks)) {
  mosquitto_lib_init();
  client_.reset(mosquitto_new(isKept_ ? session.c_str() : nullptr, !isKept_, this));
  if (!client_) throw std::runtime_error("no session of that name can be had");
  CheckBroker(mosquitto_int_option(Get(), MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V5));
  // The library writes an acknowledgement when it has one, unless it is told that a thread does it:
  // then the message's callback comes first.
  CheckBroker(mosquitto_threaded_set(Get(), true));
  Introduce(Get(), address_);
  SetCallbacks();
}

void BrokerConnection::SetCallbacks() {
  mosquitto_connect_v5_callback_set(
      Get(), [](mosquitto*, void* self, int reason, int, const mosquitto_property*) {
        if (reason != 0) {
          Of(self).refusal_ = mosquitto_reason_string(reason);
          return;
        }
        Of(self).isConnected_ = true;
        Of(self).callbacks_.connected();
      });
  // What the broker says of its own accord: that it ends, or that it has had too much, say.
  mosquitto_disconnect_v5_callback_set(
      Get(), [](mosquitto*, void* self, int reason, const mosquitto_property*) {
        if (reason >= MQTT_RC_UNSPECIFIED) Of(self).refusal_ = mosquitto_reason_string(reason);
      });
  mosquitto_message_v5_callback_set(Get(),
                                    [](mosquitto*, void* self, const mosquitto_message* message,
                                       const mosquitto_property* properties) {
                                      const auto& take = Of(self).callbacks_.message;
                                      if (take && !take(*message, properties)) Of(self).Cut();
                                    });
  mosquitto_publish_v5_callback_set(
      Get(), [](mosquitto*, void* self, int message, int reason, const mosquitto_property*) {
        if (Of(self).callbacks_.published) Of(self).callbacks_.published(message, reason);
      });
}

BrokerConnection::~BrokerConnection() {
  ends_ = true;
  if (thread_.joinable()) thread_.join();
}

void BrokerConnection::Cut() {
  shutdown(mosquitto_socket(Get()), SHUT_RDWR);
}

void BrokerConnection::Start() {
  thread_ = std::thread([this] { KeepUp(); });
}

void BrokerConnection::KeepUp() {
  GrowingWait wait;
  while (!ends_) {
    isConnected_ = false;
    const auto why = RunOnce();
    if (isConnected_) wait.Reset();
    if (ends_) break;
    callbacks_.lost(why);
    Pause(wait.Next());
  }
}

/// Connects and goes on until the connection is lost. Returns why.
std::string BrokerConnection::RunOnce() {
  mosquitto_property* properties = nullptr;
  if (isKept_) mosquitto_property_add_int32(&properties, MQTT_PROP_SESSION_EXPIRY_INTERVAL, kKept);
  mosquitto_property_add_int32(&properties, MQTT_PROP_MAXIMUM_PACKET_SIZE, kLargestMessage);
  refusal_.clear();
  int result = mosquitto_connect_bind_v5(Get(), address_.host.c_str(), address_.port, kKeepAlive,
                                         nullptr, properties);
  mosquitto_property_free_all(&properties);
  while (result == MOSQ_ERR_SUCCESS && !ends_) result = mosquitto_loop(Get(), kLook, 1);
  if (ends_) mosquitto_disconnect(Get());
  if (!refusal_.empty()) return refusal_;
  return result == MOSQ_ERR_ERRNO ? "the broker cannot be reached" : mosquitto_strerror(result);
}

void BrokerConnection::Pause(seconds wait) const {
  const auto end = std::chrono::steady_clock::now() + wait;
  while (!ends_ && std::chrono::steady_clock::now() < end)
    std::this_thread::sleep_for(milliseconds(kLook));
}

}  // namespace ostrel
