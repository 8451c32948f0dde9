// The settings' way from the store into the dialog's fields and back.
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

std::string TextOf(const SettingField& field) {
  if (const auto* text = std::get_if<Field<std::string>*>(&field)) return (*text)->Get();
  return std::to_string(static_cast<int>(std::get<Field<Check>*>(field)->Get()));
}

std::vector<SettingRow> Rows(VirtualStation& station) {
  return FieldSettings(station.setup(), station.folder.path());
}

SaveOutcome Save(VirtualStation& station) {
  return station.station->operators().LeaveSetup();
}

TEST(Settings, AnEmptyStoreGivesEveryDefaultAndOneSaveWritesEveryKey) {
  VirtualStation station;
  station.Start();
  const auto& values = station.station->values();
  for (const auto& row : Rows(station)) EXPECT_EQ(TextOf(row.field), row.fallback) << row.key;
  EXPECT_EQ(values.ingestPath, station.Path("KvData/RxFiles/"));
  EXPECT_EQ(values.logSize, 100000);
  EXPECT_TRUE(values.showErrors);
  EXPECT_FALSE(values.unZipFiles || values.packetHost || values.engine != 0);
  EXPECT_EQ(station.setup().TimeLeft.Get(), "10");
  EXPECT_EQ(station.machine.datagrams.address, "127.255.255.255");
  EXPECT_EQ(station.machine.datagrams.port, 9510);

  EXPECT_EQ(Save(station), SaveOutcome::kHide);
  for (const auto& row : Rows(station))
    EXPECT_EQ(station.Get(row.key, row.section), row.fallback) << row.key;
  const std::pair<const char*, std::string> startup[] = {
      {"IngestPath", station.Path("KvData/RxFiles")},
      {"Engine", "0"},
      {"LogSize", "100000"},
      {"UnZipFiles", "0"},
      {"PacketHost", "0"},
      {"UdpAddress", "(none)"},
      {"UdpPort", "(none)"}};
  for (const auto& [key, value] : startup) EXPECT_EQ(station.Get(key), value) << key;
}

TEST(Settings, EveryKeyMakesTheRoundThroughSaveStopAndStart) {
  VirtualStation station;
  station.Start();
  std::map<std::string, std::string> expected;
  int number = 100;
  for (const auto& row : Rows(station)) {
    expected[row.key] = std::to_string(++number) + " \"quoted\" \xC3\xA9";
    if (const auto* box = std::get_if<Field<Check>*>(&row.field)) {
      expected[row.key] = row.fallback == "0" ? "1" : "0";
      (*box)->Set(row.fallback == "0" ? Check::kChecked : Check::kUnchecked);
    } else {
      std::get<Field<std::string>*>(row.field)->Set(expected[row.key]);
    }
  }
  auto& setup = station.setup();
  setup.txtIngestPath.Set("  " + station.Path("in/") + " ");
  setup.txtLogSize.Set("70001.5");
  setup.chkUnZipFiles.Set(Check::kChecked);
  setup.chkPacketHost.Set(Check::kChecked);
  setup.chkByteBlaster.Set(Check::kChecked);
  ASSERT_EQ(Save(station), SaveOutcome::kHide);
  station.Restart();

  for (const auto& row : Rows(station)) EXPECT_EQ(TextOf(row.field), expected[row.key]) << row.key;
  const auto& values = station.station->values();
  EXPECT_EQ(values.ingestPath, station.Path("in/"));
  EXPECT_EQ(station.setup().txtIngestPath.Get(), station.Path("in"));
  EXPECT_EQ(station.Get("LogSize"), "70001.5");
  EXPECT_EQ(values.logSize, 70002);
  EXPECT_TRUE(values.unZipFiles && values.packetHost && !values.showErrors);
  EXPECT_EQ(values.engine, 2);
  EXPECT_TRUE(IsChecked(station.setup().chkByteBlaster));
  EXPECT_FALSE(IsChecked(station.setup().chkBrask));
}

TEST(Settings, TheLogSizeIsCheckedBeforeAnythingIsSaved) {
  VirtualStation station;
  station.Start();
  auto& dialogs = station.machine.dialogs;
  for (const auto* refused : {"much", "", "60000 bytes"}) {
    station.setup().txtLogSize.Set(refused);
    EXPECT_EQ(Save(station), SaveOutcome::kFocusLogSize) << refused;
    EXPECT_EQ(station.Get("CWIDText"), "(none)") << refused;
    EXPECT_EQ(station.station->values().logSize, 100000) << refused;
    EXPECT_EQ(dialogs.messages.back().text, "Log file size must be numeric.");
  }
  EXPECT_EQ(dialogs.messages.size(), 3U);
  const std::tuple<const char*, const char*, int> taken[] = {
      {"70000.5", "70000.5", 70000}, {"49999.9", "50000", 50000}, {"-1", "50000", 50000}};
  for (const auto& [entered, stored, inForce] : taken) {
    station.setup().txtLogSize.Set(entered);
    EXPECT_EQ(Save(station), SaveOutcome::kHide) << entered;
    EXPECT_EQ(station.Get("LogSize"), stored);
    EXPECT_EQ(station.station->values().logSize, inForce);
  }
  EXPECT_EQ(dialogs.messages.size(), 3U) << "a small size is raised without a word";
}

TEST(Settings, OddStoredValuesAreReadAsFarAsTheyGo) {
  VirtualStation station;
  const std::pair<const char*, const char*> stored[] = {
      {"Engine", "3"},    {"LogSize", "big"},       {"PacketHost", "TRUE"}, {"UnZipFiles", "-1"},
      {"IngestPath", ""}, {"CompressNbrFiles", ""}, {"LogProgram", "yes"},  {"OverWrite3", "2"}};
  for (const auto& [key, value] : stored) station.Set(key, value);
  station.Start();
  const auto& values = station.station->values();
  auto& setup = station.setup();
  EXPECT_FALSE(IsChecked(setup.chkBrask) || IsChecked(setup.chkByteBlaster));
  EXPECT_EQ(values.logSize, 0);
  EXPECT_TRUE(values.packetHost && values.unZipFiles);
  EXPECT_EQ(values.ingestPath, "");
  EXPECT_EQ(setup.CompFiles.Get(), "20");
  EXPECT_EQ(setup.LogIt.Get(), Check::kUnchecked);
  EXPECT_EQ(setup.chkOverWrite[Priority(4)].Get(), Check::kGrayed);
  EXPECT_EQ(Save(station), SaveOutcome::kHide);
  EXPECT_EQ(station.Get("Engine"), "0");
  EXPECT_EQ(station.Get("LogSize"), "50000");
  EXPECT_EQ(station.Get("IngestPath"), "");
}

TEST(Settings, PortValuesReopenThePortAtTheirChangeAndOnlyThen) {
  VirtualStation station;
  station.Set("ComData", "7");
  station.Set("ComParity", "E");
  station.Start();
  auto& openings = station.machine.line.openings;
  // At each change while loading, and then with all of them.
  using Lines = std::vector<std::string>;
  EXPECT_EQ(openings, (Lines{"1200,N,7,2", "1200,E,7,2", "1200,E,7,2"}));
  openings.clear();
  auto& setup = station.setup();
  setup.lblOutData.Set("8");
  setup.lblOutData.Set("8");
  setup.lblOutParity.Set("X");
  setup.lblOutParity.Set("O");
  setup.lblOutBaud.Set("9600");
  EXPECT_EQ(openings, (Lines{"1200,E,8,2", "1200,O,8,2"}));
}

}  // namespace
}  // namespace ostrel
