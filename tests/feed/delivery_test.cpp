#include "feed/delivery.h"

#include <cerrno>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <set>

#include "base/failure.h"
#include "feed/placing.h"
#include "platform/linux/sqlite_database.h"
#include "platform/linux/temporary_folder.h"
#include "tests/support/call_shim/call_shim.h"
#include "tests/support/failure_of.h"

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
                                      .repeats = seconds(600),
                                      .largest = 1000},
                      NameRules({}));
    delivery_->GoOn();
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
  memory_->Record("RECORDED.TXT", "hash", {}, now_, {recorded->placement()});
  recorded->Release();
  WriteHidden(path, "LOST.TXT", "its source still has it")->Release();
  Begin();
  EXPECT_EQ(In("in"), Names{"RECORDED.TXT=whole"});
  fs::remove(path + "/RECORDED.TXT");  // the station took it
  Begin();
  EXPECT_EQ(In("in"), Names{}) << "placed once";
}

TEST_F(DeliveryTest, RemembersFilesAndMessagesForAMonth) {
  std::ofstream(folder_ / "there") << "x";
  const Mark message{"mqtt:1", ""}, repeat{"mqtt:2", ""}, there{folder_ / "there", "7"},
      gone{folder_ / "gone", "7"}, away{folder_ / "share/file", "7"};
  Take(kLong, "one", message);
  EXPECT_EQ(Take(kLong, "one", repeat), FeedOutcome::kRepeat);
  for (const auto& mark : {there, gone, away}) delivery_->Leave(mark);
  now_ += std::chrono::hours(2);
  Take("ANY.TXT", "what old is forgotten at");
  EXPECT_TRUE(delivery_->IsTaken(message));
  EXPECT_TRUE(delivery_->IsTaken(repeat)) << "it may come again itself";
  now_ += std::chrono::hours(24 * 31);
  Take("ANY.TXT", "later");
  EXPECT_FALSE(delivery_->IsTaken(message));
  EXPECT_FALSE(delivery_->IsTaken(gone));
  EXPECT_TRUE(delivery_->IsTaken(there));
  EXPECT_TRUE(delivery_->IsTaken(away)) << "its share may be away";
}

TEST_F(DeliveryTest, IsNotLedByAClockThatWasWrong) {
  now_ += std::chrono::hours(24 * 365);
  EXPECT_EQ(Take(kLong, "one"), FeedOutcome::kDelivered);
  now_ -= std::chrono::hours(24 * 365);
  EXPECT_EQ(Take(kLong, "one"), FeedOutcome::kDelivered) << "it came in another year";
}

TEST_F(DeliveryTest, LeavesNothingHiddenWhenItCannotRemember) {
  SqliteDatabase other(folder_ / "memory.db", "other", DatabaseUse::kReadAndWrite);
  other.Execute("DROP TABLE placement");
  EXPECT_THROW(Take(kLong, "one", {}, true), Failure);
  EXPECT_EQ(In("in"), Names{});
  EXPECT_EQ(In("outbox"), Names{});
}

TEST_F(DeliveryTest, KeepsApartWhatIsTooLarge) {
  const std::string most(1000, 'x'), more(1001, 'x');
  EXPECT_EQ(Take(kLong, most), FeedOutcome::kDelivered);
  const Mark mark{"mqtt:1", ""};
  EXPECT_EQ(Take(kLong, more, mark, true), FeedOutcome::kTooLarge);
  EXPECT_TRUE(delivery_->IsTaken(mark));
  EXPECT_EQ(In("in"), Names{"TORDMXIA.TXT=" + most});
  EXPECT_EQ(In("outbox"), Names{});
  EXPECT_EQ(In("unknown"), Names{"TORDMXIA.TXT=" + more});
  EXPECT_EQ(Take("TORDMXIA.TXT", more), FeedOutcome::kRepeat);
  EXPECT_EQ(book_.Figures().tooLarge, 1);
  EXPECT_NE(ReadWhole(folder_ / "log").find("is too large for the station; kept as TORDMXIA.TXT"),
            std::string::npos);

  auto unfinished = delivery_->BeginApart("PART.TXT", 200 << 20);
  unfinished->Write("half");
  EXPECT_EQ(FailureOf([&] { delivery_->BeginApart("MORE.TXT", 100 << 20); }),
            failure_number::kDiskFull)
      << "what is under way has its bound as well";
  unfinished.reset();
  EXPECT_EQ(In("unknown").size(), 1U);
  EXPECT_NO_THROW(delivery_->BeginApart("MORE.TXT", 100 << 20));
  EXPECT_EQ(FailureOf([&] { delivery_->BeginApart("NEVER.TXT", 300 << 20); }),
            failure_number::kOverflow);
}

TEST_F(DeliveryTest, LosesNothingWhereTheDiskGoesBetweenTwoSteps) {
  const auto isHidden = [](const auto& name) { return name.starts_with(".feed-"); };
  // The name is given last, and the folder goes right before it: another one stands there then.
  call_shim::Watch([&](std::string_view call, std::string_view) {
    if (call != "renameat2" || fs::exists(folder_ / "away")) return 0;
    fs::rename(folder_ / "in", folder_ / "away");
    return EIO;
  });
  EXPECT_EQ(Take(kLong, "one"), FeedOutcome::kDelivered) << "it is recorded";
  EXPECT_NE(book_.Figures().trouble, "");
  call_shim::Watch({});
  fs::create_directory(folder_ / "in");
  delivery_->GoOn();
  EXPECT_EQ(In("in"), Names{"TORDMXIA.TXT=one"});
  EXPECT_EQ(book_.Figures().trouble, "");
  EXPECT_TRUE(isHidden(fs::directory_iterator(folder_ / "away")->path().filename().string()));
}

TEST_F(DeliveryTest, FlushesContentBeforeItsNameAndTheFolderAfterIt) {
  std::string calls;
  call_shim::Watch([&](std::string_view call, std::string_view path) {
    if (call == "fdatasync" || call == "fsync") calls += "flush ";
    if (call == "renameat2" && path.find("/in/") != path.npos) calls += "place ";
    return 0;
  });
  Take(kLong, "one");
  call_shim::Watch({});
  EXPECT_TRUE(calls.starts_with("flush ")) << calls;
  EXPECT_TRUE(calls.ends_with("flush place flush ")) << calls;
}

TEST_F(DeliveryTest, WhatARulePassesOverIsRememberedAndCounted) {
  const AreaRules rules({{.codes = {"IAC*"}}, {.isTaken = false}}, Areas::Built());
  delivery_.emplace(Delivery::Parts{.memory = *memory_,
                                    .book = book_,
                                    .now = [this] { return now_; },
                                    .ingestFolder = [this] { return folder_ / "in"; },
                                    .unknownFolder = folder_ / "unknown",
                                    .outbox = folder_ / "outbox",
                                    .repeats = seconds(600),
                                    .areas = &rules},
                    NameRules({}));
  EXPECT_EQ(Take("TORA.TXT", "IAC001-192145-\n"), FeedOutcome::kDelivered);
  EXPECT_EQ(Take("TORB.TXT", "ILC001-192145-\n", {}, true), FeedOutcome::kPassedOver);
  EXPECT_EQ(Take("TORB.TXT", "ILC001-192145-\n"), FeedOutcome::kRepeat);
  EXPECT_EQ(In("in"), Names{"TORA.TXT=IAC001-192145-\n"});
  EXPECT_EQ(In("outbox"), Names{});
  EXPECT_EQ(book_.Figures().passedOver.at("the rest"), 1);
}

}  // namespace
}  // namespace ostrel
