// Lets every call of the system that the feed makes fail in turn, once and for a while, with each
// kind of source, and looks whether every product came out whole and once: the feed goes on, or its
// start fails and the next one goes on. The clock goes fast.
//
//   feed_trouble_test [STEP [KIND]]    every STEPth call, 1 unless told otherwise
#include <QCoreApplication>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUdpSocket>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mosquitto.h>
#include <mutex>
#include <netinet/in.h>
#include <set>
#include <sys/socket.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>

#include "base/scope_guard.h"
#include "feed/feed.h"
#include "feed/placing.h"
#include "tests/support/call_shim/call_shim.h"
#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;
using Contents = std::multiset<std::string>;
using Clock = std::chrono::steady_clock;

constexpr int kSpeed = 60;
constexpr std::size_t kLarge = 8000, kLargest = 5000;

/// What fails, and when.
struct Strike {
  std::atomic<bool> isArmed = false;
  std::atomic<long> calls = 0;
  std::atomic<const char*> struck = nullptr;
  long at = 0;
  int error = 0;
  milliseconds lasting{0};
  Clock::time_point until = {};

  int Meet(std::string_view call) {
    if (!isArmed) return 0;
    const long number = ++calls;
    if (number == at) {
      until = Clock::now() + lasting;
      struck = call.data();
    }
    const bool fails = number == at || (number > at && struck && Clock::now() < until);
    return fails ? error : 0;
  }
};
Strike strike;
thread_local bool isOwn = false;  // a thread of the test's

/// What the test does meanwhile does not fail.
template <typename Step>
auto Unharmed(Step&& step) {
  const bool before = std::exchange(isOwn, true);
  const ScopeGuard again([&] { isOwn = before; });
  return step();
}

/// Three products as they are laid down, and as a station sends them.
struct Products {
  std::vector<std::pair<std::string, std::string>> small;
  std::pair<std::string, std::string> large;
  std::vector<std::string> packets;

  Products() {
    VirtualStation station;
    station.Rule(4, "P*");
    station.Set("ComBaud", "115200");
    station.Start();
    small = {{"PONE.TXT", SampleText(1500, 1)}, {"PTWO.TXT", SampleText(900, 2)}};
    large = {"PLARGE.TXT", SampleText(kLarge, 3)};
    for (const auto& [name, content] : small) station.Drop(name, content);
    station.Drop(large.first, large.second);
    station.Run(10s);
    const auto& carried = station.machine.line.carried;
    for (std::size_t at = 0; at + kReceivedPacket <= carried.size(); at += kReceivedPacket) {
      const auto packet = carried.substr(at, kReceivedPacket);
      if (packet.find("FILLFILE") == packet.npos) packets.push_back(packet);
    }
  }
  std::set<std::string> Expected() const {
    std::set<std::string> expected;
    for (const auto& [name, content] : small) expected.insert((name + "=").append(content));
    return expected;
  }
  std::string Stream() const { return fmt::format("{}", fmt::join(packets, "")); }
};

/// One kind of source.
class Kind {
 public:
  explicit Kind(const Products& products) : products_(products) {}
  virtual ~Kind() = default;
  virtual std::string Config() = 0;
  /// True when the source must have been known to its other side before.
  virtual bool RunsBefore() const { return false; }
  /// The products come; the sources are open.
  virtual void Offer() = 0;
  /// With a line in the log: it does not come again.
  virtual bool MayGiveUpLarge() const { return true; }
  /// Nothing is left to be done beyond the delivery.
  virtual bool IsFinished() { return true; }

 protected:
  const Products& products_;
};

class FolderKind : public Kind {
 public:
  FolderKind(const Products& products, std::string afterwards)
      : Kind(products), afterwards_(std::move(afterwards)) {}
  std::string Config() override {
    for (const auto* name : {"tree", "elsewhere", "done"}) fs::remove_all(folder_ / name);
    for (const auto* name : {"tree/sub", "elsewhere"}) fs::create_directories(folder_ / name);
    const auto move = afterwards_ == "move" ? "move_to = \"" + (folder_ / "done") + "\"\n" : "";
    return fmt::format("repeats = 0\n[[folder]]\npaths = [\"{}\"]\nafterwards = \"{}\"\n{}",
                       folder_ / "tree", afterwards_, move);
  }
  void Offer() override {
    std::vector all = products_.small;
    all.push_back(products_.large);
    for (const auto& [name, content] : all) {
      std::ofstream(folder_ / "elsewhere/" + name) << content;
      fs::rename(folder_ / "elsewhere/" + name, folder_ / "tree/sub/" + name);
    }
  }
  bool MayGiveUpLarge() const override { return false; }
  bool IsFinished() override {
    std::size_t left = 0, moved = 0;
    for (const auto& entry : fs::directory_iterator(folder_ / "tree/sub")) left += entry.exists();
    if (fs::exists(folder_ / "done"))
      for (const auto& entry : fs::directory_iterator(folder_ / "done")) moved += entry.exists();
    return left == (afterwards_ == "leave" ? 3U : 0U) && moved == (afterwards_ == "move" ? 3U : 0U);
  }

 private:
  TemporaryFolder folder_;
  std::string afterwards_;
};

class ArchiveKind : public Kind {
 public:
  using Kind::Kind;
  std::string Config() override {
    fs::remove_all(station_.folder / "tree");
    fs::create_directories(station_.folder / "tree");
    return fmt::format("[[folder]]\npaths = [\"{}\"]\nafterwards = \"delete\"\nunpack = true\n",
                       station_.folder / "tree");
  }
  void Offer() override {
    const auto archive = station_.archives.Create(station_.folder / "ALL.ZIP").writer;
    std::vector all = products_.small;
    all.push_back(products_.large);
    for (const auto& [name, content] : all) {
      std::ofstream(station_.folder / name) << content;
      archive->Add(station_.folder.path(), name);
    }
    archive->Close();
    fs::rename(station_.folder / "ALL.ZIP", station_.folder / "tree/ALL.ZIP");
  }
  bool IsFinished() override { return fs::is_empty(station_.folder / "tree"); }

 private:
  VirtualStation station_;
};

class SerialKind : public Kind {
 public:
  using Kind::Kind;
  std::string Config() override {
    terminal_.emplace(MakePseudoTerminal());
    return fmt::format("repeats = 0\n[[serial]]\ndevice = \"{}\"\n", terminal_->senderName);
  }
  void Offer() override {
    const auto stream = products_.Stream();
    for (std::size_t at = 0; at < stream.size();) {
      const auto piece = std::string_view(stream).substr(at, 1000);
      const auto count = ::write(terminal_->receiver.Get(), piece.data(), piece.size());
      if (count > 0) at += static_cast<std::size_t>(count);
      isOwn = false;
      QCoreApplication::processEvents();
      isOwn = true;
    }
  }

 private:
  std::optional<PseudoTerminal> terminal_;
};

class UdpKind : public Kind {
 public:
  using Kind::Kind;
  std::string Config() override {
    QUdpSocket probe;
    probe.bind(QHostAddress::LocalHost);
    port_ = probe.localPort();
    return fmt::format("repeats = 0\n[[udp]]\nport = {}\n", port_);
  }
  void Offer() override {
    QUdpSocket sender;
    for (const auto& packet : products_.packets) {
      const auto datagram = "R0001" + packet;
      sender.writeDatagram(datagram.data(), std::ssize(datagram), QHostAddress::LocalHost, port_);
    }
  }

 private:
  quint16 port_ = 0;
};

/// Says all of it to each that connects, as a station does from time to time.
class TcpKind : public Kind {
 public:
  using Kind::Kind;
  ~TcpKind() override { End(); }
  std::string Config() override {
    End();
    isSpeaking_ = isEnding_ = false;
    server_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{
        .sin_family = AF_INET, .sin_port = 0, .sin_addr = {htonl(INADDR_LOOPBACK)}, .sin_zero = {}};
    socklen_t length = sizeof address;
    auto* const where = reinterpret_cast<sockaddr*>(&address);
    if (bind(server_, where, length) != 0 || listen(server_, 5) != 0 ||
        getsockname(server_, where, &length) != 0)
      throw std::system_error(errno, std::generic_category());
    speaker_ = std::thread([this] { Speak(); });
    return fmt::format("[[tcp]]\nhost = \"127.0.0.1\"\nport = {}\nsilence = 5\n",
                       ntohs(address.sin_port));
  }
  void Offer() override { isSpeaking_ = true; }

 private:
  void Speak() {
    isOwn = true;
    for (int peer = -1; (peer = accept(server_, nullptr, nullptr)) >= 0;) {
      while (!isSpeaking_ && !isEnding_) std::this_thread::sleep_for(100ms);
      const auto stream = products_.Stream();
      [[maybe_unused]] auto sent = send(peer, stream.data(), stream.size(), MSG_NOSIGNAL);
      peers_.push_back(peer);
    }
  }
  void End() {
    isEnding_ = true;
    shutdown(server_, SHUT_RDWR);
    if (speaker_.joinable()) speaker_.join();
    for (const int peer : peers_) close(peer);
    peers_.clear();
    close(server_);
  }

  int server_ = -1;
  std::atomic<bool> isSpeaking_ = false, isEnding_ = false;
  std::vector<int> peers_;
  std::thread speaker_;
};

/// A real broker, for as long as the test runs.
class Broker {
 public:
  Broker() {
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost);
    port = probe.serverPort();
    probe.close();
    std::ofstream(folder_ / "conf")
        << fmt::format("listener {} 127.0.0.1\nallow_anonymous true\nlog_type none\n", port);
    process_ = fork();
    if (process_ == 0) {
      execl("/usr/sbin/mosquitto", "mosquitto", "-c", (folder_ / "conf").c_str(), nullptr);
      _exit(127);
    }
  }
  ~Broker() {
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
  }
  int port = 0;

 private:
  TemporaryFolder folder_;
  pid_t process_ = 0;
};

class BrokerKind : public Kind {
 public:
  BrokerKind(const Products& products, const Broker& broker) : Kind(products), broker_(broker) {}
  std::string Config() override {
    ++round_;
    return fmt::format(
        "repeats = 0\n[[broker]]\nurl = \"mqtt://127.0.0.1:{}/t{}\"\nsession = \"s{}\"\n",
        broker_.port, round_, round_);
  }
  bool RunsBefore() const override { return true; }
  void Offer() override {
    std::vector all = products_.small;
    all.push_back(products_.large);
    for (const auto& [name, content] : all) {
      std::ofstream(folder_ / "content") << content;
      [[maybe_unused]] const int status = std::system(
          fmt::format(
              "mosquitto_pub -p {} -V 5 -q 1 -t t{}/{} -D publish user-property id {}{} -f {}",
              broker_.port, round_, name, round_, name, folder_ / "content")
              .c_str());
    }
  }

 private:
  const Broker& broker_;
  TemporaryFolder folder_;
  int round_ = 0;
};

/// Products go to the broker as well, and a subscriber hears them.
class PublishKind : public FolderKind {
 public:
  PublishKind(const Products& products, const Broker& broker)
      : FolderKind(products, "leave"), broker_(broker) {}
  ~PublishKind() override { End(); }
  std::string Config() override {
    End();
    published_.clear();
    topic_ = fmt::format("p{}", ++round_);
    isSubscribed_ = isEnding_ = false;
    subscriber_ = std::thread([this] { Listen(); });
    while (!isSubscribed_) std::this_thread::sleep_for(10ms);
    return FolderKind::Config() +
           fmt::format("[publish]\nurl = \"mqtt://127.0.0.1:{}/{}\"\n", broker_.port, topic_);
  }
  bool IsFinished() override {
    const std::lock_guard lock(mutex_);
    return published_ == products_.Expected() && FolderKind::IsFinished();
  }

 private:
  void Listen() {
    isOwn = true;
    auto* const client = mosquitto_new(nullptr, true, this);
    mosquitto_subscribe_callback_set(client, [](mosquitto*, void* self, int, int, const int*) {
      static_cast<PublishKind*>(self)->isSubscribed_ = true;
    });
    mosquitto_message_callback_set(
        client, [](mosquitto*, void* self, const mosquitto_message* message) {
          auto& kind = *static_cast<PublishKind*>(self);
          const std::lock_guard lock(kind.mutex_);
          kind.published_.insert(std::string(message->topic).substr(kind.topic_.size() + 1) + "=" +
                                 std::string(static_cast<const char*>(message->payload),
                                             static_cast<std::size_t>(message->payloadlen)));
        });
    while (mosquitto_connect(client, "127.0.0.1", broker_.port, 600) != MOSQ_ERR_SUCCESS)
      std::this_thread::sleep_for(1s);
    mosquitto_subscribe(client, nullptr, (topic_ + "/+").c_str(), 1);
    while (!isEnding_) mosquitto_loop(client, 100, 1);
    mosquitto_destroy(client);
  }
  void End() {
    isEnding_ = true;
    if (subscriber_.joinable()) subscriber_.join();
  }

  const Broker& broker_;
  int round_ = 0;
  std::string topic_;
  std::atomic<bool> isSubscribed_ = false, isEnding_ = false;
  std::mutex mutex_;
  std::set<std::string> published_;
  std::thread subscriber_;
};

/// One life of a feed, its trouble, and what came of it.
class Round {
 public:
  Round(Kind& kind, const Products& products) : kind_(kind), products_(products) {
    for (const auto* name : {"KvData/RxFiles", "KvData/Feed"})
      fs::create_directories(station_ / name);
    std::ofstream(station_ / "Feed.toml") << "largest = " << kLargest << "\n" << kind.Config();
  }
  /// False when something was lost, came twice, or was thrown where nobody meets it.
  bool Run(long at, int error, milliseconds lasting) {
    if (kind_.RunsBefore()) Live([&] { Pump(1s, [] { return false; }); });
    Arm(at, error, lasting);
    bool isWell = Live([&] {
      Unharmed([&] { kind_.Offer(); });
      Pump(120s, [&] { return IsOut() && kind_.IsFinished(); });
    });
    strike.isArmed = false;
    // Another life finishes what is left, and brings nothing again.
    isWell = Live([&] {
               Pump(60s, [&] { return IsOut() && kind_.IsFinished(); });
               Pump(3s, [] { return false; });
             }) &&
             isWell;
    return isWell && Check();
  }

 private:
  void Arm(long at, int error, milliseconds lasting) {
    strike.calls = 0;
    strike.struck = nullptr;
    strike.at = at, strike.error = error, strike.lasting = lasting;
    strike.isArmed = true;
  }
  /// A start may fail, with a reason that may pass; then there is another one.
  template <typename Days>
  bool Live(Days&& days) {
    for (int start = 0;; ++start) {
      std::optional<Feed> feed;
      try {
        feed.emplace(station_.path(), SourceKinds::kAll, false);
        feed->Start();
      } catch (const Failure&) {  // with status 1: whoever started it starts it again
        if (start < 3 && Again()) continue;
        return false;
      } catch (const std::system_error&) {
        if (start < 3 && Again()) continue;
        return false;
      }
      const auto isOpen = [&] {
        const auto figures = feed->Figures();
        return std::all_of(figures.sources.begin(), figures.sources.end(),
                           [](const auto& source) { return source.isWell; });
      };
      Pump(60s, isOpen);
      days();
      return true;
    }
  }
  static bool Again() {
    Pump(1s, [] { return false; });
    return true;
  }
  template <typename Test>
  static void Pump(seconds longest, Test&& isEnough) {
    const auto end = Clock::now() + longest;
    while (Clock::now() < end && !Unharmed(isEnough)) {
      QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
      Unharmed([] { std::this_thread::sleep_for(20ms); });
    }
  }
  /// The files of a folder of the station, without the numbers of copies.
  Contents In(const std::string& folder) const {
    Contents contents;
    std::error_code none;
    for (const auto& entry : fs::directory_iterator(station_ / folder, none)) {
      const auto name = entry.path().filename().string();
      if (!name.starts_with('.'))
        contents.insert(name.substr(0, 10) + "=" + ReadWhole(entry.path()));
    }
    return contents;
  }
  bool IsOut() const {
    return In("KvData/RxFiles").size() >= products_.small.size() &&
           (kind_.MayGiveUpLarge() || !In("KvData/Feed/unknown").empty());
  }
  bool Check() const {
    const auto once = products_.Expected();
    const Contents expected(once.begin(), once.end());
    const auto large = In("KvData/Feed/unknown");
    const bool isLargeThere =
        large == Contents{products_.large.first + "=" + products_.large.second};
    const auto log = VirtualStation::ReadFile(station_ / "KvData/Feed/FeedLog.txt");
    const bool isLargeTold =
        kind_.MayGiveUpLarge() && large.empty() &&
        (log.find("cannot be kept") != log.npos || log.find("is not taken") != log.npos);
    const auto came = In("KvData/RxFiles");
    if (came == expected && (isLargeThere || isLargeTold) && kind_.IsFinished()) return true;
    fmt::print("came {} of {}, large {}, finished {}\n{}\n", came.size(), expected.size(),
               large.size(), kind_.IsFinished(), log);
    return false;
  }

  Kind& kind_;
  const Products& products_;
  TemporaryFolder station_;
};

bool TryAll(const std::string& name, Kind& kind, const Products& products, long step) {
  struct Trouble {
    int error;
    milliseconds lasting;
  };
  long rounds = 0, calls = 0;
  for (const auto& [error, lasting] : {Trouble{EIO, 0ms}, {ENOSPC, 300ms}, {EMFILE, 0ms}}) {
    for (long at = 1 + rounds % step;; at += step) {
      ++rounds;
      Round round(kind, products);
      const bool isWell = round.Run(at, error, lasting);
      const char* const struck = strike.struck;
      if (!isWell) {
        fmt::print("{}: call {} ({}) with {}\n", name, at, struck != nullptr ? struck : "none",
                   std::strerror(error));
        return false;
      }
      calls = std::max(calls, at);
      if (struck == nullptr) break;
    }
  }
  fmt::print("{}: {} rounds over {} calls, nothing lost, nothing twice\n", name, rounds, calls);
  std::fflush(stdout);
  return true;
}

bool Run(long step, const std::string& only) {
  const Products products;
  const Broker broker;
  call_shim::Watch(
      [](std::string_view call, std::string_view) { return isOwn ? 0 : strike.Meet(call); });
  call_shim::SpeedUp(kSpeed);
  const std::pair<const char*, std::unique_ptr<Kind>> kinds[] = {
      {"folder", std::make_unique<FolderKind>(products, "leave")},
      {"move", std::make_unique<FolderKind>(products, "move")},
      {"delete", std::make_unique<FolderKind>(products, "delete")},
      {"archive", std::make_unique<ArchiveKind>(products)},
      {"serial", std::make_unique<SerialKind>(products)},
      {"udp", std::make_unique<UdpKind>(products)},
      {"tcp", std::make_unique<TcpKind>(products)},
      {"broker", std::make_unique<BrokerKind>(products, broker)},
      {"publish", std::make_unique<PublishKind>(products, broker)}};
  bool isWell = true;
  for (const auto& [name, kind] : kinds) {
    if (only.empty() || only == name) isWell = TryAll(name, *kind, products, step) && isWell;
  }
  return isWell;
}

}  // namespace
}  // namespace ostrel

int main(int count, char* arguments[]) {
  QCoreApplication application(count, arguments);
  const long step = count > 1 ? std::atol(arguments[1]) : 1;
  return ostrel::Run(std::max(step, 1L), count > 2 ? arguments[2] : "") ? EXIT_SUCCESS
                                                                        : EXIT_FAILURE;
}
