#include "config/settings_io.h"

#include <fmt/format.h>

#include "base/numbers.h"
#include "base/text.h"
#include "config/settings_table.h"

namespace ostrel {

namespace {

constexpr double kSmallestLog = 50000;

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

}  // namespace

void SettingsIo::LoadProgramValues() {
  const auto store = OpenAtRoot(parts_.stores);
  const auto rows = StartupSettings(parts_.values.programFolder);
  auto row = rows.begin();
  const auto next = [&] {
    const auto text = store->ReadSetting(KeyPath(row->section), row->key, row->fallback);
    ++row;
    return text;
  };
  auto& values = parts_.values;
  values.ingestPath = WithSeparator(next());
  const auto engine = StrictInteger(next());
  if (engine < INT16_MIN || engine > INT16_MAX)
    throw Failure(failure_number::kOverflow, "Overflow");
  values.engine = static_cast<std::int16_t>(engine);
  values.logSize = LeadingInteger(next());
  values.unZipFiles = StrictBoolean(next());
  values.packetHost = StrictBoolean(next());
  values.udpAddress = next();
  values.udpPort = StrictInteger(next());
}

void SettingsIo::LoadSettings() {
  parts_.rules.LoadRuleLists();
  ShowProgramValues();
  LoadFields();
  parts_.output.OpenComPort();
  parts_.compression.RefreshCompressList();
  if (parts_.setup.CompFiles.Get().empty()) parts_.setup.CompFiles.Set("20");
  parts_.values.showErrors = IsChecked(parts_.setup.chkShowErrors);
  parts_.schedule.LoadSchedule();
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
    Fill(row.field, store->ReadSetting(KeyPath(row.section), row.key, row.fallback));
  // Set here as well: an interval that is the field's initial text is no change of it.
  parts_.morse.RestartCountdown();
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
  TakeProgramValues();

  auto unsaved = parts_.rules.SaveRuleLists();
  if (!TryStep([&] { StoreFields(unsaved); })) unsaved.emplace_back("the settings store");
  parts_.values.ingestPath = WithSeparator(setup.txtIngestPath.Get());
  if (!unsaved.empty()) {
    parts_.dialogs.ShowMessage(
        {kProgramName,
         fmt::format("These settings could not be saved: {}.", fmt::join(unsaved, ", ")),
         MessageIcon::kExclamation});
    return SaveOutcome::kStay;
  }
  parts_.dialogs.HideSetup();
  return SaveOutcome::kHide;
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

void SettingsIo::StoreFields(std::vector<std::string>& unsaved) {
  const auto store = OpenAtRoot(parts_.stores);
  const auto write = [&](Section section, const std::string& key, const std::string& text) {
    if (!store->WriteSetting(KeyPath(section), key, text)) unsaved.push_back(key);
  };
  auto& setup = parts_.setup;
  write(Section::kSettings, "IngestPath", setup.txtIngestPath.Get());
  write(Section::kSettings, "Engine", fmt::format("{}", parts_.values.engine));
  for (const auto& row : FieldSettings(setup, parts_.values.programFolder)) {
    write(row.section, row.key, TextOf(row.field));
    if (row.key != "LogProgram") continue;
    write(Section::kSettings, "LogSize", FormatPlain(LeadingNumber(setup.txtLogSize.Get())));
    write(Section::kSettings, "UnZipFiles", StateOf(setup.chkUnZipFiles.Get()));
    write(Section::kSettings, "PacketHost", StateOf(setup.chkPacketHost.Get()));
  }
}

}  // namespace ostrel
