#include "programs/status/serve.h"

#include <ctime>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <fstream>
#include <iterator>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <tuple>

#include "base/names.h"
#include "base/station_files.h"
#include "client/station_client.h"
#include "programs/status/day.h"
#include "programs/status/page_html.h"
#include "programs/status/reports.h"
#include "web/web_server.h"

namespace ostrel {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kFresh = std::chrono::milliseconds(500);
constexpr auto kPatience = std::chrono::seconds(5);
constexpr unsigned kNotAnswering = 503;

/// One question to the station answers many readers, and so does its silence.
class Latest {
 public:
  Latest(std::string folder, std::string question)
      : folder_(std::move(folder)), question_(std::move(question)) {}

  /// Throws std::runtime_error.
  std::string Get() {
    const std::lock_guard lock(mutex_);
    if (!taken_ || Clock::now() - *taken_ > kFresh) Ask();
    if (!trouble_.empty()) throw std::runtime_error(trouble_);
    return answer_;
  }

 private:
  void Ask() {
    answer_.clear();
    trouble_.clear();
    try {
      answer_ = AskStation(folder_, question_, kPatience);
    } catch (const std::runtime_error& error) {
      trouble_ = error.what();
    }
    taken_ = Clock::now();
  }

  std::string folder_, question_;
  std::mutex mutex_;
  std::string answer_, trouble_;
  std::optional<Clock::time_point> taken_;
};

WebResponse Json(std::string text, unsigned status = 200) {
  return {"application/json", std::move(text), status};
}

WebResponse Trouble(const Status& trouble) {
  return Json(JsonText(trouble), kNotAnswering);
}

WebResponse StatusAnswer(Latest& latest, const LastAlarms& alarms) {
  try {
    auto status = Status::parse(latest.Get());
    status["alarms"] = alarms.Get();
    return Json(JsonText(status));
  } catch (const std::exception& error) {
    return Trouble({{"error", error.what()}, {"alarms", alarms.Get()}});
  }
}

WebResponse QueueAnswer(Latest& queue) {
  try {
    return Json(queue.Get());
  } catch (const std::exception& error) {
    return Trouble({{"error", error.what()}});
  }
}

WebResponse DayAnswer(Latest& day) {
  constexpr const char* kHtml = "text/html; charset=utf-8";
  try {
    const auto now = std::chrono::floor<milliseconds>(std::chrono::system_clock::now());
    return {kHtml, DayOf(Status::parse(day.Get()), now)};
  } catch (const std::exception&) {
    return {kHtml, "", kNotAnswering};  // nor does one that does not know the question
  }
}

/// As ostrel-repeat found it; nothing where it does not run. Times are of one form, and compare as
/// texts do.
WebResponse InForceAnswer(const std::string& folder) {
  auto nothing = Json(R"({"inForce":[]})");
  std::ifstream file(JoinPath(folder, kInForceFile));
  const std::string text(std::istreambuf_iterator<char>(file), {});
  try {
    const auto now = fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(std::time(nullptr)));
    return Status::parse(text).at("goodUntil").get<std::string>() > now ? Json(text) : nothing;
  } catch (const std::exception&) {
    return nothing;
  }
}

WebResponse MetricsAnswer(Latest& latest) {
  Status status;
  try {
    status = Status::parse(latest.Get());
  } catch (const std::exception&) {
    // The metrics say that it does not answer.
  }
  return {"text/plain; version=0.0.4; charset=utf-8", MetricsOf(status)};
}

}  // namespace

void Serve(const std::string& folder, const std::string& where,
           const std::vector<std::string>& names, const LastAlarms& alarms) {
  Latest latest(folder, R"({"ask":"status"})"), queue(folder, R"({"ask":"list"})"),
      day(folder, R"({"ask":"day"})");
  WebServer server(names);
  for (const auto& [path, content, type] :
       {std::tuple{"/", kPageHtml, "text/html; charset=utf-8"},
        {"/page.css", kPageCss, "text/css; charset=utf-8"},
        {"/page.js", kPageJs, "text/javascript; charset=utf-8"}}) {
    server.Route(path, [type = type, content = content](const auto&) {
      return WebResponse{type, content};
    });
  }
  server.Route("/status.json", [&](const auto&) { return StatusAnswer(latest, alarms); });
  server.Route("/queue.json", [&](const auto&) { return QueueAnswer(queue); });
  server.Route("/day.html", [&](const auto&) { return DayAnswer(day); });
  server.Route("/in-force.json", [&](const auto&) { return InForceAnswer(folder); });
  server.Route("/metrics", [&](const auto&) { return MetricsAnswer(latest); });
  fmt::print("{}\n", server.Listen(where));
  std::fflush(stdout);
  server.Run();
}

}  // namespace ostrel
