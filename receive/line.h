// The line that a receiver listens to: a pseudo-terminal that it makes and links, or a device or a
// recorded file that is there already.
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>

namespace ostrel {

/// An open file, terminal or socket, closed when its owner goes.
class OpenFile {
 public:
  explicit OpenFile(int fd) : fd_(fd) {}
  OpenFile(OpenFile&& other) noexcept;
  ~OpenFile();
  int Get() const { return fd_; }

 private:
  int fd_;
};

/// A symbolic link that goes when its owner goes, unless someone has pointed it elsewhere since: a
/// link left behind would lead the station's stream to whoever gets that terminal next.
class LineLink {
 public:
  /// Puts the link in the place of an older one, at once; throws std::runtime_error when something
  /// that is no link stands there.
  LineLink(std::filesystem::path path, std::filesystem::path target);
  ~LineLink();
  LineLink(const LineLink&) = delete;
  LineLink& operator=(const LineLink&) = delete;

 private:
  std::filesystem::path path_;
  std::filesystem::path target_;
};

/// A new pseudo-terminal in raw mode: the end that receives, and the name of the end that is sent
/// to.
struct PseudoTerminal {
  OpenFile receiver;
  std::string senderName;
};
PseudoTerminal MakePseudoTerminal();

/// Opens a device or file for reading, non-blocking; a serial device gets raw mode and, if
/// given, `baud` with 8 data bits and no parity. Throws std::runtime_error.
OpenFile OpenLine(const std::string& path, std::optional<int> baud);

/// What a reading found. Nothing at the moment is not the end.
enum class LineState { kData, kNothing, kEnd };
/// Reads what is there into `buffer` without waiting; `size` tells how much. Throws
/// std::system_error when the line fails.
LineState ReadLine(const OpenFile& line, std::span<char> buffer, std::size_t& size);

}  // namespace ostrel
