// The two ways out: the serial port, which feeds and keys the transmitter, and the UDP channel to
// the packet host.
#pragma once

#include <string>

#include "base/reporting.h"
#include "platform/clock.h"
#include "platform/datagrams.h"
#include "platform/serial_port.h"
#include "platform/timer.h"
#include "state/engine.h"
#include "state/main_window.h"
#include "state/setup.h"

namespace ostrel {

/// What lblDataRate says of a port in this state.
std::string DataRateText(PortState state, const Setup& setup);

class OutputChannels {
 public:
  struct Parts {
    SerialPort& port;
    Datagrams& datagrams;
    Timer& cycleTimer;
    Clock& clock;
    Reporting& reporting;
    MainWindow& mainWindow;
    Setup& setup;
    Engine& engine;
    const ProgramValues& values;
  };
  explicit OutputChannels(const Parts& parts);

  /// Opens, or reopens, the port with the values in the port fields, keys the transmitter, serves
  /// the key-up delay and starts the cycle. With an empty field nothing is opened and the cycle
  /// stays stopped; a failed opening says so in both windows, and why in the log. Nothing happens
  /// before start-up has come to the port: a station that is half started does not go on the air.
  void OpenComPort();

  /// Hands PendingPacket to the port and, when the packet host is on, to the UDP channel; empties
  /// it. Each failure is reported; the packet is not written again.
  void SendPendingPacket();

  /// Opens the UDP channel to where the program values say. Throws Failure.
  void OpenPacketHost();
  /// The end of the stream, when the packet host is on, and the end of the channel. Throws Failure.
  void ClosePacketHost();

 private:
  void OpenAndKey();
  std::string PortSettings() const;
  void SendDatagram();
  void SetPort(PortState state);
  void ShowPort(PortState state);
  void Hear(const PortNews& news);
  void LogPort(const std::string& what);

  Parts parts_;
  bool isPresent_ = true;  // the open port's device
};

}  // namespace ostrel
