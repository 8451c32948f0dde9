// How a station stands: for people, for programs, and over HTTP. It only asks.
#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdlib>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <thread>

#include "base/text.h"
#include "client/station_client.h"
#include "platform/linux/program_folder.h"
#include "programs/command_line.h"
#include "programs/status/alarms.h"
#include "programs/status/publisher.h"
#include "programs/status/reports.h"
#include "programs/status/serve.h"

namespace {

using namespace ostrel;

struct Options {
  std::string station = ProgramFolder();
  std::string where, alarms, broker;
  std::vector<std::string> names;
  bool json = false, metrics = false;
};

/// Serves, watches, or both: then the page shows the last alarms, too.
void Attend(const Options& options) {
  LastAlarms last;
  if (options.alarms.empty()) return Serve(options.station, options.where, options.names, last);
  const auto config = ReadAlarms(options.alarms);
  if (options.where.empty()) WatchForAlarms(options.station, config, last);
  std::thread([&] { WatchForAlarms(options.station, config, last); }).detach();
  Serve(options.station, options.where, options.names, last);
}

void Run(const Options& options) {
  if (!options.where.empty() || !options.alarms.empty()) return Attend(options);
  if (!options.broker.empty()) return Publish(options.station, options.broker);
  const auto answer = AskForStatus(options.station);
  if (options.json) return fmt::print("{}\n", answer);
  const auto status = Status::parse(answer);
  fmt::print("{}", options.metrics ? MetricsOf(status) : PageOf(status));
}

}  // namespace

int main(int count, char* arguments[]) {
  std::signal(SIGPIPE, SIG_IGN);
  Options options;
  CLI::App app("Shows how a station stands.");
  app.add_option("--station", options.station, "The station's folder")->capture_default_str();
  auto* const json = app.add_flag("--json", options.json, "The answer as the station gives it");
  auto* const metrics = app.add_flag("--metrics", options.metrics, "For Prometheus");
  auto* const serve = app.add_option("--serve", options.where,
                                     "Serves page, answer and metrics over HTTP; on 127.0.0.1 "
                                     "unless an address is given")
                          ->type_name("[ADDRESS:]PORT");
  app.add_option("--name", options.names, "A name by which browsers ask for the page")
      ->type_name("HOST")
      ->needs(serve);
  auto* const watch =
      app.add_option("--watch", options.alarms, "Runs the commands of the alarms in this file")
          ->type_name("CONFIG");
  auto* const publish =
      app.add_option("--publish", options.broker, "Keeps the status as a message on an MQTT broker")
          ->type_name("mqtt[s]://[USER:PASSWORD@]HOST[:PORT]/TOPIC");
  CLI::Option* const ways[] = {json, metrics, serve, watch, publish};
  for (auto* const one : ways) {
    for (auto* const other : ways) {
      const bool goTogether = (one == serve && other == watch) || (one == watch && other == serve);
      if (one != other && !goTogether) one->excludes(other);
    }
  }
  Describe(app, "ostrel-status", "ostrel-status --serve 8080");
  if (const auto status = Parse(app, count, arguments)) return *status;
  try {
    Run(options);
  } catch (const std::exception& error) {
    fmt::print(stderr, "ostrel-status: {}\n", Printable(error.what()));
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
