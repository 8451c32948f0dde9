#include "platform/qt/linux_desktop.h"

#include <QTest>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

#include "base/failure.h"
#include "platform/linux/temporary_folder.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

/// Programs are looked for in `folder_` first, and no window system is to be seen.
class LinuxDesktopTest : public testing::Test {
 protected:
  LinuxDesktopTest() {
    qputenv("PATH", QByteArray::fromStdString(folder_.path()) + ":/usr/bin:/bin");
    qunsetenv("DISPLAY");
  }
  void WriteScript(const std::string& name, const std::string& text) {
    std::ofstream(folder_ / name) << "#!/bin/sh\n" << text << "\n";
    fs::permissions(folder_ / name, fs::perms::owner_all);
  }

  TemporaryFolder folder_{fs::temp_directory_path()};  // programs run in it
  LinuxDesktop desktop_;
};

TEST_F(LinuxDesktopTest, FindsAnIngestProgramByItsProcessWhereThereIsNoDisplay) {
  // Starts under the name without the ending, and stays until the test has seen it.
  const auto end = folder_ / "end", argument = folder_ / "argument";
  WriteScript("OstrelProbe",
              "echo $1 > " + argument + "\nwhile [ ! -e " + end + " ]; do sleep 0.05; done");
  EXPECT_FALSE(desktop_.WindowExists("OstrelProbe"));
  desktop_.StartMinimized({folder_ / "OstrelProbe.exe", "KvStart"});
  EXPECT_TRUE(QTest::qWaitFor([&] { return desktop_.WindowExists("OstrelProbe"); }));
  EXPECT_TRUE(QTest::qWaitFor([&] { return fs::exists(argument); }));
  std::ofstream(end) << "now";
  EXPECT_TRUE(QTest::qWaitFor([&] { return !desktop_.WindowExists("OstrelProbe"); }));
  EXPECT_THROW(desktop_.StartMinimized({folder_ / "Missing.exe", "KvStart"}), Failure);
}

TEST_F(LinuxDesktopTest, TellsWhetherATextFoundItsEditor) {
  WriteScript("xdg-open", "[ $1 = /some/RtLog.txt ]");
  EXPECT_TRUE(desktop_.OpenText("/some/RtLog.txt"));
  WriteScript("xdg-open", "exit 3");
  EXPECT_FALSE(desktop_.OpenText("/some/RtLog.txt"));
}

}  // namespace
}  // namespace ostrel
