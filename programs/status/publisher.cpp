#include "programs/status/publisher.h"

#include <fmt/format.h>
#include <memory>
#include <mosquitto.h>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <thread>

#include "broker/broker_client.h"
#include "client/station_client.h"
#include "programs/status/reports.h"

namespace ostrel {

namespace {

constexpr std::chrono::seconds kInterval{10};
constexpr int kKeepAlive = 15;  // seconds; the broker gives up after one and a half of it
constexpr int kQualityOfService = 1;
constexpr unsigned kShortestWait = 1, kLongestWait = 60;  // seconds between two tries
constexpr const char* kGone = R"({"state":"gone"})";

using Client = std::unique_ptr<mosquitto, decltype(&mosquitto_destroy)>;

void Send(const Client& client, const std::string& topic, const std::string& text) {
  mosquitto_publish(client.get(), nullptr, topic.c_str(), static_cast<int>(text.size()),
                    text.data(), kQualityOfService, true);
}

/// Tries until the broker answers, and says once why it does not.
void Connect(const Client& client, const BrokerAddress& address) {
  for (bool isTold = false;; isTold = true) {
    const int result =
        mosquitto_connect(client.get(), address.host.c_str(), address.port, kKeepAlive);
    if (result == MOSQ_ERR_SUCCESS) return;
    std::string why = mosquitto_strerror(result);
    if (why.ends_with('.')) why.pop_back();
    if (!isTold)
      fmt::print(stderr, "The broker {} does not answer ({}). It is tried again.\n", address.host,
                 why);
    std::this_thread::sleep_for(kInterval);
  }
}

}  // namespace

void Publish(const std::string& folder, const std::string& text) {
  const auto address = ParseBrokerAddress(text);
  mosquitto_lib_init();
  const Client client(mosquitto_new(nullptr, true, nullptr), mosquitto_destroy);
  const std::string gone = kGone;
  CheckBroker(mosquitto_will_set(client.get(), address.topic.c_str(), static_cast<int>(gone.size()),
                                 gone.data(), kQualityOfService, true));
  Introduce(client.get(), address);
  CheckBroker(mosquitto_reconnect_delay_set(client.get(), kShortestWait, kLongestWait, true));
  CheckBroker(mosquitto_loop_start(client.get()));
  Connect(client, address);
  for (;;) {
    try {
      Send(client, address.topic, AskForStatus(folder));
    } catch (const std::exception& error) {
      Send(client, address.topic, Status{{"state", "no answer"}, {"error", error.what()}}.dump());
    }
    std::this_thread::sleep_for(kInterval);
  }
}

}  // namespace ostrel
