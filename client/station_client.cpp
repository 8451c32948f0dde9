#include "client/station_client.h"

#include <cerrno>
#include <cstring>
#include <fmt/format.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace ostrel {

namespace {

constexpr std::chrono::seconds kPatience{5};
constexpr std::size_t kLongestAnswer = 1U << 20U;

[[noreturn]] void Fail(const std::string& path, const std::string& why) {
  throw std::runtime_error(fmt::format("The station does not answer at {}: {}.", path, why));
}

int Connect(const std::string& path, std::chrono::milliseconds patience) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) Fail(path, "the path is too long");
  path.copy(address.sun_path, path.size());
  const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (descriptor < 0) Fail(path, std::strerror(errno));
  const timeval limit{patience.count() / 1000, patience.count() % 1000 * 1000};
  setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
  if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    const int error = errno;
    close(descriptor);
    Fail(path, std::strerror(error));
  }
  return descriptor;
}

}  // namespace

std::string SocketOf(const std::string& folder) {
  return folder + "/station.sock";
}

StationClient::StationClient(const std::string& socketPath, std::chrono::milliseconds patience)
    : path_(socketPath), descriptor_(Connect(socketPath, patience)) {}

StationClient::~StationClient() {
  close(descriptor_);
}

void StationClient::Send(const std::string& question) {
  const auto line = question + "\n";
  const auto sent = send(descriptor_, line.data(), line.size(), MSG_NOSIGNAL);
  if (sent != static_cast<ssize_t>(line.size())) Fail(path_, std::strerror(errno));
}

std::string StationClient::ReadLine() {
  for (;;) {
    if (const auto end = received_.find('\n'); end != std::string::npos) {
      auto line = received_.substr(0, end);
      received_.erase(0, end + 1);
      return line;
    }
    char bytes[4096];
    const auto count = recv(descriptor_, bytes, sizeof bytes, 0);
    if (count < 0) Fail(path_, errno == EAGAIN ? "no answer came" : std::strerror(errno));
    if (count == 0) Fail(path_, "it has hung up");
    received_.append(bytes, static_cast<std::size_t>(count));
    if (received_.size() > kLongestAnswer) Fail(path_, "its answer has no end");
  }
}

std::string AskStation(const std::string& folder, const std::string& question,
                       std::chrono::milliseconds patience) {
  StationClient station(SocketOf(folder), patience);
  station.Send(question);
  return station.ReadLine();
}

std::string AskForStatus(const std::string& folder) {
  return AskStation(folder, R"({"ask":"status"})", kPatience);
}

}  // namespace ostrel
