#include "radio/transmitter.h"

#include <fmt/format.h>

#include "base/numbers.h"
#include "base/text.h"
#include "platform/line_time.h"

namespace ostrel {

namespace {

constexpr milliseconds kDrainWait{1};
constexpr const char* kNoPort = "No Com Port Open";

}  // namespace

Transmitter::Transmitter(const Parts& parts) : parts_(parts), stateSince_(parts.clock.Monotonic()) {
  parts_.port.OnNews([this](const PortNews& news) { Hear(news); });
  parts_.clock.OnSleep([this](milliseconds duration) { Announce(duration); });
}

void Transmitter::OpenComPort() {
  if (!mayOpen_) return;
  SetState(State::kClosed);
  parts_.mainFields.lblDataRateToolTip.Set("");
  parts_.cycleTimer.Stop();
  if (HasEmptyField()) return;
  try {
    OpenAndKey();
  } catch (const std::exception& error) {
    parts_.port.Close();  // an opening that failed half-way must not leave the transmitter keyed
    parts_.mainFields.lblDataRateToolTip.Set(AsFailure(error).text());
    return ShowState(State::kFailed);
  }
  ShowState(isPresent_ ? State::kOpen : State::kVanished);
  StartCycle();
}

bool Transmitter::HasEmptyField() const {
  const auto& setup = parts_.setup;
  for (const auto* field : {&setup.lblOutPort, &setup.lblOutBaud, &setup.lblOutData,
                            &setup.lblOutParity, &setup.lblOutStop}) {
    if (field->Get().empty()) return true;
  }
  return false;
}

void Transmitter::OpenAndKey() {
  // Start-up opens more than once when the settings differ from the usual ones: no line may rise
  // again after a stop has ended the key-up delay of the opening before.
  parts_.clock.CheckStop();
  if (parts_.port.IsOpen()) parts_.port.Close();
  const int number = LeadingInteger(parts_.setup.lblOutPort.Get());
  parts_.port.SetKeyLine2(false);
  parts_.port.SetKeyLine1(false);
  parts_.port.Open(number, PortSettings());
  isPresent_ = true;
  parts_.port.SetKeyLine2(true);
  parts_.port.SetKeyLine1(true);
  Hold(KeyUpDelay());
}

std::string Transmitter::PortSettings() const {
  const auto& setup = parts_.setup;
  return fmt::format("{},{},{},{}", TrimBlanks(setup.lblOutBaud.Get()),
                     TrimBlanks(setup.lblOutParity.Get()), TrimBlanks(setup.lblOutData.Get()),
                     TrimBlanks(setup.lblOutStop.Get()));
}

std::chrono::nanoseconds Transmitter::TimeOf(std::size_t bytes) const {
  return TimeOnLine(ParseLineSettings(PortSettings()), bytes);
}

void Transmitter::Release() {
  state_ = State::kClosed;
  parts_.cycleTimer.Stop();
  for (const auto set : {&SerialPort::SetKeyLine1, &SerialPort::SetKeyLine2})
    RunStep(parts_.reporting, "Shutdown", [&] { (parts_.port.*set)(false); });
  parts_.port.Close();
}

void Transmitter::Drain() {
  while (BytesWaiting() > 0) {
    parts_.events.ProcessPendingEvents();
    parts_.clock.Sleep(kDrainWait);
  }
}

milliseconds Transmitter::KeyUpDelay() const {
  return LeadingMilliseconds(parts_.setup.txtTxDelay.Get());
}

Transmitter::ManualKeying::ManualKeying(Transmitter& transmitter, std::string_view procedure)
    : transmitter_(transmitter),
      procedure_(procedure),
      cycleWasRunning_(transmitter.parts_.cycleTimer.IsRunning()) {
  transmitter.parts_.cycleTimer.Stop();
}

Transmitter::ManualKeying::~ManualKeying() {
  const auto& parts = transmitter_.parts_;
  if (parts.events.StopIsRequested() || !transmitter_.portReady()) return;
  for (const auto set : {&SerialPort::SetKeyLine1, &SerialPort::SetKeyLine2})
    RunStep(parts.reporting, procedure_, [&] { (parts.port.*set)(true); });
  if (cycleWasRunning_) transmitter_.StartCycle();
}

void Transmitter::ManualKeying::Key(bool on) {
  transmitter_.parts_.port.SetKeyLine1(on);
  transmitter_.parts_.port.SetKeyLine2(on);
}

std::string Transmitter::PortText() const {
  const auto& number = parts_.setup.lblOutPort.Get();
  switch (state_) {
    case State::kClosed:
      return kNoPort;
    case State::kOpen:
      return fmt::format("Com Port # {} opened for transmit.", number);
    case State::kFailed:
      return fmt::format("Unable to open Com Port # {}.", number);
    case State::kVanished:
      return fmt::format("Com Port # {} has vanished.", number);
  }
  return {};
}

std::string Transmitter::DataRateText() const {
  if (state_ != State::kOpen) return PortText();
  return fmt::format("Transmitting {} BPS", parts_.setup.lblOutBaud.Get());
}

void Transmitter::ShowNoPort() {
  parts_.mainFields.lblDataRate.Set(kNoPort);
}

milliseconds Transmitter::OffAir() const {
  const auto present = parts_.clock.Monotonic() - stateSince_;
  return state_ == State::kOpen ? offAir_ : offAir_ + present;
}

/// The red ground stands for whatever keeps the station off the air.
void Transmitter::SetState(State state) {
  offAir_ = OffAir();
  stateSince_ = parts_.clock.Monotonic();
  state_ = state;
  parts_.mainFields.lblDataRateBackColor.Set(state == State::kOpen ? Shade::kNone : Shade::kRed);
}

void Transmitter::ShowState(State state) {
  SetState(state);
  parts_.setup.lblCommMesg.Set(PortText());
  ShowDataRate();
}

void Transmitter::Hear(const PortNews& news) {
  switch (news.event) {
    case PortEvent::kVanished:
      NotePresence(false);
      return Log("has vanished. Transmitting waits for its return.");
    case PortEvent::kReturned:
      NotePresence(true);
      return Log("is back.");
    case PortEvent::kReleased:
      return Log(
          fmt::format("was released: the program had not answered for {} s. It is keyed again.",
                      std::chrono::round<seconds>(news.silence).count()));
    case PortEvent::kUnguarded:
      return Log("had lost its keying guard. Another one watches it.");
  }
}

void Transmitter::NotePresence(bool isPresent) {
  isPresent_ = isPresent;
  if (portReady()) ShowState(isPresent ? State::kOpen : State::kVanished);
}

void Transmitter::Log(const std::string& what) {
  parts_.reporting.WriteLog("Port",
                            fmt::format("Com Port # {} {}", parts_.setup.lblOutPort.Get(), what));
}

}  // namespace ostrel
