#include "feed/delivery.h"

#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <set>

#include "base/failure.h"
#include "feed/placing.h"
#include "platform/linux/temporary_folder.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;
using Names = std::multiset<std::string>;
using std::chrono::seconds;

class DeliveryTest : public testing::Test {
 protected:
  DeliveryTest() {
    for (const auto* folder : {"in", "unknown", "outbox"}) fs::create_directory(folder_ / folder);
    Begin();
  }
  /// As a program that ended at any moment begins again.
  void Begin() {
    delivery_.reset();
    memory_.emplace(folder_ / "memory.db");
    delivery_.emplace(Delivery::Parts{.memory = *memory_,
                                      .book = book_,
                                      .now = [this] { return now_; },
                                      .ingestFolder = [this] { return folder_ / "in"; },
                                      .unknownFolder = folder_ / "unknown",
                                      .outbox = folder_ / "outbox",
                                      .repeats = seconds(600)},
                      NameRules({}));
    delivery_->Finish();
  }
  FeedOutcome Take(const std::string& given, const std::string& content, const Mark& mark = {},
                   bool isPublished = false) {
    return delivery_->Take(source_, {given, content, mark, isPublished});
  }
  /// The files in a folder, hidden ones too, each with its content.
  Names In(const std::string& folder) const {
    Names names;
    for (const auto& entry : fs::directory_iterator(folder_ / folder))
      names.insert(entry.path().filename().string() + "=" + ReadWhole(entry.path().string()));
    return names;
  }

  TemporaryFolder folder_;
  FeedBook book_{folder_ / "log", false};
  std::size_t source_ = book_.AddSource("here");
  FeedMemory::Time now_{seconds(1'000'000)};
  std::optional<FeedMemory> memory_;
  std::optional<Delivery> delivery_;
};

constexpr const char* kLong = "A_WFUS53KDMX161430_C_KWIN_20260516143012_123456-1-TORDMXIA.TXT";

TEST_F(DeliveryTest, DropsWhatComesAgainAndLetsCorrectionsPass) {
  EXPECT_EQ(Take(kLong, "one"), FeedOutcome::kDelivered);
  now_ += seconds(599);
  EXPECT_EQ(Take("TORDMXIA.TXT", "one"), FeedOutcome::kRepeat);
  EXPECT_EQ(Take(kLong, "corrected"), FeedOutcome::kDelivered);
  EXPECT_EQ(Take("AFDDMXIA.TXT", "one"), FeedOutcome::kDelivered) << "another name";
  EXPECT_EQ(In("in"), (Names{"TORDMXIA.TXT=one", "TORDMXIA.TXT.1=corrected", "AFDDMXIA.TXT=one"}))
      << "what lies there is not overwritten";
  Begin();
  EXPECT_EQ(Take(kLong, "one"), FeedOutcome::kRepeat) << "over a restart";
  now_ += seconds(1);
  EXPECT_EQ(Take(kLong, "one"), FeedOutcome::kDelivered) << "ten minutes after it was delivered";
  const auto figures = book_.Figures();
  EXPECT_EQ(figures.delivered, 4);
  EXPECT_EQ(figures.repeats, 2);
  EXPECT_NE(ReadWhole(folder_ / "log")
                .find("here: TORDMXIA.TXT from " + std::string(kLong) + ", urgency 1\n"),
            std::string::npos);
}

TEST_F(DeliveryTest, KeepsUnknownNamesApart) {
  for (const auto* given : {"A_WFUS53KDMX", "../../in/ESCAPE.TXT", "..", "x\n.y"})
    EXPECT_EQ(Take(given, "text"), FeedOutcome::kUnknown) << given;
  EXPECT_EQ(Take("A_WFUS53KDMX", "other"), FeedOutcome::kUnknown);
  EXPECT_EQ(In("in"), Names{});
  EXPECT_EQ(In("unknown"), (Names{"A_WFUS53KDMX=text", "A_WFUS53KDMX.1=other", "ESCAPE.TXT=text",
                                  "unnamed=text", "x_.y=text"}));
}

TEST_F(DeliveryTest, RefusesWhileTheFolderIsMissingAndTakesAgainAfterwards) {
  fs::rename(folder_ / "in", folder_ / "gone");
  const Mark mark{"/tree/file", "7"};
  EXPECT_THROW(Take(kLong, "one", mark, true), Failure);
  EXPECT_NE(book_.Figures().trouble, "");
  EXPECT_FALSE(delivery_->IsTaken(mark));
  fs::rename(folder_ / "gone", folder_ / "in");
  EXPECT_EQ(Take(kLong, "one", mark, true), FeedOutcome::kDelivered);
  EXPECT_EQ(book_.Figures().trouble, "");
  EXPECT_TRUE(delivery_->IsTaken(mark));
  EXPECT_FALSE(delivery_->IsTaken({"/tree/file", "8"})) << "it was written again";
  EXPECT_EQ(In("in"), Names{"TORDMXIA.TXT=one"});
  EXPECT_EQ(In("outbox").size(), 1U);
}

TEST_F(DeliveryTest, FinishesWhatAnEndedProgramHadBegun) {
  const auto path = folder_ / "in";
  const auto recorded = WriteHidden(path, "RECORDED.TXT", "whole");
  memory_->Record("RECORDED.TXT", "hash", {}, now_, {recorded});
  WriteHidden(path, "LOST.TXT", "its source still has it");
  Begin();
  EXPECT_EQ(In("in"), Names{"RECORDED.TXT=whole"});
  fs::remove(path + "/RECORDED.TXT");  // the station took it
  Begin();
  EXPECT_EQ(In("in"), Names{}) << "placed once";
}

}  // namespace
}  // namespace ostrel
