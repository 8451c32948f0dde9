// The UDP channel to the packet host over an IPv4 socket. A dual-stack socket would take the type
// of service without a word and send without it.
#pragma once

#include <QHostAddress>
#include <QUdpSocket>
#include <memory>

#include "platform/datagrams.h"

namespace ostrel {

class UdpChannel : public Datagrams {
 public:
  void SetDestination(const std::string& address, std::int32_t port) override;
  void SetConfiguration(std::string_view text) override;
  void Activate() override;
  void Deactivate() override;
  bool IsActive() const override;
  void Send(std::string_view bytes) override;

 private:
  std::string address_;
  QHostAddress host_;  // the address, once it was found to be one
  std::int32_t port_ = 0;
  int typeOfService_ = 0;
  std::unique_ptr<QUdpSocket> socket_;  // only while active
};

}  // namespace ostrel
