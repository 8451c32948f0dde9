// The settings' way from the store into the dialog's fields and back.
#include <chrono>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

std::vector<SettingRow> Rows(VirtualStation& station) {
  return StationSettings(station.setup(), station.station->values());
}

SaveOutcome Save(VirtualStation& station) {
  return station.station->actions().LeaveSetup();
}

TEST(Settings, EveryKeyMakesTheRoundThroughSaveStopAndStart) {
  VirtualStation station;
  station.Start();
  std::map<std::string, std::string> expected;
  for (const auto& row : Rows(station)) {
    if (row.reader != Reader::kFields) continue;
    row.load(row.key + " \"quoted\" \xC3\xA9");
    // A check box takes no text.
    if (row.store() == "0") row.load(row.fallback == "0" ? "1" : "0");
    expected[row.key] = row.store();
  }
  station.setup().chkLogDaily.Set(Check::kGrayed);
  expected["LogDaily"] = "2";
  auto& setup = station.setup();
  setup.txtIngestPath.Set("  " + station.Path("in/") + " ");
  setup.chkUnZipFiles.Set(Check::kChecked);
  setup.chkPacketHost.Set(Check::kChecked);
  setup.chkByteBlaster.Set(Check::kChecked);
  ASSERT_EQ(Save(station), SaveOutcome::kHidden);
  EXPECT_EQ(station.station->values().ingestPath, station.Path("in/")) << "in force at once";
  station.Restart();

  for (const auto& row : Rows(station)) {
    if (!expected.contains(row.key)) continue;
    EXPECT_EQ(row.store(), expected[row.key]) << row.key;
  }
  const auto& values = station.station->values();
  EXPECT_EQ(values.ingestPath, station.Path("in/"));
  EXPECT_EQ(station.setup().txtIngestPath.Get(), station.Path("in"));
  EXPECT_TRUE(values.unZipFiles && values.packetHost && !values.showErrors);
  EXPECT_EQ(values.ingestEngine, 2);
  EXPECT_EQ(station.setup().BlockPriority.Get(), "1") << "the nearest that there is";
}

TEST(Settings, AnImportThatIsAnsweredWhenTheProgramEndsIsNotStarted) {
  VirtualStation station;
  station.Start();
  station.WriteFile(station.Path("KvRegSet.txt"), "");
  station.station->actions().ImportSettings();
  station.station->Stop();
  station.machine.dialogs.Answer(MessageAnswer::kYes);
  EXPECT_TRUE(station.machine.desktop.started.empty());
}

TEST(Settings, AStoreThatAnotherProcessHoldsCostsNeitherTimeNorEdits) {
  VirtualStation station;
  station.Start();
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(station.Path("KvRegistry.db").c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  station.station->actions().ShowSetup();
  station.setup().CWidenty.Set("W1AW");
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(Save(station), SaveOutcome::kHidden);
  EXPECT_EQ(Save(station), SaveOutcome::kHidden);
  EXPECT_LT(std::chrono::steady_clock::now() - start, 20s) << "two waits, not one for each key";
  EXPECT_FALSE(station.machine.dialogs.setupIsShown);
  ASSERT_EQ(station.machine.dialogs.messages.size(), 1U) << "nothing is new at the second time";
  EXPECT_TRUE(station.machine.dialogs.messages[0].text.starts_with(
      "These settings could not be saved: the settings store (Settings store: database is "
      "locked)."));
  sqlite3_close(other);
  station.machine.dialogs.messages.clear();
  station.Restart();
  EXPECT_EQ(station.setup().CWidenty.Get(), "W1AW") << "the end has tried once more";
}

}  // namespace
}  // namespace ostrel
