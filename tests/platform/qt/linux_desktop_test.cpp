#include "platform/qt/linux_desktop.h"

#include <QTest>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "base/failure.h"
#include "tests/support/temp_folder.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

void WriteScript(const std::string& path, const std::string& text) {
  std::ofstream(path) << "#!/bin/sh\n" << text << "\n";
  ::chmod(path.c_str(), 0755);
}

/// The search path holds nothing but `folder`, and no window system is to be seen.
class Elsewhere {
 public:
  explicit Elsewhere(const std::string& folder)
      : path_(qgetenv("PATH")), display_(qgetenv("DISPLAY")) {
    qputenv("PATH", QByteArray::fromStdString(folder) + ":/usr/bin:/bin");
    qunsetenv("DISPLAY");
  }
  ~Elsewhere() {
    qputenv("PATH", path_);
    if (!display_.isEmpty()) qputenv("DISPLAY", display_);
  }

 private:
  QByteArray path_;
  QByteArray display_;
};

TEST(LinuxDesktop, FindsAnIngestProgramByItsProcessWhereThereIsNoDisplay) {
  TempFolder folder;
  const Elsewhere elsewhere(folder.path());
  // Starts under the name without the ending, and stays until the test has seen it.
  WriteScript(folder / "OstrelProbe", "echo \"$1\" > " + (folder / "argument") + "\nwhile [ ! -e " +
                                          (folder / "end") + " ]; do sleep 0.05; done\nrm " +
                                          (folder / "end"));
  LinuxDesktop desktop;
  EXPECT_FALSE(desktop.WindowExists("OstrelProbe"));
  desktop.StartMinimized({folder / "OstrelProbe.exe", "KvStart"});
  EXPECT_TRUE(QTest::qWaitFor([&] { return desktop.WindowExists("OstrelProbe"); }));
  EXPECT_TRUE(QTest::qWaitFor([&] { return fs::exists(folder / "argument"); }));
  std::ofstream(folder / "end") << "now";
  EXPECT_TRUE(QTest::qWaitFor([&] { return !desktop.WindowExists("OstrelProbe"); }));
  EXPECT_THROW(desktop.StartMinimized({folder / "Missing.exe", "KvStart"}), Failure);
}

TEST(LinuxDesktop, TellsWhetherATextFoundItsEditor) {
  TempFolder folder;
  const Elsewhere elsewhere(folder.path());
  LinuxDesktop desktop;
  WriteScript(folder / "xdg-open", "echo \"$1\" > " + (folder / "opened"));
  EXPECT_TRUE(desktop.OpenText("/some/RtLog.txt"));
  EXPECT_TRUE(fs::exists(folder / "opened"));
  WriteScript(folder / "xdg-open", "exit 3");
  EXPECT_FALSE(desktop.OpenText("/some/RtLog.txt"));
}

}  // namespace
}  // namespace ostrel
