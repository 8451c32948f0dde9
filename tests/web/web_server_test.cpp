// Who is answered what, and who loses the place: real sockets, a clock that is set by hand.
#include "web/web_server.h"

#include <arpa/inet.h>
#include <array>
#include <atomic>
#include <gtest/gtest.h>
#include <latch>
#include <semaphore>
#include <sys/socket.h>
#include <unistd.h>

#include "web/asked_host.h"

namespace ostrel {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kLarge = 32 << 20;  // more than a system keeps for who does not read
constexpr const char* kRequest = "GET / HTTP/1.0\r\n\r\n";

TEST(AskedHost, IsAnAddressOrANameThatWasTold) {
  for (const auto* host : {"", "127.0.0.1", "127.0.0.1:8080", "[::1]:8080", "[::1]", "LocalHost:80",
                           "shed.lan", "SHED.lan:8080"})
    EXPECT_TRUE(IsMeant(host, {"Shed.lan"})) << host;
  for (const auto* host : {"evil.example", "127.0.0.1.evil.example", "localhost.evil.example:8080",
                           "shed.lan.evil.example", "[::1].evil.example", "1.2.3", "[", "a:b:c"})
    EXPECT_FALSE(IsMeant(host, {"shed.lan"})) << host;
}

TEST(Connections, KeepWhoHasSaidMoreThanWasRead) {
  Connections connections({10s, 9, 2});
  int ends[3][2];
  for (auto& pair : ends) ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, pair), 0);
  EXPECT_EQ(send(ends[0][1], "G", 1, 0), 1);
  EXPECT_FALSE(connections.Begin(ends[0][0], "a"));
  EXPECT_FALSE(connections.Begin(ends[1][0], "a"));
  EXPECT_TRUE(connections.Begin(ends[2][0], "a"));
  const auto isGivenUp = [](const auto& pair) {
    char byte;
    return recv(pair[1], &byte, 1, MSG_DONTWAIT) == 0;
  };
  EXPECT_EQ((std::array{isGivenUp(ends[0]), isGivenUp(ends[1]), isGivenUp(ends[2])}),
            (std::array{false, true, false}));
  for (const auto& pair : ends)
    for (const int end : pair) close(end);
}

/// A connection to the server, from an address of this computer.
class Client {
 public:
  explicit Client(int port, const char* from = "127.0.0.1")
      : descriptor_(socket(AF_INET, SOCK_STREAM, 0)) {
    const auto own = At(from, 0), server = At("127.0.0.1", port);
    const timeval longest{20, 0};
    setsockopt(descriptor_, SOL_SOCKET, SO_RCVTIMEO, &longest, sizeof longest);
    EXPECT_EQ(bind(descriptor_, reinterpret_cast<const sockaddr*>(&own), sizeof own), 0);
    EXPECT_EQ(connect(descriptor_, reinterpret_cast<const sockaddr*>(&server), sizeof server), 0);
  }
  Client(Client&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  Client& operator=(Client&&) = delete;
  ~Client() { close(descriptor_); }

  void Send(std::string_view text) { send(descriptor_, text.data(), text.size(), MSG_NOSIGNAL); }
  /// All that comes, until the server hangs up.
  std::string Answer() {
    std::string text;
    char bytes[4096];
    ssize_t count;
    while ((count = recv(descriptor_, bytes, sizeof bytes, 0)) > 0)
      text.append(bytes, static_cast<std::size_t>(count));
    return count < 0 && errno == EAGAIN ? text + " and waits" : text;
  }
  void AwaitSomething() {
    char byte;
    EXPECT_EQ(recv(descriptor_, &byte, 1, MSG_PEEK), 1);
  }
  std::string Ask(std::string_view request) {
    Send(request);
    return Answer();
  }

 private:
  static sockaddr_in At(const char* address, int port) {
    sockaddr_in at{};
    at.sin_family = AF_INET;
    at.sin_port = htons(static_cast<std::uint16_t>(port));
    inet_pton(AF_INET, address, &at.sin_addr);
    return at;
  }
  int descriptor_;
};

struct WebServerTest : testing::Test {
  std::atomic<Connections::Clock::duration> time{1h};
  std::counting_semaphore<> working{0};
  std::latch isDone{1};
  WebServer server{{}, {10s, 7, 3}, [this] { return Connections::Clock::time_point(time.load()); }};
  int port = 0;

  void SetUp() override {
    server.Route("/", [](const auto&) { return WebResponse{"text/plain", "home"}; });
    server.Route("/product/", [](const auto& path) {
      return WebResponse{"image/gif", path, 200, {{"Content-Security-Policy", "sandbox"}}};
    });
    server.Route("/large", [](const auto&) {
      return WebResponse{"text/plain", std::string(kLarge, 'x')};
    });
    server.Route("/fails", [](const auto&) -> WebResponse { throw std::runtime_error("no"); });
    server.Route("/long", [this](const auto&) {
      working.release();
      isDone.wait();
      return WebResponse{"text/plain", "done"};
    });
    const auto url = server.Listen("127.0.0.1:0");
    port = std::stoi(url.substr(url.rfind(':') + 1));
  }
  /// The server knows all who came before: it takes one after the other.
  void Settle() {
    EXPECT_NE(Client(port, "127.0.0.9").Ask(kRequest).find("home"), std::string::npos);
  }
};

TEST_F(WebServerTest, AnswersWhatItHasInTheWayThatBrowsersAreSafeWith) {
  for (const auto& [request, status, last] :
       {std::tuple{"GET / HTTP/1.1", "200", "home"},
        {"HEAD / HTTP/1.1", "200", ""},
        {"POST / HTTP/1.1", "405", "Only reading is possible here.\n"},
        {"GET /product/a%20b.gif HTTP/1.1", "200", "/product/a b.gif"},
        {"GET /product HTTP/1.1", "404", "There is nothing of this name.\n"},
        {"GET /../product/a HTTP/1.1", "404", "There is nothing of this name.\n"},
        {"GET /fails HTTP/1.1", "500", "The answer could not be made.\n"},
        {"GET / HTTP/1.1\r\nHost: evil.example", "421",
         "Ask by an address, or say --name HOST.\n"}}) {
    const auto host = std::string(request).find("Host") == std::string::npos;
    const auto answer = Client(port).Ask(request + std::string(host ? "\r\nHost: 127.0.0.1" : "") +
                                         "\r\nContent-Length: 0\r\n\r\n");
    EXPECT_EQ(answer.substr(0, 12), std::string("HTTP/1.1 ") + status) << request;
    EXPECT_EQ(answer.substr(answer.find("\r\n\r\n") + 4), last) << request;
    const bool isOther = answer.find("image/gif") != std::string::npos;
    for (const auto* header :
         {"\r\nX-Content-Type-Options: nosniff\r\n", "\r\nConnection: close\r\n",
          isOther ? "\r\nContent-Security-Policy: sandbox\r\n"
                  : "\r\nContent-Security-Policy: default-src 'none'; script-src 'self';"})
      EXPECT_NE(answer.find(header), std::string::npos) << request << header;
  }
}

TEST_F(WebServerTest, GivesARequestItsTimeInAllWhateverTrickles) {
  Client silent(port), head(port, "127.0.0.2"), body(port, "127.0.0.3"), inTime(port, "127.0.0.4");
  for (auto* client : {&head, &inTime}) client->Send("GET / HTTP/1.0\r\n");
  body.Send("GET / HTTP/1.0\r\nContent-Length: 9\r\n\r\n1");
  Settle();
  time.store(1h + 9999ms);
  server.GiveUpLate();
  head.Send("A: b\r\n");
  body.Send("2");
  EXPECT_NE(inTime.Ask("\r\n").find("home"), std::string::npos);
  Client late(port, "127.0.0.4");
  Settle();
  time.store(1h + 10s);
  server.GiveUpLate();
  for (auto* client : {&silent, &head, &body}) EXPECT_EQ(client->Answer(), "");
  EXPECT_NE(late.Ask(kRequest).find("home"), std::string::npos);
}

TEST_F(WebServerTest, LetsTheOldestIdleOneGiveWay) {
  Client answered(port), other(port, "127.0.0.2");
  for (auto* client : {&answered, &other}) {
    client->Send("GET /long HTTP/1.0\r\n\r\n");
    working.acquire();
  }
  std::vector<Client> slow;  // of the first one's address, which has room for two more
  for (int i = 0; i < 200; ++i) slow.emplace_back(port);
  EXPECT_NE(Client(port).Ask(kRequest).find("home"), std::string::npos);
  for (std::size_t i = 0; i < 199; ++i) EXPECT_EQ(slow[i].Answer(), "") << i;
  std::vector<Client> more;  // with these, one too many of all
  for (const auto* from : {"127.0.0.3", "127.0.0.4", "127.0.0.5", "127.0.0.6", "127.0.0.7"})
    more.emplace_back(port, from);
  EXPECT_EQ(slow[199].Answer(), "");
  for (auto& client : more) EXPECT_NE(client.Ask(kRequest).find("home"), std::string::npos);
  isDone.count_down();
  for (auto* client : {&answered, &other})
    EXPECT_NE(client->Answer().find("done"), std::string::npos);
}

TEST_F(WebServerTest, LetsOneGiveWayThatDoesNotReadItsAnswer) {
  Client reader(port);
  reader.Send("GET /large HTTP/1.0\r\n\r\n");
  reader.AwaitSomething();
  std::vector<Client> more;
  for (int i = 0; i < 3; ++i) more.emplace_back(port);
  for (auto& client : more) EXPECT_NE(client.Ask(kRequest).find("home"), std::string::npos);
  EXPECT_LT(reader.Answer().size(), kLarge);
}

TEST_F(WebServerTest, RefusesTheNewOneWhileAllOthersAreBeingAnswered) {
  std::vector<Client> answered;
  for (int i = 0; i < 3; ++i) {
    answered.emplace_back(port);
    answered.back().Send("GET /long HTTP/1.0\r\n\r\n");
    working.acquire();
  }
  EXPECT_EQ(Client(port).Ask(kRequest), "");
  isDone.count_down();
  for (auto& client : answered) EXPECT_NE(client.Answer().find("done"), std::string::npos);
}

}  // namespace
}  // namespace ostrel
