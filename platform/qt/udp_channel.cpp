#include "platform/qt/udp_channel.h"

#include <QVariant>

#include "base/failure.h"
#include "base/numbers.h"

namespace ostrel {
namespace {

constexpr std::string_view kTypeOfServiceKey = "QOSFlags=";

Failure ChannelFailure(const std::string& what, const QUdpSocket& socket) {
  return Failure(failure_number::kDeviceError, what + ": " + socket.errorString().toStdString());
}

}  // namespace

void UdpChannel::SetDestination(const std::string& address, std::int32_t port) {
  address_ = address;
  port_ = port;
}

void UdpChannel::SetConfiguration(std::string_view text) {
  if (text.starts_with(kTypeOfServiceKey)) {
    typeOfService_ = LeadingInteger(text.substr(kTypeOfServiceKey.size()));
  }
}

void UdpChannel::Activate() {
  CheckDestinationAddress(address_);
  CheckDestinationPort(port_);
  host_ = QHostAddress(QString::fromStdString(address_));
  // Qt allows broadcasts on every datagram socket that it makes.
  auto socket = std::make_unique<QUdpSocket>();
  if (!socket->bind(QHostAddress(QHostAddress::AnyIPv4))) {
    throw ChannelFailure("The UDP channel could not be opened", *socket);
  }
  socket->setSocketOption(QAbstractSocket::TypeOfServiceOption, typeOfService_);
  if (socket->socketOption(QAbstractSocket::TypeOfServiceOption).toInt() != typeOfService_) {
    throw ChannelFailure("The UDP channel does not keep its type of service", *socket);
  }
  socket_ = std::move(socket);
}

void UdpChannel::Deactivate() {
  socket_.reset();
}

bool UdpChannel::IsActive() const {
  return socket_ != nullptr;
}

void UdpChannel::Send(std::string_view bytes) {
  if (!socket_) throw Failure(failure_number::kDeviceError, "The UDP channel is not open");
  const auto size = static_cast<qint64>(bytes.size());
  if (socket_->writeDatagram(bytes.data(), size, host_, static_cast<quint16>(port_)) != size) {
    throw ChannelFailure("The datagram was not sent", *socket_);
  }
}

}  // namespace ostrel
