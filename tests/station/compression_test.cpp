// Sending compressed: file by file, and many in one archive.
#include <gtest/gtest.h>

#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

/// What a receiver finds in an archive of RtXmit.
std::map<std::string, std::string> MembersOf(VirtualStation& station, const std::string& archive) {
  const auto folder = station.Path("unpacked");
  fs::remove_all(folder);
  fs::create_directory(folder);
  const auto result =
      station.archives.Extract(station.InTransmitFolder(archive), folder, ExtractLimits{});
  EXPECT_TRUE(result.opened && result.remark.empty()) << archive << result.remark;
  std::map<std::string, std::string> members;
  for (const auto& name : station.Names("unpacked"))
    members[name] = station.ReadFile(folder + "/" + name);
  return members;
}

struct CompressingStation : VirtualStation {
  explicit CompressingStation(UtcTime start = kNoon) : VirtualStation(start) {
    Set({{"CompressPri2", "1"}, {"CompressBlockPri", "4"}, {"CompressNbrFiles", "3"}});
    StartBusy();
  }
};

TEST(CompressFile, WaitsAsAnArchiveUnlessThatIsLarger) {
  CompressingStation station;
  const auto text = SampleText(3000);
  const struct {
    const char* received;
    std::string content;
    const char* placedAs;
  } files[] = {{"zfpbox.txt", text, "ZFPBOX.ZIP"},
               {"ZFPBOX.TXT.7", text, "ZFPBOX.ZIP.1"},
               {"NAME", text, "NAME.ZIP"},
               {"TINY.TXT", "tiny", "TINY.TXT"},
               {"EMPTY.TXT", "", "EMPTY.TXT"}};
  std::int64_t compressed = 0, uncompressed = 0;
  for (const auto& [received, content, placedAs] : files) {
    station.Hold(3, received, content);
    EXPECT_EQ(station.Queue(3).back(), placedAs);
    const auto path = station.InTransmitFolder(placedAs);
    compressed += station.realFiles.Status(path).size;
    uncompressed += std::ssize(content);
    EXPECT_EQ(
        content == text ? MembersOf(station, placedAs).begin()->second : station.ReadFile(path),
        content);
  }
  EXPECT_EQ(station.Names("KvData/RtXmit").size(), 5U) << "no archive too large is left";
  const auto& totals = station.station->status().compression;
  EXPECT_EQ(std::pair(totals.compressed, totals.uncompressed), std::pair(compressed, uncompressed));
  EXPECT_FLOAT_EQ(totals.ratio, static_cast<float>(uncompressed) / static_cast<float>(compressed));
}

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
