// What the station answers to programs beside it, over its local socket. docs/socket.md describes
// the questions and the answers. It reads the state, passes on what operators ask for and decides
// nothing; without it the station is the same station.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "platform/local_socket.h"
#include "station/station.h"

namespace ostrel {

/// The socket in the folder of a station.
std::string SocketPath(const std::string& programFolder);

/// The figures as the answer to "status".
std::string StatusLine(const Figures& figures);

class Seam {
 public:
  /// Opens the socket, once the station is up. A socket that cannot be opened costs one line of the
  /// log.
  Seam(Station& station, LocalSocket& socket);
  ~Seam() { socket_.Close(); }
  Seam(const Seam&) = delete;
  Seam& operator=(const Seam&) = delete;

 private:
  void Answer(Asker asker, std::string_view line);
  std::string AnswerTo(Asker asker, const nlohmann::ordered_json& question);
  void AskForSilence(Asker asker);
  void TellOfSilence();

  Station& station_;
  LocalSocket& socket_;
  std::vector<Asker> wantToKnow_;  // who hears of the next silence
  Subscription watched_;
};

}  // namespace ostrel
