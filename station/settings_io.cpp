#include "station/settings_io.h"

#include <fmt/format.h>

#include "base/about.h"
#include "base/numbers.h"
#include "base/text.h"
#include "settings/settings_table.h"

namespace ostrel {

namespace {

constexpr double kSmallestLog = 50000;
constexpr const char* kStoreName = "the settings store";
constexpr const char* kTriedAgain =
    " They are in force, and are tried again when Setup is left and when the program ends.";

std::string WithoutSeparator(std::string_view path) {
  if (path.ends_with('/')) path.remove_suffix(1);
  return std::string(path);
}

Check CheckedIf(bool on) {
  return on ? Check::kChecked : Check::kUnchecked;
}

std::string Read(SettingsStore& store, const SettingRow& row) {
  return store.ReadSetting(KeyPath(row.section), row.key, row.fallback);
}

}  // namespace

void SettingsIo::LoadProgramValues() {
  const auto damaged = ReadProgramValues(*OpenAtRoot(parts_.stores));
  if (!damaged.empty()) throw damaged.front().failure;
}

std::vector<SettingsIo::Damaged> SettingsIo::ReadProgramValues(SettingsStore& store) {
  std::vector<Damaged> damaged;
  for (const auto& row : StationSettings(parts_.setup, parts_.values)) {
    if (row.reader != Reader::kStart) continue;
    const auto text = Read(store, row);
    try {
      row.load(text);
    } catch (const Failure& failure) {
      row.load(row.fallback);
      damaged.push_back({row.key, failure});
    }
  }
  return damaged;
}

void SettingsIo::OpenSetup() {
  const auto unread = LoadWhatIsMissing();
  parts_.dialogs.ShowSetup();
  if (unread.empty() || unread == toldUnread_) return;
  toldUnread_ = unread;
  Say(fmt::format("These settings could not be loaded: {}.", fmt::join(unread, ", ")));
}

std::vector<std::string> SettingsIo::LoadWhatIsMissing() {
  auto unread = parts_.rules.LoadRuleLists();
  if (isLoaded_) return unread;
  TryPart(unread, kStoreName, [&] {
    parts_.care.Prepare();
    for (const auto& [key, failure] : ReadProgramValues(*OpenAtRoot(parts_.stores)))
      unread.push_back(fmt::format("{} ({})", key, failure.text()));
    ShowProgramValues();
    LoadFields();
    parts_.schedule.LoadSchedule();
  });
  return unread;
}

void SettingsIo::LoadSettings() {
  parts_.rules.LoadRuleLists();
  ShowProgramValues();
  LoadFields();
  parts_.morse.LookAtTable();
  parts_.transmitter.OpenComPort();
  RunStep(parts_.reporting, "LoadSettings", [this] { parts_.compression.RefreshCompressList(); });
  parts_.values.showErrors = IsChecked(parts_.setup.chkShowErrors);
  parts_.schedule.LoadSchedule();
  parts_.kept.BeginGivingBack();
  parts_.dialogs.HideSetup();
}

void SettingsIo::ShowProgramValues() {
  const auto& values = parts_.values;
  auto& setup = parts_.setup;
  setup.txtIngestPath.Set(WithoutSeparator(values.ingestPath));
  setup.chkBrask.Set(CheckedIf(values.ingestEngine == 1));
  setup.chkByteBlaster.Set(CheckedIf(values.ingestEngine == 2));
  setup.txtLogSize.Set(fmt::format("{}", values.logSize));
  setup.chkUnZipFiles.Set(CheckedIf(values.unZipFiles));
  setup.chkPacketHost.Set(CheckedIf(values.packetHost));
}

void SettingsIo::LoadFields() {
  const auto store = OpenAtRoot(parts_.stores);
  for (const auto& row : StationSettings(parts_.setup, parts_.values)) {
    if (row.reader == Reader::kFields) row.load(Read(*store, row));
  }
  auto& compFiles = parts_.setup.CompFiles;
  if (compFiles.Get().empty()) compFiles.Set(compFiles.initial());
  // Set here as well: an interval that is the field's initial text is no change of it.
  parts_.morse.RestartCountdown();
  isLoaded_ = true;
}

SaveOutcome SettingsIo::SaveSettings() {
  auto& setup = parts_.setup;
  setup.txtIngestPath.Set(WithoutSeparator(TrimBlanks(setup.txtIngestPath.Get())));
  if (!IsNumber(setup.txtLogSize.Get())) {
    parts_.dialogs.ShowMessage(
        {kProgramName, "Log file size must be numeric.", MessageIcon::kQuestion});
    return SaveOutcome::kFocusLogSize;
  }
  if (LeadingNumber(setup.txtLogSize.Get()) < kSmallestLog) setup.txtLogSize.Set("50000");
  if (isLoaded_) TakeProgramValues();
  const auto edited = Edited();
  const bool isNews = unsaved_ != edited;
  unsaved_ = edited;  // first of all: a stop in the midst of the saving ends it
  const auto refusal = SaveUnsaved();
  if (isLoaded_) parts_.values.SetIngestPath(setup.txtIngestPath.Get());
  parts_.kept.BeginGivingBack();
  parts_.dialogs.HideSetup();
  if (!refusal.empty() && isNews) Say(refusal + kTriedAgain);
  return SaveOutcome::kHidden;
}

std::string SettingsIo::SaveUnsaved() {
  if (!unsaved_) return {};
  auto failed = parts_.rules.SaveRuleLists(unsaved_->rules);
  TryPart(failed, kStoreName, [&] {
    if (!unsaved_->areLoaded) throw Failure(failure_number::kDeviceError, "it was not loaded");
    parts_.care.Change([&](SettingsStore& store) { store.WriteAll(unsaved_->values); });
  });
  if (failed.empty()) {
    unsaved_.reset();
    return {};
  }
  auto text = fmt::format("These settings could not be saved: {}.", fmt::join(failed, ", "));
  parts_.reporting.WriteLog("SaveSettings", text);
  return text;
}

void SettingsIo::Say(const std::string& text) {
  parts_.dialogs.ShowMessage({kProgramName, Printable(text), MessageIcon::kExclamation});
}

void SettingsIo::TakeProgramValues() {
  const auto& setup = parts_.setup;
  auto& values = parts_.values;
  values.logSize = LeadingInteger(setup.txtLogSize.Get());
  values.unZipFiles = IsChecked(setup.chkUnZipFiles);
  values.packetHost = IsChecked(setup.chkPacketHost);
  values.ingestEngine = 0;
  if (IsChecked(setup.chkBrask)) values.ingestEngine = 1;
  if (IsChecked(setup.chkByteBlaster)) values.ingestEngine = 2;
  values.showErrors = IsChecked(setup.chkShowErrors);
}

SettingsIo::Edits SettingsIo::Edited() {
  Edits edits{parts_.rules.Texts(), {}, isLoaded_};
  for (const auto& row : StationSettings(parts_.setup, parts_.values)) {
    if (row.store)
      edits.values.push_back(
          {.keyPath = KeyPath(row.section), .name = row.key, .value = row.store()});
  }
  return edits;
}

}  // namespace ostrel
