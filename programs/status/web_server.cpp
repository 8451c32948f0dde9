#include "programs/status/web_server.h"

#include <charconv>
#include <fmt/format.h>
#include <httplib.h>
#include <mutex>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <tuple>

#include "client/station_client.h"
#include "programs/status/asked_host.h"
#include "programs/status/day.h"
#include "programs/status/page_html.h"
#include "programs/status/reports.h"

namespace ostrel {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kFresh = std::chrono::milliseconds(500);
constexpr auto kPatience = std::chrono::seconds(5);
constexpr int kNotAnswering = 503, kMisdirected = 421;
/// Nothing but what this server has, and nothing inline: a name of a product can be no script.
constexpr const char* kPolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; "
    "base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
constexpr std::size_t kLongestRequest = 4096;  // bytes of a body: nothing is taken

/// One question to the station answers many readers.
class Latest {
 public:
  Latest(std::string folder, std::string question)
      : folder_(std::move(folder)), question_(std::move(question)) {}

  /// Throws std::runtime_error.
  std::string Get() {
    const std::lock_guard lock(mutex_);
    if (answer_.empty() || Clock::now() - taken_ > kFresh) {
      answer_.clear();
      answer_ = AskStation(folder_, question_, kPatience);
      taken_ = Clock::now();
    }
    return answer_;
  }

 private:
  std::string folder_, question_;
  std::mutex mutex_;
  std::string answer_;
  Clock::time_point taken_;
};

struct Place {
  std::string address = "127.0.0.1";
  int port = 0;
};

Place PlaceOf(const std::string& where) {
  Place place;
  const auto colon = where.rfind(':');
  if (colon != std::string::npos) place.address = where.substr(0, colon);
  const char* const first = where.data() + (colon == std::string::npos ? 0 : colon + 1);
  const char* const last = where.data() + where.size();
  const auto [end, error] = std::from_chars(first, last, place.port);
  if (error != std::errc() || end != last || place.port < 1 || place.port > 65535)
    throw std::runtime_error(fmt::format("\"{}\" is no [ADDRESS:]PORT.", where));
  return place;
}

}  // namespace

void Serve(const std::string& folder, const std::string& where,
           const std::vector<std::string>& names, const LastAlarms& alarms) {
  using Handled = httplib::Server::HandlerResponse;
  const auto place = PlaceOf(where);
  Latest latest(folder, R"({"ask":"status"})"), queue(folder, R"({"ask":"list"})"),
      day(folder, R"({"ask":"day"})");
  httplib::Server server;
  server.set_payload_max_length(kLongestRequest);
  server.set_default_headers({{"Cache-Control", "no-store"},
                              {"X-Content-Type-Options", "nosniff"},
                              {"Referrer-Policy", "no-referrer"},
                              {"Content-Security-Policy", kPolicy}});
  server.set_pre_routing_handler([&](const httplib::Request& request, httplib::Response& response) {
    if (IsMeant(request.get_header_value("Host"), names)) return Handled::Unhandled;
    response.status = kMisdirected;
    response.set_content("Ask by an address, or say --name HOST.\n", "text/plain");
    return Handled::Handled;
  });
  for (const auto& [path, content, type] :
       {std::tuple{"/", kPageHtml, "text/html; charset=utf-8"},
        {"/page.css", kPageCss, "text/css; charset=utf-8"},
        {"/page.js", kPageJs, "text/javascript; charset=utf-8"}})
    server.Get(path, [content = content, type = type](const auto&, httplib::Response& response) {
      response.set_content(content, type);
    });
  server.Get("/status.json", [&](const httplib::Request&, httplib::Response& response) {
    try {
      auto status = Status::parse(latest.Get());
      status["alarms"] = alarms.Get();
      response.set_content(JsonText(status), "application/json");
    } catch (const std::exception& error) {
      response.status = kNotAnswering;
      const Status trouble = {{"error", error.what()}, {"alarms", alarms.Get()}};
      response.set_content(JsonText(trouble), "application/json");
    }
  });
  server.Get("/queue.json", [&](const httplib::Request&, httplib::Response& response) {
    try {
      response.set_content(queue.Get(), "application/json");
    } catch (const std::exception& error) {
      response.status = kNotAnswering;
      response.set_content(JsonText({{"error", error.what()}}), "application/json");
    }
  });
  server.Get("/day.html", [&](const httplib::Request&, httplib::Response& response) {
    try {
      const auto now = std::chrono::floor<milliseconds>(std::chrono::system_clock::now());
      response.set_content(DayOf(Status::parse(day.Get()), now), "text/html; charset=utf-8");
    } catch (const std::exception&) {
      response.status = kNotAnswering;  // nor does one that does not know the question
    }
  });
  server.Get("/metrics", [&](const httplib::Request&, httplib::Response& response) {
    Status status;
    try {
      status = Status::parse(latest.Get());
    } catch (const std::exception&) {
      // The metrics say that it does not answer.
    }
    response.set_content(MetricsOf(status), "text/plain; version=0.0.4; charset=utf-8");
  });
  if (!server.bind_to_port(place.address.c_str(), place.port))
    throw std::runtime_error(
        fmt::format("Nothing can be served at {}:{}.", place.address, place.port));
  fmt::print("http://{}:{}/\n", place.address, place.port);
  std::fflush(stdout);
  server.listen_after_bind();
}

}  // namespace ostrel
