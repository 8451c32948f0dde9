#include "ident/morse_identification.h"

#include <fmt/format.h>

#include "base/about.h"
#include "base/names.h"
#include "base/numbers.h"
#include "base/scope_guard.h"
#include "base/text.h"
#include "ident/morse_code.h"

namespace ostrel {

namespace {
constexpr const char* kTable = "RtMorse.txt";
constexpr int kCountdownSecond = 30;
constexpr int kCountdownDecimals = 6;

milliseconds LengthOf(const std::string& elements, int factor) {
  milliseconds length{0};
  for (const char symbol : elements) {
    const auto step = KeyingOf(symbol, factor);
    length += step.on + step.off;
  }
  return length;
}

bool HasCodes(std::string_view table) {
  bool hasCodes = false;
  ForEachLine(table, [&](std::string_view line) { hasCodes = hasCodes || IsMorseLine(line); });
  return hasCodes;
}
}  // namespace

void MorseIdentification::CountDown(int newSecond) {
  auto& timeLeft = parts_.setup.TimeLeft;
  if (newSecond == kCountdownSecond) {
    const double minutes = LeadingNumber(timeLeft.Get()) - 1;
    timeLeft.Set(minutes < 0 ? "0" : FormatRounded(minutes, kCountdownDecimals));
  }
  const bool isOn = LeadingNumber(parts_.setup.IDTime.Get()) > 0;
  if (!isOn || LeadingNumber(timeLeft.Get()) != 0) return;
  // Also after a failure, or it would be due again at every tick.
  const ScopeGuard restart([this] {
    if (parts_.transmitter.portReady()) RestartCountdown();
  });
  SendMorseId();
}

void MorseIdentification::SendOnDemand() {
  if (parts_.setup.CWidenty.Get().empty()) return;
  if (!parts_.transmitter.portReady()) return TellThatNoPortIsOpen();
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
  auto& transmitter = parts_.transmitter;
  Transmitter::ManualKeying keying(transmitter, "SendMorseId");
  const ScopeGuard clearDisplay([this] { ClearDisplay(); });

  const auto keyUpDelay = transmitter.KeyUpDelay();
  const int factor = TimingFactor(parts_.setup.CWSpeed.Get());
  transmitter.Drain();
  if (!transmitter.portReady()) return false;
  parts_.mainFields.lblActivefileBackColor.Set(Shade::kRed);
  parts_.mainFields.lblActivefile.Set("Station ID");
  parts_.dialogs.RepaintMainWindow();
  keying.Key(false);

  const auto text = ToUpper(parts_.setup.CWidenty.Get());
  parts_.setup.LastId.Set(FormatGeneral(parts_.clock.Now()));
  const auto elements = ReadElements(text);
  measured_.clear();
  parts_.status.endsAt = parts_.clock.Monotonic() + LengthOf(elements, factor) + keyUpDelay;
  parts_.status.onTheAir.Set(OnTheAir::kIdentification);
  Key(keying, elements, factor);
  keying.Key(true);
  transmitter.Hold(keyUpDelay);

  if (IsChecked(parts_.setup.LogIt)) parts_.reporting.WriteLog("CW ID", " Sent - " + text);
  RestartCountdown();
  return true;
}

milliseconds MorseIdentification::Length() {
  const auto& text = parts_.setup.CWidenty.Get();
  const auto& speed = parts_.setup.CWSpeed.Get();
  if (const auto settings = text + '\n' + speed; measured_ != settings) {
    measured_ = settings;
    length_ = milliseconds(0);
    TryStep([&] { length_ = LengthOf(ReadElements(ToUpper(text)), TimingFactor(speed)); });
  }
  return length_;
}

std::string MorseIdentification::ReadElements(const std::string& text) {
  return MorseElements(text, JoinMorseTable(ReadTable()));
}

std::string MorseIdentification::ReadTable() {
  std::string table;
  const auto failure = FailureIn(
      [&] { table = ReadList(parts_.files, JoinPath(parts_.values.programFolder, kTable)); });
  const auto why = failure ? failure->text() : HasCodes(table) ? "" : "It codes no sign.";
  parts_.status.SetUnusable(kTable, why);
  if (failure) throw *failure;
  return table;
}

void MorseIdentification::LookAtTable() {
  if (const auto failure = FailureIn([this] { ReadTable(); }))
    parts_.reporting.WriteLog(
        "CW ID", fmt::format("{}. Until the Morse table can be read, no identification is sent.",
                             failure->text()));
}

void MorseIdentification::Key(Transmitter::ManualKeying& keying, const std::string& elements,
                              int factor) {
  for (const char symbol : elements) {
    const auto step = KeyingOf(symbol, factor);
    for (const auto& [on, duration] : {std::pair(true, step.on), {false, step.off}}) {
      if (duration <= milliseconds(0)) continue;
      keying.Key(on);
      parts_.transmitter.Hold(duration);
    }
  }
}

void MorseIdentification::ClearDisplay() {
  parts_.status.onTheAir.Set(OnTheAir::kPackets);
  parts_.mainFields.lblActivefileBackColor.Set(Shade::kLightGrey);
  parts_.mainFields.lblActivefile.Set("");
}

}  // namespace ostrel
