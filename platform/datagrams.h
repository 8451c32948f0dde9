// The UDP channel to the packet host. It only sends.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ostrel {

/// The two halves of a destination, for whoever stores or uses one. Each throws Failure 5 for what
/// is none: anything but four decimal numbers and periods, a port that is not 1 to 65535.
void CheckDestinationAddress(const std::string& address);
void CheckDestinationPort(std::int32_t port);

class Datagrams {
 public:
  virtual ~Datagrams() = default;

  /// An IPv4 address; a broadcast address is allowed.
  virtual void SetDestination(const std::string& address, std::int32_t port) = 0;
  /// "QOSFlags=" and a number: the type of service of every datagram.
  virtual void SetConfiguration(std::string_view text) = 0;
  /// Opens the channel as set. Throws Failure 57 when it cannot be opened or the type of service
  /// does not hold, 5 for an address or port that is none.
  virtual void Activate() = 0;
  virtual void Deactivate() = 0;
  virtual bool IsActive() const = 0;
  /// One datagram, bytes unchanged. Throws Failure 57 when the system does not take it.
  virtual void Send(std::string_view bytes) = 0;
};

}  // namespace ostrel
