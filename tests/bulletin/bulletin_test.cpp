#include "bulletin/bulletin.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

#include "tests/bulletin/reading.h"

namespace ostrel {
namespace {

const UtcTime kNow = At(2026, 11, 26, 18);

const std::string kWarning =
    "\x01\r\r\n615 \r\r\nWFUS53 KDMX 192054\r\r\nTORDMX\r\r\nIAC127-169-192145-\r\r\n"
    "/O.NEW.KDMX.TO.W.0043.180719T2054Z-180719T2145Z/\r\r\n\r\r\n"
    "BULLETIN - EAS ACTIVATION REQUESTED\r\r\nTornado Warning\r\r\n"
    "National Weather Service Des Moines IA\r\r\n354 PM CDT THU JUL 19 2018\r\r\n\r\r\n"
    "* Tornado Warning for...\r\r\n  Marshall County in central Iowa...\r\r\n\r\r\n"
    "  SOURCE...Radar indicated\r\r\n           rotation.\r\r\n\r\r\n&&\r\r\n\r\r\n"
    "LAT...LON 4206 9336 4224 9336 4229 9279 4195 9278\r\r\n"
    "TIME...MOT...LOC 2054Z 269DEG 22KT 4215 9326\r\r\n\r\r\n"
    "TORNADO...RADAR INDICATED\r\r\nHAIL...<.75IN\r\r\n\r\r\n$$\r\r\n\r\r\nSMALL\r\r\n\x03";

/// A text with these lines below a heading of the 15th at 15:00 and a time line of May 2026.
std::string Text(const std::string& lines) {
  return "WWUS83 KDMX 151500\nSPSDMX\n1000 AM CDT FRI MAY 15 2026\n" + lines;
}

TEST(Bulletin, TellsAreasEventsPlacesAndWords) {
  const auto read = ReadBulletin(kWarning, kNow);
  EXPECT_EQ(read.heading + "|" + read.awips + "|" + read.kind, "WFUS53 KDMX 192054|TORDMX|TOR");
  EXPECT_EQ(Told(read.issued), "2018-07-19 20:54");
  EXPECT_EQ(Told(read),
            "IAC127 IAC169; 2018-07-19 21:45; NEW KDMX TO.W 43 2018-07-19 20:54 2018-07-19 21:45; "
            "42.06,-93.36 42.24,-93.36 42.29,-92.79 41.95,-92.78\n");
  const auto& segment = read.segments.front();
  EXPECT_EQ(segment.motion.value().knots, 22);
  ASSERT_EQ(segment.tags.size(), 3U);
  EXPECT_EQ(segment.tags[0].value, "Radar indicated rotation.");
  EXPECT_EQ(segment.tags[2].name, "HAIL");
  EXPECT_FALSE(read.isDamaged);
}

TEST(Bulletin, KeepsApartWhatSegmentsSay) {
  const std::string flood = "/O.CON.KDMX.FL.W.0001.000000T0000Z-260517T1200Z/\n";
  const std::string wind = "/O.NEW.KDMX.WI.Y.0002.260515T1800Z-260516T0000Z/\n";
  const std::string heat = "/O.CAN.KDMX.HT.Y.0003.000000T0000Z-260516T0000Z/\n";
  const std::string outline = "LAT...LON 4206 9336 4224 9336 4229 9279\n";
  const std::string floodTold = "CON KDMX FL.W 1 - 2026-05-17 12:00";
  const std::string windTold = "NEW KDMX WI.Y 2 2026-05-15 18:00 2026-05-16 00:00";
  const std::string heatTold = "CAN KDMX HT.Y 3 - 2026-05-16 00:00";
  const std::string told = "42.06,-93.36 42.24,-93.36 42.29,-92.79";
  // The lines, what they tell, and whether something was damaged.
  const struct {
    std::string lines, told;
    bool isDamaged;
  } cases[] = {
      {"IAC153-160300-\n" + flood +
           "/HOPC1.1.ER.260511T1355Z.260512T2000Z.000000T0000Z.OO/\n\nTEXT\n" + outline +
           "$$\n\nIAC001-003-161200-\n\n" + wind + heat + "\nTEXT\n$$\nLG",
       "IAC153; 2026-05-16 03:00; " + floodTold + "; " + told + "\n" +
           "IAC001 IAC003; 2026-05-16 12:00; " + windTold + "; " + heatTold + "\n",
       false},
      // Without "$$" a new area line begins a new segment.
      {"IAC153-160300-\n" + flood + "TEXT\nIAC001-161200-\n" + wind + outline,
       "IAC153; 2026-05-16 03:00; " + floodTold + "\nIAC001; 2026-05-16 12:00; " + windTold + "; " +
           told + "\n",
       false},
      // Whose an event is that does not stand below its areas, nobody knows.
      {"IAC153-160300-\n" + flood + "TEXT\n" + wind + heat,
       "IAC153; 2026-05-16 03:00; " + floodTold + "\n; -; " + windTold + "; " + heatTold + "\n",
       false},
      {"IAC153-160300-\n" + flood + "TEXT\nIAC0X1-161200-\n" + wind + "TEXT\n" + outline,
       "IAC153; 2026-05-16 03:00; " + floodTold + "\n; -; " + windTold + "; " + told + "\n", true},
      {"IAC153-160300-\n" + flood + wind + "$$\n" + heat,
       "IAC153; 2026-05-16 03:00; " + floodTold + "; " + windTold + "\n; -; " + heatTold + "\n",
       false},
      {"IAC153-160300-\n/O.NEW.KDMX.WI.Y.002.260515T1800Z-260516T0000Z/\n",
       "IAC153; 2026-05-16 03:00\n", true},
      {"IAC153-160300-\n" + flood.substr(0, flood.size() - 1) + "/O.NEW\n",
       "IAC153; 2026-05-16 03:00; " + floodTold + "\n", true},
      {"IAC153-325959-\n", "IAC153; -\n", false},
      {outline, "; -; " + told + "\n", false},
      {"TEXT\n\n$$\n", "", false},
  };
  for (const auto& row : cases) {
    const auto read = ReadBulletin(Text(row.lines), kNow);
    EXPECT_EQ(Told(read), row.told) << row.lines;
    EXPECT_EQ(read.isDamaged, row.isDamaged) << row.lines;
  }
}

TEST(Bulletin, TakesMonthAndYearFromWhatItHas) {
  const std::string area = "IAC153-160300-\n";
  const std::string event = "/O.NEW.KDMX.WI.Y.0002.240515T1800Z-240516T0000Z/\n";
  const std::pair<std::string, std::string> cases[] = {
      {Text(area), "2026-05-16 03:00"},
      {"WWUS83 KDMX 151500\n" + area + event, "2024-05-16 03:00"},
      {area + event, "2024-05-16 03:00"},
      {area + "1000 AM CDT FRI MAY 15 2026\n", "2026-05-16 03:00"},
      {"WWUS83 KDMX 151500\n" + area, "2026-11-16 03:00"},
      {"WWUS83 KDMX 151500\nSPSDMX\n1000 AM CDT MAY 32 2025\n" + area, "-"},
      {Text("IAC153-300300-\n"), "2026-05-30 03:00"},
      {Text("IAC153-140300-\n"), "2026-05-14 03:00"},  // past when it came
      {Text("IAC153-310300-\n"), "-"},                 // 15 days and a half
      {"WWUS83 KDMX 311500\nSPSDMX\n900 AM CST WED DEC 31 2025\nIAC153-010300-\n",
       "2026-01-01 03:00"},
  };
  for (const auto& [text, until] : cases)
    EXPECT_EQ(Told(ReadBulletin(text, kNow).segments.at(0).until), until) << text;
}

TEST(Bulletin, SurvivesWhatNobodyWrites) {
  std::string corners;
  for (int i = 0; i < 10000; ++i) corners += " 4206 9336";
  const auto polygon = [](const std::string& text) {
    return Told(ReadBulletin(Text("LAT...LON" + text), kNow));
  };
  EXPECT_EQ(polygon(" 4206 9336"), "");
  EXPECT_EQ(polygon(corners), "");
  EXPECT_EQ(polygon(" 4200 9300 4300 9200 4300 9300 4200 9200"),
            "; -; 42.00,-93.00 43.00,-92.00 43.00,-93.00 42.00,-92.00\n")
      << "a crossing one, as it stands";
  EXPECT_EQ(Told(ReadBulletin(
                Text("QQC999-160300-\n/O.NEW.KDMX.WI.Y.0002.260515T1800Z-270515T0000Z/"), kNow)),
            "QQC999; 2026-05-16 03:00; NEW KDMX WI.Y 2 2026-05-15 18:00 2027-05-15 00:00\n");

  auto large = kWarning;
  large.resize(std::size_t{64} << 20, '\n');
  const auto read = ReadBulletin(large, kNow);
  EXPECT_EQ(read.awips, "TORDMX");
  EXPECT_TRUE(read.segments.empty() && read.isDamaged);

  // Were one of these read more than once for each of its lines, the test would not end.
  for (const auto* line :
       {"IAC001-\n", "IAC001>900-\n", "IAC001-151500-\n", "...A\n", "SOURCE...A\n",
        "LAT...LON 4206\n", "4206 9336\n", "/O.NEW.KDMX.TO.W.0043.180719T2054Z-180719T2145Z/\n",
        "354 PM CDT JUL 32 2018\n", "\r", "\n", "$$"}) {
    std::string text = "IAC001-151500-\n";
    while (text.size() < kLongestBulletin - 100) text += line;
    EXPECT_LE(ReadBulletin(text, kNow).segments.size(), 1000U) << line;
  }
}

/// What holds of every bulletin, whatever it was made of.
void ExpectSound(const Bulletin& bulletin, const std::string& text) {
  for (const auto& segment : bulletin.segments) {
    EXPECT_TRUE(std::is_sorted(segment.areas.begin(), segment.areas.end())) << text;
    for (const auto& area : segment.areas) EXPECT_EQ(area.size(), 6U) << text;
    for (const auto& polygon : segment.polygons) EXPECT_GE(polygon.size(), 3U) << text;
    if (segment.until && bulletin.issued) {
      EXPECT_LE(std::chrono::abs(*segment.until - *bulletin.issued), std::chrono::days(15)) << text;
    }
  }
}

TEST(Bulletin, SurvivesNoise) {
  std::mt19937 random(1);
  const auto below = [&](std::size_t end) { return random() % end; };
  const auto lines = Text(
      "IAC153-IAZ048-050>052-160300-\n/O.NEW.KDMX.WI.Y.0002.260515T1800Z-260516T0000Z/\n"
      "/HOPC1.1.ER.260511T1355Z.260512T2000Z.000000T0000Z.OO/\n...WIND...\nLAT...LON 4206 9336 "
      "4224 "
      "9336 4229 9279\nTIME...MOT...LOC 2054Z 269DEG 22KT 4215 9326\nHAIL...1.00IN\n$$\n");
  const std::string signs = "\r\n\n -->./$09AZaz\x01\x03\x80\xFF";
  for (int i = 0; i < 100000; ++i) {
    auto text = lines;
    if (i % 8 == 0) {
      text.clear();
      for (auto size = below(300); size > 0; --size) text += signs[below(signs.size())];
    }
    for (auto changes = below(6); changes > 0 && !text.empty(); --changes) {
      const auto at = below(text.size());
      switch (below(4)) {
        case 0:
          text[at] = signs[below(signs.size())];
          break;
        case 1:
          text.erase(at, below(20));
          break;
        case 2:
          text.insert(at, text.substr(below(text.size()), below(60)));
          break;
        default:
          text[at] = static_cast<char>(below(256));
          break;
      }
    }
    ExpectSound(ReadBulletin(text, kNow), text);
    if (HasFailure()) return;
  }
}

}  // namespace
}  // namespace ostrel
