// Asks a station on this machine over its socket.
#pragma once

#include <chrono>
#include <string>

namespace ostrel {

/// The socket of the station in `folder`.
std::string SocketOf(const std::string& folder);

/// One connection. Every call that takes longer than its patience fails.
class StationClient {
 public:
  /// Throws std::runtime_error when no station answers there.
  StationClient(const std::string& socketPath, std::chrono::milliseconds patience);
  ~StationClient();
  StationClient(const StationClient&) = delete;
  StationClient& operator=(const StationClient&) = delete;

  /// Sends a line. Throws std::runtime_error.
  void Send(const std::string& question);
  /// The next line, without its end. Throws std::runtime_error.
  std::string ReadLine();
  /// Readable when a line, or the end, is there.
  int Descriptor() const { return descriptor_; }

 private:
  std::string path_;
  int descriptor_;
  std::string received_;
};

/// The answer of the station in `folder` to `question`, a line. Throws std::runtime_error with a
/// text for the operator.
std::string AskStation(const std::string& folder, const std::string& question,
                       std::chrono::milliseconds patience);
/// The same for "status".
std::string AskForStatus(const std::string& folder);

}  // namespace ostrel
