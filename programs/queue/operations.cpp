#include "programs/queue/operations.h"

#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <unistd.h>

#include "base/failure.h"
#include "base/names.h"
#include "base/text.h"
#include "client/station_client.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/file_io.h"
#include "platform/linux/linux_clock.h"
#include "platform/linux/linux_files.h"
#include "platform/linux/system_error.h"
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
    const auto [product, isInSentFolder] = Find(numberOrName);
    if (!priority && product.priority) priority = static_cast<int>(*product.priority);
    if (!priority) throw std::runtime_error("Which priority? Say --priority.");
    Json question = {{"ask", "resend"},
                     {"file", product.sentAs},
                     {"priority", *priority},
                     {"name", product.name},
                     {"id", product.resendOf.value_or(product.id)}};
    if (isInSentFolder) return Ask(folder_, question)["done"];
    return SendKept(product, std::move(question), *priority);
  }

 private:
  struct Found {
    PastProduct product;
    bool isInSentFolder = false;
  };
  Found Find(const std::string& numberOrName) {
    auto why = fmt::format("The history does not know {}.", numberOrName);
    try {
      history_.emplace(HistoryPath(folder_));
      if (auto found = FindInHistory(numberOrName)) return *found;
    } catch (const Failure& failure) {
      why = failure.text();
    }
    // Without what it knows there is the sent folder.
    PastProduct product;
    product.name = product.sentAs = ToUpper(numberOrName);
    if (!StartInSentFolder(product.sentAs)) throw std::runtime_error(why);
    return {product, true};
  }

  /// Nothing as well when the last file of that name was sent after the history's last.
  std::optional<Found> FindInHistory(const std::string& numberOrName) {
    const auto product = history_->FindOne(numberOrName);
    if (!product) return std::nullopt;
    const auto started = StartInSentFolder(product->sentAs);
    if (started && history_->HasBegun(*product, *started - kSameStart, *started + kSameStart))
      return Found{*product, true};
    const bool isLater = started && (!product->firstBlock || *started > *product->firstBlock);
    if (isLater && !IsNumber(numberOrName)) return std::nullopt;
    return Found{*product, false};
  }

  /// When the file of that name began that lies in the sent folder.
  std::optional<UtcTime> StartInSentFolder(const std::string& name) {
    const auto path = data_ + "/RtSent/" + name;
    if (name.empty() || !files_.Exists(path)) return std::nullopt;
    return files_.Status(path).written;
  }

  /// As a file that is held, which the station then takes.
  std::string SendKept(const PastProduct& product, Json question, int priority) {
    const auto content = history_->ContentOf(product.id);
    if (!content)
      throw std::runtime_error(
          fmt::format("The bytes of {} are gone: KvData/RtSent holds them for the purge time, and "
                      "KeepProductDays says how long the history does.",
                      product.name));
    std::filesystem::create_directories(FolderOf(HeldPath(priority, product.name)));
    const auto name = FirstFreeName(product.name, [&](const std::string& candidate) {
      return IsHeld(candidate) || !MakeNew(HeldPath(priority, candidate), *content);
    });
    question["file"] = name;
    question["held"] = true;
    try {
      return Ask(folder_, question)["done"];
    } catch (const std::exception&) {
      unlink(HeldPath(priority, name).c_str());
      throw;
    }
  }

  /// False when there is a file of that name: another operator may just have put one there.
  static bool MakeNew(const std::string& path, const std::string& content) {
    const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file && errno == EEXIST) return false;
    if (!file) ThrowFileFailure(errno, path);
    int error = WriteFully(file.Get(), content);
    if (error == 0 && fdatasync(file.Get()) != 0) error = errno;
    if (error == 0) return true;
    unlink(path.c_str());
    ThrowFileFailure(error, path);
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
  const auto line = question.dump(-1, ' ', true, Json::error_handler_t::replace);
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
