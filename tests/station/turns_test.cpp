// Several accounts of a group run one station, one after the other.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/sharing.h"
#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

constexpr gid_t kGroup = 54320;

/// The account that works from here to the end of the scope.
struct Turn {
  explicit Turn(uid_t account) { EXPECT_TRUE(setegid(kGroup) == 0 && seteuid(account) == 0); }
  ~Turn() { EXPECT_TRUE(seteuid(0) == 0 && setegid(0) == 0); }
};

TEST(SharedStation, AccountsTakeTurnsAndReplaceNoProgram) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can act as two accounts";
  VirtualStation station;
  station.WriteFile(station.Path("ostrel"), "program");
  // As installed: the system's own, open to the group, each file kept by its maker.
  for (const auto& [folder, mode] :
       {std::pair{"", 03775U}, {"KvData", 02775U}, {"KvData/RxFiles", 02775U}}) {
    ASSERT_EQ(chown(station.Path(folder).c_str(), 0, kGroup), 0);
    ASSERT_EQ(chmod(station.Path(folder).c_str(), mode), 0);
  }
  const auto before = umask(022);
  ShareWithGroupOf(station.folder.path());
  for (const auto& [account, rule] : {std::pair{54321U, "AB"}, {54322U, "CD"}, {54321U, "EF"}}) {
    SCOPED_TRACE(rule);
    const Turn turn(account);
    station.Restart();
    station.setup().SetupPriList[4].Append(rule);
    EXPECT_EQ(station.station->actions().LeaveSetup(), SaveOutcome::kHidden);
    station.station->values().logSize = 1;  // each line is one too many
    station.Run(1s);
    EXPECT_THROW(station.realFiles.WriteAll(station.Path("ostrel"), "another"), Failure);
    station.station->actions().Close();
    EXPECT_NE(station.ReadFile(station.Path("RtLog.old")).find("Stopped"), std::string::npos);
  }
  umask(before);
  EXPECT_EQ(station.ReadFile(station.Path("RtList4.txt")), "AB\r\nCD\r\nEF\r\n");
  EXPECT_EQ(station.machine.dialogs.errors, Lines{});
}

TEST(SharedStation, OverridesTheOperatorsMaskOnlyForItsGroup) {
  const std::tuple<mode_t, mode_t, mode_t> rows[] = {
      {0755, 022, 022}, {0755, 077, 077}, {0755, 0, 02}, {02775, 022, 02}, {03775, 077, 07}};
  TemporaryFolder folder;
  const auto before = umask(0);
  for (const auto& [mode, actions, wanted] : rows) {
    chmod(folder.path().c_str(), mode);
    umask(actions);
    ShareWithGroupOf(folder.path());
    EXPECT_EQ(umask(before), wanted) << mode << " " << actions;
  }
}

}  // namespace
}  // namespace ostrel
