#include "settings/settings_table.h"

#include <algorithm>
#include <cstdint>
#include <fmt/format.h>
#include <utility>

#include "base/failure.h"
#include "base/numbers.h"
#include "base/priority.h"
#include "platform/datagrams.h"
#include "state/ingest_folder.h"

namespace ostrel {

namespace {

std::string StateOf(Check check) {
  return fmt::format("{}", static_cast<int>(check));
}

/// The check box state that a stored text names; anything but 0 to 2 is unchecked.
Check CheckOf(const std::string& text) {
  if (!IsNumber(text)) return Check::kUnchecked;
  const double state = LeadingNumber(text);
  if (state == 1) return Check::kChecked;
  return state == 2 ? Check::kGrayed : Check::kUnchecked;
}

/// Throws Failure 13 or 6.
std::int16_t EngineOf(const std::string& text) {
  const auto number = StrictInteger(text);
  if (number < INT16_MIN || number > INT16_MAX) throw Overflow();
  return static_cast<std::int16_t>(number);
}

/// The nearest priority that there is.
std::string PriorityText(const std::string& text) {
  return fmt::format("{}", std::clamp(LeadingInteger(text), 1, kPriorityCount));
}

SettingRow Row(std::string key, Section section, Field<std::string>& field, std::string fallback) {
  return {std::move(key),
          section,
          std::move(fallback),
          Reader::kFields,
          [&field](const std::string& text) { field.Set(text); },
          [&field] { return field.Get(); }};
}

SettingRow Row(std::string key, Section section, Field<std::string>& field) {
  return Row(std::move(key), section, field, field.initial());
}

SettingRow Row(std::string key, Section section, Field<Check>& box,
               Check fallback = Check::kUnchecked, Reader reader = Reader::kFields) {
  return {std::move(key),
          section,
          StateOf(fallback),
          reader,
          [&box](const std::string& text) { box.Set(CheckOf(text)); },
          [&box] { return StateOf(box.Get()); }};
}

}  // namespace

std::string KeyPath(Section section) {
  switch (section) {
    case Section::kSettings:
      return "Software\\Corvain\\Ostrel\\Settings";
    case Section::kScreen:
      return "Software\\Corvain\\Ostrel\\Screen";
    case Section::kShared:
      return "Software\\Corvain\\Pellum\\Shared";
  }
  return {};
}

std::unique_ptr<SettingsStore> OpenAtRoot(SettingsStores& stores) {
  auto store = stores.Open();
  store->SetRootKey(kHkeyLocalMachine);
  return store;
}

std::vector<SettingRow> StationSettings(SetupFields& setup, ProgramValues& values) {
  constexpr auto kOwn = Section::kSettings;
  constexpr auto kShared = Section::kShared;
  const auto& folder = values.programFolder;
  std::vector<SettingRow> rows = {
      {"IngestPath", kOwn, folder + "/KvData/RxFiles", Reader::kStart,
       [&](const std::string& text) { values.SetIngestPath(text); },
       [&] { return setup.txtIngestPath.Get(); },
       [&](const std::string& text) { CheckIngestFolder(text, values.programFolder); }},
      {"Engine", kOwn, "0", Reader::kStart,
       [&](const std::string& text) { values.ingestEngine = EngineOf(text); },
       [&] { return fmt::format("{}", values.ingestEngine); }},
      Row("CWIDText", kOwn, setup.CWidenty),
      Row("CWIDTime", kOwn, setup.IDTime),
      Row("CWSpeed", kOwn, setup.CWSpeed),
      Row("ComPort", kOwn, setup.lblOutPort),
      Row("ComBaud", kOwn, setup.lblOutBaud),
      Row("ComData", kOwn, setup.lblOutData),
      Row("ComParity", kOwn, setup.lblOutParity),
      Row("ComStopBit", kOwn, setup.lblOutStop),
      Row("FillFile", kOwn, setup.Diddle, folder + "/FillFile.txt"),
      Row("FillFilePriPath", kOwn, setup.NameAs, folder + "/KvData/RtPri10/FillFile.txt"),
      Row("ShowErrors", kShared, setup.chkShowErrors, Check::kChecked),
      // The first lines are written before there are fields: a daily log is daily for them too.
      Row("LogDaily", kShared, setup.chkLogDaily, Check::kUnchecked, Reader::kStart),
      Row("LogProgram", kOwn, setup.LogIt),
      {"LogSize", kOwn, setup.txtLogSize.initial(), Reader::kStart,
       [&](const std::string& text) { values.logSize = LeadingInteger(text); },
       [&] { return FormatPlain(LeadingNumber(setup.txtLogSize.Get())); }},
      {"UnZipFiles", kOwn, "0", Reader::kStart,
       [&](const std::string& text) { values.unZipFiles = StrictBoolean(text); },
       [&] { return StateOf(setup.chkUnZipFiles.Get()); }},
      {"PacketHost", kOwn, "False", Reader::kStart,
       [&](const std::string& text) { values.packetHost = StrictBoolean(text); },
       [&] { return StateOf(setup.chkPacketHost.Get()); }},
      {"UdpAddress",
       kOwn,
       "127.255.255.255",
       Reader::kStart,
       [&](const std::string& text) { values.udpAddress = text; },
       {},
       CheckDestinationAddress},
      {"UdpPort",
       kOwn,
       "9510",
       Reader::kStart,
       [&](const std::string& text) { values.udpPort = StrictInteger(text); },
       {},
       [](const std::string& text) { CheckDestinationPort(StrictInteger(text)); }},
      Row("PurgeTime", kOwn, setup.txtPurgeTime),
      Row("TxDelay", kOwn, setup.txtTxDelay),
      Row("TxUpTime", kOwn, setup.totdown),
      Row("TxDownTime", kOwn, setup.totup),
      Row("CompressNbrFiles", kOwn, setup.CompFiles),
      {"CompressBlockPri", kOwn, setup.BlockPriority.initial(), Reader::kFields,
       [&](const std::string& text) { setup.BlockPriority.Set(PriorityText(text)); },
       [&] { return setup.BlockPriority.Get(); }},
  };
  for (const Priority p : AllPriorities()) {
    rows.push_back(Row(fmt::format("CompressPri{}", p.index()), kOwn, setup.chkSendComp[p]));
    rows.push_back(Row(fmt::format("OverWrite{}", p.index()), kOwn, setup.chkOverWrite[p]));
  }
  return rows;
}

void CheckSetting(const SettingRow& row, const std::string& text) {
  try {
    row.load(text);
    if (row.check) row.check(text);
  } catch (const Failure& failure) {
    throw Failure(failure_number::kTypeMismatch,
                  fmt::format("{} cannot be \"{}\". {}.", row.key, text, failure.text()));
  }
}

}  // namespace ostrel
