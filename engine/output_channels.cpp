#include "engine/output_channels.h"

#include <fmt/format.h>

#include "base/numbers.h"
#include "base/text.h"

namespace ostrel {

namespace {

constexpr const char* kProcedure = "Timer";
constexpr int kTypeOfService = 68;
constexpr int kLastSequence = 60;

/// What both windows say of a port that is not on the air, or only one that it is.
std::string PortText(PortState state, const Setup& setup) {
  const auto& number = setup.lblOutPort.Get();
  switch (state) {
    case PortState::kClosed:
      return "No Com Port Open";
    case PortState::kOpen:
      return fmt::format("Com Port # {} opened for transmit.", number);
    case PortState::kFailed:
      return fmt::format("Unable to open Com Port # {}.", number);
    case PortState::kVanished:
      return fmt::format("Com Port # {} has vanished.", number);
  }
  return {};
}

}  // namespace

std::string DataRateText(PortState state, const Setup& setup) {
  if (state != PortState::kOpen) return PortText(state, setup);
  return fmt::format("Transmitting {} BPS", setup.lblOutBaud.Get());
}

OutputChannels::OutputChannels(const Parts& parts) : parts_(parts) {
  parts_.port.OnNews([this](const PortNews& news) { Hear(news); });
}

void OutputChannels::OpenComPort() {
  if (!parts_.engine.portMayOpen) return;
  SetPort(PortState::kClosed);
  parts_.cycleTimer.Stop();
  const auto& setup = parts_.setup;
  for (const auto* field : {&setup.lblOutPort, &setup.lblOutBaud, &setup.lblOutData,
                            &setup.lblOutParity, &setup.lblOutStop}) {
    if (field->Get().empty()) return;
  }
  try {
    OpenAndKey();
  } catch (const std::exception& error) {
    parts_.port.Close();  // an opening that failed half-way must not leave the transmitter keyed
    ShowPort(PortState::kFailed);
    return LogPort("could not be opened: " + AsFailure(error).text());
  }
  ShowPort(isPresent_ ? PortState::kOpen : PortState::kVanished);
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
  isPresent_ = true;
  parts_.port.SetKeyLine2(true);
  parts_.port.SetKeyLine1(true);
  const auto keyUpDelay = LeadingMilliseconds(parts_.setup.txtTxDelay.Get());
  parts_.port.Announce(keyUpDelay);
  parts_.clock.Sleep(keyUpDelay);
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

/// The red ground stands for whatever keeps the station off the air.
void OutputChannels::SetPort(PortState state) {
  parts_.engine.port = state;
  parts_.mainWindow.lblDataRateBackColor.Set(state == PortState::kOpen ? Shade::kNone
                                                                       : Shade::kRed);
}

void OutputChannels::ShowPort(PortState state) {
  SetPort(state);
  parts_.setup.lblCommMesg.Set(PortText(state, parts_.setup));
  parts_.mainWindow.lblDataRate.Set(DataRateText(state, parts_.setup));
}

void OutputChannels::Hear(const PortNews& news) {
  const auto note = [this](bool present) {
    isPresent_ = present;
    if (parts_.engine.portReady()) ShowPort(present ? PortState::kOpen : PortState::kVanished);
  };
  switch (news.event) {
    case PortEvent::kVanished:
      note(false);
      return LogPort("has vanished. Transmitting waits for its return.");
    case PortEvent::kReturned:
      note(true);
      return LogPort("is back.");
    case PortEvent::kReleased:
      return LogPort(
          fmt::format("was released: the program had not answered for {} s. It is keyed again.",
                      std::chrono::round<seconds>(news.silence).count()));
    case PortEvent::kUnguarded:
      return LogPort("had lost its keying guard. Another one watches it.");
  }
}

void OutputChannels::LogPort(const std::string& what) {
  parts_.reporting.WriteLog("Port",
                            fmt::format("Com Port # {} {}", parts_.setup.lblOutPort.Get(), what));
}

}  // namespace ostrel
