// Who is connected, and who has to go: no client keeps a place by being slow.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <list>
#include <mutex>
#include <string>

namespace ostrel {

/// What one server spends on its clients.
struct WebLimits {
  std::chrono::milliseconds patience = std::chrono::seconds(10);  // with a whole request
  std::size_t connections = 64;
  std::size_t ofOneAddress = 8;
};

/// The connections of a server, by their sockets. Giving one up shuts its socket down and leaves
/// the closing to its owner. For any number of threads.
class Connections {
 public:
  using Clock = std::chrono::steady_clock;

  explicit Connections(WebLimits limits, std::function<Clock::time_point()> now = Clock::now)
      : limits_(limits), now_(std::move(now)) {}

  /// One more, from `address`. Where that is one too many, of this address or of all, the oldest
  /// that is idle is given up; that is the new one if the others are all being answered. True then.
  bool Begin(int socket, const std::string& address);
  /// The answer is being made: until Rest, the connection waits for the server and is not idle.
  void Work(int socket);
  /// The answer is made: the connection waits for its client again.
  void Rest(int socket);
  /// Its owner closes it.
  void End(int socket);
  /// Gives up those that have lasted longer than a request may.
  void GiveUpLate();

 private:
  struct Connection {
    int socket;
    std::string address;
    Clock::time_point begun;
    bool isIdle = true;
    bool isGivenUp = false;
  };
  void SetIdle(int socket, bool isIdle);
  /// Gives up one of those that `belongs` is true of, if they are more than `most`. True then.
  template <typename Belongs>
  bool Bound(std::size_t most, Belongs belongs);

  const WebLimits limits_;
  const std::function<Clock::time_point()> now_;
  std::mutex mutex_;
  std::list<Connection> connections_;  // the oldest first
};

}  // namespace ostrel
