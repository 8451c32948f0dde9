#include "platform/qt/udp_channel.h"

#include <arpa/inet.h>
#include <array>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include "tests/support/failure_of.h"

namespace ostrel {
namespace {

/// A plain receiver on the loopback, which sees each datagram's type of service.
class Receiver {
 public:
  Receiver() : socket_(::socket(AF_INET, SOCK_DGRAM, 0)) {
    const int on = 1;
    const timeval patience{10, 0};
    ::setsockopt(socket_, IPPROTO_IP, IP_RECVTOS, &on, sizeof on);
    ::setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(socket_, reinterpret_cast<sockaddr*>(&place), sizeof place);
    socklen_t size = sizeof place;
    ::getsockname(socket_, reinterpret_cast<sockaddr*>(&place), &size);
    port = ntohs(place.sin_port);
  }
  ~Receiver() { ::close(socket_); }

  std::string Receive() {
    std::array<char, 2000> bytes{};
    alignas(cmsghdr) std::array<char, 100> control{};
    iovec part{bytes.data(), bytes.size()};
    msghdr message{nullptr, 0, &part, 1, control.data(), control.size(), 0};
    const auto size = ::recvmsg(socket_, &message, 0);
    if (size < 0) return "nothing came";
    if (const auto* header = CMSG_FIRSTHDR(&message)) typeOfService = *CMSG_DATA(header);
    return {bytes.data(), static_cast<std::size_t>(size)};
  }

  int port = 0;
  int typeOfService = -1;

 private:
  int socket_;
};

TEST(UdpChannel, DatagramsArriveByteForByteWithTheirTypeOfService) {
  Receiver receiver;
  UdpChannel channel;
  channel.SetDestination("127.0.0.1", receiver.port);
  channel.SetConfiguration("QOSFlags=68");
  EXPECT_THROW(channel.Send("R0001"), Failure);
  channel.Activate();
  const std::string packet("R0001\0\0\xff\r\n", 10);
  channel.Send(packet);
  EXPECT_EQ(receiver.Receive(), packet);
  EXPECT_EQ(receiver.typeOfService, 68);
}

TEST(UdpChannel, RefusesWhatIsNoPlaceAndOpensForABroadcast) {
  struct Row {
    const char* address;
    int port;
    bool opens;
  };
  for (const auto& [address, port, opens] :
       {Row{"255.255.255.255", 1000, true}, Row{"host.example", 1000, false},
        Row{"::1", 1000, false}, Row{"127.0.0.1", 0, false}, Row{"127.0.0.1", 65536, false}}) {
    UdpChannel channel;
    channel.SetDestination(address, port);
    EXPECT_EQ(FailureOf([&] { channel.Activate(); }), opens ? 0 : 5);
    EXPECT_EQ(channel.IsActive(), opens) << address << ":" << port;
  }
}

}  // namespace
}  // namespace ostrel
