// The socket of the station over the toolkit's local sockets, served by its event loop: between two
// ticks, and in the station's waits.
#pragma once

#include <QLocalServer>
#include <QLocalSocket>
#include <map>
#include <set>

#include "platform/local_socket.h"

namespace ostrel {

class QtLocalSocket : public LocalSocket {
 public:
  QtLocalSocket();

  void OnLine(std::function<void(Asker, std::string_view line)> call) override;
  void Open(const std::string& path) override;
  std::string AccountOf(Asker asker) override;
  void Close() override;
  void Send(Asker asker, std::string_view line) override;

 private:
  void TakeAskers();
  void Read(Asker asker);
  void Drop(Asker asker);

  QLocalServer server_;
  std::map<Asker, QLocalSocket*> askers_;  // the server owns them
  std::set<Asker> waiting_;                // asked more than is answered in a row
  Asker last_ = 0;
  std::function<void(Asker, std::string_view)> onLine_;
};

}  // namespace ostrel
