#include "platform/linux/zip_archives.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <zip.h>

#include "tests/support/failure_of.h"
#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

using Members = std::vector<std::pair<std::string, std::string>>;  // name and content

class ZipArchivesTest : public testing::Test, protected VirtualStation {
 protected:
  void Make(const Members& members) {
    zip_t* const zip = zip_open(Path("in.zip").c_str(), ZIP_CREATE | ZIP_TRUNCATE, nullptr);
    for (const auto& [name, content] : members) {
      auto* const source = zip_source_buffer(zip, content.data(), content.size(), 0);
      zip_file_add(zip, name.c_str(), source, ZIP_FL_ENC_CP437);
    }
    ASSERT_EQ(zip_close(zip), 0);
  }
  ExtractResult Extract(const ExtractLimits& limits = {}) {
    std::filesystem::remove_all(Path("out"));
    files.CreateFolder(Path("out"));
    return archives.Extract(Path("in.zip"), Path("out"), limits);
  }
};

TEST_F(ZipArchivesTest, GivesBackWhatItPackedAndShowsTheArchiveOnlyWhole) {
  files.CreateFolder(Path("xmit"));
  const std::string text = SampleText(100'000);
  files.WriteAll(Path("A.TXT"), text);
  const auto writer = archives.Create(Path("xmit/A.ZIP")).writer;
  writer->Add(folder.path(), "A.TXT");
  EXPECT_EQ(FailureOf([&] { writer->Add(folder.path(), "GONE"); }), 53);
  files.Delete(Path("A.TXT"));
  archives.Create(Path("xmit/NEVER.ZIP")).writer.reset();
  EXPECT_TRUE(std::filesystem::is_empty(Path("xmit")));
  writer->Close();
  EXPECT_EQ(archives.Extract(Path("xmit/A.ZIP"), folder.path(), {}).files.size(), 1U);
  EXPECT_EQ(files.ReadAll(Path("A.TXT")), text);

  archives.Create(Path("E.ZIP")).writer->Close();
  EXPECT_TRUE(archives.Extract(Path("E.ZIP"), folder.path(), {}).opened);
  EXPECT_EQ(archives.Create(Path("none/G.ZIP")).error, ZIP_ER_NOENT);

  const auto last = archives.Create(Path("STOPPED.ZIP")).writer;
  last->Add(folder.path(), "A.TXT");
  machine.clock.stopRequested = true;
  EXPECT_THROW(last->Add(folder.path(), "A.TXT"), StopRequested);
  EXPECT_THROW(last->Close(), StopRequested);
  EXPECT_FALSE(files.Exists(Path("STOPPED.ZIP")));
}

TEST_F(ZipArchivesTest, WritesBareUpperCaseNamesAtFreeNames) {
  const std::string longest = std::string(251, 'L') + ".TXT";
  Make({{"../../up.txt", "1"},
        {"C:\\dir\\back.txt", "2"},
        {"/etc/abs", "3"},
        {"dup.txt", "4"},
        {"a/DUP.TXT", "5"},
        {"b\\Dup.Txt", "6"},
        {"bell\a\n.txt", "7"},
        {"dir/.hidden", "x"},
        {"dir/..", "x"},
        {longest, "8"},
        {"dir/" + longest, "9"},
        {longest + "x", "x"}});
  const auto result = Extract();
  EXPECT_EQ(Names("out"), (Lines{"ABS", "BACK.TXT", "BELL__.TXT", "DUP.TXT", "DUP.TXT.1",
                                 "DUP.TXT.2", longest.substr(0, 253) + ".1", longest, "UP.TXT"}));
  EXPECT_EQ(ReadFile(Path("out/DUP.TXT.2")), "6");
  EXPECT_EQ(result.files.size(), 9U);
  EXPECT_EQ(result.remark, "2 left out (no usable name), 1 left out (not written)");
}

TEST_F(ZipArchivesTest, StopsAtItsLimits) {
  const std::string mebibyte(1024 * 1024, '\0');
  Make({{"a", "1234"}, {"b", "5678"}, {"c", "9"}, {"d", mebibyte + mebibyte}});
  EXPECT_EQ(Extract().remark.find("stopped at a member"), 0u);
  EXPECT_EQ(Extract({.bytes = 8}).remark, "stopped at 8 bytes");
  EXPECT_EQ(Names("out"), (Lines{"A", "B"}));
  EXPECT_EQ(Extract({.members = 1}).remark, "stopped after 1 members");
  EXPECT_EQ(Extract({.ratio = 5000}).remark, "");
  Members same;
  for (int i = 0; i < 103; ++i) same.emplace_back(std::to_string(i) + "/same.txt", "");
  Make(same);
  EXPECT_EQ(Extract().remark, "3 left out (one name too often)");
}

TEST_F(ZipArchivesTest, LeavesNothingWhenAMemberCannotBeWritten) {
  Make({{"a", "x"}, {"b", "x"}, {"c", "x"}});
  files.writeFault = [](const std::string& path) {
    if (path.ends_with("/C")) throw Failure(failure_number::kDiskFull, path);
  };
  EXPECT_EQ(FailureOf([&] { Extract(); }), failure_number::kDiskFull);
  EXPECT_EQ(Names("out"), Lines{});
  // Not even the superuser can open what would lie below a file.
  EXPECT_EQ(FailureOf([&] { archives.Extract(Path("in.zip/below.zip"), Path("out"), {}); }),
            failure_number::kPathAccess);
}

TEST_F(ZipArchivesTest, TakesNoFailedReadingForADamagedMember) {
  Make({{"ONE.TXT", SampleText(5000, 1)}, {"TWO.TXT", SampleText(5000, 2)}});
  int reads = 0, failing = 0;
  files.readFault = [&](const auto&) {
    if (++reads == failing) throw Failure(failure_number::kDeviceError, "cannot be read");
  };
  do {
    reads = 0, ++failing;
    const auto number = FailureOf([&] { EXPECT_EQ(Extract().files.size(), 2U); });
    EXPECT_EQ(number, reads < failing ? 0 : failure_number::kDeviceError) << failing;
    EXPECT_EQ(Names("out").size(), number == 0 ? 2U : 0U) << "it is tried again";
  } while (reads >= failing);
  EXPECT_GT(failing, 4);
}

}  // namespace
}  // namespace ostrel
