#include "programs/feed/explain.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <set>

#include "base/failure.h"
#include "tests/bulletin/reading.h"
#include "tests/support/rows.h"

namespace ostrel {
namespace {

namespace fs = std::filesystem;

const UtcTime kNow = At(2026, 11, 26, 18);

std::string Content(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(Explanation, OfTheSampleProductsIsWhatTheySay) {
  // Written by another reading of the same texts; where that one guesses, nothing stands here.
  std::ifstream file(OSTREL_SOURCE_DIR "/tests/bulletin/samples.jsonl");
  const fs::path folder(OSTREL_SOURCE_DIR "/samples/products");
  std::set<fs::path> paths;
  for (const auto& entry : fs::directory_iterator(folder))
    if (entry.path().extension() == ".TXT") paths.insert(entry.path());
  for (const auto& path : paths) {
    std::string line;
    std::getline(file, line);
    EXPECT_EQ(ExplainAsJson(path.filename().string(), ReadBulletin(Content(path), kNow)), line);
  }
}

/// The bulletin of a row, named "A\n.TXT".
std::string InJson(const std::string& text) {
  return ExplainAsJson("A\n.TXT", ReadBulletin(text, kNow));
}
std::string InSentences(const std::string& text) {
  return ExplainAsText("A\n.TXT", ReadBulletin(text, kNow), Areas::Built());
}

TEST(Explanation, IsOfEachRowWhatItSays) {
  ExpectRows("bulletin/explained.txt", {{"json", InJson}, {"sentences", InSentences}});
  EXPECT_EQ(ExplainAsJson("a\"\xFF<b>", ReadBulletin("", kNow)).substr(0, 28),
            "{\"name\":\"a\\\"\\ufffd<b>\",\"head");
}

TEST(Explanation, TakesTheTimeWhenFilesCame) {
  EXPECT_EQ(Told(ReadNow("2026-05-16T15:00Z")), "2026-05-16 15:00");
  EXPECT_EQ(Told(ReadNow("2026-05-16T15:00:30Z")), "2026-05-16 15:00");
  for (const auto* wrong : {"2026-05-16", "2026-05-16T25:00Z", "today", ""})
    EXPECT_THROW(ReadNow(wrong), Failure) << wrong;
}

}  // namespace
}  // namespace ostrel
