// The socket on which other programs of this machine ask the station: lines in, lines out. It knows
// nothing of what they mean.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace ostrel {

/// Who asks, for as long as the connection lasts.
using Asker = int;

class LocalSocket {
 public:
  virtual ~LocalSocket() = default;

  /// Hears of each whole line, without its end. Set before Open.
  virtual void OnLine(std::function<void(Asker, std::string_view line)> call) = 0;
  /// Listens at `path`, open to the account and to the folder's group. What an earlier run left
  /// there goes. Throws Failure 57.
  virtual void Open(const std::string& path) = 0;
  /// The account that asks, as the system tells it.
  virtual std::string AccountOf(Asker asker) = 0;
  /// Ends all connections and removes the socket.
  virtual void Close() = 0;
  /// Sends a line, its end added, at once as far as the system takes it, and without waiting. An
  /// asker that is gone gets nothing; one that does not read is dropped.
  virtual void Send(Asker asker, std::string_view line) = 0;
};

/// What one asker can cost, whatever the adapter.
inline constexpr std::size_t kMostAskers = 8;
inline constexpr std::size_t kLongestQuestion = 4096;  // bytes; a longer one ends the connection
inline constexpr std::size_t kMostUnread = 65536;      // bytes that wait to be read

}  // namespace ostrel
