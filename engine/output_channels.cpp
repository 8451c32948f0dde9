#include "engine/output_channels.h"

#include <fmt/format.h>

#include "base/numbers.h"
#include "base/text.h"

namespace ostrel {

namespace {

constexpr const char* kProcedure = "Timer";
constexpr int kTypeOfService = 68;
constexpr int kLastSequence = 60;

}  // namespace

OutputChannels::OutputChannels(const Parts& parts) : parts_(parts) {
  parts_.port.OnPresence([this](bool present) { LogPresence(present); });
}

void OutputChannels::OpenComPort() {
  parts_.engine.portReady = false;
  parts_.cycleTimer.Stop();
  const auto& setup = parts_.setup;
  for (const auto* field : {&setup.lblOutPort, &setup.lblOutBaud, &setup.lblOutData,
                            &setup.lblOutParity, &setup.lblOutStop}) {
    if (field->Get().empty()) return;
  }
  if (!TryStep([this] { OpenAndKey(); })) {
    parts_.port.Close();  // an opening that failed half-way must not leave the transmitter keyed
    const auto message = fmt::format("Unable to open Com Port # {}.", setup.lblOutPort.Get());
    parts_.mainWindow.lblDataRate.Set(message);
    parts_.setup.lblCommMesg.Set(message);
    return;
  }
  parts_.setup.lblCommMesg.Set(
      fmt::format("Com Port # {} opened for transmit.", setup.lblOutPort.Get()));
  parts_.engine.portReady = true;
  parts_.cycleTimer.Start(kCyclePeriod);
}

void OutputChannels::OpenAndKey() {
  // Start-up opens more than once when the settings differ from the usual ones: no line may rise
  // again after a stop has ended the key-up delay of the opening before.
  parts_.clock.Sleep(milliseconds(0));
  if (parts_.port.IsOpen()) parts_.port.Close();
  const int number = LeadingInteger(parts_.setup.lblOutPort.Get());
  parts_.port.SetKeyLine2(false);
  parts_.port.SetKeyLine1(false);
  parts_.port.Open(number, PortSettings());
  parts_.port.SetKeyLine2(true);
  parts_.port.SetKeyLine1(true);
  parts_.clock.Sleep(LeadingMilliseconds(parts_.setup.txtTxDelay.Get()));
}

std::string OutputChannels::PortSettings() const {
  const auto& setup = parts_.setup;
  return fmt::format("{},{},{},{}", TrimBlanks(setup.lblOutBaud.Get()),
                     TrimBlanks(setup.lblOutParity.Get()), TrimBlanks(setup.lblOutData.Get()),
                     TrimBlanks(setup.lblOutStop.Get()));
}

void OutputChannels::SendPendingPacket() {
  auto& packet = parts_.engine.PendingPacket;
  if (packet.empty()) return;
  RunStep(parts_.reporting, kProcedure, [&] { parts_.port.Write(packet); });
  if (parts_.values.packetHost) SendDatagram();
  packet.clear();
}

void OutputChannels::SendDatagram() {
  auto& sequence = parts_.engine.datagramSequence;
  RunStep(parts_.reporting, kProcedure, [&] {
    parts_.datagrams.Send(fmt::format("R00{:02}", sequence) + parts_.engine.PendingPacket);
  });
  sequence = sequence == kLastSequence ? 1 : sequence + 1;
}

void OutputChannels::OpenPacketHost() {
  parts_.datagrams.SetDestination(parts_.values.udpAddress, parts_.values.udpPort);
  parts_.datagrams.SetConfiguration(fmt::format("QOSFlags={}", kTypeOfService));
  parts_.datagrams.Activate();
}

void OutputChannels::ClosePacketHost() {
  if (!parts_.datagrams.IsActive() || !parts_.values.packetHost) return;
  RunStep(parts_.reporting, "Shutdown", [this] { parts_.datagrams.Send("E0000"); });
  parts_.datagrams.Deactivate();
}

void OutputChannels::LogPresence(bool present) {
  parts_.reporting.WriteLog(
      "Port",
      fmt::format("Com Port # {} {}", parts_.setup.lblOutPort.Get(),
                  present ? "is back." : "has vanished. Transmitting waits for its return."));
}

}  // namespace ostrel
