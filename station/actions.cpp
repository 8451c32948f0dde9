#include "station/actions.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

#include "base/about.h"
#include "base/numbers.h"
#include "base/reporting.h"
#include "ident/morse_identification.h"
#include "ident/schedule.h"
#include "intake/rule_lists.h"
#include "intake/transmit_queue.h"
#include "radio/transmitter.h"
#include "settings/settings_table.h"
#include "settings/settings_transfer.h"
#include "station/ingest_programs.h"
#include "station/program_log.h"
#include "station/settings_io.h"

namespace ostrel {

namespace {

constexpr std::array kDataRates = {"1200", "2400", "9600", "19200", "38400", "57600", "115200"};

/// The next value, or the one before; behind the last comes the first.
std::string SteppedAround(const std::string& text, Button button, int first, int last) {
  const int value = LeadingInteger(text) + (button == Button::kLeft ? 1 : -1);
  return fmt::format("{}", value > last ? first : value < first ? last : value);
}

}  // namespace

void Actions::ShowSetup() {
  parts_.activity.Run([this] { parts_.settings.OpenSetup(); });
}

void Actions::SendMorseId() {
  parts_.activity.Run([this] { parts_.morse.SendOnDemand(); });
}

void Actions::ViewLogfile() {
  parts_.activity.Run([this] {
    const auto path = LogPath(parts_.values.programFolder);
    parts_.desktop.OpenText(path, [this, path] {
      parts_.activity.Run([&] {
        parts_.dialogs.ShowMessage({kProgramName,
                                    fmt::format("No text editor could be started for {}.", path),
                                    MessageIcon::kExclamation});
      });
    });
  });
}

void Actions::ShowIngest() {
  parts_.activity.Run([this] { parts_.ingest.ShowIngest(); });
}

void Actions::ExportSettings() {
  parts_.activity.Run([this] { parts_.transfer.Export(); });
}

void Actions::ImportSettings() {
  const auto import = [this](MessageAnswer answer) {
    if (answer == MessageAnswer::kYes) parts_.activity.Run([this] { parts_.transfer.Import(); });
  };
  parts_.activity.Run([&] { parts_.transfer.AskAboutImport(import); });
}

void Actions::Exit() {
  parts_.dialogs.UnloadSetup();
  Close();
}

void Actions::Close() {
  parts_.activity.RequestStop();
}

void Actions::OpenWebSite() {
  parts_.activity.Run([this] { TryStep([this] { parts_.desktop.OpenAddress(kWebSite); }); });
}

void Actions::MailSupport() {
  parts_.activity.Run([this] {
    TryStep([this] { parts_.desktop.OpenAddress(std::string("mailto:") + kSupportAddress); });
  });
}

void Actions::ToggleTimingReadout() {
  parts_.status.timingReadout = !parts_.status.timingReadout;
}

void Actions::RemoveQueued(Priority p, const std::vector<std::size_t>& selected) {
  parts_.activity.Run([&] { parts_.queue.Remove(p, selected); });
}

void Actions::AddKeyword(std::size_t list) {
  parts_.activity.Run([&] {
    if (const auto refusal = parts_.rules.AddKeyword(list)) parts_.dialogs.ShowMessage(*refusal);
  });
}

void Actions::RemoveKeywords(std::size_t list, const std::vector<std::size_t>& selected) {
  parts_.activity.Run([&] { parts_.rules.RemoveSelectedKeywords(list, selected); });
}

AfterEntry Actions::AddScheduleEntry() {
  bool accepted = true;
  parts_.activity.Run([&] { accepted = parts_.schedule.AddEntry(); });
  return accepted ? AfterEntry::kNothing : AfterEntry::kFocusEntryField;
}

void Actions::RemoveScheduleEntries(const std::vector<std::size_t>& selected) {
  parts_.activity.Run([&] { parts_.schedule.RemoveEntries(selected); });
}

void Actions::EditScheduleEntry(std::size_t position) {
  if (position < parts_.setup.lstSchedule.size())
    parts_.setup.txtSchedule.Set(parts_.setup.lstSchedule[position]);
}

void Actions::ShowScheduleHelp() {
  parts_.activity.Run([this] { parts_.schedule.ShowHelp(); });
}

void Actions::StepPort(Button button) {
  auto& port = parts_.setup.lblOutPort;
  port.Set(SteppedAround(port.Get(), button, 1, 8));
  ReopenPort();
}

void Actions::StepBaud() {
  auto& baud = parts_.setup.lblOutBaud;
  const auto rate = std::find(kDataRates.begin(), kDataRates.end(), baud.Get());
  if (rate != kDataRates.end())
    baud.Set(rate + 1 == kDataRates.end() ? kDataRates.front() : *(rate + 1));
  ReopenPort();
}

void Actions::StepStopBits() {
  auto& stopBits = parts_.setup.lblOutStop;
  stopBits.Set(stopBits.Get() == "1" ? "2" : "1");
  ReopenPort();
}

void Actions::ReopenPort() {
  parts_.activity.Run([this] { parts_.transmitter.OpenComPort(); });
}

void Actions::StepCopies(Button button) {
  auto& copies = parts_.setup.lblCopies;
  copies.Set(SteppedAround(copies.Get(), button, 2, 9));
}

void Actions::StepCompFiles(Button button) {
  auto& files = parts_.setup.CompFiles;
  const int value = LeadingInteger(files.Get()) + (button == Button::kLeft ? 1 : -1);
  files.Set(fmt::format("{}", std::clamp(value, 0, 100)));
}

void Actions::StepBlockPriority() {
  auto& priority = parts_.setup.BlockPriority;
  priority.Set(SteppedAround(priority.Get(), Button::kLeft, 1, kPriorityCount));
}

void Actions::BraskClicked() {
  if (IsChecked(parts_.setup.chkBrask)) parts_.setup.chkByteBlaster.Set(Check::kUnchecked);
}

void Actions::ByteBlasterClicked() {
  if (IsChecked(parts_.setup.chkByteBlaster)) parts_.setup.chkBrask.Set(Check::kUnchecked);
}

void Actions::ShowErrorsClicked() {
  parts_.activity.Run([this] {
    parts_.values.showErrors = IsChecked(parts_.setup.chkShowErrors);
    TryStep([this] {
      parts_.care.Change([this](SettingsStore& store) {
        store.WriteSetting(KeyPath(Section::kShared), "ShowErrors",
                           parts_.values.showErrors ? "1" : "0");
      });
    });
  });
}

SaveOutcome Actions::LeaveSetup() {
  auto outcome = SaveOutcome::kHidden;
  parts_.activity.Run([&] { outcome = parts_.settings.SaveSettings(); });
  return outcome;
}

}  // namespace ostrel
