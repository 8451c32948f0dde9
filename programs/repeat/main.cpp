// ostrel-repeat: gives a station the warnings again that are in force, and takes out of its queues
// what is over. Off unless there is a Repeat.toml.
#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>

#include "base/names.h"
#include "base/text.h"
#include "platform/linux/program_folder.h"
#include "platform/linux/sharing.h"
#include "platform/linux/standard_streams.h"
#include "programs/command_line.h"
#include "programs/repeat/repeater.h"

namespace {

using namespace ostrel;

constexpr int kNothingToDo = 78;  // EX_CONFIG of sysexits.h: another try would end alike

struct Options {
  std::string station = ProgramFolder();
  bool check = false, list = false, json = false, once = false;
};

UtcTime Now() {
  return std::chrono::floor<milliseconds>(std::chrono::system_clock::now());
}

/// Blocks the signals that end the program, so that one that comes between two waits is not lost.
sigset_t BlockStopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) sigaddset(&signals, signal);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  return signals;
}

/// True when a stop signal came within `time`.
bool StopsWithin(seconds time, const sigset_t& signals) {
  const timespec wait{.tv_sec = time.count(), .tv_nsec = 0};
  int signal = 0;
  do {
    signal = sigtimedwait(&signals, nullptr, &wait);
  } while (signal < 0 && errno == EINTR);
  return signal > 0;
}

/// A lasting failure is said once.
class Failures {
 public:
  void Note(const std::string& what) {
    if (what != last_) fmt::print(stderr, "ostrel-repeat: {}\n", Printable(what));
    last_ = what;
  }

 private:
  std::string last_;
};

int Run(const Options& options, const RepeatConfig& config) {
  const auto signals = BlockStopSignals();
  ShareWithGroupOf(options.station);
  Repeater repeater(options.station, config);
  Failures failures;
  do {
    try {
      repeater.Look(Now());
      failures.Note({});
    } catch (const std::exception& error) {  // the station may be away for a while
      if (options.once) throw;
      failures.Note(error.what());
    }
  } while (!options.once && !StopsWithin(config.interval, signals));
  return EXIT_SUCCESS;
}

}  // namespace

int main(int count, char* arguments[]) {
  FillStandardStreams();
  Options options;
  CLI::App app("Repeats the warnings that are in force.");
  app.add_option("--station", options.station, "The station's folder")->capture_default_str();
  auto* const check =
      app.add_flag("--check", options.check, "Explains Repeat.toml, or says what is wrong in it");
  auto* const list = app.add_flag("--list", options.list, "What is in force, and when it goes out")
                         ->excludes(check);
  app.add_flag("--json", options.json, "With --list: for programs")->needs(list);
  app.add_flag("--once", options.once, "Looks once and ends")->excludes(check)->excludes(list);
  Describe(app, "ostrel-repeat", "ostrel-repeat --list");
  if (const auto status = Parse(app, count, arguments)) return *status;
  RepeatConfig config;
  try {
    const auto path = JoinPath(options.station, "Repeat.toml");
    if (!std::filesystem::exists(path))
      throw std::runtime_error(fmt::format("There is no {}: nothing is repeated.", path));
    config = ReadRepeatConfig(path);
  } catch (const std::exception& error) {
    fmt::print(stderr, "ostrel-repeat: {}\n", Printable(error.what()));
    return kNothingToDo;
  }
  try {
    if (options.check) {
      fmt::print("{}", Explain(config));
      return EXIT_SUCCESS;
    }
    if (!options.list) return Run(options, config);
    Repeater repeater(options.station, config);
    fmt::print("{}", options.json ? repeater.ListAsJson(Now()) : repeater.List(Now()));
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    fmt::print(stderr, "ostrel-repeat: {}\n", Printable(error.what()));
    return EXIT_FAILURE;
  }
}
