// When an alarm begins and when it ends, and what of its file is refused.
#include "programs/status/alarms.h"

#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "platform/linux/temporary_folder.h"

namespace ostrel {
namespace {

using Lines = std::vector<std::string>;

Status Healthy() {
  return Status::parse(
      R"({"state":"sending","keyed":true,"port":"Com Port # 1 opened for transmit.",
    "sincePacket":1.0,"sinceArrival":1.0,"queues":[{"priority":1,"files":1,"oldest":5.0},
    {"priority":2,"files":1,"oldest":900.0}],"sinceStart":{"purged":4},"freeBytes":9e9,
    "intakePaused":false,"silentFor":null,"silentBecause":"",
    "intake":{"blocked":null,"refused":[]}})");
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
       R"({"silentFor":31,"silentBecause":"It is empty"})",
       0,
       "keyed, and nothing was sent for 31 s. It is empty"},
      {{.kind = AlarmKind::kBlocked, .seconds = 10},
       R"({"intake":{"blocked":{"folder":"RxFiles","name":"A.TXT","reason":"Disk full","for":11},
           "refused":[]}})",
       0,
       "RxFiles/A.TXT holds up the ingest folder for 11 s. Disk full"},
      {{.kind = AlarmKind::kRefused, .seconds = 60},
       R"({"intake":{"blocked":null,"refused":[
           {"folder":"RtPri3","name":null,"reason":"Permission denied","for":61},
           {"folder":"RtPri3","name":"B.TXT","reason":"Permission denied","for":10}]}})",
       0,
       "RtPri3 is refused and tried again for 1 min 1 s. Permission denied"},
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
    if (lasts == 0 || bad.is_null()) continue;
    watch.Look(bad, now + 40);
    EXPECT_EQ(told.size(), 2U) << "it has to last once more: " << text;
  }
}

TEST(Alarms, BeginAnewForTheNextThatIsInTheWay) {
  Lines told;
  AlarmWatch watch(
      {.alarms = {{.name = "blocked", .kind = AlarmKind::kBlocked, .seconds = 10}}},
      [&](const AlarmNews& news) { told.push_back(std::string(news.Event()) + " " + news.text); });
  auto status = Healthy();
  double now = 0;
  for (const auto* name : {"A.TXT", "A.TXT", "B\x1B.TXT"}) {
    status["intake"]["blocked"] = {
        {"folder", "RxFiles"}, {"name", name}, {"reason", "why"}, {"for", 12}};
    watch.Look(status, now += 10);
  }
  EXPECT_EQ(told, (Lines{"begin blocked: RxFiles/A.TXT holds up the ingest folder for 12 s. why",
                         "end blocked: it is over",
                         "begin blocked: RxFiles/B\\x1B.TXT holds up the ingest folder for 12 s. "
                         "why"}));
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
      "11");
}

}  // namespace
}  // namespace ostrel
