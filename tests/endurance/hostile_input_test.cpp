// What a station may find in its ingest folder that no sane program puts there.
#include <gtest/gtest.h>

#include "tests/endurance/delivery.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

TEST(HostileInput, FilesOfAnyNameComeOutWholeAndStayInTheirFolders) {
  VirtualStation station;
  station.Set({{"ComBaud", "115200"}, {"CompressPri2", "1"}});
  station.Rule(0, "*A*");
  station.Rule(2, "*");  // compressed
  const std::string longest = std::string(251, 'A') + ".TXT";
  const std::string names[] = {"A B  C.TXT", " LEADING A", "TRAILING A ", "\xc3\xa4\xc3\x96",
                               "\xff\xfe A", "A..",        "A...B...C",   "*?[A-Z]#.TXT",
                               "A\\B.TXT",   "A|C=9",      "-A",          "~A",
                               "%s%n A",     longest,      "C:A.TXT",     std::string(255, 'Z'),
                               "CON",        "A'\"`$(x)",  "Z.TXT.999999"};
  // The receiver takes no name with control characters; on the line they are all the same.
  const std::string unspeakable[] = {"A\nB.TXT", "A\r\n", "\x01\x1b[2JA"};
  Delivery delivery;
  for (int seed = 0; const auto& name : names) {
    delivery.Expect(SampleText(700, ++seed));
    station.Drop(name, SampleText(700, seed));
  }
  for (const auto& name : unspeakable) station.Drop(name, "content of " + name);
  // Hidden ones belong to whoever writes them; what is no file is none.
  for (const auto* hidden : {"...", ".part"}) station.Drop(hidden, "never sent");
  fs::create_directory(station.Path("KvData/RxFiles/FOLDER A"));
  station.Start();
  station.Run(60s);
  delivery.Hear(station.machine.line.carried);
  EXPECT_EQ(delivery.Missing(), Lines{});
  EXPECT_EQ(delivery.foreign, Lines{});
  for (const auto& name : unspeakable)
    EXPECT_NE(station.machine.line.carried.find("content of " + name), std::string::npos) << name;
  EXPECT_EQ(station.Names("KvData/RxFiles"), Lines{});
  EXPECT_EQ(LeftBehind(station.Path("KvData")).size(), 2u);  // the hidden ones
}

TEST(HostileInput, ArchivesFromStrangersHoldUpNothing) {
  VirtualStation station;
  station.Set({{"ComBaud", "115200"}, {"UnZipFiles", "1"}});
  station.Rule(0, "*");
  for (const auto& entry : fs::directory_iterator(OSTREL_SOURCE_DIR "/tests/data/badzips"))
    fs::copy(entry.path(), station.Path("KvData/RxFiles/" + entry.path().filename().string()));
  station.Drop("NONE.ZIS", "no archive at all");
  station.Drop("EMPTY.ZIP", "");
  const std::string bomb(8 * 1024 * 1024, '\0');
  station.Drop("BOMB.ZIP", MakeArchive({{"BOMB", bomb}, {"C", bomb}}));
  std::string nested = MakeArchive({{"DEEP.TXT", "deep inside"}});
  for (int i = 1; i < 4; ++i) nested = MakeArchive({{"IN.ZIP", nested}});
  station.Drop("NESTED.ZIP", nested);
  station.Drop("TOODEEP.ZIP", MakeArchive({{"NESTED.ZIP", nested}}));
  station.Start();
  station.Run(10s);
  EXPECT_GE(station.LogOf("UnZip").size(), 4U) << "the operator is told what was left out";
  station.Drop("AFTER.TXT", "still at work");
  station.Run(20s);
  Lines received;
  for (const auto& product : station.Products()) received.push_back(product.name);
  EXPECT_EQ(received, (Lines{"DEEP.TXT", "AFTER.TXT"}));
  EXPECT_EQ(station.Names("KvData/RxFiles"), Lines{});
}

}  // namespace
}  // namespace ostrel
