#include "platform/linux/zip_archives.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <zip.h>

#include "base/failure.h"
#include "platform/linux/linux_files.h"
#include "platform/virtual/virtual_clock.h"
#include "tests/support/failure_of.h"
#include "tests/support/forwarding_files.h"
#include "tests/support/temp_folder.h"

namespace ostrel {
namespace {

using Names = std::vector<std::string>;

struct Member {
  std::string name;
  std::string content = "x";
  mode_t kind = S_IFREG;
  bool encrypted = false;
};

class ZipArchivesTest : public testing::Test {
 protected:
  std::string Path(const std::string& name) const { return folder_ / name; }
  Names Extracted() {
    auto names = files_.ListFiles(Path("out"));
    std::sort(names.begin(), names.end());
    return names;
  }
  void Make(const std::vector<Member>& members) {
    zip_t* const zip = zip_open(Path("in.zip").c_str(), ZIP_CREATE | ZIP_TRUNCATE, nullptr);
    for (const auto& member : members) {
      auto* const source = zip_source_buffer(zip, member.content.data(), member.content.size(), 0);
      const auto index = static_cast<zip_uint64_t>(
          zip_file_add(zip, member.name.c_str(), source, ZIP_FL_ENC_CP437));
      zip_file_set_external_attributes(zip, index, 0, ZIP_OPSYS_UNIX,
                                       static_cast<zip_uint32_t>(member.kind | 0644) << 16);
      if (member.encrypted) zip_file_set_encryption(zip, index, ZIP_EM_TRAD_PKWARE, "secret");
    }
    ASSERT_EQ(zip_close(zip), 0);
  }
  ExtractResult Extract(const ExtractLimits& limits = {}) {
    std::filesystem::remove_all(Path("out"));
    files_.CreateFolder(Path("out"));
    return archives_.Extract(Path("in.zip"), Path("out"), limits);
  }

  TempFolder folder_;
  VirtualClock clock_{UtcTime{} + std::chrono::hours(500'000)};
  LinuxFiles files_{clock_};
  ZipArchives archives_{files_};
};

TEST_F(ZipArchivesTest, GivesBackWhatItPackedAndShowsTheArchiveOnlyWhole) {
  files_.CreateFolder(Path("xmit"));
  const std::string text(100'000, 't');
  files_.WriteAll(Path("A.TXT"), text);
  auto [writer, error] = archives_.Create(Path("xmit/A.ZIP"));
  ASSERT_EQ(error, 0);
  writer->Add(folder_.path(), "A.TXT");
  EXPECT_EQ(FailureOf([&] { writer->Add(folder_.path(), "GONE"); }), 53);
  files_.Delete(Path("A.TXT"));
  archives_.Create(Path("xmit/NEVER.ZIP")).writer.reset();
  EXPECT_TRUE(std::filesystem::is_empty(Path("xmit")));
  writer->Close();
  EXPECT_LT(files_.Status(Path("xmit/A.ZIP")).size, 1000);
  EXPECT_EQ(archives_.Extract(Path("xmit/A.ZIP"), folder_.path(), {}).extracted, 1);
  EXPECT_EQ(files_.ReadAll(Path("A.TXT")), text);

  archives_.Create(Path("E.ZIP")).writer->Close();
  EXPECT_TRUE(archives_.Extract(Path("E.ZIP"), folder_.path(), {}).opened);
  EXPECT_EQ(archives_.Create(Path("none/G.ZIP")).error, ZIP_ER_NOENT);
  EXPECT_EQ(FailureOf([&] { archives_.Create(Path("xmit")).writer->Close(); }), 75);
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
        {"dir/.hidden"},
        {"dir/.."},
        {"link", "/etc/passwd", S_IFLNK},
        {"secret", "s", S_IFREG, true},
        {longest, "8"},
        {longest + "x"}});
  const auto result = Extract();
  EXPECT_EQ(Extracted(), (Names{"ABS", "BACK.TXT", "BELL__.TXT", "DUP.TXT", "DUP.TXT.1",
                                "DUP.TXT.2", longest, "UP.TXT"}));
  EXPECT_EQ(files_.ReadAll(Path("out/DUP.TXT.2")), "6");
  EXPECT_EQ(result.extracted, 8);
  EXPECT_EQ(result.remark,
            "1 left out (encrypted), 1 left out (no plain file), 2 left out (no usable name), "
            "1 left out (not written)");
}

TEST_F(ZipArchivesTest, StopsAtItsLimits) {
  const std::string mebibyte(1024 * 1024, '\0');
  Make({{"a", "1234"}, {"b", "5678"}, {"c", "9"}, {"d", mebibyte + mebibyte}});
  EXPECT_EQ(Extract().remark.find("stopped at a member"), 0u);
  EXPECT_EQ(Extracted(), (Names{"A", "B", "C"}));
  EXPECT_EQ(Extract({.bytes = 8}).remark, "stopped at 8 bytes");
  EXPECT_EQ(Extracted(), (Names{"A", "B"}));
  EXPECT_EQ(Extract({.members = 1}).remark, "stopped after 1 members");
  EXPECT_EQ(Extract({.ratio = 5000}).remark, "");
  std::vector<Member> same;
  for (int i = 0; i < 103; ++i) same.push_back({std::to_string(i) + "/same.txt"});
  Make(same);
  EXPECT_EQ(Extract().remark, "3 left out (one name too often)");
}

TEST_F(ZipArchivesTest, LeavesNothingWhenAMemberCannotBeWritten) {
  struct SmallDisk : ForwardingFiles {
    using ForwardingFiles::ForwardingFiles;
    void WriteAll(const std::string& path, std::string_view content) override {
      if (path.ends_with("/C")) throw Failure(failure_number::kDiskFull, path);
      real_.WriteAll(path, content);
    }
  } small(files_);
  Make({{"a"}, {"b"}, {"c"}});
  files_.CreateFolder(Path("out"));
  EXPECT_EQ(FailureOf([&] { ZipArchives(small).Extract(Path("in.zip"), Path("out"), {}); }),
            failure_number::kDiskFull);
  EXPECT_EQ(Extracted(), Names{});
  // Not even the superuser can open what would lie below a file.
  EXPECT_EQ(FailureOf([&] { archives_.Extract(Path("in.zip/below.zip"), Path("out"), {}); }),
            failure_number::kDeviceError);
}

}  // namespace
}  // namespace ostrel
