// What programs beside the station hear of it.
#include "seam/seam.h"

#include <gtest/gtest.h>

#include "tests/support/told_socket.h"

namespace ostrel {
namespace {

TEST(Seam, TellsWhatTheStationDoesAndWhatBecameOfEverything) {
  VirtualStation station;
  station.Rule(0, "TOR*");
  station.Rule(4, "AFD*");
  station.Rule(11, "JUNK*");
  station.Set({{"TxUpTime", "1"},
               {"TxDownTime", "5"},
               {"CWIDTime", "9"},
               {"StationName", " Shed \x1B\"7\" "}});
  station.Start();
  ToldSocket socket;
  const Seam seam(*station.station, socket);
  EXPECT_EQ(socket.path, station.Path("station.sock"));
  auto status = socket.Status();
  EXPECT_EQ(status["name"], "Shed \x1B\"7\"");
  EXPECT_EQ(status["state"], "idle");
  EXPECT_EQ(status["started"], "2026-11-18T12:00:00Z");
  EXPECT_EQ(status["sincePacket"], nullptr);

  station.Drop("AFDXXX.TXT", SampleText(2500));
  station.Run(1s);
  station.Drop("JUNK.TXT", "away");
  station.Run(1s);
  station.Drop("TORXXX.TXT", SampleText(700));
  station.Run(1s);
  status = socket.Status();
  EXPECT_EQ(status["state"], "sending");
  EXPECT_TRUE(status["keyed"]);
  EXPECT_EQ(status["onAir"],
            Json::parse(R"({"priority":5,"file":"AFDXXX.TXT","block":1,"blocks":3,"outIn":)" +
                        status["queues"][4]["outIn"].dump() + "}"));
  EXPECT_EQ(status["queues"][0]["bytes"], 700);
  // The rest of a block, one of priority 1, and two more of priority 5.
  EXPECT_NEAR(status["queues"][0]["outIn"], 10.23 - 2.87 + 10.23, 0.03);
  EXPECT_NEAR(status["queues"][4]["outIn"], 10.23 - 2.87 + 3 * 10.23, 0.03);
  EXPECT_EQ(status["queues"][4]["files"], 1) << "the one on the air waits for its last block";
  EXPECT_NEAR(status["queues"][4]["oldest"], 2.875, 0.13);
  EXPECT_NEAR(status["sinceArrival"], 0.875, 0.13);
  EXPECT_NEAR(status["sincePacket"], 2.875, 0.13);
  EXPECT_EQ(status["sinceStart"]["discarded"], 1);
  EXPECT_EQ(status["sinceMidnight"]["files"], 1);
  EXPECT_NEAR(status["nextIdentification"], 8 * 60 + 27, 1);
  EXPECT_GT(status["freeBytes"], 0);
  const auto day = socket.Ask(R"({"ask":"day"})");
  EXPECT_NEAR(day["present"], 4, 1.3) << "keying and three seconds";
  EXPECT_EQ(day["stretch"].get<double>() * 288, 24 * 60 * 60);
  for (const auto& [column, value] :
       {std::pair{"urgentBytes", 700}, {"otherBytes", 2500}, {"arrived", 3}, {"sent", 0}})
    EXPECT_EQ(day[column], Json::array({value})) << column;

  Json paused;
  const auto hear = station.station->status().onTheAir.OnChange([&](OnTheAir use) {
    if (use == OnTheAir::kPause) paused = socket.Status();
  });
  station.Run(3min);
  ASSERT_EQ(paused["state"], "paused");
  EXPECT_FALSE(paused["keyed"]);
  EXPECT_EQ(paused["endsIn"], 6.3) << "six boundaries at most, and the key-up delay";
  station.setup().lblOutParity.Set("X");  // does not reopen the port
  EXPECT_EQ(socket.Status()["state"], "sending");
  station.machine.line.SetPresent(false);
  station.Run(1s);
  EXPECT_EQ(socket.Status()["state"], "port vanished");
}

TEST(Seam, TellsWhatIsDamagedInTheStationsFolder) {
  VirtualStation station;
  station.Rule(0, "TOR*");
  station.Start();
  ToldSocket socket;
  {
    const Seam seam(*station.station, socket);
    const auto status = socket.Status();
    EXPECT_EQ(status["name"], station.machine.hostName) << "nobody has named it";
    EXPECT_EQ(status["restored"], nullptr);
    EXPECT_EQ(status["unusable"], Json::array());
  }
  station.station->Stop();
  station.WriteFile(station.Path("RtList0.txt"), std::string(9, '\0'));
  station.WriteFile(station.Path("KvRegistry.db"), "damaged");
  station.Restart();
  const Seam seam(*station.station, socket);
  const auto status = socket.Status();
  EXPECT_EQ(status["restored"]["at"], "2026-11-18T12:00:00Z");
  EXPECT_TRUE(status["restored"]["text"].get<std::string>().starts_with(
      "The settings store is damaged (file is not a"));
  EXPECT_EQ(status["unusable"].size(), 1U);
  EXPECT_EQ(status["unusable"][0]["name"], "RtList0.txt");
  EXPECT_TRUE(status["unusable"][0]["why"].get<std::string>().starts_with("Damaged"));
}

TEST(Seam, CountsTheDayApartFromTheRunAndTellsWhatIsNext) {
  VirtualStation station(kNoon + 11h + 59min + 28s);
  station.Set({{"CWIDTime", "3"}, {"TxUpTime", "0"}, {"ComBaud", "4800"}, {"PurgeTime", "1"}});
  station.Rule(0, "TOR*");
  station.Rule(11, "JUNK*");
  station.StartBusy();
  ToldSocket socket;
  const Seam seam(*station.station, socket);
  // The countdown goes down at second 30.
  EXPECT_NEAR(socket.Status()["nextIdentification"], 122, 0.5);
  station.Run(2s);
  EXPECT_NEAR(socket.Status()["nextIdentification"], 120, 0.5);

  station.Drop("JUNK.TXT", "away");
  station.files.lockFault = [](const std::string& path) {
    if (path.ends_with("TORX.TXT")) throw Failure(57, "as told");
  };
  station.Drop("TORX.TXT", "in trouble");
  station.Run(1s);
  station.files.lockFault = nullptr;
  station.Hold(5, "OLD.TXT", SampleText(3000));
  station.Run(10s);
  station.Hold(5, "NEW.TXT", "more");
  auto status = socket.Status();
  EXPECT_NEAR(status["queues"][4]["oldest"], 10.2, 0.3);
  EXPECT_GE(status["sinceMidnight"]["errors"]["CheckForNewFiles"], 7);
  EXPECT_EQ(status["sinceMidnight"]["discarded"], 1);
  station.Run(30s);
  status = socket.Status();
  EXPECT_EQ(status["sinceMidnight"]["discarded"], 0) << "a new day";
  EXPECT_TRUE(status["sinceMidnight"]["errors"].empty());
  EXPECT_EQ(status["sinceStart"]["discarded"], 1);
  EXPECT_GE(status["sinceStart"]["errors"]["CheckForNewFiles"], 7);

  // What was purged takes no time on the air.
  const auto outIn = [&] { return socket.Status()["queues"][4]["outIn"].get<double>(); };
  const double before = outIn();
  station.realFiles.SetLastWriteTime(station.InTransmitFolder("OLD.TXT"), kNoon);
  station.Run(1min);
  EXPECT_EQ(socket.Status()["queues"][4]["files"], 2);
  EXPECT_LT(outIn(), before - 60 - 6);
}

TEST(Seam, HasTwoOperatorsChangeTheQueuesAtOnceAndTheLineCarriesWhatTheyAskedFor) {
  VirtualStation station;
  station.Set({{"CWIDTime", "0"}, {"ComBaud", "9600"}});
  station.StartBusy();
  for (const auto* name : {"A.TXT", "B.TXT", "C.TXT", "D.TXT", "E.TXT"})
    station.Hold(5, name, name);
  ToldSocket socket;
  const Seam seam(*station.station, socket);
  const auto ask = [&](Asker asker, const std::string& what, const std::string& name) {
    return socket.Ask(fmt::format(R"({{"ask":"{}","name":"{}","priority":2}})", what, name), asker);
  };
  EXPECT_EQ(ask(1, "hold", "A.TXT")["done"], "A.TXT of priority 5 is held.");
  EXPECT_EQ(ask(2, "hold", "A.TXT")["error"], "No queue lists A.TXT.");
  ask(2, "top", "D.TXT");
  ask(1, "move", "E.TXT");
  EXPECT_EQ(ask(2, "delete", "B.TXT")["done"], "B.TXT of priority 5 is deleted.");
  EXPECT_EQ(ask(1, "top", "B.TXT")["error"], "No queue lists B.TXT.");
  EXPECT_EQ(ask(2, "move", "BUSY.TXT")["error"], "BUSY.TXT is on the air.");
  EXPECT_EQ(socket.Ask(R"({"ask":"held"})")["held"][0]["name"], "A.TXT");
  station.Run(1s);
  const auto list = socket.Ask(R"({"ask":"list"})");
  EXPECT_EQ(list["count"], 4);
  EXPECT_EQ(list["entries"][1]["name"], "E.TXT");
  EXPECT_GT(list["entries"][1]["outIn"], list["entries"][0]["outIn"]);
  EXPECT_EQ(socket.Ask(R"({"ask":"list","from":3})")["entries"].size(), 1U);
  EXPECT_EQ(ask(2, "release", "a.txt")["done"], "A.TXT of priority 5 is released.");
  ask(1, "pause-intake", "");
  EXPECT_TRUE(socket.Status()["intakePaused"]);
  EXPECT_EQ(station.Messages("Operator").back(),
            "The intake pauses: received files stay in their folder. (alice)");
  station.Run(2min);
  auto blocks = station.Blocks();
  std::erase_if(blocks, [](const std::string& block) { return block.starts_with("BUSY"); });
  EXPECT_EQ(blocks, (Lines{"E.TXT 1/1", "D.TXT 1/1", "C.TXT 1/1", "A.TXT 1/1"}));
}

TEST(Seam, EndsWhatIsOnTheAirAtItsNextBlock) {
  VirtualStation station;
  station.Set({{"CWIDTime", "0"}, {"ComBaud", "1200"}, {"TxUpTime", "0"}});
  station.Start();
  ToldSocket socket;
  const Seam seam(*station.station, socket);
  const auto stop = [&](const std::string& name) {
    return socket.Ask(fmt::format(R"({{"ask":"stop","name":"{}"}})", name));
  };
  EXPECT_EQ(stop("")["error"], "Nothing is on the air.");
  station.Hold(5, "BIG.TXT", SampleText(600'000));
  station.Run(20s);
  EXPECT_NEAR(socket.Status()["onAir"]["outIn"], 600 * 10.23 - 20, 200);
  station.Hold(1, "TORBIG.TXT", SampleText(600'000));
  station.Hold(1, "TOR.TXT", SampleText(1500));
  station.Run(20s);
  EXPECT_EQ(stop("TOR.TXT")["error"], "TOR.TXT is not on the air.");
  EXPECT_EQ(stop("big.txt")["done"], "BIG.TXT of priority 5 ends at its next block.");
  EXPECT_EQ(stop("")["done"], "TORBIG.TXT of priority 1 ends at its next block.");
  station.Run(60s);
  const auto blocks = station.Blocks();
  EXPECT_EQ((Lines{blocks.end() - 2, blocks.end()}), (Lines{"TOR.TXT 1/2", "TOR.TXT 2/2"}));
  EXPECT_LE(blocks.size(), 8U);
  for (const auto& [id, row] : station.machine.history.rows)
    EXPECT_EQ(row.fate, row.sentAs == "TOR.TXT" ? Fate::kSent : Fate::kStopped) << row.sentAs;
  const auto kept = station.Names("KvData/RtSent");
  for (const auto* name : {"BIG.TXT", "TORBIG.TXT"})
    EXPECT_EQ(std::count(kept.begin(), kept.end(), name), 1) << name;
  EXPECT_EQ(station.Names("KvData/.pending/5"), Lines{});
}

TEST(Seam, SaysBeforehandHowLongItWillAnswerNobody) {
  VirtualStation station;
  station.Set({{"CWIDTime", "1"}, {"CWSpeed", "10"}, {"TxUpTime", "0"}});
  station.Start();
  ToldSocket socket;
  const Seam seam(*station.station, socket);
  for (const Asker asker : {2, 3}) socket.ask(asker, R"({"ask":"silence"})");
  EXPECT_TRUE(socket.sent[2].empty());
  milliseconds told{};
  const auto hear = station.station->status().onTheAir.OnChange([&](OnTheAir use) {
    if (use == OnTheAir::kIdentification) told = station.machine.clock.Monotonic();
  });
  station.Run(2min);
  for (const Asker asker : {2, 3}) {
    ASSERT_EQ(socket.sent[asker].size(), 1U) << "once for each question";
    const double silent = Json::parse(socket.sent[asker][0])["silent"];
    const auto& keying = station.machine.line.keying;
    const std::chrono::duration<double> took = keying.back().at - told;
    EXPECT_GE(silent, took.count());
    EXPECT_LT(silent, took.count() + 1);
  }
}

TEST(Seam, AnswersRubbishAndGoesWithoutASocket) {
  VirtualStation station;
  station.Start();
  ToldSocket socket;
  socket.fails = true;
  const Seam seam(*station.station, socket);
  EXPECT_EQ(station.Messages("Socket").size(), 1U);
  for (const std::string question :
       {"", "status", "{", "[]", "7", R"({"ask":7})", R"({"ask":"status")", R"({"ask":"reboot"})",
        "[[[[[[[[[[]]]]]]]]]]", "\xFF\xFE", R"({"ask":"\ud800"})"})
    EXPECT_TRUE(socket.Ask(question).contains("error")) << question;
  station.Drop("TOR\xC3.TXT", "a name that is no UTF-8");
  station.Run(1s);
  EXPECT_TRUE(socket.Status().contains("onAir"));
}

}  // namespace
}  // namespace ostrel
