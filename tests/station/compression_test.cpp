// Sending compressed: file by file, and many in one archive.
#include <cstdlib>
#include <gtest/gtest.h>

#include "tests/support/intake_station.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

/// What a receiver finds in an archive of RtXmit.
std::map<std::string, std::string> MembersOf(IntakeStation& station, const std::string& archive) {
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

/// The system's own unzip, where there is one, finds no fault with it.
void ExpectSound(IntakeStation& station, const std::string& archive) {
  if (std::system("command -v unzip > /dev/null") != 0) return;
  const auto command = "unzip -tqq " + station.InTransmitFolder(archive) + " > /dev/null";
  EXPECT_EQ(std::system(command.c_str()), 0) << archive;
}

struct CompressingStation : IntakeStation {
  explicit CompressingStation(UtcTime start = kNoon + 1s, const std::string& threshold = "3")
      : IntakeStation(start) {
    Set("CompressPri2", "1");
    Set("CompressBlockPri", "4");
    Set("CompressNbrFiles", threshold);
    StartBusy();
  }
  CompressionTotals totals() { return station->engine().compression; }
};

TEST(CompressFile, WaitsAsAnArchiveUnlessThatIsLarger) {
  CompressingStation station;
  const auto text = SampleText(3000);
  const struct {
    const char* received;
    std::string content;
    const char* placedAs;
  } files[] = {{"zfpbox.txt", text, "ZFPBOX.ZIP"},     {"ZFPBOX.TXT", text, "ZFPBOX.ZIP.1"},
               {"ZFPBOX.TXT.7", text, "ZFPBOX.ZIP.2"}, {"NAME", text, "NAME.ZIP"},
               {"TINY.TXT", "tiny", "TINY.TXT"},       {"TINY.TXT", "tiny", "TINY.TXT.1"},
               {"EMPTY.TXT", "", "EMPTY.TXT"}};
  std::int64_t compressed = 0, uncompressed = 0;
  Lines queue;
  for (const auto& [received, content, placedAs] : files) {
    station.Hold(3, received, content);
    queue.emplace_back(placedAs);
    EXPECT_EQ(station.Queue(3), queue);
    const auto path = station.InTransmitFolder(placedAs);
    compressed += static_cast<std::int64_t>(fs::file_size(path));
    uncompressed += static_cast<std::int64_t>(content.size());
    if (content == text) {
      ExpectSound(station, placedAs);
      const auto members = MembersOf(station, placedAs);
      ASSERT_EQ(members.size(), 1U);
      EXPECT_EQ(members.begin()->second, text);
      EXPECT_LT(fs::file_size(path), text.size());
    } else {
      EXPECT_EQ(station.ReadFile(path), content);
    }
  }
  EXPECT_EQ(station.Names("KvData/RtXmit").size(), queue.size()) << "no archive too large is left";
  EXPECT_EQ(station.totals().compressed, compressed);
  EXPECT_EQ(station.totals().uncompressed, uncompressed);
  EXPECT_FLOAT_EQ(station.totals().ratio,
                  static_cast<float>(uncompressed) / static_cast<float>(compressed));
}

TEST(CompressFile, GoesUncompressedWhenThereCanBeNoArchive) {
  for (const bool atCreation : {true, false}) {
    CompressingStation station;
    station.files.writeFault = [&](const std::string& path) {
      if (path.ends_with(atCreation ? ".part" : "A.ZIP")) throw Failure(75, "No access");
    };
    station.Hold(3, "A.TXT", SampleText(3000));
    EXPECT_EQ(station.Queue(3), Lines{"A.TXT"});
    EXPECT_EQ(station.ReadFile(station.InTransmitFolder("A.TXT")), SampleText(3000));
    EXPECT_EQ(station.totals().uncompressed, 0);
    const auto log = station.LogOf("CompressFile");
    ASSERT_EQ(log.size(), 1U);
    EXPECT_NE(
        log[0].find(atCreation ? "CompressFile Create Zip Error 11" : "Error # 75, No access"),
        std::string::npos)
        << log[0];
    EXPECT_EQ(station.machine.dialogs.errors.size(), atCreation ? 0U : 1U);
  }
}

TEST(CompressBlock, IsMadeAtTheQuartersOfAMinuteOnceEnoughHaveGathered) {
  for (const int second : {0, 15, 30, 45}) {
    CompressingStation station(kNoon + 59min + seconds(second - 2) + (second == 0 ? 60s : 0s));
    std::map<std::string, std::string> contents;
    for (const auto* name : {"ONE.TXT", "TWO.TXT", "THREE.TXT"}) {
      if (contents.size() == 2) station.Run(15s);  // past the first check with two of them
      EXPECT_EQ(station.Queue(4), Lines{});
      station.Hold(11, name, contents[name] = SampleText(2000, name[0]));
    }
    station.Run(1s);
    EXPECT_EQ(station.Queue(4), Lines{}) << "not before the next check";
    EXPECT_EQ(station.Names("KvData/RtPri11").size(), 3U);
    station.Run(1s);
    const auto time = Calendar(station.machine.clock.Now());
    const auto archive = fmt::format("Comp{:02}{:02}.ZIP", time.hour, time.minute);
    EXPECT_EQ(station.Queue(4), Lines{archive}) << second;
    ExpectSound(station, archive);
    EXPECT_EQ(MembersOf(station, archive), contents);
    EXPECT_EQ(station.Names("KvData/RtPri11"), Lines{});
    EXPECT_TRUE(station.setup().CompressList.empty());
    EXPECT_EQ(station.totals().uncompressed, 6000);
    EXPECT_EQ(station.totals().compressed,
              static_cast<std::int64_t>(fs::file_size(station.InTransmitFolder(archive))));
  }
}

TEST(CompressBlock, TwoInOneMinuteHaveTwoNames) {
  CompressingStation station(kNoon + 1s, "1");
  station.Hold(11, "ONE.TXT", SampleText(2000, 1));
  station.Run(15s);
  station.Hold(11, "TWO.TXT", SampleText(2000, 2));
  station.Run(15s);
  EXPECT_EQ(station.Queue(4), (Lines{"Comp1200.ZIP", "Comp1200.ZIP.1"}));
  EXPECT_EQ(MembersOf(station, "Comp1200.ZIP").at("ONE.TXT"), SampleText(2000, 1));
  EXPECT_EQ(MembersOf(station, "Comp1200.ZIP.1").at("TWO.TXT"), SampleText(2000, 2));
}

TEST(CompressBlock, LosesAndRepeatsNothingWhenAStepFails) {
  CompressingStation station;
  const Lines names = {"ONE.TXT", "THREE.TXT", "TWO.TXT"};
  for (const auto& name : names) station.Hold(11, name, SampleText(2000));
  const char* failing = ".part";  // at the creation
  station.files.writeFault = [&](const std::string& path) {
    if (path.ends_with(failing)) throw Failure(failure_number::kDiskFull, "Disk full");
  };
  station.Run(15s);
  EXPECT_EQ(station.LogOf("CompressBlock").at(0).substr(18), "CompressBlock Create Zip Error 6");
  failing = "Comp1200.ZIP";  // at the closing
  station.Run(15s);
  const auto log = station.LogOf("CompressBlock");
  ASSERT_EQ(log.size(), 2U);
  EXPECT_TRUE(log[1].find("Error # 61, Disk full") != std::string::npos) << log[1];
  EXPECT_EQ(station.Names("KvData/RtPri11"), names);
  EXPECT_EQ(station.Queue(4), Lines{});
  EXPECT_EQ(station.totals().uncompressed, 0);

  // The archive stands; one of its files cannot be deleted and must not go into the next one.
  station.files.writeFault = nullptr;
  station.files.deleteFault = [](const std::string& path) {
    if (path.ends_with("RtPri11/TWO.TXT")) throw Failure(failure_number::kPermissionDenied, "Held");
  };
  station.Run(15s);
  EXPECT_EQ(MembersOf(station, "Comp1200.ZIP").size(), 3U);
  EXPECT_EQ(station.Names("KvData/RtPri11"), Lines{"TWO.TXT"});
  for (const auto* name : {"FOUR.TXT", "FIVE.TXT"}) station.Hold(11, name, SampleText(2000));
  station.Run(15s);
  EXPECT_EQ(station.Queue(4), Lines{"Comp1200.ZIP"}) << "two are not three";
  station.files.deleteFault = nullptr;
  station.Run(15s);
  EXPECT_EQ(station.Names("KvData/RtPri11"), (Lines{"FIVE.TXT", "FOUR.TXT"}));
}

}  // namespace
}  // namespace ostrel
