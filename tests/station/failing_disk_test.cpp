// What a shed's disk does to a station: it fills up, does not answer for a while, goes away and
// comes back, refuses to delete. Every product goes out whole, and once.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <sys/mount.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

constexpr Priority kOne{1};

class FailingDisk : public testing::Test {
 protected:
  FailingDisk() {
    station.Rule(0, "TOR*");
    station.Set({{"CWIDTime", "0"}, {"TxUpTime", "0"}, {"ComBaud", "9600"}});
    fs::remove(station.Path("FillFile.txt"));
  }
  /// Products of three blocks each, all of which wait but for the first.
  void Drop(int count) {
    for (int i = 0; i < count; ++i) {
      names.push_back(fmt::format("TOR{:02}.TXT", i));
      station.Drop(names.back(), SampleText(3000, i));
    }
  }
  /// The names of the products that came whole, sorted, each as often as it came.
  Lines Received() {
    Lines received;
    for (const auto& product : station.Products()) received.push_back(product.name);
    std::sort(received.begin(), received.end());
    return received;
  }
  static FaultyFiles::Fault Refuse(const std::string& part, const Clock& clock,
                                   milliseconds until) {
    return [=, &clock](const std::string& path) {
      const bool isMeant = path.find(part) != std::string::npos && clock.Monotonic() < until;
      if (isMeant) throw Failure(70, "Permission denied: " + path);
    };
  }
  Lines names;
  VirtualStation station;
};

TEST_F(FailingDisk, AFileThatCannotBeLookedAtIsNotGone) {
  Drop(4);
  station.Start();
  station.Run(2s);
  ASSERT_EQ(station.Queue(1).size(), 4U);
  const auto until = station.machine.clock.Monotonic() + 12s;
  station.files.lookFault = Refuse("RtXmit", station.machine.clock, until);
  station.files.copyFault = [&, until](const std::string& source, const std::string&) {
    const bool isMeant = source.find("RtXmit") != std::string::npos;
    return isMeant && station.machine.clock.Monotonic() < until ? copy_code::kAccessDenied : 0;
  };
  station.Run(120s);
  EXPECT_EQ(Received(), names);
}

TEST_F(FailingDisk, ARemovedTransmitFolderIsRestoredOutOfTheRecords) {
  Drop(4);
  station.Start();
  station.Run(2s);
  fs::remove_all(station.Path("KvData/RtXmit"));
  station.Run(120s);
  EXPECT_EQ(Received(), names);
}

TEST_F(FailingDisk, ADataFolderThatWasAwayIsLookedThroughWithoutARestart) {
  Drop(5);
  station.Start();
  station.Run(2s);
  fs::rename(station.Path("KvData"), station.Path("away"));
  for (const auto* folder : {"KvData", "KvData/RxFiles"})
    fs::create_directory(station.Path(folder));  // what a mount point shows
  station.Run(20s);
  fs::rename(station.Path("KvData"), station.Path("underneath"));
  fs::rename(station.Path("away"), station.Path("KvData"));
  station.Run(180s);
  EXPECT_EQ(Received(), names);
}

TEST_F(FailingDisk, WhatWasSentInPartIsQueuedAgainAndAfterTheThirdTimeInQuarantine) {
  Drop(2);
  station.files.readFault = [reads = 0](const std::string& path) mutable {
    const bool isSecond = path.ends_with("TOR01.TXT");
    if (isSecond || (path.ends_with("TOR00.TXT") && ++reads == 2))
      throw Failure(57, "Device I/O error");
  };
  station.Start();
  station.Run(180s);
  EXPECT_EQ(Received(), Lines{"TOR00.TXT"});
  EXPECT_EQ(station.Names("KvData/RtQuarantine"), Lines{"TOR01.TXT"});
  EXPECT_EQ(station.Names("KvData/.pending/1"), Lines{});
}

TEST_F(FailingDisk, ThePurgeLeavesTheFileOnTheAirAlone) {
  station.Set("PurgeTime", "0.1");  // six minutes
  station.Set("ComBaud", "1200");
  station.Drop("TORBIG.TXT", SampleText(60'000));  // ten minutes
  station.Start();
  station.Run(15min);
  EXPECT_EQ(Received(), Lines{"TORBIG.TXT"});
  EXPECT_EQ(station.Names("KvData/RtSent"), Lines{}) << "it went once it was off the air";
}

TEST_F(FailingDisk, ARecordThatCouldNotBeDeletedBringsNothingBack) {
  for (const bool isRestartedAtOnce : {false, true}) {
    names.clear();
    Drop(2);
    station.files.deleteFault = [](const std::string& path) {
      if (path.find(".pending/1/") != std::string::npos) throw Failure(75, "Read-only");
    };
    station.Start();
    station.Run(30s);
    EXPECT_EQ(station.Names("KvData/.pending/1"), names);
    station.files.deleteFault = {};
    if (!isRestartedAtOnce) station.Run(5s);
    EXPECT_EQ(station.Names("KvData/.pending/1").empty(), !isRestartedAtOnce);
    const auto before = station.Packets().size();
    station.Restart();
    station.Start();
    station.Run(30s);
    EXPECT_EQ(station.Packets().size(), before) << "sent a second time";
    EXPECT_EQ(station.Names("KvData/.pending/1"), Lines{});
    station.Restart();
  }
}

TEST_F(FailingDisk, ALargeFileOnItsWayHoldsUpNobody) {
  station.Rule(12, "TORBIG.TXT | C=3");
  station.files.isSorted = true;
  std::vector<std::string> made;
  // Each step of the large file takes five seconds beside the station.
  std::map<std::string, milliseconds> since;
  station.files.isReady = [&](const std::string& source, Means means) {
    if (source.find("TORBIG.TXT") == std::string::npos) return true;
    const auto now = station.machine.clock.Monotonic();
    const auto key = fmt::format("{} {} {}", source, static_cast<int>(means), made.size());
    return now - since.try_emplace(key, now).first->second >= 5s;
  };
  station.files.copyFault = [&](const std::string& source, const std::string& destination) {
    if (source.ends_with("RxFiles/TORBIG.TXT")) made.push_back(destination);
    return 0;
  };
  station.Drop("TORBIG.TXT", SampleText(5000));
  station.Drop("TORZ.TXT", SampleText(1000));
  station.Start();
  station.Run(4s);
  EXPECT_EQ(Received(), Lines{"TORZ.TXT"});
  station.Run(180s);
  EXPECT_EQ(Received(), (Lines{"TORBIG.TXT", "TORBIG.TXT", "TORBIG.TXT", "TORZ.TXT"}));
  EXPECT_EQ(made.size(), 3U) << "each copy was made once, and the file placed once";
}

TEST_F(FailingDisk, AFileThatGrowsInAHoldingFolderCostsItsRetriesOnceInAWhile) {
  station.Start();
  std::ofstream growing(station.Path("KvData/RtPri1/TORGROWS.TXT"));
  station.WriteFile(station.Path("KvData/RtPri2/AFDA.TXT"), SampleText(500));
  int tries = 0;
  station.files.lockFault = [&](const std::string&) { ++tries; };
  for (int i = 0; i < 50; ++i) {
    growing << SampleText(100) << std::flush;
    station.Run(100ms);
  }
  EXPECT_LE(tries, 25) << "one call's retries, and the other file";
  growing.close();
  station.Run(60s);
  EXPECT_EQ(Received(), (Lines{"AFDA.TXT", "TORGROWS.TXT"}));
}

/// A small file system in the place of KvData, as only root can make it.
class SmallDisk : public FailingDisk {
 protected:
  bool Mount(const std::string& options) {
    fs::create_directories(station.Path("KvData"));
    if (mount("none", station.Path("KvData").c_str(), "tmpfs", 0, options.c_str()) != 0)
      return false;
    isMounted_ = true;
    for (const auto* folder : {"KvData/RxFiles", "KvData/RtXmit"})
      fs::create_directory(station.Path(folder));
    return true;
  }
  ~SmallDisk() override {
    station.station.reset();
    if (isMounted_) umount2(station.Path("KvData").c_str(), MNT_DETACH);
  }
  bool isMounted_ = false;
};

TEST_F(SmallDisk, GoesOnSendingWithoutABlockLeft) {
  if (!Mount("size=1m")) GTEST_SKIP() << "only root can mount a file system";
  station.Start();
  Drop(9);
  std::ofstream(station.Path("KvData/filler")) << std::string(2'000'000, 'x');
  station.Run(120s);
  EXPECT_EQ(Received(), names);
  EXPECT_EQ(station.Names("KvData/RxFiles"), Lines{});
}

TEST_F(SmallDisk, GoesOnSendingWithoutAnInodeLeft) {
  if (!Mount("size=4m,nr_inodes=60")) GTEST_SKIP() << "only root can mount a file system";
  station.Start();
  Drop(9);
  std::error_code full;
  for (int i = 0; !full; ++i) fs::create_directory(station.Path(fmt::format("KvData/{}", i)), full);
  station.Run(120s);
  EXPECT_EQ(Received(), names);
  EXPECT_EQ(station.Names("KvData/RxFiles"), Lines{});
}

}  // namespace
}  // namespace ostrel
