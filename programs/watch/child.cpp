#include "programs/watch/child.h"

#include <csignal>
#include <cstring>
#include <fmt/format.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace ostrel {

Child::Child(const std::vector<std::string>& command) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const auto& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  const int error =
      posix_spawnp(&process_, arguments[0], nullptr, &attributes, arguments.data(), environ);
  posix_spawnattr_destroy(&attributes);
  if (error != 0)
    throw std::runtime_error(
        fmt::format("{} cannot be started: {}", command.front(), std::strerror(error)));
}

Child::~Child() {
  if (!Ended()) Kill();
}

std::optional<int> Child::Ended() {
  int status = 0;
  if (!status_ && waitpid(process_, &status, WNOHANG) == process_) status_ = status;
  return status_;
}

void Child::Signal(int signal) const {
  if (!status_) kill(process_, signal);
}

void Child::Kill() {
  Signal(SIGKILL);
  int status = 0;
  if (!status_ && waitpid(process_, &status, 0) == process_) status_ = status;
}

}  // namespace ostrel
