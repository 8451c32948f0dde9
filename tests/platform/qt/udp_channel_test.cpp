#include "platform/qt/udp_channel.h"

#include <QNetworkDatagram>
#include <array>
#include <gtest/gtest.h>
#include <netinet/in.h>

#include "base/failure.h"

namespace ostrel {
namespace {

/// Of the datagram that waits at `socket`; it stays there.
int TypeOfService(int socket) {
  alignas(cmsghdr) std::array<char, 100> control{};
  msghdr message{};
  message.msg_control = control.data();
  message.msg_controllen = control.size();
  ::recvmsg(socket, &message, MSG_PEEK);
  for (auto* part = CMSG_FIRSTHDR(&message); part != nullptr; part = CMSG_NXTHDR(&message, part)) {
    if (part->cmsg_type == IP_TOS) return *CMSG_DATA(part);
  }
  return -1;
}

TEST(UdpChannel, DatagramsToAllHostsArriveByteForByteWithTheirTypeOfService) {
  QUdpSocket receiver;
  ASSERT_TRUE(receiver.bind(QHostAddress(QHostAddress::AnyIPv4)));
  const auto socket = static_cast<int>(receiver.socketDescriptor());
  const int on = 1;
  ::setsockopt(socket, IPPROTO_IP, IP_RECVTOS, &on, sizeof on);
  UdpChannel channel;
  channel.SetDestination("127.255.255.255", receiver.localPort());
  channel.SetConfiguration("QOSFlags=68");
  EXPECT_THROW(channel.Send("R0001"), Failure);
  channel.Activate();
  const std::string packet("R0001\0\0\xff\r\n", 10);
  channel.Send(packet);
  ASSERT_TRUE(receiver.waitForReadyRead(10000));
  EXPECT_EQ(TypeOfService(socket), 68);
  EXPECT_EQ(receiver.receiveDatagram().data().toStdString(), packet);
}

}  // namespace
}  // namespace ostrel
