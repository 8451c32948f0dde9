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

std::string WithSeparator(std::string path) {
  if (!path.empty()) path += '/';
  return path;
}

std::string StateOf(Check check) {
  return fmt::format("{}", static_cast<int>(check));
}

Check CheckedIf(bool on) {
  return on ? Check::kChecked : Check::kUnchecked;
}

/// The check box state that a stored text names; anything but 0 to 2 is unchecked.
Check CheckOf(const std::string& text) {
  if (!IsNumber(text)) return Check::kUnchecked;
  const double state = LeadingNumber(text);
  if (state == 1) return Check::kChecked;
  return state == 2 ? Check::kGrayed : Check::kUnchecked;
}

std::string TextOf(const SettingField& field) {
  if (const auto* text = std::get_if<Field<std::string>*>(&field)) return (*text)->Get();
  if (const auto* box = std::get_if<Field<Check>*>(&field)) return StateOf((*box)->Get());
  return {};
}

void Fill(const SettingField& field, const std::string& text) {
  if (const auto* textField = std::get_if<Field<std::string>*>(&field)) (*textField)->Set(text);
  if (const auto* box = std::get_if<Field<Check>*>(&field)) (*box)->Set(CheckOf(text));
}

/// Throws Failure 13 or 6 for a text that names no engine number.
std::int16_t EngineOf(const std::string& text) {
  const auto engine = StrictInteger(text);
  if (engine < INT16_MIN || engine > INT16_MAX)
    throw Failure(failure_number::kOverflow, "Overflow");
  return static_cast<std::int16_t>(engine);
}

/// Throws Failure 13 or 6 for a text that does not convert.
void TakeValue(ProgramValues& values, const std::string& key, const std::string& text) {
  if (key == "IngestPath") values.ingestPath = WithSeparator(text);
  if (key == "Engine") values.engine = EngineOf(text);
  if (key == "LogSize") values.logSize = LeadingInteger(text);
  if (key == "UnZipFiles") values.unZipFiles = StrictBoolean(text);
  if (key == "PacketHost") values.packetHost = StrictBoolean(text);
  if (key == "UdpAddress") values.udpAddress = text;
  if (key == "UdpPort") values.udpPort = StrictInteger(text);
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
  auto& values = parts_.values;
  for (const auto& row : StartupSettings(values.programFolder)) {
    const auto text = Read(store, row);
    try {
      TakeValue(values, row.key, text);
    } catch (const Failure& failure) {
      TakeValue(values, row.key, row.fallback);
      damaged.push_back({row.key, failure});
    }
  }
  // The first lines are written before the fields are filled: a daily log is daily for them too.
  for (const auto& row : FieldSettings(parts_.setup, values.programFolder)) {
    if (row.key == "LogDaily") Fill(row.field, Read(store, row));
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
  parts_.transmitter.OpenComPort();
  parts_.compression.RefreshCompressList();
  parts_.values.showErrors = IsChecked(parts_.setup.chkShowErrors);
  parts_.schedule.LoadSchedule();
  parts_.kept.BeginGivingBack();
  parts_.dialogs.HideSetup();
}

void SettingsIo::ShowProgramValues() {
  const auto& values = parts_.values;
  auto& setup = parts_.setup;
  setup.txtIngestPath.Set(WithoutSeparator(values.ingestPath));
  setup.chkBrask.Set(CheckedIf(values.engine == 1));
  setup.chkByteBlaster.Set(CheckedIf(values.engine == 2));
  setup.txtLogSize.Set(fmt::format("{}", values.logSize));
  setup.chkUnZipFiles.Set(CheckedIf(values.unZipFiles));
  setup.chkPacketHost.Set(CheckedIf(values.packetHost));
}

void SettingsIo::LoadFields() {
  const auto store = OpenAtRoot(parts_.stores);
  for (const auto& row : FieldSettings(parts_.setup, parts_.values.programFolder))
    Fill(row.field, Read(*store, row));
  if (parts_.setup.CompFiles.Get().empty()) parts_.setup.CompFiles.Set("20");
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
  if (isLoaded_) parts_.values.ingestPath = WithSeparator(setup.txtIngestPath.Get());
  parts_.kept.BeginGivingBack();
  parts_.dialogs.HideSetup();
  if (!refusal.empty() && isNews) Say(refusal + kTriedAgain);
  return SaveOutcome::kHide;
}

std::string SettingsIo::SaveUnsaved() {
  if (!unsaved_) return {};
  auto failed = parts_.rules.SaveRuleLists(unsaved_->rules);
  TryPart(failed, kStoreName, [&] {
    if (!unsaved_->areLoaded) throw Failure(failure_number::kDeviceError, "it was not loaded");
    OpenAtRoot(parts_.stores)->WriteAll(unsaved_->values);
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
  parts_.dialogs.ShowMessage({kProgramName, text, MessageIcon::kExclamation});
}

void SettingsIo::TakeProgramValues() {
  const auto& setup = parts_.setup;
  auto& values = parts_.values;
  values.logSize = LeadingInteger(setup.txtLogSize.Get());
  values.unZipFiles = IsChecked(setup.chkUnZipFiles);
  values.packetHost = IsChecked(setup.chkPacketHost);
  values.engine = 0;
  if (IsChecked(setup.chkBrask)) values.engine = 1;
  if (IsChecked(setup.chkByteBlaster)) values.engine = 2;
  values.showErrors = IsChecked(setup.chkShowErrors);
}

SettingsIo::Edits SettingsIo::Edited() {
  Edits edits{parts_.rules.Texts(), {}, isLoaded_};
  const auto add = [&](Section section, const std::string& key, std::string text) {
    edits.values.push_back({.keyPath = KeyPath(section), .name = key, .value = std::move(text)});
  };
  auto& setup = parts_.setup;
  add(Section::kSettings, "IngestPath", setup.txtIngestPath.Get());
  add(Section::kSettings, "Engine", fmt::format("{}", parts_.values.engine));
  for (const auto& row : FieldSettings(setup, parts_.values.programFolder)) {
    add(row.section, row.key, TextOf(row.field));
    if (row.key != "LogProgram") continue;
    add(Section::kSettings, "LogSize", FormatPlain(LeadingNumber(setup.txtLogSize.Get())));
    add(Section::kSettings, "UnZipFiles", StateOf(setup.chkUnZipFiles.Get()));
    add(Section::kSettings, "PacketHost", StateOf(setup.chkPacketHost.Get()));
  }
  return edits;
}

}  // namespace ostrel
