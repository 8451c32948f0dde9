// A station as a text, and back.
#include "profile/station_profile.h"

#include <filesystem>
#include <gtest/gtest.h>

#include "base/text.h"
#include "tests/support/failure_of.h"
#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

struct FaultyStores : SettingsStores {
  SqliteSettingsStores real;
  std::function<void()> onOpen = [] {};

  explicit FaultyStores(const std::string& path) : real(path) {}
  std::unique_ptr<SettingsStore> Open() override {
    onOpen();
    return real.Open();
  }
  StoreLook Look() override { return real.Look(); }
  void KeepCopy() override { real.KeepCopy(); }
  std::optional<std::string> TakeCopy(UtcTime now) override { return real.TakeCopy(now); }
  void SetAside(UtcTime now) override { real.SetAside(now); }
};

/// The folder of a station that does not run.
struct StationOnDisk {
  TemporaryFolder folder;
  std::string path = folder / "station";
  VirtualClock clock{kNoon};
  LinuxFiles realFiles{clock};
  FaultyFiles files{realFiles};
  FaultyStores stores{path + "/KvRegistry.db"};

  StationOnDisk() { fs::create_directory(path); }
  std::string Dump() { return StationProfile(files, stores, path).Dump(); }
  void Apply(const std::string& text) {
    StationProfile profile(files, stores, path);
    profile.Make(profile.ChangesBy(text), kNoon);
  }
  void Store(const std::string& key, const std::string& value) {
    OpenAtRoot(stores)->WriteSetting(KeyPath(Section::kSettings), key, value);
  }
  void Lay(const std::string& name, const std::string& content) {
    files.WriteAll(path + "/" + name, content);
  }
};

TEST(StationProfile, DumpedAppliedAndDumpedIsTheSameBytesAndAnotherFolderTheSameStation) {
  StationOnDisk one, other;
  one.Store("CWIDText", "DE \"W1AW\" \\ \xC3\xA9 ' # [x]");
  one.Store("IngestPath", one.path + "/in");
  one.Store("FillFile", "/srv/\xFF\n.txt");
  one.Lay("RtList0.txt", "TOR*\n  blanks \r\n\xE9TX*\r\n");
  one.Lay("RtList3.txt", "");
  one.Lay("RtList12.txt", "TOR* | C=2\r\n");
  const auto schedule = [](const std::string& folder, const std::string& station) {
    return "08:00 /a /b\r\n 09:00 " + folder + "/a  " + station + "/KvData/a b\r\n";
  };
  one.Lay("RtSched.txt", schedule(ToUpper(one.path), one.path));
  fs::create_directory(one.path + "/ports");
  fs::create_symlink("../line", one.path + "/ports/COM2");
  fs::create_symlink(one.path + "/line", one.path + "/ports/COM4");
  fs::create_symlink("/dev/serial/by-id/usb", one.path + "/ports/COM1");
  const auto text = one.Dump();
  EXPECT_NE(text.find("\nIngestPath = \"FOLDER/in\"\n"), std::string::npos);
  EXPECT_NE(text.find("\" 09:00 FOLDER/a  FOLDER/KvData/a b\""), std::string::npos);
  EXPECT_NE(text.find("# Minutes between two identifications"), std::string::npos);
  EXPECT_EQ(text.find("priority2 ="), std::string::npos) << "a lost list is not an empty one";
  EXPECT_TRUE(StationProfile(one.files, one.stores, one.path).ChangesBy(text).empty());

  fs::create_directory(other.path + "/ports");
  fs::create_symlink("/dev/ttyS0", other.path + "/ports/COM3");
  other.Apply(text);
  EXPECT_EQ(other.Dump(), text);
  EXPECT_FALSE(fs::is_symlink(other.path + "/ports/COM3"));
  EXPECT_EQ(fs::read_symlink(other.path + "/ports/COM4"), "../line");
  EXPECT_EQ(other.files.ReadAll(other.path + "/RtSched.txt"), schedule(other.path, other.path));
  EXPECT_EQ(other.files.ReadAll(other.path + "/RtList0.txt"), "TOR*\r\n  blanks \r\n\xE9TX*\r\n");
}

TEST(StationProfile, WhatIsNotNamedStaysAndWhatIsWrongIsRefusedWithItsLine) {
  StationOnDisk station;
  station.Lay("RtList0.txt", "TOR*\r\n");
  const auto before = station.Dump();
  for (const auto& [text, why] : {
           std::pair{"[settings]\nUdpPort = \"0\"", "line 2: UdpPort cannot be \"0\""},
           {"[settings]\nUdpPort = 9510", "line 2: a value is a text"},
           {"[settings]\n\nColour = \"red\"", "line 3: There is no settings.Colour."},
           {"[rules]\ndiscard = \"A*\"", "line 2: rules.discard must be a list"},
           {"[settings]\nCWIDText = []", "line 2: settings.CWIDText must be one text"},
           {"[rules]\nComBaud = \"1\"",
            "line 2: There is no rules.ComBaud. ComBaud belongs under [settings]."},
           {"[rules]\ndiscard = [\"A*\\nB*\"]", "line 2: the text has a character"},
           {"[settings]\nCWIDText = { hex = \"0\" }", "line 2: two hexadecimal digits"},
           {"[settings]\nCWIDText = \"A\"\nCWIDText = \"B\"", "line 3: "},
           {"[settings]\nComBaud = \"0\"", "line 2: ComBaud cannot be \"0\""},
           {"[settings]\nComPort = \"12\"", "line 2: ComPort cannot be \"12\""},
           {"[settings]\nComStopBit = \"9\"", "line 2: ComStopBit cannot be \"9\""},
           {"CWIDText = \"A\"", "line 1: \"CWIDText\" stands in no table"},
       }) {
    try {
      station.Apply(text);
      ADD_FAILURE() << text;
    } catch (const Failure& failure) {
      EXPECT_TRUE(failure.text().starts_with(why)) << failure.text();
    }
  }
  EXPECT_EQ(station.Dump(), before);
  StationProfile profile(station.files, station.stores, station.path);
  EXPECT_EQ(
      profile.DoubtsAbout(profile.ChangesBy(
          "[morse]\ncodes = [\"E.\", \"T-    \", \"odd\"]\n[ports]\nCOM1 = \"/dev/nix\"\n"
          "COM2 = \"/dev/null\"\n[rules]\ndiscard = [\"FL[S\", \"F[!L]S*\", \"x\", \"tor*\"]\n"
          "copies = [\"TOR\"]\n[schedule]\nentries = [\"8:00 /a /b\"]")),
      (std::vector<std::string>{
          "line 2: \"E.\": without blanks up to column 7 the next line's code is keyed with it.",
          "line 2: \"odd\": it must be a sign and its code of dots and dashes.",
          "line 8: \"TOR\": it must end in a number of copies, \" | C=2\" say.",
          "line 7: \"FL[S\": it is no pattern and matches nothing.",
          "line 7: \"x\": You have entered too many wildcard characters. Please be more specific.",
          "line 7: \"tor*\": it stands in priority1 already.",
          "line 10: \"8:00 /a /b\": it must be a time (hh:mm), a blank, the source, a blank, and "
          "the "
          "destination.",
          "line 4: /dev/nix is not there now."}));
  station.Apply("[rules]\ncopies = [\"TOR* | C=2\"]");
  EXPECT_EQ(station.files.ReadAll(station.path + "/RtList0.txt"), "TOR*\r\n");
}

TEST(StationProfile, MakesAStoreWhereTheSettingsWereLostOfATextThatNamesThemAll) {
  StationOnDisk other;
  other.Store("CWIDText", "DE KX1ABC");
  const auto text = other.Dump();
  for (int last = 0, steps = 1; last <= steps; ++last) {
    SCOPED_TRACE(last);
    StationOnDisk station;
    station.Lay("KvRegistry.db", "damaged");
    EXPECT_EQ(FailureOf([&] { station.Apply("[settings]\nCWIDText = \"DE KX1ABC\""); }), 13);
    EXPECT_EQ(station.files.ReadAll(station.path + "/KvRegistry.db"), "damaged");
    steps = 0;
    const auto powerFails = [&](const auto&...) {
      if (++steps > last) throw Failure(61, "no power");
    };
    station.files.writeFault = station.files.deleteFault = powerFails;
    station.stores.onOpen = powerFails;
    const bool isDone = TryStep([&] { station.Apply(text); });
    station.files.writeFault = station.files.deleteFault = {};
    station.stores.onOpen = [] {};
    StationProfile(station.files, station.stores, station.path).Finish();
    const auto loss = LossOf(station.stores, station.files, station.path);
    EXPECT_TRUE(loss.empty() || !isDone) << "never a store with a part of it: " << loss;
    if (!loss.empty()) station.Apply(text);
    EXPECT_EQ(station.Dump(), text);
    const auto names = station.files.ListFiles(station.path);
    EXPECT_EQ(std::ranges::count_if(
                  names, [](auto& name) { return name.starts_with("KvRegistry.damaged"); }),
              1);
  }
}

enum class Fault { kOnce, kDiskFull, kPower };

TEST(StationProfile, AFailureOrThePowerInTheMidstLeavesTheOldOrTheNewStationWhole) {
  const std::string text =
      "[settings]\nCWIDText = \"NEW\"\n[rules]\npriority1 = [\"NEW*\"]\npriority3 = [\"ALSO*\"]\n"
      "[schedule]\nentries = [\"08:00 /a /b\"]\n[ports]\nCOM1 = \"/dev/new\"\n";
  for (const auto fault : {Fault::kOnce, Fault::kDiskFull, Fault::kPower}) {
    for (int last = 0, failures = 0;; ++last) {
      StationOnDisk station;
      station.Lay("RtList0.txt", "OLD*\r\n");
      station.Store("CWIDText", "OLD");
      const auto before = station.Dump();
      int steps = 0;
      const auto fails = [&](bool needsRoom) {
        ++steps;
        const bool isHit = fault == Fault::kOnce ? steps == last + 1 : steps > last;
        if (isHit && (needsRoom || fault != Fault::kDiskFull)) throw Failure(61, "Disk full");
      };
      station.files.writeFault = station.files.linkFault = [&](auto&) { fails(true); };
      station.files.deleteFault = station.files.renameFault = [&](auto&) { fails(false); };
      station.stores.onOpen = [&] { fails(true); };
      const bool isDone = TryStep([&] { station.Apply(text); });
      station.files.writeFault = station.files.linkFault = {};
      station.files.deleteFault = station.files.renameFault = {};
      station.stores.onOpen = [] {};
      StationProfile profile(station.files, station.stores, station.path);
      const bool isTakenBack = !isDone && !profile.IsUnfinished();
      EXPECT_TRUE(isDone || isTakenBack || fault != Fault::kDiskFull) << last;
      EXPECT_TRUE(!isTakenBack || station.Dump() == before) << last;
      profile.Finish();
      const auto after = station.Dump();
      station.Apply(text);
      EXPECT_EQ(after, isDone ? station.Dump() : before) << last;
      EXPECT_FALSE(profile.IsUnfinished());
      failures += isDone ? 0 : 1;
      if (steps <= last) {
        EXPECT_GE(failures, 7);
        break;
      }
    }
  }
}

}  // namespace
}  // namespace ostrel
