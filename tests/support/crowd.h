// A hundred programs at a station's socket that ask as fast as they can: some in order, some write
// rubbish, some never read. Who is sent away comes again.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace ostrel {

class Crowd {
 public:
  explicit Crowd(std::string socketPath)
      : path_(std::move(socketPath)), thread_([this](const std::stop_token& stop) {
          while (!stop.stop_requested()) {
            for (std::size_t i = 0; i < descriptors_.size(); ++i) Press(i);
          }
          for (const int descriptor : descriptors_) close(descriptor);
        }) {}

 private:
  static constexpr std::array<std::string_view, 3> kLines = {"{\"ask\":\"status\"}\n", "}{]\xFF\n",
                                                             "{\"ask\":\"status\"}\n"};

  void Press(std::size_t i) {
    int& descriptor = descriptors_[i];
    if (descriptor <= 0) descriptor = Connect();
    const auto line = kLines[i % kLines.size()];
    const bool isHeard = send(descriptor, line.data(), line.size(), kAtOnce) >= 0;
    char answer[4096];
    const bool isDeaf = i % kLines.size() == 2;
    while (!isDeaf && recv(descriptor, answer, sizeof answer, kAtOnce) > 0) {
    }
    if (!isHeard && errno != EAGAIN) {
      close(descriptor);
      descriptor = 0;
    }
  }

  int Connect() const {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path_.copy(address.sun_path, sizeof address.sun_path - 1);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    return descriptor;
  }

  static constexpr int kAtOnce = MSG_DONTWAIT | MSG_NOSIGNAL;

  std::string path_;
  std::array<int, 100> descriptors_{};
  std::jthread thread_;
};

}  // namespace ostrel
