#include "programs/queue/operations.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "base/failure.h"
#include "base/names.h"
#include "base/text.h"
#include "client/station_client.h"
#include "platform/linux/linux_clock.h"
#include "platform/linux/linux_files.h"
#include "programs/queue/past_products.h"

namespace ostrel {

namespace {

using Json = nlohmann::ordered_json;

/// An identification lasts so long at most, mostly.
constexpr std::chrono::seconds kPatience{90};
/// The sent folder's time is that of the start, to the second.
constexpr std::chrono::seconds kSameStart{2};

class Resending {
 public:
  explicit Resending(const std::string& folder) : folder_(folder), data_(folder + "/KvData") {}

  std::string Send(const std::string& numberOrName, std::optional<int> priority) {
    auto product = FindProduct(numberOrName);
    if (!priority && product.priority) priority = static_cast<int>(*product.priority);
    if (!priority) throw std::runtime_error("Which priority? Say --priority.");
    Json question = {{"ask", "resend"},
                     {"file", product.sentAs},
                     {"priority", *priority},
                     {"name", product.name},
                     {"id", product.resendOf.value_or(product.id)}};
    if (IsInSentFolder(product)) return Ask(folder_, question)["done"];
    return SendKept(product, std::move(question), *priority);
  }

 private:
  /// Without a history there is the sent folder.
  PastProduct FindProduct(const std::string& numberOrName) {
    try {
      history_.emplace(folder_);
    } catch (const Failure&) {
      PastProduct product;
      product.name = product.sentAs = ToUpper(numberOrName);
      return product;
    }
    if (auto product = history_->FindOne(numberOrName)) return *product;
    throw std::runtime_error(fmt::format("The history does not know {}.", numberOrName));
  }

  /// A later product may have come under its name.
  bool IsInSentFolder(const PastProduct& product) {
    const auto path = data_ + "/RtSent/" + product.sentAs;
    if (product.sentAs.empty() || !files_.Exists(path)) return false;
    if (!history_) return true;
    const auto started = files_.Status(path).written;
    return product.firstBlock && started < *product.firstBlock + kSameStart &&
           *product.firstBlock < started + kSameStart;
  }

  /// As a file that is held, which the station then takes.
  std::string SendKept(const PastProduct& product, Json question, int priority) {
    const auto content = history_ ? history_->ContentOf(product.id) : std::nullopt;
    if (!content)
      throw std::runtime_error(
          fmt::format("The bytes of {} are gone: KvData/RtSent holds them for the purge time, and "
                      "KeepProductDays says how long the history does.",
                      product.name));
    const auto name = FirstFreeName(
        product.name, [this](const std::string& candidate) { return IsHeld(candidate); });
    const auto path = HeldPath(priority, name);
    for (const auto& folder : {data_ + "/RtHeld", std::string(FolderOf(path))}) {
      if (!files_.Exists(folder)) files_.CreateFolder(folder);
    }
    files_.WriteAll(path, *content);
    question["file"] = name;
    question["held"] = true;
    try {
      return Ask(folder_, question)["done"];
    } catch (const std::exception&) {
      files_.Delete(path);
      throw;
    }
  }

  bool IsHeld(const std::string& name) {
    for (int priority = 1; priority <= 10; ++priority) {
      if (files_.Exists(HeldPath(priority, name))) return true;
    }
    return false;
  }
  std::string HeldPath(int priority, const std::string& name) const {
    return fmt::format("{}/RtHeld/{}/{}", data_, priority, name);
  }

  std::string folder_, data_;
  LinuxClock clock_;
  LinuxFiles files_{clock_};
  std::optional<PastProducts> history_;
};

}  // namespace

Json Ask(const std::string& folder, const Json& question) {
  const auto line = question.dump(-1, ' ', false, Json::error_handler_t::replace);
  auto answer = Json::parse(AskStation(folder, line, kPatience));
  if (answer.contains("error")) throw std::runtime_error(answer["error"]);
  return answer;
}

Json AskForAll(const std::string& folder, const char* list, const char* name) {
  auto all = Json::array();
  for (;;) {
    const auto page = Ask(folder, {{"ask", list}, {"from", all.size()}});
    for (const auto& item : page[name]) all.push_back(item);
    if (page[name].empty() || all.size() >= page["count"].get<std::size_t>()) return all;
  }
}

std::string Resend(const std::string& folder, const std::string& numberOrName,
                   std::optional<int> priority) {
  return Resending(folder).Send(numberOrName, priority);
}

}  // namespace ostrel
