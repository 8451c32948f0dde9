#include "platform/qt/qt_local_socket.h"

#include <QTimer>
#include <array>
#include <pwd.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include "base/failure.h"

namespace ostrel {
namespace {

/// Lines of one asker that are answered in a row, before others and the station have their turn.
constexpr int kMostLinesInARow = 16;

}  // namespace

QtLocalSocket::QtLocalSocket() {
  server_.setSocketOptions(QLocalServer::UserAccessOption | QLocalServer::GroupAccessOption);
  server_.setMaxPendingConnections(static_cast<int>(kMostAskers));
  QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this] { TakeAskers(); });
}

void QtLocalSocket::OnLine(std::function<void(Asker, std::string_view)> call) {
  onLine_ = std::move(call);
}

void QtLocalSocket::Open(const std::string& path) {
  const auto name = QString::fromStdString(path);
  Close();
  QLocalServer::removeServer(name);
  if (!server_.listen(name)) {
    throw Failure(failure_number::kDeviceError,
                  path + " cannot be opened: " + server_.errorString().toStdString());
  }
  chmod(path.c_str(), S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP);  // the toolkit adds execution
}

std::string QtLocalSocket::AccountOf(Asker asker) {
  const auto found = askers_.find(asker);
  ucred peer = {};
  socklen_t size = sizeof peer;
  if (found == askers_.end() || getsockopt(static_cast<int>(found->second->socketDescriptor()),
                                           SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0)
    return "unknown account";
  passwd entry = {};
  passwd* account = nullptr;
  std::array<char, 4096> names;
  if (getpwuid_r(peer.uid, &entry, names.data(), names.size(), &account) != 0 || !account)
    return "account " + std::to_string(peer.uid);
  return account->pw_name;
}

void QtLocalSocket::Close() {
  while (!askers_.empty()) Drop(askers_.begin()->first);
  server_.close();
}

// One too many is sent away at once: it may come again.
void QtLocalSocket::TakeAskers() {
  while (auto* const socket = server_.nextPendingConnection()) {
    QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    if (askers_.size() == kMostAskers) {
      socket->abort();
      continue;
    }
    const Asker asker = ++last_;
    askers_[asker] = socket;
    socket->setReadBufferSize(static_cast<qint64>(kLongestQuestion) + 1);
    QObject::connect(socket, &QLocalSocket::readyRead, socket, [this, asker] {
      if (!waiting_.contains(asker)) Read(asker);
    });
    QObject::connect(socket, &QLocalSocket::disconnected, &server_,
                     [this, asker] { askers_.erase(asker); });
    Read(asker);
  }
}

void QtLocalSocket::Read(Asker asker) {
  for (int lines = 0; lines < kMostLinesInARow; ++lines) {
    const auto found = askers_.find(asker);
    if (found == askers_.end()) return;
    auto* const socket = found->second;
    if (!socket->canReadLine()) {
      if (socket->bytesAvailable() > static_cast<qint64>(kLongestQuestion)) Drop(asker);
      return;
    }
    const auto line = socket->readLine().trimmed();
    if (!line.isEmpty()) onLine_(asker, {line.constData(), static_cast<std::size_t>(line.size())});
  }
  // A timer has its turn once in a pass of the event loop; posted events go on until there are
  // none.
  if (waiting_.insert(asker).second)
    QTimer::singleShot(0, &server_, [this, asker] {
      waiting_.erase(asker);
      Read(asker);
    });
}

void QtLocalSocket::Send(Asker asker, std::string_view line) {
  const auto found = askers_.find(asker);
  if (found == askers_.end()) return;
  auto* const socket = found->second;
  socket->write(line.data(), static_cast<qint64>(line.size()));
  socket->write("\n");
  socket->flush();
  if (socket->bytesToWrite() > static_cast<qint64>(kMostUnread)) Drop(asker);
}

void QtLocalSocket::Drop(Asker asker) {
  auto* const socket = askers_.at(asker);
  askers_.erase(asker);
  socket->abort();
}

}  // namespace ostrel
