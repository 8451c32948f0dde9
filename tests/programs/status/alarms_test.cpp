// When an alarm begins and when it ends, and what of its file is refused.
#include "programs/status/alarms.h"

#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "platform/linux/temporary_folder.h"

namespace ostrel {
namespace {

Status Healthy() {
  return Status::parse(
      R"({"state":"sending","keyed":true,"port":"Com Port # 1 opened for transmit.",
    "sincePacket":1.0,"sinceArrival":1.0,"queues":[{"priority":1,"files":1,"oldest":5.0},
    {"priority":2,"files":1,"oldest":900.0}],"sinceStart":{"purged":4},"freeBytes":9e9,
    "intakePaused":false})");
}

TEST(Alarms, BeginOnceAndEndOnceAsTheirTroubleDoes) {
  const struct {
    Alarm alarm;
    const char* trouble;  // what changes in the answer; none: it does not come
    double lasts;         // seconds of trouble before it begins
    const char* text;
  } cases[] = {
      {{.kind = AlarmKind::kNoArrivals, .seconds = 60},
       R"({"sinceArrival":61})",
       0,
       "no file came for 1 min 1 s"},
      {{.kind = AlarmKind::kSilent, .seconds = 30},
       R"({"state":"idle","sincePacket":31})",
       0,
       "keyed, and nothing was sent for 31 s"},
      {{.kind = AlarmKind::kPort, .seconds = 20},
       R"({"state":"port vanished","port":"gone"})",
       20,
       "gone"},
      {{.kind = AlarmKind::kIntake, .seconds = 20},
       R"({"intakePaused":true})",
       20,
       "an operator has paused the intake, and received files wait in their folder"},
      {{.kind = AlarmKind::kWaiting, .seconds = 120},
       R"({"queues":[{"priority":1,"oldest":121}]})",
       0,
       "a file of priority 1 waits for 2 min 1 s"},
      {{.kind = AlarmKind::kPurged, .seconds = 5},
       R"({"sinceStart":{"purged":5}})",
       0,
       "products were too old before their turn and are deleted"},
      {{.kind = AlarmKind::kDisk, .megabytes = 500}, R"({"freeBytes":4e8})", 0, "400 MB are free"},
      {{.kind = AlarmKind::kRestored},
       R"({"restored":{"at":"2026-11-18T12:00:00Z","text":"The store was damaged."}})",
       0,
       "The store was damaged."},
      {{.kind = AlarmKind::kNoAnswer, .seconds = 30},
       "null",
       30,
       "the station has not answered for 40 s"}};
  for (auto [alarm, trouble, lasts, text] : cases) {
    alarm.name = "it";
    std::vector<std::string> told;
    AlarmWatch watch({.alarms = {alarm}}, [&](const AlarmNews& news) {
      told.push_back((news.begins ? "begin " : "end ") + news.text);
    });
    auto bad = Healthy();
    const auto change = Status::parse(trouble);
    change.is_null() ? bad = nullptr : (bad.update(change), bad);
    double now = 0;
    watch.Look(Healthy(), now);
    for (; now < lasts; now += 10) watch.Look(bad, now);
    EXPECT_TRUE(told.empty()) << text;
    watch.Look(bad, now + 10);
    watch.Look(bad, now + 11);
    EXPECT_EQ(told, std::vector<std::string>{std::string("begin it: ") + text});
    watch.Look(Healthy(), now + 30);
    watch.Look(Healthy(), now + 31);
    EXPECT_EQ(told.size(), 2U) << text;
    EXPECT_EQ(told.back(), "end it: it is over");
  }
}

TEST(Alarms, AreReadFromAFileThatSaysWhatIsWrongInIt) {
  const TemporaryFolder folder;
  const auto path = folder.path() + "/Alarms.toml";
  const auto read = [&](const std::string& text) -> std::string {
    std::ofstream(path) << text;
    try {
      return std::to_string(ReadAlarms(path).alarms.size());
    } catch (const std::runtime_error& error) {
      return std::string(error.what()).substr(path.size());
    }
  };
  EXPECT_EQ(read("command = 'x'\n[[alarm]]\nwhen = 'port'\n[[alarm]]\nwhen='disk'\nmegabytes=5"),
            "2");
  EXPECT_EQ(read("[[alarm]]\nwhen = 'port'"), ": line 1: there is no command.");
  EXPECT_EQ(read("command='x'\n[[alarm]]\nwhen = 'rain'"), ": line 2: \"rain\" is no alarm.");
  EXPECT_EQ(read("command='x'\n[[alarm]]\nwhen='port'\nsecond = 5"),
            ": line 4: \"second\" means nothing here.");
  EXPECT_EQ(read("command='x'\n[[alarm]]\nwhen='port'\nseconds = 'five'"),
            ": line 4: \"seconds\" is of the wrong kind.");
  EXPECT_EQ(read("command='x'\n[[alarm]]\nwhen='waiting'\npriority = 11"),
            ": line 2: a number is out of its range.");
  EXPECT_EQ(read("command = x").find(": line 1: "), 0U);
  EXPECT_EQ(
      std::to_string(ReadAlarms(OSTREL_SOURCE_DIR "/packaging/station/Alarms.toml").alarms.size()),
      "9");
}

}  // namespace
}  // namespace ostrel
