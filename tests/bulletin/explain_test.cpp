#include "programs/feed/explain.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <set>

#include "base/failure.h"
#include "tests/bulletin/reading.h"

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

TEST(Explanation, HasTheSameKeysAlways) {
  EXPECT_EQ(ExplainAsJson("a\"\xFF", ReadBulletin("", kNow)),
            "{\"name\":\"a\\\"\\ufffd\",\"heading\":null,\"awips\":null,\"kind\":null,"
            "\"source\":\"bulletin\","
            "\"segments\":[]}");
  EXPECT_EQ(ExplainAsJson(
                "<b>",
                ReadBulletin(
                    "<alert xmlns=\"urn:oasis:names:tc:emergency:cap:1.2\"><msgType>Alert</msgType>"
                    "<info/></alert>",
                    kNow)),
            "{\"name\":\"<b>\",\"heading\":null,\"awips\":null,\"kind\":null,\"source\":\"cap\","
            "\"segments\":[{"
            "\"areas\":[],\"until\":null,\"events\":[{\"action\":\"NEW\",\"office\":null,"
            "\"phenomenon\":null,"
            "\"significance\":null,\"number\":null,\"begins\":null,\"ends\":null,\"test\":null}],"
            "\"polygon\":null}]}");
  const std::string outline = "LAT...LON 4206 9336 4224 9336 4229 9279\n";
  EXPECT_NE(ExplainAsJson("A", ReadBulletin("WFUS53 KDMX 192054\n" + outline + outline, kNow))
                .find("\"polygon\":null"),
            std::string::npos)
      << "of two nobody knows which";
  EXPECT_NE(ExplainAsJson("A", ReadBulletin("WFUS53 KDMX 192054\nIAC001-192145-\n/O.NEW.KDMX.TO.W."
                                            "0043.180719T2054Z-180799T9945Z/\n",
                                            kNow))
                .find("\"events\":[]"),
            std::string::npos)
      << "an end that is none is not until further notice";
}

TEST(Explanation, IsToldInSentences) {
  const std::string text =
      "WFUS53 KDMX 192054\nTORDMX\n...BE READY...\nIAC127-IAZ000-PKZ011-192145-\n"
      "/T.NEW.KDMX.TO.W.0043.180719T2054Z-180719T2145Z/\n/"
      "O.EXT.KDMX.FL.W.0002.000000T0000Z-180720T0000Z/\n"
      "/HOPC1.1.ER.180719T1355Z.180719T2100Z.000000T0000Z.OO/\n...TORNADO...\n"
      "LAT...LON 4206 9336 4224 9336 4229 9279\nTIME...MOT...LOC 2054Z 269DEG 22KT 4215 "
      "9326\nHAIL...1.00IN\n"
      "$$\nLAT...LON 4206\n";
  EXPECT_EQ(
      ExplainAsText("A\n.TXT", ReadBulletin(text, kNow), Areas::Built()),
      "A\\x0A.TXT: Tornado Warning (TORDMX), WFUS53 KDMX 192054, issued 2018-07-19 20:54 UTC.\n"
      "  \"BE READY\"\n"
      "  Until 2018-07-19 21:45 UTC, for Marshall (IAC127), all of IA (IAZ000), PKZ011.\n"
      "    Test: Tornado Warning 43 of Des Moines IA, new, from 2018-07-19 20:54 UTC, until "
      "2018-07-19 21:45 UTC.\n"
      "    Flood Warning 2 of Des Moines IA, with another time, until 2018-07-20 00:00 UTC, crest "
      "2018-07-19 21:00 "
      "UTC.\n"
      "    \"TORNADO\"\n"
      "    Within 42.06 -93.36, 42.24 -93.36, 42.29 -92.79.\n"
      "    From 269 degrees at 22 knots, at 20:54 UTC at 42.15 -93.26.\n"
      "    Hail: 1.00IN\n"
      "  Something in it could not be read for certain.\n");
  EXPECT_EQ(ExplainAsText("A", ReadBulletin("", kNow), Areas::Built()), "A: bulletin.\n");
  EXPECT_EQ(
      ExplainAsText(
          "A",
          ReadBulletin(
              "<alert xmlns=\"urn:oasis:names:tc:emergency:cap:1.2\"><msgType>Alert</msgType>"
              "<info><event>Flood</event><urgency>Future</urgency><severity>Minor</severity>"
              "<certainty>Likely</certainty><instruction>Go up.</instruction><area><circle>42,-93 "
              "5</circle></area></info></alert>",
              kNow),
          Areas::Built()),
      "A: CAP message.\n"
      "  Until a time not known, for areas not known.\n"
      "    The event of the message, new.\n"
      "    Flood: urgency Future, severity Minor, certainty Likely.\n"
      "    Go up.\n"
      "    Within 5 km of 42.00 -93.00.\n");
}

TEST(Explanation, TakesTheTimeWhenFilesCame) {
  EXPECT_EQ(Told(ReadNow("2026-05-16T15:00Z")), "2026-05-16 15:00");
  EXPECT_EQ(Told(ReadNow("2026-05-16T15:00:30Z")), "2026-05-16 15:00");
  for (const auto* wrong : {"2026-05-16", "2026-05-16T25:00Z", "today", ""})
    EXPECT_THROW(ReadNow(wrong), Failure) << wrong;
}

}  // namespace
}  // namespace ostrel
