// ostrel-monitor: a receiver for the station's stream, for those who want to see or prove what went
// on the air.
#include <CLI/CLI.hpp>
#include <array>
#include <chrono>
#include <csignal>
#include <fmt/format.h>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/signalfd.h>

#include "base/text.h"
#include "programs/command_line.h"
#include "programs/monitor/audience.h"
#include "programs/monitor/line_pacer.h"
#include "programs/monitor/receiver.h"
#include "programs/monitor/reference.h"
#include "receive/datagram_port.h"
#include "receive/datagram_reader.h"
#include "receive/line.h"

namespace ostrel {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

struct Options {
  std::string link;
  std::optional<int> baud;
  std::string device;
  std::string udp;  // [ADDRESS:]PORT
  std::string folder;
  std::optional<int> idleSeconds;
  ReferenceOptions reference;
  AudienceOptions audience;
};

// SIGINT, SIGTERM and SIGHUP as something to poll for, so that none is missed and none cuts a line
// of the display.
OpenFile OpenStopSignals() {
  sigset_t stops;
  sigemptyset(&stops);
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&stops, number);
  sigprocmask(SIG_BLOCK, &stops, nullptr);
  return OpenFile(signalfd(-1, &stops, SFD_CLOEXEC));
}

// Waits for the stop signals and the source in turn until one of them, or the silence, ends it.
class Listener {
 public:
  Listener(const OpenFile& stop, std::optional<int> idleSeconds)
      : stop_(stop), idleSeconds_(idleSeconds) {}

  /// The source was heard just now; the silence is counted from here.
  void Heard() { lastHeard_ = Clock::now(); }

  /// False when it is time to end. Returns early when one of the sources has something to read.
  bool Wait(const OpenFile* source, milliseconds longest, const OpenFile* second = nullptr) const {
    std::array<pollfd, 3> fds{{{stop_.Get(), POLLIN, 0},
                               {source ? source->Get() : -1, POLLIN, 0},
                               {second ? second->Get() : -1, POLLIN, 0}}};
    poll(fds.data(), fds.size(), static_cast<int>(longest.count()));
    if ((fds[0].revents & POLLIN) != 0 || IsIdle()) return false;
    // A line that nobody has open answers every poll at once.
    const bool hungUp = (fds[1].revents & (POLLHUP | POLLERR)) != 0 && !(fds[1].revents & POLLIN);
    return !hungUp || Wait(nullptr, kNap);
  }

  static constexpr milliseconds kNap{10};
  static constexpr milliseconds kLongWait{250};

 private:
  bool IsIdle() const {
    return idleSeconds_ && lastHeard_ &&
           Clock::now() - *lastHeard_ >= std::chrono::seconds(*idleSeconds_);
  }

  const OpenFile& stop_;
  std::optional<int> idleSeconds_;
  std::optional<Clock::time_point> lastHeard_;
};

void ListenToLine(const OpenFile& line, std::optional<int> baud, Listener& listener,
                  Receiver& receiver) {
  StreamDecoder decoder;
  LinePacer pacer(baud, Clock::now());
  std::array<char, 4096> buffer{};
  bool open = true;
  while (open) {
    const std::size_t allowed = pacer.Allowance(Clock::now(), buffer.size());
    std::size_t size = 0;
    const LineState state =
        allowed > 0 ? ReadLine(line, std::span(buffer).first(allowed), size) : LineState::kNothing;
    if (state == LineState::kData) {
      listener.Heard();
      pacer.Spend(size);
      receiver.Take(decoder.Feed({buffer.data(), size}));
    }
    const bool mayRead = allowed > size || !baud;
    open = state != LineState::kEnd &&
           listener.Wait(mayRead ? &line : nullptr, mayRead ? Listener::kLongWait : Listener::kNap);
  }
  receiver.Take(decoder.Finish());
}

void ListenToDatagrams(DatagramPort port, Listener& listener, Receiver& receiver) {
  std::array<char, 4096> buffer{};
  while (listener.Wait(&port.Readiness(), Listener::kLongWait)) {
    const auto datagram = port.Next(buffer);
    if (!datagram) continue;
    listener.Heard();
    const std::optional<StreamEvent> event = ReadDatagram(datagram->bytes);
    if (!event) {
      ShowLine("the station has ended its stream");
      return;
    }
    receiver.Take({*event});
  }
}

void ListenToNewLine(const Options& options, Listener& listener, Receiver& receiver) {
  const PseudoTerminal terminal = MakePseudoTerminal();
  std::optional<LineLink> link;
  if (!options.link.empty()) link.emplace(options.link, terminal.senderName);
  ShowLine(
      fmt::format("listening on {}", options.link.empty() ? terminal.senderName : options.link));
  ListenToLine(terminal.receiver, options.baud, listener, receiver);
}

/// Returns whether all was heard that the station sent.
bool ListenWithReference(const Options& options, Listener& listener) {
  ReferenceListener reference(options.reference);
  const OpenFile line = OpenLine(options.device, options.baud);
  StreamDecoder decoder;
  std::array<char, 4096> buffer{};
  for (bool open = true; open;) {
    std::size_t size = 0;
    const LineState state = ReadLine(line, buffer, size);
    if (state == LineState::kData) listener.Heard();
    reference.Take(decoder.Feed({buffer.data(), size}));
    open =
        state != LineState::kEnd && listener.Wait(&line, Listener::kLongWait, &reference.station());
  }
  return reference.Finish();
}

int Run(const Options& options) {
  const OpenFile stop = OpenStopSignals();
  if (options.reference.station.port != 0) {
    Listener listener(stop, options.idleSeconds);
    return ListenWithReference(options, listener) ? 0 : 1;
  }
  ProductStore store(options.folder);
  std::optional<Audience> audience;
  if (options.audience.IsWanted()) audience.emplace(options.audience, options.folder);
  Receiver receiver(store, audience ? &audience->page() : nullptr);
  Listener listener(stop, options.idleSeconds);
  if (!options.udp.empty()) {
    ListenToDatagrams(DatagramPort(ReadDatagramAddress(options.udp)), listener, receiver);
  } else if (!options.device.empty()) {
    ListenToLine(OpenLine(options.device, options.baud), std::nullopt, listener, receiver);
  } else {
    ListenToNewLine(options, listener, receiver);
  }
  receiver.ShowSummary();
  return receiver.SawBadBlock() ? 1 : 0;
}

/// What is wrong with "[ADDRESS:]PORT"; nothing when empty.
std::string CheckAddress(const std::string& where) {
  try {
    ReadDatagramAddress(where);
    return {};
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

/// Where "udp:9510" is, or "udp:0.0.0.0:9510". Throws CLI::ValidationError.
DatagramAddress StationOf(const std::string& where) {
  constexpr std::string_view kWay = "udp:";
  const bool isRight = where.starts_with(kWay) && CheckAddress(where.substr(kWay.size())).empty();
  if (isRight) return ReadDatagramAddress(where.substr(kWay.size()));
  throw CLI::ValidationError("--reference", "is udp:[ADDRESS:]PORT, as in udp:9510");
}

/// Either products are kept, or what is heard is held against what the station says that it sends.
void DeclareReference(CLI::App& app, ReferenceOptions& options, CLI::Option* device,
                      CLI::Option* out) {
  auto* reference =
      app.add_option_function<std::string>(
             "--reference",
             [&options](const std::string& where) { options.station = StationOf(where); },
             "Compare what DEVICE hears with what the station's datagrams say was sent")
          ->type_name("udp:[ADDRESS:]PORT")
          ->needs(device)
          ->excludes(out);
  const auto add = [&](const char* name, auto& value, const char* help) {
    return app.add_option(name, value, help)->needs(reference);
  };
  add("--json", options.json, "Keep the figures as JSON in this file; - for standard output");
  add("--metrics", options.metrics, "The same for Prometheus");
  add("--interval", options.interval, "Seconds between two figures")
      ->check(CLI::Range(0.1, 3600.0))
      ->capture_default_str();
  auto* after = add("--alarm-after", options.alarmAfter,
                    "Seconds after which it is an alarm that nothing is heard of what is sent")
                    ->check(CLI::PositiveNumber);
  add("--alarm-command", options.alarmCommand, "Run when the alarm begins and when it ends")
      ->needs(after);
}

void Declare(CLI::App& app, Options& options) {
  auto* link =
      app.add_option("--link", options.link,
                     "Make a pseudo-terminal and link it here (a link that is there is replaced)");
  app.add_option("--baud", options.baud,
                 "Take bytes no faster than this rate; with DEVICE, the rate to set it to")
      ->check(CLI::Range(50, 4000000));
  auto* device =
      app.add_option("DEVICE", options.device, "Listen to this serial device or recorded file");
  auto* udp = app.add_option("--udp", options.udp,
                             "Listen to the datagrams to this port: of this computer's station, or "
                             "of other ones with an address of this computer, or 0.0.0.0 for all")
                  ->type_name("[ADDRESS:]PORT")
                  ->check(CheckAddress);
  auto* out = app.add_option("--out", options.folder, "Folder for the products");
  app.add_option("--exit-when-idle", options.idleSeconds,
                 "End when nothing was heard for this many seconds after the first byte")
      ->check(CLI::PositiveNumber);
  udp->excludes(device)->excludes(link);
  device->excludes(link);
  DeclareReference(app, options.reference, device, out);
  DeclareAudience(app, options.audience, out);
}

}  // namespace
}  // namespace ostrel

int main(int argc, char** argv) {
  CLI::App app{
      "Receives an EMWIN packet stream, checks every packet and puts the products together."};
  ostrel::Describe(app, "ostrel-monitor",
                   "ostrel-monitor /dev/ttyUSB0 --baud 1200 --out received\n\n"
                   "Exit status: 0 all blocks were good, 1 a block was damaged, missing or not "
                   "heard, 2 it could not listen.");
  ostrel::Options options;
  ostrel::Declare(app, options);
  app.callback([&options] {
    if (options.folder.empty() && options.reference.station.port == 0)
      throw CLI::RequiredError("--out or --reference");
  });
  if (const auto status = ostrel::Parse(app, argc, argv)) return *status;
  try {
    return ostrel::Run(options);
  } catch (const std::exception& failure) {
    fmt::print(stderr, "ostrel-monitor: {}\n", ostrel::Printable(failure.what()));
    return 2;
  }
}
