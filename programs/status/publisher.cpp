#include "programs/status/publisher.h"

#include <fmt/format.h>
#include <memory>
#include <mosquitto.h>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <thread>
#include <utility>

#include "broker/broker_client.h"
#include "client/station_client.h"
#include "programs/status/reports.h"

namespace ostrel {

namespace {

using std::chrono::steady_clock;

constexpr std::chrono::seconds kInterval{10};
constexpr int kKeepAlive = 15;  // seconds; the broker gives up after one and a half of it
constexpr int kQualityOfService = 1;
constexpr std::chrono::seconds kWait{5};  // between two tries
constexpr int kLook = 200;                // milliseconds for which the library waits at most
constexpr const char* kGone = R"({"state":"gone"})";

using Client = std::unique_ptr<mosquitto, decltype(&mosquitto_destroy)>;

void Send(const Client& client, const std::string& topic, const std::string& text) {
  mosquitto_publish(client.get(), nullptr, topic.c_str(), static_cast<int>(text.size()),
                    text.data(), kQualityOfService, true);
}

void Report(const Client& client, const BrokerAddress& address, const std::string& folder) {
  try {
    Send(client, address.topic, AskForStatus(folder));
  } catch (const std::exception& error) {
    Send(client, address.topic, JsonText({{"state", "no answer"}, {"error", error.what()}}));
  }
}

/// Connects, and reports until the connection is lost. Returns why. A thread of the library's would
/// end for good where a broker has another certificate for a while.
int PublishOnce(const Client& client, const BrokerAddress& address, const std::string& folder,
                const bool& isConnected) {
  int result = mosquitto_connect(client.get(), address.host.c_str(), address.port, kKeepAlive);
  auto next = steady_clock::now();
  while (result == MOSQ_ERR_SUCCESS) {
    result = mosquitto_loop(client.get(), kLook, 1);
    if (!isConnected || steady_clock::now() < next) continue;
    Report(client, address, folder);
    next = steady_clock::now() + kInterval;
  }
  return result;
}

}  // namespace

void Publish(const std::string& folder, const std::string& text) {
  const auto address = ParseBrokerAddress(text);
  mosquitto_lib_init();
  bool isConnected = false;
  const Client client(mosquitto_new(nullptr, true, &isConnected), mosquitto_destroy);
  const std::string gone = kGone;
  CheckBroker(mosquitto_will_set(client.get(), address.topic.c_str(), static_cast<int>(gone.size()),
                                 gone.data(), kQualityOfService, true));
  Introduce(client.get(), address);
  mosquitto_connect_callback_set(client.get(), [](mosquitto*, void* connected, int reason) {
    *static_cast<bool*>(connected) = reason == 0;
  });
  for (bool isTold = false;; std::this_thread::sleep_for(kWait)) {
    std::string why = mosquitto_strerror(PublishOnce(client, address, folder, isConnected));
    if (why.ends_with('.')) why.pop_back();
    const bool isNews = std::exchange(isConnected, false) || !isTold;
    isTold = true;
    if (isNews)
      fmt::print(stderr, "The broker {} does not answer ({}). It is tried again.\n", address.host,
                 why);
  }
}

}  // namespace ostrel
