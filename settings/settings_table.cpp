#include "settings/settings_table.h"

#include <algorithm>
#include <cstdint>
#include <fmt/format.h>
#include <utility>

#include "base/failure.h"
#include "base/numbers.h"
#include "base/priority.h"
#include "base/text.h"
#include "platform/datagrams.h"
#include "platform/line_time.h"
#include "platform/serial_port.h"
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

SettingRow Row(std::string key, std::string meaning, Section section, Field<std::string>& field,
               std::string fallback) {
  return {std::move(key),
          std::move(meaning),
          section,
          std::move(fallback),
          Reader::kFields,
          [&field](const std::string& text) { field.Set(text); },
          [&field] { return field.Get(); }};
}

SettingRow Row(std::string key, std::string meaning, Section section, Field<std::string>& field) {
  return Row(std::move(key), std::move(meaning), section, field, field.initial());
}

SettingRow Row(std::string key, std::string meaning, Section section, Field<Check>& box,
               Check fallback = Check::kUnchecked, Reader reader = Reader::kFields) {
  return {std::move(key),
          std::move(meaning),
          section,
          StateOf(fallback),
          reader,
          [&box](const std::string& text) { box.Set(CheckOf(text)); },
          [&box] { return StateOf(box.Get()); },
          {},
          NumberRange{0, 2}};
}

SettingRow NumberRow(std::string key, std::string meaning, NumberRange range,
                     Field<std::string>& field) {
  auto row = Row(std::move(key), std::move(meaning), Section::kSettings, field);
  row.range = range;
  return row;
}

/// A number of days that no window shows. A text that is none counts as 0.
SettingRow DaysRow(std::string key, std::string meaning, int& days, std::string fallback) {
  static constexpr int kMostDays = 36'500;
  return {
      std::move(key),
      std::move(meaning),
      Section::kSettings,
      std::move(fallback),
      Reader::kStart,
      [&days](const std::string& text) { days = std::clamp(LeadingInteger(text), 0, kMostDays); },
      {},
      [](const std::string& text) {
        if (!IsNumber(text)) throw TypeMismatch();
      }};
}

/// A part of the port's settings: what the port takes, as the others usually are.
SettingRow LineRow(std::string key, std::string meaning, Field<std::string>& field,
                   const char* settings) {
  auto row = Row(std::move(key), std::move(meaning), Section::kSettings, field);
  row.isOfPort = true;
  row.check = [settings](const std::string& text) {
    ParseLineSettings(fmt::format(fmt::runtime(settings), text));
  };
  return row;
}

SettingRow PortRow(std::string key, std::string meaning, Field<std::string>& field) {
  auto row = Row(std::move(key), std::move(meaning), Section::kSettings, field);
  row.isOfPort = true;
  row.check = [](const std::string& text) {
    const auto port = LeadingInteger(text);
    if (port < 1 || port > kPortCount)
      throw Failure(failure_number::kInvalidArgument, "It is a number from 1 to 8");
  };
  return row;
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
      {"IngestPath", "Where received files are taken from. Empty: nothing is sent.", kOwn,
       folder + "/KvData/RxFiles", Reader::kStart,
       [&](const std::string& text) { values.SetIngestPath(text); },
       [&] { return setup.txtIngestPath.Get(); },
       [&](const std::string& text) { CheckIngestFolder(text, values.programFolder); }},
      {"Engine", "Ingest program to start along: 0 none, 1 Brask, 2 Tiltor.", kOwn, "0",
       Reader::kStart, [&](const std::string& text) { values.ingestEngine = EngineOf(text); },
       [&] { return fmt::format("{}", values.ingestEngine); }},
      {"StationName",
       "What the station is called. Empty: as its computer is.",
       kOwn,
       "",
       Reader::kStart,
       [&](const std::string& text) { values.stationName = TrimBlanks(text); },
       {}},
      Row("CWIDText", "What the Morse identification says.", kOwn, setup.CWidenty),
      NumberRow("CWIDTime", "Minutes between two identifications. 0: none by itself.", {0, 1440},
                setup.IDTime),
      NumberRow("CWSpeed", "A dot lasts 5 x (33 - factor) ms.", {0, 32}, setup.CWSpeed),
      PortRow("ComPort", "1 to 8: the link COM1 to COM8.", setup.lblOutPort),
      LineRow("ComBaud", "Bits a second.", setup.lblOutBaud, "{},N,8,2"),
      LineRow("ComData", "8 or 7.", setup.lblOutData, "1200,N,{},2"),
      LineRow("ComParity", "N, O or E.", setup.lblOutParity, "1200,{},8,2"),
      LineRow("ComStopBit", "1 or 2.", setup.lblOutStop, "1200,N,8,{}"),
      Row("FillFile", "Sent while nothing waits.", kOwn, setup.Diddle, folder + "/FillFile.txt"),
      Row("FillFilePriPath", "Where the fill file is inserted; its name is the one that is sent.",
          kOwn, setup.NameAs, folder + "/KvData/RtPri10/FillFile.txt"),
      Row("ShowErrors", "1: errors open the error window.", kShared, setup.chkShowErrors,
          Check::kChecked),
      // The first lines are written before there are fields: a daily log is daily for them too.
      Row("LogDaily", "1: the log is not cut by its size.", kShared, setup.chkLogDaily,
          Check::kUnchecked, Reader::kStart),
      Row("LogProgram", "1: each block that is sent has its line in the log.", kOwn, setup.LogIt),
      {"LogSize", "Bytes; the log is cut there.", kOwn, setup.txtLogSize.initial(), Reader::kStart,
       [&](const std::string& text) { values.logSize = LeadingInteger(text); },
       [&] { return FormatPlain(LeadingNumber(setup.txtLogSize.Get())); }},
      {"UnZipFiles", "1: received archives are unpacked.", kOwn, "0", Reader::kStart,
       [&](const std::string& text) { values.unZipFiles = StrictBoolean(text); },
       [&] { return StateOf(setup.chkUnZipFiles.Get()); }},
      {"PacketHost", "True: each packet goes out as a datagram, too.", kOwn, "False",
       Reader::kStart, [&](const std::string& text) { values.packetHost = StrictBoolean(text); },
       [&] { return StateOf(setup.chkPacketHost.Get()); }},
      {"UdpAddress",
       "Where datagrams go, an IPv4 address.",
       kOwn,
       "127.255.255.255",
       Reader::kStart,
       [&](const std::string& text) { values.udpAddress = text; },
       {},
       CheckDestinationAddress},
      {"UdpPort",
       "1 to 65535.",
       kOwn,
       "9510",
       Reader::kStart,
       [&](const std::string& text) { values.udpPort = StrictInteger(text); },
       {},
       [](const std::string& text) { CheckDestinationPort(StrictInteger(text)); }},
      DaysRow("HistoryDays", "Days for which the history keeps what became of a product.",
              values.historyDays, "400"),
      DaysRow("KeepProductDays", "Days for which the history keeps the products themselves.",
              values.keptDays, "0"),
      NumberRow("PurgeTime", "Hours after which a waiting file is deleted. 0: never.", {0, 8760},
                setup.txtPurgeTime),
      NumberRow("TxDelay", "Milliseconds from the keying to the first byte.", {0, 10'000},
                setup.txtTxDelay),
      NumberRow("TxUpTime", "Minutes of a transmit period. 0: no pauses.", {0, 1440},
                setup.totdown),
      NumberRow("TxDownTime", "Seconds of a pause.", {0, 3600}, setup.totup),
      NumberRow("CompressNbrFiles", "Files that are compressed in one block, 0 to 100.", {0, 100},
                setup.CompFiles),
      {"CompressBlockPri",
       "Priority of such a block, 1 to 10.",
       kOwn,
       setup.BlockPriority.initial(),
       Reader::kFields,
       [&](const std::string& text) { setup.BlockPriority.Set(PriorityText(text)); },
       [&] { return setup.BlockPriority.Get(); },
       {},
       NumberRange{1, kPriorityCount}},
  };
  for (const Priority p : AllPriorities()) {
    rows.push_back(Row(fmt::format("CompressPri{}", p.index()),
                       fmt::format("1: files of priority {} go out compressed.", p.number()), kOwn,
                       setup.chkSendComp[p]));
    rows.push_back(
        Row(fmt::format("OverWrite{}", p.index()),
            fmt::format("1: a newer file of priority {} takes the place of one that waits.",
                        p.number()),
            kOwn, setup.chkOverWrite[p]));
  }
  return rows;
}

std::string DoubtAbout(const SettingRow& row, const std::string& text) {
  if (!row.range || text.empty()) return "";  // an empty field counts as 0
  const auto [least, most] = *row.range;
  const double number = LeadingNumber(text);
  if (IsNumber(text) && number >= least && number <= most) return "";
  return fmt::format("It is a number from {} to {}", least, most);
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
