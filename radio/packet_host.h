// The packet host: other programs on the network that get every packet as a datagram.
#pragma once

#include "platform/datagrams.h"
#include "radio/output.h"
#include "state/program_values.h"

namespace ostrel {

class PacketHost : public Output {
 public:
  PacketHost(Datagrams& datagrams, const ProgramValues& values)
      : datagrams_(datagrams), values_(values) {}

  /// "R00", the number of the datagram, 01 to 60 and round again, and the packet. Nothing while the
  /// packet host is off.
  void Send(const std::string& packet) override;
  /// Opens the channel to where the program values say, whether or not the packet host is on.
  void Begin() override;
  /// The end of the stream, when the packet host is on, and the end of the channel.
  void End() override;

 private:
  Datagrams& datagrams_;
  const ProgramValues& values_;
  int sequence_ = 1;
};

}  // namespace ostrel
