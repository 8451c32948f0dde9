#include "bulletin/lines.h"

#include <gtest/gtest.h>

#include "bulletin/area_line.h"
#include "bulletin/event_code.h"
#include "bulletin/heading.h"
#include "bulletin/position.h"
#include "bulletin/wording.h"
#include "tests/bulletin/reading.h"

namespace ostrel {
namespace {

using std::string_literals::operator""s;

TEST(BulletinLines, EndWithCarriageReturnsAndFeedsInEveryMix) {
  const std::pair<std::string, std::vector<std::string_view>> cases[] = {
      {"\x01\r\r\n000 \r\r\nA\r\r\n\r\r\nB\r\r\n\x03", {"", "000", "A", "", "B", ""}},
      {"A\nB", {"A", "B"}},
      {"A\rB\r\n", {"A", "B"}},
      {"A\n\rB", {"A", "", "B"}},
      {"\x1e  A B\t \0\n"s, {"A B"}},
      {"", {}},
  };
  for (const auto& [text, lines] : cases) EXPECT_EQ(BulletinLines(text), lines) << text;
}

TEST(BulletinHeading, IsReadWithTheIdentifierBelowIt) {
  const struct {
    std::string text, heading, identifier, kind;
  } cases[] = {
      {"\x01\r\r\n000 \r\r\nWFUS53 KDMX 192054\r\r\nTORDMX\r\r\n", "WFUS53 KDMX 192054", "TORDMX",
       "TOR"},
      {"WWUS41 KOKX 031013 CCA\nWSWOKX\n", "WWUS41 KOKX 031013 CCA", "WSWOKX", "WSW"},
      {"521\nWFUS53 KDMX 192054\n\nTORDMX", "WFUS53 KDMX 192054", "TORDMX", "TOR"},
      {"ZCZC DMXTORDMX ALL\nTTAA00 KDMX 192054\nTORDMX", "TTAA00 KDMX 192054", "TORDMX", "TOR"},
      {"SRUS83 KARX 071410\nRR8ARX", "SRUS83 KARX 071410", "RR8ARX", "RR8"},
      {"WOUS43 KDMX 242023\nCAEIA", "WOUS43 KDMX 242023", "CAEIA", "CAE"},
      {"WWUS20 KWNS 011802\nSEL5  ", "WWUS20 KWNS 011802", "SEL5", "SEL"},
      // An unknown kind is one with all six letters; a shorter one may be anything.
      {"NOUS43 KDMX 242023\nXYZABC", "NOUS43 KDMX 242023", "XYZABC", "XYZ"},
      {"NOUS43 KDMX 242023\nXYZAB", "NOUS43 KDMX 242023", "", ""},
      {"SAUS70 KWBC 200400\nMETAR\nKMWN 200350Z", "SAUS70 KWBC 200400", "", ""},
      {"FTUK42 EGRR 011100\nTAF\nEGDG", "FTUK42 EGRR 011100", "", ""},
      {"FAUS22 KZBW 191828\nZBW2 CWA 191828", "FAUS22 KZBW 191828", "", ""},
      {"WFUS53 KDMX 192054\nUPDATE\n", "WFUS53 KDMX 192054", "", ""},
      {"WFUS53 KDMX 192054", "WFUS53 KDMX 192054", "", ""},
      // Without a heading only a known kind is certain, and only at the top.
      {"000\nTORDMX\n", "", "TORDMX", "TOR"},
      {"XYZABC\n", "", "", ""},
      {"TEXT\nTORDMX\n", "", "", ""},
      {"WFUS5 KDMX 192054\nWFUS53 KDMX 19205\nWFUS53 KDMX 192054 C\nWFUS53, KDMX 192054", "", "",
       ""},
      {"", "", "", ""},
  };
  for (const auto& row : cases) {
    const auto read = ReadHeading(BulletinLines(row.text));
    EXPECT_EQ(read.line, row.heading) << row.text;
    EXPECT_EQ(read.identifier, row.identifier) << row.text;
    EXPECT_EQ(read.kind, row.kind) << row.text;
  }
}

TEST(AreaLine, IsWholeOrTellsNothing) {
  // The text, its areas, day and time until, and the lines that it takes; "?" for a damaged one.
  const struct {
    std::string text, areas, until;
    std::size_t lines;
  } cases[] = {
      {"IAC153-IAZ048-050>052-151500-", "IAC153 IAZ048 IAZ050 IAZ051 IAZ052", "151500", 1},
      {"LAC011-019-115-TXC351-231545-\n/O.NEW", "LAC011 LAC019 LAC115 TXC351", "231545", 1},
      {"IAZ004>006-   \r\r\n081-\r\r\n\r\r\n086>087-230515-",
       "IAZ004 IAZ005 IAZ006 IAZ081 IAZ086 IAZ087", "230515", 4},
      {"IAZ001>\n003-230515-", "IAZ001 IAZ002 IAZ003", "230515", 2},
      {"IAZ001>IAZ003-230515-", "IAZ001 IAZ002 IAZ003", "230515", 1},
      {"AMZ630-GMZ031-LEZ000-240215-", "AMZ630 GMZ031 LEZ000", "240215", 1},
      {"IAZALL-NEC000-250130-", "IAZALL NEC000", "250130", 1},
      {"IAC003-001-IAC003-250130-", "IAC001 IAC003", "250130", 1},
      {"XXC001-250130-", "XXC001", "250130", 1},  // a state of its own, shown as it is
      {"IAC153-151500", "IAC153", "151500", 1},
      {"IAC153-321500-", "IAC153", "", 1},
      {"IAC153-152460-", "IAC153", "", 1},
      {"IAC153-001500-", "IAC153", "", 1},
      {"IAC153-1515-", "?", "", 1},  // a digit is lost
      {"IAC153-IAZ04-151500-", "?", "", 1},
      {"IAC153-IA4048-151500-", "?", "", 1},
      {"IAC153-151500-IAC155-", "?", "", 1},
      {"IAZ052>050-151500-", "?", "", 1},
      {"IAZ001>003>005-151500-", "?", "", 1},
      {"IAZALL>005-151500-", "?", "", 1},
      {"IAZ001>IAC003-151500-", "?", "", 1},
      {"IAZ001>151500-", "?", "", 1},
      {"IAC153--151500-", "?", "", 1},
      {"IAC153-\n\n\n155-151500-", "?", "", 2},  // its end is missing
      {"IAC153-155-\nPOLK-STORY-", "?", "", 1},
      {"IAC153-155-", "?", "", 1},
      {"IAC153 -155-151500-", "none", "", 0},
      {"KYZ077    1.9/  2.1/  2.5/", "none", "", 0},
      {"iac153-151500-", "none", "", 0},
      {"IAB153-151500-", "none", "", 0},
      {"-----------------", "none", "", 0},
      {"", "none", "", 0},
  };
  for (const auto& row : cases) {
    const auto read = ReadAreaLine(BulletinLines(row.text));
    const auto& until = read ? read->until : std::nullopt;
    EXPECT_EQ(!read ? "none" : !read->isWhole ? "?" : Told(read->areas), row.areas) << row.text;
    EXPECT_EQ(until ? fmt::format("{:02}{:02}{:02}", until->day, until->hour, until->minute) : "",
              row.until)
        << row.text;
    EXPECT_EQ(read ? read->lines : 0, row.lines) << row.text;
  }
}

TEST(EventCode, TellsActionEventAndTimes) {
  const std::pair<std::string, std::string> cases[] = {
      {"/O.NEW.KDMX.TO.W.0043.180719T2054Z-180719T2145Z/",
       "NEW KDMX TO.W 43 2018-07-19 20:54 2018-07-19 21:45"},
      {"/O.CON.KGRB.FL.W.0001.000000T0000Z-000000T0000Z/", "CON KGRB FL.W 1 - -"},
      {"/T.NEW.KILX.TO.W.0001.150303T1602Z-150303T1615Z/",
       "NEW KILX TO.W 1 2015-03-03 16:02 2015-03-03 16:15 test"},
      {"/X.NEW.KIWX.FL.A.0001.070115T1614Z-000000T0000Z/", "NEW KIWX FL.A 1 2007-01-15 16:14 -"},
      {"/O.NEW.KDMX.QQ.W.9999.180719T2054Z-180719T2145Z/",
       "NEW KDMX QQ.W 9999 2018-07-19 20:54 2018-07-19 21:45"},
      {"/O.NEW.KDMX.TO.W.0043.260231T2054Z-260231T2145Z/", "NEW KDMX TO.W 43 - - damaged"},
      {"/O.NEW.KDMX.TO.W.0043.000000T2054Z-260228T2400Z/", "NEW KDMX TO.W 43 - - damaged"},
      {"/O.NWE.KDMX.TO.W.0043.180719T2054Z-180719T2145Z/", ""},
      {"/O.NEW.KDMX.TO.Q.0043.180719T2054Z-180719T2145Z/", ""},
      {"/Q.NEW.KDMX.TO.W.0043.180719T2054Z-180719T2145Z/", ""},
      {"/O.NEW.KDM.TO.W.0043.180719T2054Z-180719T2145Z/", ""},
      {"/O.NEW.KDMX.TO.W.043.180719T2054Z-180719T2145Z/", ""},
      {"/O.NEW.KDMX.T0.W.0043.180719T2054Z-180719T2145Z/", ""},
      {"/O.NEW.KDMX.TO.W.0043.180719T2054Z-180719T2145", ""},
      {"", ""},
  };
  for (const auto& [text, told] : cases) {
    std::string_view rest = text;
    const auto event = TakeEventCode(rest);
    EXPECT_EQ(event ? Told(*event) : "", told) << text;
    EXPECT_EQ(rest, event ? "" : text);
  }
  std::string_view flood = "/HOPC1.1.ER.141211T1355Z.141211T2000Z.000000T0000Z.OO/";
  const auto read = TakeFloodCode(flood).value();
  EXPECT_EQ(read.gauge + read.severity + read.cause + read.record, "HOPC11EROO");
  EXPECT_EQ(Told(read.rises) + Told(read.crests) + Told(read.falls),
            "2014-12-11 13:552014-12-11 20:00-");
  for (std::string_view wrong :
       {"/HOPC1.4.ER.141211T1355Z.141211T2000Z.000000T0000Z.OO/",
        "/HOPC1.1.ER.141311T1355Z.141211T2000Z.000000T0000Z.OO/", "/HOPC1.1.ER/"})
    EXPECT_FALSE(TakeFloodCode(wrong)) << wrong;
}

TEST(Places, AreReadByTheOfficesSigns) {
  // The text, an office, and the corners; "?" for a damaged outline. The last number is of lines.
  const struct {
    std::string text, office, corners;
    std::size_t lines;
  } cases[] = {
      {"LAT...LON 4206 9336 4224 9336 4229 9279", "KDMX", "42.06,-93.36 42.24,-93.36 42.29,-92.79",
       1},
      {"LAT...LON 4112 10059 4103 10060\n      4104 10075   \n\nBROOKS", "KLBF",
       "41.12,-100.59 41.03,-100.60 41.04,-100.75", 2},
      {"LAT...LON 4112 0059 4103 9999 4104 0075", "KLBF",
       "41.12,-100.59 41.03,-99.99 41.04,-100.75", 1},
      {"LAT...LON   37489978 37469652\n\n 38080012", "KWNS",
       "37.48,-99.78 37.46,-96.52 38.08,-100.12", 3},
      {"LAT...LON 1360 14492 1340 14492 1340 14460", "PGUM",
       "13.60,144.92 13.40,144.92 13.40,144.60", 1},
      {"LAT...LON 1420 17070 1430 17070 1430 17050", "NSTU",
       "-14.20,-170.70 -14.30,-170.70 -14.30,-170.50", 1},
      {"LAT...LON 4206 9336 4224 9336 4229 9279\n\n07\n", "KDMX",
       "42.06,-93.36 42.24,-93.36 42.29,-92.79", 1},
      {"LAT...LON 4206 9336 4224 9336 4229 9279", "XXXX", "?", 1},  // east or west?
      {"LAT...LON 4206 9336", "KDMX", "?", 1},
      {"LAT...LON 4206 9336 4224 9336 4229", "KDMX", "?", 1},
      {"LAT...LON 4206 9336 4224 9336 4229 92X9", "KDMX", "?", 1},
      {"LAT...LON 4206 9336 4224 9336 429 9279", "KDMX", "?", 1},
      {"LAT...LON 4206 9336 4224 9336\n4229 927", "KDMX", "?", 2},
      {"LAT...LON 4206 9336 4224 9336 42299279", "KDMX", "42.06,-93.36 42.24,-93.36 42.29,-92.79",
       1},
      {"LAT...LON 4206 9336 9224 9336 4229 9279", "KDMX", "?", 1},
      {"LAT...LON 4206 9336 4224 09336 4229 9279", "KDMX", "?", 1},
      {"LAT...LON 4206 9336 4224 18336 4229 9279", "KDMX", "?", 1},
      {"LAT...LON 3865 8538 1848 5524 5843 9556", "KLMK", "?", 1},  // half a continent
      {"LAT...LON", "KDMX", "?", 1},
      {"LAT..LON 4206 9336 4224 9336 4229 9279", "KDMX", "none", 0},
  };
  for (const auto& row : cases) {
    const auto read = ReadPolygon(BulletinLines(row.text), HemispheresOf(row.office));
    EXPECT_EQ(!read ? "none" : !read->what ? "?" : Told(*read->what), row.corners) << row.text;
    EXPECT_EQ(read ? read->lines : 0, row.lines) << row.text;
  }
  const auto motionIn = [](std::string_view text) {
    const auto read = ReadMotion(BulletinLines(text), HemispheresOf("KDMX")).value();
    return read.what ? fmt::format("{:02}:{:02} {} {} {}", read.what->at.hour, read.what->at.minute,
                                   read.what->from, read.what->knots, Told(read.what->places))
                     : "?";
  };
  EXPECT_EQ(motionIn("TIME...MOT...LOC 2054Z 269DEG 22KT 4215 9326\n 4220 9330"),
            "20:54 269 22 42.15,-93.26 42.20,-93.30");
  for (const auto* wrong :
       {"2460Z 269DEG 22KT 4215 9326", "21Z 269DEG 22KT 4215 9326", "2054Z 361DEG 22KT 4215 9326",
        "2054Z 269DEG KT 4215 9326", "2054Z 269DEG 22KT 4215", "2054Z 269DEG 22KT"})
    EXPECT_EQ(motionIn("TIME...MOT...LOC " + std::string(wrong)), "?") << wrong;
}

TEST(BulletinWording, OfHeadlinesAndTagsIsOneLineEach) {
  const auto headline = [](std::string_view text) {
    return ReadHeadline(BulletinLines(text)).value_or("none");
  };
  EXPECT_EQ(headline("...FLOOD WARNING IN EFFECT...\nX"), "FLOOD WARNING IN EFFECT");
  EXPECT_EQ(headline("...FLOOD WARNING\r\r\nUNTIL 6 PM...\r\r\n"), "FLOOD WARNING UNTIL 6 PM");
  EXPECT_EQ(headline("...FLOOD WARNING\n\nUNTIL 6 PM..."), "none");
  EXPECT_EQ(headline("...\n...\n"), "none");
  EXPECT_EQ(headline("..TIME...   ...EVENT..."), "none");
  const std::pair<std::string_view, std::string> tags[] = {
      {"HAIL...<.75IN\nX", "HAIL=<.75IN"},
      {"TORNADO DAMAGE THREAT...CONSIDERABLE", "TORNADO DAMAGE THREAT=CONSIDERABLE"},
      {"WIND...HAIL 60MPH 1.00IN", "WIND...HAIL=60MPH 1.00IN"},
      {"SOURCE...Radar indicated\n  rotation.\n\nX", "SOURCE=Radar indicated rotation."},
      {"HAZARD...Tornado.\nSOURCE...Radar.", "HAZARD=Tornado."},
      {"HAIL...", "none"},
      {"LAT...LON", "none"},
  };
  for (const auto& [text, told] : tags) {
    const auto tag = ReadTag(BulletinLines(text));
    EXPECT_EQ(tag ? tag->name + "=" + tag->value : "none", told) << text;
  }
}

}  // namespace
}  // namespace ostrel
