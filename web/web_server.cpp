#include "web/web_server.h"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <microhttpd.h>
#include <netdb.h>
#include <stdexcept>
#include <thread>

#include "web/asked_host.h"
#include "web/listening_socket.h"

namespace ostrel {

namespace {

/// Nothing but what this server has, and nothing inline: a name of a product can be no script.
constexpr const char* kPolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; "
    "base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
constexpr auto kPause = std::chrono::milliseconds(500);
/// In a rush, those before have so long to say what they want until the next one is taken.
constexpr auto kBreath = std::chrono::microseconds(100);
constexpr const char* kPlain = "text/plain; charset=utf-8";

std::string AddressOf(const sockaddr& address) {
  char text[NI_MAXHOST] = "";
  const socklen_t size = address.sa_family == AF_INET6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
  getnameinfo(&address, size, text, sizeof text, nullptr, 0, NI_NUMERICHOST);
  return text;
}

int SocketOf(MHD_Connection* connection) {
  return MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
}

std::string HostOf(MHD_Connection* connection) {
  const char* const host =
      MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_HOST);
  return host ? host : "";
}

MHD_Result Queue(MHD_Connection* connection, const WebResponse& answer) {
  auto content = answer.content;
  auto* const response =
      MHD_create_response_from_buffer(content.size(), content.data(), MHD_RESPMEM_MUST_COPY);
  if (!response) return MHD_NO;
  std::map<std::string, std::string> headers = {
      {"Cache-Control", "no-store"},        {"Connection", "close"},
      {"Content-Security-Policy", kPolicy}, {"Content-Type", answer.type},
      {"Referrer-Policy", "no-referrer"},   {"X-Content-Type-Options", "nosniff"}};
  for (const auto& [name, value] : answer.headers) headers[name] = value;
  for (const auto& [name, value] : headers)
    MHD_add_response_header(response, name.c_str(), value.c_str());
  const auto result = MHD_queue_response(connection, answer.status, response);
  MHD_destroy_response(response);
  return result;
}

}  // namespace

struct WebServer::Glue {
  static WebServer& Of(void* server) { return *static_cast<WebServer*>(server); }

  static void Note(void* server, MHD_Connection* connection, void**,
                   MHD_ConnectionNotificationCode what) {
    auto& connections = Of(server).connections_;
    if (what == MHD_CONNECTION_NOTIFY_CLOSED) return connections.End(SocketOf(connection));
    const auto* const client =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS)->client_addr;
    if (connections.Begin(SocketOf(connection), AddressOf(*client)))
      std::this_thread::sleep_for(kBreath);
  }

  /// Called after the headers, for each part of a body, and when the request is whole.
  static MHD_Result Answer(void* server, MHD_Connection* connection, const char* path,
                           const char* method, const char*, const char*, std::size_t* size,
                           void** state) {
    if (!*state) {
      *state = server;
      return MHD_YES;
    }
    if (*size > 0) {
      *size = 0;  // nobody wants a body
      return MHD_YES;
    }
    auto& connections = Of(server).connections_;
    connections.Work(SocketOf(connection));
    const auto answer = Of(server).Answer(method, path, HostOf(connection));
    connections.Rest(SocketOf(connection));
    return Queue(connection, answer);
  }
};

WebServer::WebServer(std::vector<std::string> names, WebLimits limits,
                     std::function<Connections::Clock::time_point()> now)
    : names_(std::move(names)),
      connections_(limits, std::move(now)),
      daemon_(nullptr, MHD_stop_daemon) {}

WebServer::~WebServer() = default;

void WebServer::Route(const std::string& path, Handler handler) {
  routes_[path] = std::move(handler);
}

std::string WebServer::Listen(const std::string& where) {
  const auto socket = ListenAt(where);
  unsigned flags = MHD_USE_AUTO | MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_THREAD_PER_CONNECTION;
  if (socket.isIpv6) flags |= MHD_USE_IPv6;
  daemon_.reset(MHD_start_daemon(flags, 0, nullptr, nullptr, &Glue::Answer, this,
                                 MHD_OPTION_LISTEN_SOCKET, socket.descriptor,
                                 MHD_OPTION_NOTIFY_CONNECTION, &Glue::Note, this, MHD_OPTION_END));
  if (!daemon_) throw std::runtime_error(fmt::format("Nothing can be served at {}.", socket.place));
  return fmt::format("http://{}/", socket.place);
}

void WebServer::Run() {
  for (;;) {
    std::this_thread::sleep_for(kPause);
    GiveUpLate();
  }
}

WebResponse WebServer::Answer(const std::string& method, const std::string& path,
                              const std::string& host) {
  if (!IsMeant(host, names_)) return {kPlain, "Ask by an address, or say --name HOST.\n", 421};
  if (method != "GET" && method != "HEAD")
    return {kPlain, "Only reading is possible here.\n", 405, {{"Allow", "GET, HEAD"}}};
  const auto* const handler = HandlerOf(path);
  if (!handler) return {kPlain, "There is nothing of this name.\n", 404};
  try {
    return (*handler)(path);
  } catch (const std::exception&) {
    return {kPlain, "The answer could not be made.\n", 500};
  }
}

const WebServer::Handler* WebServer::HandlerOf(const std::string& path) const {
  if (const auto exact = routes_.find(path); exact != routes_.end()) return &exact->second;
  const auto folder = routes_.find(path.substr(0, path.find('/', 1) + 1));
  return folder != routes_.end() ? &folder->second : nullptr;
}

}  // namespace ostrel
