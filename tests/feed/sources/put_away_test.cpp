// Files of a tree that are put away while somebody writes the next version, at every moment that
// there is.
#include "feed/put_away.h"

#include <cerrno>

#include "tests/feed/sources/sources_fixture.h"
#include "tests/support/call_shim/call_shim.h"

namespace ostrel {
namespace {

using Afterwards = FolderSettings::Afterwards;

class PutAwayTest : public SourcesTest {
 protected:
  /// The tests behind this one wait in real time.
  ~PutAwayTest() override {
    call_shim::Watch({});
    call_shim::SpeedUp(1);
  }

  void Empty() const {
    for (const auto* folder : {"in", "done"}) {
      fs::remove_all(folder_ / folder);
      fs::create_directory(folder_ / folder);
    }
  }
  std::string Tree(const std::string& name) const { return folder_ / ("tree/" + name); }
  /// Has `action` happen right before a call, the `moment`th since a product was placed. False when
  /// there were not so many.
  bool StartAndMeet(FolderSettings settings, int moment, const std::function<void()>& action) {
    bool isPlaced = false;
    int calls = 0;
    call_shim::Watch([&](std::string_view call, std::string_view path) {
      if (isPlaced && ++calls == moment) action();
      isPlaced = isPlaced || (call == "renameat2" && path.find("/in/.feed-") != path.npos);
      return 0;
    });
    source_.reset();
    source_ = Watch(std::move(settings));
    call_shim::Watch({});
    return calls >= moment;
  }

  std::unique_ptr<FolderSource> source_;
};

TEST_F(PutAwayTest, LosesNoVersionThatComesMeanwhile) {
  call_shim::SpeedUp(50);
  Empty();
  for (const auto afterwards : {Afterwards::kMove, Afterwards::kDelete}) {
    int moment = 0;
    for (bool hasCome = true; hasCome;) {
      const auto name = fmt::format("P{}{:03}.TXT", static_cast<int>(afterwards), ++moment);
      Write(name, "first" + name);
      std::ofstream(folder_ / "next") << "other" << name;
      fs::last_write_time(folder_ / "next", fs::last_write_time(Tree(name)));
      hasCome = StartAndMeet({.afterwards = afterwards, .moveTo = folder_ / "done"}, moment,
                             [&] { fs::rename(folder_ / "next", Tree(name)); });
      if (!hasCome) break;
      EXPECT_TRUE(Until([&] { return In("tree").empty() && In("in").size() == 2; })) << moment;
      EXPECT_EQ(In("in"), (Names{name + "=first" + name, name + ".1=other" + name})) << moment;
      const auto done = In("done");
      EXPECT_EQ(done.count(name + "=other" + name) + done.count(name + ".1=other" + name),
                afterwards == Afterwards::kMove ? 1U : 0U)
          << moment;
      Empty();
    }
    EXPECT_GT(moment, 6);
    Empty();
  }
}

TEST_F(PutAwayTest, GoesOnWhereAnEndedRunWas) {
  Write("TAKEN.TXT", "taken");
  source_ = Watch({});
  EXPECT_EQ(In("in"), Names{"TAKEN.TXT=taken"});
  source_.reset();
  // It ended right behind the first of the two steps, and had got a correction the other time.
  fs::rename(Tree("TAKEN.TXT"), AsidePath(Tree("TAKEN.TXT")));
  Write("OTHER.TXT", "correction");
  fs::rename(Tree("OTHER.TXT"), AsidePath(Tree("OTHER.TXT")));
  Write("OTHER.TXT", "newer");
  call_shim::SpeedUp(50);
  source_ = Watch({.afterwards = Afterwards::kMove, .moveTo = folder_ / "done"});
  EXPECT_TRUE(Until([&] { return In("in").size() == 3 && In("tree").empty(); }));
  EXPECT_EQ(In("in"), (Names{"TAKEN.TXT=taken", "OTHER.TXT=newer", "OTHER.TXT.1=correction"}));
  EXPECT_EQ(In("done").size(), 3U);
  const std::string longest(255, 'L');
  EXPECT_EQ(AsidePath("/x/" + longest).size(), 3 + longest.size())
      << "a folder holds no longer one";
}

TEST_F(PutAwayTest, TellsVersionsOfOneSizeAndTimeApart) {
  Write("A.TXT", "first");
  std::ofstream(folder_ / "next") << "other";
  fs::last_write_time(folder_ / "next", fs::last_write_time(Tree("A.TXT")));
  fs::create_hard_link(Tree("A.TXT"), folder_ / "same");
  source_ = Watch({});
  fs::rename(folder_ / "next", Tree("A.TXT"));
  EXPECT_TRUE(Until([&] { return In("in").size() == 2; }));
  EXPECT_EQ(In("in"), (Names{"A.TXT=first", "A.TXT.1=other"}));
}

TEST_F(PutAwayTest, WaitsForFilesOfWhichTheSystemCannotTellWhoWrites) {
  call_shim::SpeedUp(50);
  // Neither events nor the kind of the file system: so a share looks, or what a program serves.
  call_shim::Watch([](std::string_view call, std::string_view) {
    return call == "inotify_init1" || call == "fstatfs" ? ENOSYS : 0;
  });
  Write("SLOW.TXT", "half");
  source_ = Watch({});
  Wait(8s);
  const auto grown = std::chrono::steady_clock::now();
  std::ofstream(Tree("SLOW.TXT"), std::ios::app) << ", whole";
  EXPECT_TRUE(Until([&] { return !In("in").empty(); }));
  EXPECT_EQ(In("in"), Names{"SLOW.TXT=half, whole"});
  EXPECT_GE(std::chrono::steady_clock::now() - grown, 10s);
}

TEST_F(PutAwayTest, KeepsLargeFilesApartAndPutsThemAwayAsOthers) {
  std::string large(kLargestProduct + 1, 'x');
  large.back() = 'e';
  Write(kLong, large);
  Write("A.TXT", "a");
  source_ = Watch({.afterwards = Afterwards::kDelete});
  EXPECT_EQ(In("in").count("A.TXT=a"), 1U) << "others do not wait for it";
  EXPECT_TRUE(Until([&] { return In("tree").empty(); }));
  EXPECT_TRUE(In("in") == (Names{"A.TXT=a", "TORDMXIA.TXT=" + large}));
  EXPECT_EQ(book_.Figures().tooLarge, 1);

  call_shim::Watch([](std::string_view call, std::string_view path) {
    return call == "open" && path.find("/in/.feed-") != path.npos ? EIO : 0;
  });
  Write("B.TXT", large);
  EXPECT_TRUE(Until([&] {
    return ReadWhole(folder_ / "log").find("B.TXT is too large and is left: ") != std::string::npos;
  }));
  call_shim::Watch({});
  EXPECT_EQ(In("tree").size(), 1U) << "what could not be kept is not deleted";
}

}  // namespace
}  // namespace ostrel
