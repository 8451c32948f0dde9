#include "platform/x11/linux_desktop.h"

#include <QProcess>
#include <QTest>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

#include "base/failure.h"
#include "platform/linux/temporary_folder.h"
#include "platform/x11/x_windows.h"
#include "tests/support/failure_of.h"

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

TEST_F(LinuxDesktopTest, StartsNoProgramThatOthersCouldHaveLaidThere) {
  const auto probe = folder_ / "OstrelProbe";
  WriteScript("OstrelProbe", "exit 0");
  const auto start = [&] { return FailureOf([&] { desktop_.StartMinimized({probe}); }); };
  fs::permissions(probe, fs::perms::owner_all | fs::perms::others_write);
  EXPECT_EQ(start(), 70);
  fs::permissions(probe, fs::perms::owner_all | fs::perms::group_all);
  EXPECT_EQ(start(), 0);  // a group of the account alone
  for (const auto& [user, group] : {std::pair{0U, 12345U}, {12345U, 0U}})
    EXPECT_TRUE(chown(probe.c_str(), user, group) != 0 || start() == 70);  // root alone may
}

/// A screen of its own, and windows that do nothing.
class WindowsTest : public LinuxDesktopTest {
 protected:
  WindowsTest() {
    server_.start("Xvfb", {"-displayfd", "1"});
    EXPECT_TRUE(QTest::qWaitFor([&] { return server_.canReadLine(); }));
    qputenv("DISPLAY", ":" + server_.readLine().trimmed());
    auto* const connection = xcb_connect(nullptr, nullptr);
    xcb_ewmh_init_atoms_replies(&ewmh_, xcb_ewmh_init_atoms(connection, &ewmh_), nullptr);
  }
  ~WindowsTest() override {
    xcb_disconnect(ewmh_.connection);
    xcb_ewmh_connection_wipe(&ewmh_);
    for (auto* process : {&manager_, &server_}) {
      process->terminate();
      process->waitForFinished();
    }
  }
  xcb_window_t Show(const std::string& title, std::uint32_t process) {
    auto* const connection = ewmh_.connection;
    const auto window = xcb_generate_id(connection);
    xcb_create_window(connection, 0, window, ewmh_.screens[0]->root, 0, 0, 100, 100, 0, 0, 0, 0,
                      nullptr);
    xcb_ewmh_set_wm_name(&ewmh_, window, static_cast<std::uint32_t>(title.size()), title.data());
    xcb_ewmh_set_wm_pid(&ewmh_, window, process);
    xcb_map_window(connection, window);
    xcb_flush(connection);
    EXPECT_TRUE(QTest::qWaitFor([&] { return XWindows().Find(title) == window; }));
    return window;
  }
  bool BecomesIconic(xcb_window_t window, bool iconic = true) {
    return QTest::qWaitFor([&] { return XWindows().IsIconic(window) == iconic; });
  }

  QProcess server_, manager_;
  xcb_ewmh_connection_t ewmh_{};
};

TEST_F(WindowsTest, MinimizesWhatItStartsAndRestoresAWindowOfThatProgramAlone) {
  WriteScript("OstrelProbe", "exit 0");
  const auto probe = Show("OstrelProbe", 4001);
  desktop_.StartMinimized({folder_ / "OstrelProbe"});
  QTest::qWait(600);  // nobody is there yet who minimizes anything
  manager_.start("openbox", {});
  ASSERT_TRUE(BecomesIconic(probe));
  for (int i = 0; i < 20; ++i) {
    XWindows().Restore(probe);
    ASSERT_TRUE(BecomesIconic(probe, false));
    XWindows().Minimize(probe);
    ASSERT_TRUE(BecomesIconic(probe));
  }
  Show("Other", 4002);
  desktop_.RestoreWindowAbove("OstrelProbe");
  EXPECT_TRUE(BecomesIconic(probe, false));
  const auto dialog = Show("Dialog", 4001);
  XWindows().Minimize(dialog);
  EXPECT_TRUE(BecomesIconic(dialog));
  desktop_.RestoreWindowAbove("OstrelProbe");
  EXPECT_TRUE(BecomesIconic(dialog, false));
}

TEST_F(LinuxDesktopTest, TellsLaterThatATextFoundNoEditor) {
  int failures = 0;
  const auto open = [&] { desktop_.OpenText("/some/RtLog.txt", [&] { ++failures; }); };
  WriteScript("xdg-open", "echo $1 > " + (folder_ / "argument"));
  open();
  EXPECT_TRUE(QTest::qWaitFor([&] { return fs::exists(folder_ / "argument"); }));
  WriteScript("xdg-open", "exit 3");
  open();
  EXPECT_EQ(failures, 0) << "it does not wait";
  EXPECT_TRUE(QTest::qWaitFor([&] { return failures == 1; }));
}

}  // namespace
}  // namespace ostrel
