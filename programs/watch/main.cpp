// Starts a station, asks it over its socket whether it lives, and starts it again when it does not:
// killed, its port closes and the transmitter drops.
#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdlib>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <systemd/sd-daemon.h>
#include <thread>
#include <unistd.h>

#include "base/text.h"
#include "client/station_client.h"
#include "platform/linux/program_folder.h"
#include "programs/command_line.h"
#include "programs/watch/child.h"
#include "programs/watch/listener.h"
#include "programs/watch/watchdog.h"

namespace {

using namespace ostrel;

constexpr milliseconds kStep{250};
constexpr int kRefusedStart = 1;  // a station that ends so would end so again

struct Options {
  std::string station = ProgramFolder();
  std::vector<std::string> command;
  Patience patience;
  double answerSeconds = 10;
  double silenceSeconds = 0;  // keyed and no packet: 0 never ends a station
};

void Say(const std::string& text) {
  fmt::print(stderr, "ostrel-watch: {}\n", Printable(text));
}

/// Stop signals come as what is read from a descriptor, so that none is lost between two looks.
class StopSignals {
 public:
  StopSignals() {
    sigemptyset(&signals_);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) sigaddset(&signals_, signal);
    sigprocmask(SIG_BLOCK, &signals_, nullptr);
    descriptor_ = signalfd(-1, &signals_, SFD_NONBLOCK | SFD_CLOEXEC);
  }
  ~StopSignals() { close(descriptor_); }
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

  /// The signal that came, or 0.
  int Next() {
    signalfd_siginfo info{};
    if (read(descriptor_, &info, sizeof info) != sizeof info) return 0;
    isStopping_ = true;
    return static_cast<int>(info.ssi_signo);
  }
  bool IsStopping() const { return isStopping_; }

 private:
  sigset_t signals_{};
  int descriptor_ = -1;
  bool isStopping_ = false;
};

class Watch {
 public:
  explicit Watch(const Options& options)
      : options_(options),
        watchdog_(options.patience),
        listener_(SocketOf(options.station), watchdog_) {}

  /// Until the program ends by itself or by a stop. Returns its exit status.
  int Run() {
    for (;;) {
      const int status = RunOnce();
      if (stop_.IsStopping() || WIFEXITED(status)) {
        if (WIFEXITED(status) && (stop_.IsStopping() || WEXITSTATUS(status) <= kRefusedStart))
          return WEXITSTATUS(status);
        if (stop_.IsStopping()) return EXIT_FAILURE;
      }
      WaitForNextStart();
      if (stop_.IsStopping()) return EXIT_SUCCESS;
    }
  }

 private:
  /// From start to end. Returns how it ended, as wait tells it.
  int RunOnce() {
    Child child(options_.command);
    watchdog_.Started(SteadyNow());
    listener_.Reset();
    while (!child.Ended()) {
      if (const int signal = stop_.Next()) child.Signal(signal);
      listener_.Listen(kStep);
      TellServiceManager();
      if (watchdog_.Hangs(SteadyNow())) End(child, "it does not answer");
      if (IsKeyedAndSilent()) End(child, "it is keyed and sends nothing");
    }
    return *child.Ended();
  }

  static void End(Child& child, const std::string& why) {
    Say(fmt::format("The station is killed: {}.", why));
    child.Kill();
  }

  bool IsKeyedAndSilent() {
    if (options_.silenceSeconds <= 0 || listener_.status().empty()) return false;
    const auto status = nlohmann::json::parse(listener_.status());
    const auto& age = status.at("sincePacket");
    return status.at("state") == "idle" && status.at("keyed") == true && !age.is_null() &&
           age > options_.silenceSeconds;
  }

  /// Ready with the first answer. Alive is the watch itself: the station is its own concern.
  void TellServiceManager() {
    if (!isReady_ && !listener_.status().empty()) {
      isReady_ = true;
      sd_notify(0, "READY=1");
    }
    sd_notify(0, "WATCHDOG=1");
  }

  void WaitForNextStart() {
    const auto next = watchdog_.NextStart(SteadyNow());
    if (next > SteadyNow())
      Say(fmt::format("It was started often enough; the next start is in {} s.",
                      std::chrono::ceil<seconds>(next - SteadyNow()).count()));
    while (SteadyNow() < next && stop_.Next() == 0) {
      std::this_thread::sleep_for(kStep);
      sd_notify(0, "WATCHDOG=1");
    }
    if (!stop_.IsStopping()) Say("The station is started again.");
  }

  Options options_;
  StopSignals stop_;
  Watchdog watchdog_;
  Listener listener_;
  bool isReady_ = false;
};

}  // namespace

int main(int count, char* arguments[]) {
  std::signal(SIGPIPE, SIG_IGN);
  Options options;
  CLI::App app("Starts a station and starts it again when it hangs.");
  app.add_option("--station", options.station, "The station's folder")->capture_default_str();
  app.add_option("--patience", options.answerSeconds,
                 "Seconds without an answer, beyond what the station announced")
      ->check(CLI::Range(1.0, 3600.0))
      ->capture_default_str();
  app.add_option("--starts-an-hour", options.patience.startsAnHour, "At most")
      ->check(CLI::Range(1, 60))
      ->capture_default_str();
  app.add_option("--end-when-silent", options.silenceSeconds,
                 "Ends a station that is keyed and has sent nothing for so many seconds");
  app.add_option("program", options.command, "The station's program and its arguments")->required();
  Describe(app, "ostrel-watch", "ostrel-watch /opt/ostrel/ostrel-headless");
  if (const auto status = Parse(app, count, arguments)) return *status;
  options.patience.answer = milliseconds(static_cast<long>(options.answerSeconds * 1000));
  try {
    return Watch(options).Run();
  } catch (const std::exception& error) {
    Say(error.what());
    return EXIT_FAILURE;
  }
}
