#include "ident/morse_identification.h"

#include "base/numbers.h"
#include "base/scope_guard.h"
#include "base/text.h"
#include "ident/morse_code.h"

namespace ostrel {

namespace {
constexpr int kCountdownSecond = 30;
constexpr milliseconds kDrainWait{1};
}  // namespace

void MorseIdentification::CountDown(int newSecond) {
  auto& timeLeft = parts_.setup.TimeLeft;
  if (newSecond == kCountdownSecond) {
    const double minutes = LeadingNumber(timeLeft.Get()) - 1;
    timeLeft.Set(minutes < 0 ? "0" : FormatPlain(minutes));
  }
  const bool isOn = LeadingNumber(parts_.setup.IDTime.Get()) > 0;
  if (!isOn || LeadingNumber(timeLeft.Get()) != 0) return;
  // Also after a failure, or it would be due again at every tick.
  const ScopeGuard restart([this] {
    if (parts_.engine.portReady()) RestartCountdown();
  });
  SendMorseId();
}

void MorseIdentification::SendOnDemand() {
  if (parts_.setup.CWidenty.Get().empty()) return;
  if (!parts_.port.IsOpen()) return TellThatNoPortIsOpen();
  try {
    if (!SendMorseId()) return TellThatNoPortIsOpen();
  } catch (const Failure& failure) {
    parts_.reporting.ReportError(failure, "SendMorseId");
    parts_.dialogs.ShowMessage({kProgramName,
                                "The station identification was not sent. " + failure.text() + ".",
                                MessageIcon::kExclamation});
  }
  RestartCountdown();
}

void MorseIdentification::TellThatNoPortIsOpen() {
  parts_.dialogs.ShowMessage({kProgramName,
                              "No com port is open. The station cannot be identified.",
                              MessageIcon::kExclamation});
}

bool MorseIdentification::SendMorseId() {
  const bool timerWasRunning = parts_.cycleTimer.IsRunning();
  parts_.cycleTimer.Stop();
  const ScopeGuard restore([&] { Restore(timerWasRunning); });

  const auto keyUpDelay = LeadingMilliseconds(parts_.setup.txtTxDelay.Get());
  const int factor = TimingFactor(parts_.setup.CWSpeed.Get());
  Drain();
  if (!parts_.engine.portReady()) return false;
  parts_.mainWindow.lblActivefileBackColor.Set(Shade::kRed);
  parts_.mainWindow.lblActivefile.Set("Station ID");
  parts_.dialogs.RepaintMainWindow();
  SetLines(false);

  const auto text = ToUpper(parts_.setup.CWidenty.Get());
  parts_.setup.LastId.Set(FormatGeneral(parts_.clock.Now()));
  Key(ReadElements(text), factor);
  SetLines(true);
  parts_.port.Announce(keyUpDelay);
  parts_.clock.Sleep(keyUpDelay);

  if (IsChecked(parts_.setup.LogIt)) parts_.reporting.WriteLog("CW ID", " Sent - " + text);
  RestartCountdown();
  return true;
}

std::string MorseIdentification::ReadElements(const std::string& text) {
  const auto table = parts_.files.ReadAll(parts_.values.programFolder + "/RtMorse.txt");
  return MorseElements(text, JoinMorseTable(table));
}

void MorseIdentification::Drain() {
  while (parts_.port.BytesWaiting() != 0) {
    parts_.events.ProcessPendingEvents();
    parts_.clock.Sleep(kDrainWait);
  }
}

void MorseIdentification::Key(const std::string& elements, int factor) {
  for (const char symbol : elements) {
    const auto step = KeyingOf(symbol, factor);
    if (step.on > milliseconds(0)) {
      SetLines(true);
      parts_.clock.Sleep(step.on);
    }
    if (step.off > milliseconds(0)) {
      SetLines(false);
      parts_.clock.Sleep(step.off);
    }
  }
}

void MorseIdentification::SetLines(bool on) {
  parts_.port.SetKeyLine1(on);
  parts_.port.SetKeyLine2(on);
}

void MorseIdentification::Restore(bool timerWasRunning) {
  parts_.mainWindow.lblActivefileBackColor.Set(Shade::kLightGrey);
  parts_.mainWindow.lblActivefile.Set("");
  // The shutdown drops the lines and nothing raises them; no more does anything without a port.
  if (parts_.events.StopIsRequested() || !parts_.engine.portReady()) return;
  for (const auto set : {&SerialPort::SetKeyLine1, &SerialPort::SetKeyLine2}) {
    RunStep(parts_.reporting, "SendMorseId", [&] { (parts_.port.*set)(true); });
  }
  if (timerWasRunning) parts_.cycleTimer.Start(kCyclePeriod);
}

}  // namespace ostrel
