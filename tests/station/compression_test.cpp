// Sending compressed: file by file, and many in one archive.
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

struct CompressingStation : VirtualStation {
  explicit CompressingStation(UtcTime start = kNoon) : VirtualStation(start) {
    Set({{"CompressPri2", "1"}, {"CompressBlockPri", "4"}, {"CompressNbrFiles", "3"}});
    StartBusy();
  }
};

TEST(CompressFile, ThatCannotBePlacedStaysWhereItIs) {
  CompressingStation station;
  fs::rename(station.Path("KvData/RtXmit"), station.Path("elsewhere"));
  station.WriteFile(station.Path("KvData/RtXmit"), "no folder");
  station.Hold(3, "A.TXT", SampleText(3000));
  EXPECT_EQ(station.Messages("CompressFile").at(0), "Create Zip Error 11");
  EXPECT_EQ(station.Queue(3), Lines{});
  fs::remove(station.Path("KvData/RtXmit"));
  fs::rename(station.Path("elsewhere"), station.Path("KvData/RtXmit"));
  station.Run(kCyclePeriod);
  EXPECT_EQ(station.Queue(3), Lines{"A.ZIP"});
}

TEST(CompressBlock, AFolderThatCannotBeListedIsReportedByTheCycle) {
  CompressingStation station(kNoon);
  station.files.listFault = [](const std::string& folder) {
    if (folder.ends_with("RtPri11")) throw Failure(failure_number::kDeviceError, "Broken");
  };
  station.Run(16s);
  EXPECT_EQ(station.LogOf("Timer").size(), 1U);
}

}  // namespace
}  // namespace ostrel
