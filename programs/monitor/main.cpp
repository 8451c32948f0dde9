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

#include "programs/monitor/line_pacer.h"
#include "programs/monitor/receiver.h"
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
  std::optional<int> udpPort;
  std::string folder;
  std::optional<int> idleSeconds;
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

  /// False when it is time to end. Returns early when `source` has something to read.
  bool Wait(const OpenFile* source, milliseconds longest) const {
    std::array<pollfd, 2> fds{{{stop_.Get(), POLLIN, 0}, {source ? source->Get() : -1, POLLIN, 0}}};
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

void ListenToDatagrams(const OpenFile& socket, Listener& listener, Receiver& receiver) {
  std::array<char, 4096> buffer{};
  while (listener.Wait(&socket, Listener::kLongWait)) {
    std::size_t size = 0;
    if (ReadLine(socket, buffer, size) != LineState::kData) continue;
    listener.Heard();
    const std::optional<StreamEvent> event = ReadDatagram({buffer.data(), size});
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

int Run(const Options& options) {
  const OpenFile stop = OpenStopSignals();
  ProductStore store(options.folder);
  Receiver receiver(store);
  Listener listener(stop, options.idleSeconds);
  if (options.udpPort) {
    ListenToDatagrams(OpenDatagramPort(*options.udpPort), listener, receiver);
  } else if (!options.device.empty()) {
    ListenToLine(OpenLine(options.device, options.baud), std::nullopt, listener, receiver);
  } else {
    ListenToNewLine(options, listener, receiver);
  }
  receiver.ShowSummary();
  return receiver.SawBadBlock() ? 1 : 0;
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
  auto* udp = app.add_option("--udp", options.udpPort, "Listen to the datagrams to this port")
                  ->check(CLI::Range(1, 65535));
  app.add_option("--out", options.folder, "Folder for the products")->required();
  app.add_option("--exit-when-idle", options.idleSeconds,
                 "End when nothing was heard for this many seconds after the first byte")
      ->check(CLI::PositiveNumber);
  udp->excludes(device)->excludes(link);
  device->excludes(link);
}

}  // namespace
}  // namespace ostrel

int main(int argc, char** argv) {
  CLI::App app{
      "Receives an EMWIN packet stream, checks every packet and puts the products together."};
  app.footer(
      "Exit status: 0 all blocks were good, 1 a block was damaged or missing, 2 it could not "
      "listen.");
  ostrel::Options options;
  ostrel::Declare(app, options);
  CLI11_PARSE(app, argc, argv);
  try {
    return ostrel::Run(options);
  } catch (const std::exception& failure) {
    fmt::print(stderr, "ostrel-monitor: {}\n", failure.what());
    return 2;
  }
}
