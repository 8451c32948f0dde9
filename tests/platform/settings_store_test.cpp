#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/sqlite_settings_store.h"
#include "platform/linux/temporary_folder.h"
#include "tests/support/failure_of.h"

namespace ostrel {
namespace {

constexpr const char* kSettings = "Software\\Corvain\\Ostrel\\Settings";

class SettingsStoreTest : public testing::Test {
 protected:
  std::unique_ptr<SettingsStore> Open() {
    auto store = SqliteSettingsStores(folder_ / "KvRegistry.db").Open();
    store->SetRootKey(kHkeyLocalMachine);
    return store;
  }
  TemporaryFolder folder_;
};

TEST_F(SettingsStoreTest, ReadsBackWhatWasStoredByAnotherOpeningOfTheStationsGroup) {
  const auto before = umask(S_IWOTH);
  EXPECT_EQ(Open()->ReadSetting(kSettings, "ComBaud", "1200"), "1200");
  umask(before);
  EXPECT_EQ(std::filesystem::status(folder_ / "KvRegistry.db").permissions(),
            std::filesystem::perms{0664});
  EXPECT_TRUE(Open()->WriteSetting(kSettings, "ComBaud", "9600"));
  EXPECT_TRUE(Open()->WriteSetting("SOFTWARE\\corvain\\OSTREL\\settings", "COMBAUD", ""));
  EXPECT_EQ(Open()->ReadSetting(kSettings, "ComBaud", "1200"), "");
  EXPECT_EQ(Open()->List("software\\CORVAIN").size(), 1u);
  Open()->WriteAll({{kSettings, "CWSpeed", "dword:00000001", true}});
  EXPECT_EQ(Open()->ReadSetting(kSettings, "CWSpeed", "5"), "5") << "it is no text";
  EXPECT_EQ(FailureOf([&] { SqliteSettingsStores(folder_ / "none/x.db").Open(); }), 57);
}

TEST_F(SettingsStoreTest, ServesTwoProcessesAtOnce) {
  const pid_t child = fork();
  const std::string who = child == 0 ? "child" : "parent";
  for (int i = 0; i < 50; ++i) {
    while (FailureOf([&] { Open()->WriteAll({{kSettings, who + std::to_string(i), who}}); }) != 0) {
    }
  }
  if (child == 0) _exit(0);
  waitpid(child, nullptr, 0);
  EXPECT_EQ(Open()->List(kSettings).size(), 100u);
}

}  // namespace
}  // namespace ostrel
