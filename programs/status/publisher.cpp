#include "programs/status/publisher.h"

#include <fmt/format.h>
#include <memory>
#include <mosquitto.h>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <thread>

#include "broker/broker_address.h"
#include "client/station_client.h"
#include "programs/status/reports.h"

namespace ostrel {

namespace {

constexpr std::chrono::seconds kInterval{10};
constexpr int kKeepAlive = 15;  // seconds; the broker gives up after one and a half of it
constexpr int kQualityOfService = 1;
constexpr unsigned kShortestWait = 1, kLongestWait = 60;  // seconds between two tries
constexpr const char* kGone = R"({"state":"gone"})";

void Check(int result) {
  if (result != MOSQ_ERR_SUCCESS) throw std::runtime_error(mosquitto_strerror(result));
}

using Client = std::unique_ptr<mosquitto, decltype(&mosquitto_destroy)>;

void Send(const Client& client, const std::string& topic, const std::string& text) {
  mosquitto_publish(client.get(), nullptr, topic.c_str(), static_cast<int>(text.size()),
                    text.data(), kQualityOfService, true);
}

}  // namespace

void Publish(const std::string& folder, const std::string& text) {
  const auto address = ParseBrokerAddress(text);
  mosquitto_lib_init();
  const Client client(mosquitto_new(nullptr, true, nullptr), mosquitto_destroy);
  const std::string gone = kGone;
  Check(mosquitto_will_set(client.get(), address.topic.c_str(), static_cast<int>(gone.size()),
                           gone.data(), kQualityOfService, true));
  if (!address.user.empty())
    Check(mosquitto_username_pw_set(client.get(), address.user.c_str(), address.password.c_str()));
  Check(mosquitto_reconnect_delay_set(client.get(), kShortestWait, kLongestWait, true));
  Check(mosquitto_loop_start(client.get()));
  while (mosquitto_connect(client.get(), address.host.c_str(), address.port, kKeepAlive) != 0)
    std::this_thread::sleep_for(kInterval);
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
