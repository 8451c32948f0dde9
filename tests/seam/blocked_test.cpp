// What cannot go on is told, and can be put out of the way.
#include <gtest/gtest.h>

#include "programs/status/reports.h"
#include "seam/seam.h"
#include "tests/support/told_socket.h"

namespace ostrel {
namespace {

/// Fails the step for files whose names hold that text.
FaultyFiles::Fault Refusing(const std::string& text, std::int32_t number = 70) {
  return [=](const std::string& path) {
    if (path.find(text) != std::string::npos) throw Failure(number, "as told: " + path);
  };
}

struct BlockedStation : VirtualStation {
  BlockedStation() {
    files.isSorted = true;
    machine.history.isKept = true;
    Set({{"CWIDTime", "0"}, {"ComBaud", "38400"}, {"TxUpTime", "0"}});
    Rule(0, "TOR*");
    Rule(10, "BLK*");
    Start();
    seam.emplace(*station, socket);
  }
  Json Ask(const std::string& what, const std::string& name = "") {
    return socket.Ask(fmt::format(R"({{"ask":"{}","name":"{}"}})", what, name));
  }
  Json Intake() { return socket.Status()["intake"]; }
  Status StatusForReaders() {
    socket.Status();
    return Status::parse(socket.sent[1].back());
  }
  ToldSocket socket;
  std::optional<Seam> seam;
};

TEST(Blocked, NamesTheFileThatHoldsUpWarningsUntilItIsSetAside) {
  BlockedStation station;
  station.files.lockFault = Refusing("/AAA.TXT");
  station.Drop("AAA.TXT", "nobody can take it");
  for (int i = 0; i < 6; ++i) station.Drop(fmt::format("TOR{}.TXT", i), SampleText(100, i));
  station.Run(13s);
  const auto intake = station.Intake();
  EXPECT_EQ(intake["ingest"]["files"], 7);
  EXPECT_NEAR(intake["ingest"]["oldest"], 13, 0.3);
  EXPECT_EQ(intake["blocked"]["name"], "AAA.TXT");
  EXPECT_EQ(intake["blocked"]["folder"], "RxFiles");
  EXPECT_EQ(intake["blocked"]["reason"], "as told");
  EXPECT_NEAR(intake["blocked"]["for"], 12.9, 0.2);
  EXPECT_EQ(station.station->standstill(), "AAA.TXT holds up the ingest folder. as told");
  const auto page = PageOf(station.StatusForReaders());
  EXPECT_NE(page.find("In the ingest folder 7, the oldest 13 s"), std::string::npos) << page;
  EXPECT_NE(page.find("Held up by           RxFiles/AAA.TXT for 1"), std::string::npos);

  EXPECT_EQ(station.Ask("set-aside")["done"], "AAA.TXT of RxFiles is set aside: as told");
  EXPECT_EQ(station.Messages("Operator").back(),
            "AAA.TXT of RxFiles is set aside: as told (alice)");
  station.Run(8s);
  EXPECT_EQ(station.Blocks().size(), 6U);
  EXPECT_EQ(station.Intake()["blocked"], nullptr);
  EXPECT_EQ(station.Intake()["quarantine"]["files"], 1);
  EXPECT_EQ(station.station->standstill(), "");
  EXPECT_EQ(station.machine.history.rows.at(1).fate, Fate::kSetAside);

  const auto item = station.Ask("quarantine")["quarantine"][0];
  EXPECT_EQ(item["reason"], "as told");
  EXPECT_EQ(item["from"], station.Path("KvData/RxFiles/AAA.TXT"));
  EXPECT_NEAR(item["for"], 8, 0.3);
  EXPECT_EQ(station.Ask("restore", "aaa.txt")["done"],
            "AAA.TXT is restored to RxFiles as AAA.TXT.");
  station.Run(1s);
  EXPECT_LT(station.Intake()["blocked"]["for"], 1.5) << "another trouble than the first";
  station.Ask("set-aside", "aaa.txt");
  EXPECT_EQ(station.Ask("delete-set-aside", "AAA.TXT")["done"],
            "AAA.TXT, which was set aside, is deleted.");
  EXPECT_EQ(station.Ask("restore", "AAA.TXT")["error"], "AAA.TXT is not in the quarantine.");
}

TEST(Blocked, SetsNoFileAsideUnaskedForATroubleThatEachWouldHave) {
  BlockedStation station;
  EXPECT_EQ(station.Ask("set-aside")["error"], "Nothing is kept from going on.");
  station.files.copyFault = [](auto&, const std::string& to) {
    return to.find("RtPri1/") != std::string::npos ? copy_code::kDiskFull : 0;
  };
  station.Drop("TORA.TXT", "whole");
  station.Drop("TORB.TXT", "whole");
  station.Run(1s);
  const std::string refusal = station.Ask("set-aside")["error"];
  EXPECT_NE(refusal.find("TORA.TXT is not to blame for what keeps it: Copy File Failed"),
            std::string::npos)
      << refusal;
  // A bad place of the disk is one file's own trouble; a disk of which nothing can be read is not.
  station.files.readFault = Refusing("RxFiles", failure_number::kDeviceError);
  EXPECT_TRUE(station.Ask("set-aside").contains("error"));
  station.files.readFault = Refusing("TORA.TXT", failure_number::kDeviceError);
  EXPECT_TRUE(station.Ask("set-aside").contains("done"));
  EXPECT_EQ(station.Names("KvData/RtQuarantine"), (Lines{"TORA.TXT"}));
  EXPECT_TRUE(station.Ask("set-aside", "torb.txt").contains("done"))
      << "named, it goes all the same";
  EXPECT_TRUE(station.Ask("set-aside", "../RtLog.txt").contains("error"));
}

TEST(Blocked, TellsOfRefusedFilesInEveryFolderTheLongestFirst) {
  BlockedStation station;
  station.files.readFault = Refusing("STAYS");
  station.files.copyFault = [](const std::string& from, auto&) {
    return from.find("RtPri3/STAYS") != std::string::npos ? copy_code::kAccessDenied : 0;
  };
  station.WriteFile(station.Path("KvData/RtPri3/STAYS.TXT"), "in a holding folder");
  station.Run(20s);
  station.WriteFile(station.Path("KvData/RtPri11/STAYS.BLK"), "awaiting a block");
  station.setup().CompFiles.Set("1");
  station.Run(20s);
  auto intake = station.Intake();
  ASSERT_EQ(intake["refusedCount"], 2);
  EXPECT_EQ(intake["refused"][0]["name"], "STAYS.TXT");
  EXPECT_EQ(intake["refused"][0]["folder"], "RtPri3");
  EXPECT_NEAR(intake["refused"][0]["for"], 40, 0.5);
  EXPECT_NEAR(intake["refused"][0]["nextTry"], 30, 3) << "10 and 20 seconds after two refusals";
  EXPECT_EQ(intake["refused"][1]["folder"], "RtPri11");
  EXPECT_GE(intake["holding"]["files"], 1) << "and a fill, it may be";
  EXPECT_EQ(intake["compression"]["files"], 1);

  EXPECT_EQ(station.Ask("set-aside")["done"],
            "STAYS.TXT of RtPri3 is set aside: Copy File Failed: dll "
            "error - 5 Access is denied.");
  station.Ask("set-aside");
  EXPECT_EQ(station.Intake()["refusedCount"], 0);
  station.files.readFault = nullptr;
  station.files.copyFault = nullptr;
  station.Ask("restore", "STAYS.TXT");
  station.Run(2s);
  EXPECT_EQ(station.Blocks().back(), "STAYS.TXT 1/1");
}

TEST(Blocked, TellsOfAFolderThatCannotBeUsed) {
  BlockedStation station;
  const auto ingest = Refusing("RxFiles", 107), holding = Refusing("RtPri3", 107);
  station.files.listFault = [=](const std::string& path) {
    ingest(path);
    holding(path);
  };
  station.Run(12s);
  const auto intake = station.Intake();
  EXPECT_EQ(intake["blocked"]["name"], nullptr);
  EXPECT_EQ(intake["ingest"]["trouble"], "as told");
  EXPECT_EQ(intake["holding"]["trouble"], "as told");
  EXPECT_EQ(intake["refusedCount"], 1);
  EXPECT_EQ(intake["refused"][0]["folder"], "RtPri3");
  EXPECT_EQ(station.station->standstill(), "The ingest folder cannot be used. as told");
  EXPECT_TRUE(station.Ask("set-aside").contains("error"));
  station.files.listFault = nullptr;
  station.Run(1s);
  EXPECT_EQ(station.Intake()["refusedCount"], 0);
  EXPECT_EQ(station.Intake()["blocked"], nullptr);
}

/// As many files as one likes in the ingest folder, and how often they are looked at.
struct FullFolder : FaultyFiles {
  using FaultyFiles::FaultyFiles;
  std::optional<std::string> FirstFile(const std::string& folder, const NameTest& test) override {
    if (!folder.ends_with("RxFiles/")) return std::nullopt;
    for (int i = 0; i < files; ++i, ++named) {
      const auto name = fmt::format("{}.TXT", i);
      if (!test(name)) return name;
    }
    return std::nullopt;
  }
  FileStatus Status(const std::string& path) override {
    ++asked;
    clock->Sleep(1ms);
    return FaultyFiles::Status(path);
  }
  int files = 0, named = 0, asked = 0;
  Clock* clock = nullptr;
};

TEST(Blocked, CountsAFullFolderOnlyNowAndThenAndNotToItsEnd) {
  VirtualStation station;
  FullFolder full(station.realFiles);
  full.clock = &station.machine.clock;
  auto& values = station.station->values();
  values.SetIngestPath(station.Path("KvData/RxFiles"));
  Obstacles obstacles(full, station.machine.clock);
  IntakeCount count(
      {full, station.machine.clock, obstacles, station.station->quarantine(), values});
  full.files = 10'000;
  EXPECT_EQ(count.Look().ingest.files, 10'000);
  EXPECT_EQ(full.asked, 1'000);
  station.machine.clock.Sleep(99s);
  EXPECT_FALSE(count.Look().ingest.isMore);
  EXPECT_EQ(full.named, 10'000) << "it took a second: once in a hundred";
  full.files = 50'000;
  full.named = 0;
  station.machine.clock.Sleep(2s);
  EXPECT_EQ(count.Look().ingest.files, 10'000);
  EXPECT_TRUE(count.Look().ingest.isMore);
  EXPECT_EQ(full.named, 10'000);
  for (int i = 0; i < 2'000; ++i) obstacles.Refuse(station.Path(fmt::format("{}", i)), "why");
  EXPECT_EQ(obstacles.refused().size(), 0U) << "none of them is there";
}

TEST(Blocked, SaysWhyTheCarrierIsEmptyWhenItBeginsAndWhenItEnds) {
  BlockedStation station;
  station.Set("TxUpTime", "1");
  station.Restart();
  std::filesystem::remove(station.Path("FillFile.txt"));
  station.Start();
  station.seam.emplace(*station.station, station.socket);
  station.Run(30s);
  EXPECT_NEAR(station.socket.Status()["silentFor"], 30, 0.5);
  EXPECT_TRUE(station.Messages("Silence").empty()) << "without a fill text it is meant to be so";
  station.WriteFile(station.Path("FillFile.txt"), "");
  station.Run(5min);
  EXPECT_NE(std::string(station.socket.Status()["silentBecause"]).find("It is empty"),
            std::string::npos);
  EXPECT_EQ(station.Messages("Silence").size(), 1U) << "pauses are no end of it";
  EXPECT_NE(station.station->standstill().find("carries nothing. The fill file"),
            std::string::npos);
  station.WriteFile(station.Path("FillFile.txt"), "again");
  station.Run(3s);
  ASSERT_EQ(station.Messages("Silence").size(), 2U);
  EXPECT_TRUE(station.Messages("Silence")[1].starts_with("Packets go out again, after 5 min"));
  EXPECT_EQ(station.socket.Status()["silentFor"], nullptr);
  EXPECT_EQ(station.socket.Status()["silentBecause"], "");

  // The text is well, and its way is not.
  station.files.copyFault = [](auto&, const std::string& to) {
    return to.find("RtPri10") != std::string::npos ? copy_code::kDeviceError : 0;
  };
  station.Run(15s);
  EXPECT_NE(station.Messages("Silence").back().find("1117"), std::string::npos);
}

}  // namespace
}  // namespace ostrel
