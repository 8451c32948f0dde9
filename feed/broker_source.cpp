#include "feed/broker_source.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <memory>
#include <mosquitto.h>
#include <mqtt_protocol.h>
#include <stdexcept>
#include <vector>

#include "base/failure.h"
#include "base/names.h"
#include "feed/content_hash.h"
#include "feed/placing.h"

namespace ostrel {
namespace {

constexpr int kQualityOfService = 1;
constexpr std::size_t kMostUnderWay = 100;
constexpr std::chrono::seconds kAgain{10};
constexpr std::size_t kIdLength = 36;  // of a file in the outbox, in front of "_" and its name
constexpr const char* kId = "id";
constexpr const char* kHash = "sha256";

/// The value of the message's own property of that name; empty where there is none.
std::string PropertyOf(const mosquitto_property* properties, const std::string& wanted) {
  char *name = nullptr, *value = nullptr;
  std::string found;
  const auto* at = mosquitto_property_read_string_pair(properties, MQTT_PROP_USER_PROPERTY, &name,
                                                       &value, false);
  while (at != nullptr) {
    if (name == wanted) found = value;
    std::free(name);
    std::free(value);
    at = mosquitto_property_read_string_pair(at, MQTT_PROP_USER_PROPERTY, &name, &value, true);
  }
  return found;
}

/// Of a message with this number; a stranger's may be anything.
Mark MarkOf(const std::string& id) {
  if (id.empty() || id.size() > kIdLength) return {};
  return {.key = "mqtt:" + id, .state = {}};
}

void Add(mosquitto_property*& properties, const char* name, const std::string& value) {
  mosquitto_property_add_string_pair(&properties, MQTT_PROP_USER_PROPERTY, name, value.c_str());
}

}  // namespace

BrokerSource::BrokerSource(const BrokerSettings& settings, Delivery& delivery, FeedBook& book)
    : Source(NameOfSource(settings), delivery, book),
      connection_(settings.address, settings.session,
                  {.connected = [this] { Safely([this] { Subscribe(); }); },
                   .lost = [this](const auto& why) { Safely([&] { SetState(why, false); }); },
                   .message =
                       [this](const auto& message, const auto* properties) {
                         return Safely([&] { TakeMessage(message, properties); });
                       },
                   .published = {}}) {}

void BrokerSource::Subscribe() {
  SetState("connected", true);
  const auto topics = connection_.address().topic + "/+";
  // A message that the broker keeps for newcomers is an old one.
  const int result =
      mosquitto_subscribe_v5(connection_.Get(), nullptr, topics.c_str(), kQualityOfService,
                             MQTT_SUB_OPT_SEND_RETAIN_NEVER, nullptr);
  if (result != MOSQ_ERR_SUCCESS) connection_.Cut();
}

void BrokerSource::TakeMessage(const mosquitto_message& message,
                               const mosquitto_property* properties) {
  const std::string topic(message.topic);
  const FeedProduct product{
      .given = topic.substr(std::min(topic.size(), connection_.address().topic.size() + 1)),
      .content = {static_cast<const char*>(message.payload),
                  static_cast<std::size_t>(message.payloadlen)},
      .mark = MarkOf(PropertyOf(properties, kId)),
      .isPublished = false};
  const auto hash = PropertyOf(properties, kHash);
  if (!hash.empty() && hash != HashOf(product.content)) {
    book_.Log(fmt::format("{} came damaged and is not taken", product.given));
    return;
  }
  if (product.mark.key.empty() || !delivery_.IsTaken(product.mark)) Take(product);
}

BrokerPublisher::BrokerPublisher(const BrokerAddress& address, std::string outbox,
                                 Delivery& delivery, FeedBook& book)
    : Source("publishing at " + address.host, delivery, book),
      outbox_(std::move(outbox)),
      connection_(address, "",
                  {.connected = [this] { Safely([this] { Connected(); }); },
                   .lost = [this](const auto& why) { Safely([&] { Lost(why); }); },
                   .message = {},
                   .published =
                       [this](int message, int reason) {
                         Safely([=, this] { Published(message, reason); });
                       }}) {}

void BrokerPublisher::Start() {
  const auto more = [this] { Safely([this] { PublishMore(); }); };
  delivery_.TellOfOutbox(more);
  QObject::connect(&again_, &QTimer::timeout, &again_, more);
  again_.start(kAgain);
  connection_.Start();
}

void BrokerPublisher::Connected() {
  const std::lock_guard lock(mutex_);
  isConnected_ = true;
  refused_.clear();
  SetState("connected", true);
  PublishMore();
}

void BrokerPublisher::Lost(const std::string& why) {
  const std::lock_guard lock(mutex_);
  isConnected_ = false;
  SetState(why, false);
}

void BrokerPublisher::Published(int message, int reason) {
  const std::lock_guard lock(mutex_);
  const auto found = underWay_.find(message);
  if (found == underWay_.end()) return;
  if (reason < MQTT_RC_UNSPECIFIED) {
    std::error_code error;
    std::filesystem::remove(found->second, error);
    if (error) refused_.insert(found->second);  // it would be published again at once
  } else {
    refused_.insert(found->second);
    SetState(fmt::format("the broker refuses: {}", mosquitto_reason_string(reason)), false);
  }
  underWay_.erase(found);
  if (underWay_.empty()) PublishMore();
}

/// The oldest files of the outbox that are not under way already.
void BrokerPublisher::PublishMore() {
  const std::lock_guard lock(mutex_);
  if (!isConnected_ || underWay_.size() >= kMostUnderWay) return;
  std::vector<std::pair<std::filesystem::file_time_type, std::string>> files;
  std::error_code error;
  std::filesystem::directory_iterator at(outbox_, error);
  for (; !error && at != std::filesystem::directory_iterator(); at.increment(error)) {
    const auto path = at->path().string();
    const bool isUnderWay = std::any_of(underWay_.begin(), underWay_.end(),
                                        [&](const auto& one) { return one.second == path; });
    std::error_code ignored;
    if (!FileNameOf(path).starts_with('.') && !isUnderWay && refused_.count(path) == 0)
      files.emplace_back(at->last_write_time(ignored), path);
  }
  std::sort(files.begin(), files.end());
  files.resize(std::min(files.size(), kMostUnderWay - underWay_.size()));
  std::string trouble = error ? error.message() : "";
  for (const auto& [time, path] : files) Publish(path, trouble);
  if (refused_.empty()) SetState(trouble.empty() ? "connected" : trouble, trouble.empty());
}

/// What cannot be read now is tried again.
void BrokerPublisher::Publish(const std::string& path, std::string& trouble) {
  try {
    const auto message = Hand(path);
    underWay_[message] = path;
  } catch (const Failure& failure) {
    trouble = failure.text();
  } catch (const std::exception& error) {  // a file that a hand laid there, or too large a one
    if (refused_.insert(path).second) book_.Log(fmt::format("{}: {}", path, error.what()));
  }
}

/// Gives the file to the library, and returns its number of the message.
int BrokerPublisher::Hand(const std::string& path) {
  const std::string file(FileNameOf(path));
  const auto content = ReadWhole(path);
  if (file.size() <= kIdLength + 1 || content.size() > kLargestMessage)
    throw std::runtime_error("this is no product of the feed");
  mosquitto_property* properties = nullptr;
  Add(properties, kId, file.substr(0, kIdLength));
  Add(properties, kHash, HashOf(content));
  const auto topic = connection_.address().topic + "/" + file.substr(kIdLength + 1);
  int message = 0;
  const int result = mosquitto_publish_v5(connection_.Get(), &message, topic.c_str(),
                                          static_cast<int>(content.size()), content.data(),
                                          kQualityOfService, false, properties);
  mosquitto_property_free_all(&properties);
  if (result != MOSQ_ERR_SUCCESS) throw std::runtime_error(mosquitto_strerror(result));
  return message;
}

}  // namespace ostrel
