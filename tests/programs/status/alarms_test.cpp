// When an alarm begins and when it ends, and what of its file is refused.
#include "programs/status/alarms.h"

#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "platform/linux/temporary_folder.h"
#include "tests/support/rows.h"

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

AlarmConfig Read(const std::string& toml) {
  const TemporaryFolder folder;
  std::ofstream(folder / "Alarms.toml") << toml;
  try {
    return ReadAlarms(folder / "Alarms.toml");
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(error.what() + folder.path().size() + sizeof "/Alarms.toml:");
  }
}

/// What the alarm of a row says when it begins; it begins once, after its trouble lasted, and ends
/// once.
std::string WhatBegins(const std::string& row) {
  const auto last = row.rfind("; "), change = row.rfind("; ", last - 1);
  const double lasts = std::stod(row.substr(last + 2));
  const auto trouble = Status::parse(row.substr(change + 2, last - change - 2));
  auto keys = row.substr(0, change);
  std::replace(keys.begin(), keys.end(), ';', '\n');
  Lines told;
  AlarmWatch watch(
      Read("command = 'x'\n[[alarm]]\nname = 'it'\n" + keys),
      [&](const AlarmNews& news) { told.push_back(std::string(news.Event()) + " " + news.text); });
  auto bad = Healthy();
  trouble.is_null() ? bad = nullptr : (bad.update(trouble), bad);
  double now = 0;
  watch.Look(Healthy(), now);
  for (; now < lasts; now += 10) watch.Look(bad, now);
  EXPECT_TRUE(told.empty());
  for (double later : {10, 11}) watch.Look(bad, now + later);
  for (double later : {30, 31}) watch.Look(Healthy(), now + later);
  if (lasts > 0 && !bad.is_null()) watch.Look(bad, now + 40);  // it has to last once more
  EXPECT_EQ(told.size(), 2U);
  if (told.size() != 2) return "nothing";
  EXPECT_EQ(told.back(), "end it: it is over");
  return told.front().substr(sizeof "begin it: " - 1);
}

std::string WhatIsRead(const std::string& toml) {
  try {
    return std::to_string(Read(toml).alarms.size()) + " alarms";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

TEST(Alarms, AreReadBeginAndEndAsTheirRowsSay) {
  ExpectRows("programs/status/alarms.txt", {{"begins", WhatBegins}, {"file", WhatIsRead}});
  EXPECT_EQ(ReadAlarms(OSTREL_SOURCE_DIR "/packaging/station/Alarms.toml").alarms.size(), 11U);
}

TEST(Alarms, BeginAnewForTheNextThatIsInTheWay) {
  Lines told;
  AlarmWatch watch({.alarms = {{.name = "blocked", .kind = AlarmKind::kBlocked, .seconds = 10},
                               {.name = "silence", .kind = AlarmKind::kNoAnswer, .seconds = 30}}},
                   [&](const AlarmNews& news) {
                     told.push_back(std::string(news.Event()) + " " + news.text);
                     EXPECT_EQ(news.station, "Shed");
                   });
  auto status = Healthy();
  status["name"] = "Shed";
  double now = 0;
  for (const auto* name : {"A.TXT", "A.TXT", "B.TXT"}) {
    status["intake"]["blocked"] = {
        {"folder", "RxFiles"}, {"name", name}, {"reason", "why"}, {"for", 12}};
    watch.Look(status, now += 10);
  }
  watch.Look(nullptr, now + 31);
  EXPECT_EQ(told, (Lines{"begin blocked: RxFiles/A.TXT holds up the ingest folder for 12 s. why",
                         "end blocked: it is over",
                         "begin blocked: RxFiles/B.TXT holds up the ingest folder for 12 s. "
                         "why",
                         "begin silence: the station has not answered for 31 s"}));
}

}  // namespace
}  // namespace ostrel
