// A small server over HTTP: paths and what answers them. It takes nothing from its clients but the
// path, and says nothing that a browser could run or embed from elsewhere.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "web/connections.h"

struct MHD_Connection;
struct MHD_Daemon;

namespace ostrel {

struct WebResponse {
  std::string type;  // of the content: "text/plain; charset=utf-8"
  std::string content;
  unsigned status = 200;
  std::map<std::string, std::string> headers = {};  // more of them, or others than the usual ones
};

/// Answers GET and HEAD, one request a connection. Each connection has a thread, so that an answer
/// that takes its time delays no other one.
class WebServer {
 public:
  /// Answers the path that was asked for, percent signs resolved. Called by any number of threads
  /// at once. What it throws becomes status 500.
  using Handler = std::function<WebResponse(const std::string& path)>;

  /// To whoever asks by an address, "localhost" or one of `names`; others get status 421.
  explicit WebServer(std::vector<std::string> names, WebLimits limits = {},
                     std::function<Connections::Clock::time_point()> now = Connections::Clock::now);
  ~WebServer();
  WebServer(const WebServer&) = delete;
  WebServer& operator=(const WebServer&) = delete;

  /// Before Listen. A `path` of more than "/" that ends in one answers all below it.
  void Route(const std::string& path, Handler handler);

  /// Answers from now on, at "[ADDRESS:]PORT", on 127.0.0.1 unless an address is given; port 0 is
  /// any free one. Returns the URL. Throws std::runtime_error with a text for the operator.
  std::string Listen(const std::string& where);

  /// Gives up the clients that are too slow. To be called about once a second.
  void GiveUpLate() { connections_.GiveUpLate(); }
  /// Does so until the program ends.
  [[noreturn]] void Run();

 private:
  struct Glue;  // between the library's functions and these
  WebResponse Answer(const std::string& method, const std::string& path, const std::string& host);
  const Handler* HandlerOf(const std::string& path) const;

  const std::vector<std::string> names_;
  std::map<std::string, Handler> routes_;
  Connections connections_;
  std::unique_ptr<MHD_Daemon, void (*)(MHD_Daemon*)> daemon_;
};

}  // namespace ostrel
