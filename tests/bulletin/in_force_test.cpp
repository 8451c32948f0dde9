#include "bulletin/in_force.h"

#include <gtest/gtest.h>

#include "tests/bulletin/reading.h"

namespace ostrel {
namespace {

/// A bulletin of office KDMX, issued on 2018-07-19 at `time`, UTC; `segments` stand as they are.
ReceivedBulletin Issued(const std::string& time, const std::string& segments) {
  const auto text = fmt::format("WFUS53 KDMX 19{}\nTORDMX\n\n{}", time, segments);
  return {ReadBulletin(text, At(2018, 7, 19, 21, 0)), At(2018, 7, 19, 21, 0)};
}

std::string Segment(const std::string& areas, const std::string& event, const std::string& times) {
  return fmt::format("{}-192200-\n/O.{}.{}/\n\nTEXT\n\n$$\n", areas, event, times);
}

std::string Tornado(const std::string& areas, const std::string& action,
                    const std::string& times = "000000T0000Z-180719T2145Z") {
  return Segment(areas, action + ".KDMX.TO.W.0043", times);
}

struct CapSay {
  std::string identifier, type, references, status = "Actual", code = {};
};
ReceivedBulletin Cap(const CapSay& say) {
  const auto code = say.code.empty() ? ""
                                     : "<parameter><valueName>VTEC</valueName><value>" + say.code +
                                           "</value></parameter>";
  const auto text = fmt::format(
      "<alert xmlns=\"urn:oasis:names:tc:emergency:cap:1.2\"><identifier>{}</identifier>"
      "<sender>s</sender><sent>2018-07-19T20:54:00-00:00</sent><status>{}</status>"
      "<msgType>{}</msgType><references>{}</references><info><event>Fire</event>"
      "<expires>2018-07-19T22:00:00-00:00</expires>{}<area><geocode><valueName>UGC</valueName>"
      "<value>IAC127</value></geocode></area></info></alert>",
      say.identifier, say.status, say.type, say.references, code);
  return {ReadBulletin(text, At(2018, 7, 19, 21, 0)), At(2018, 7, 19, 21, 0)};
}

std::string Told(const std::vector<EventInForce>& rows) {
  std::string text;
  for (const auto& row : rows)
    text += fmt::format("{}#{} {} {:%H:%M}{}{} ", row.bulletin, row.identity,
                        fmt::join(row.areas, ","), fmt::gmtime(row.until),
                        row.isUntilFurtherNotice ? "?" : "", row.isCertain ? "" : " uncertain");
  return text;
}

TEST(InForce, IsWhatTheLastWordOnEachAreaLeaves) {
  const auto first = Issued("2054", Tornado("IAC127-169", "NEW", "180719T2054Z-180719T2145Z"));
  const std::string both = "0#KDMX.TO.W.0043 IAC127,IAC169 21:45 ";
  const std::string one = "0#KDMX.TO.W.0043 IAC169 21:45 ";
  const struct {
    const char* what;
    std::vector<ReceivedBulletin> later;
    std::string left;
  } rows[] = {
      {"nothing later", {}, both},
      {"continued for one area",
       {Issued("2110", Tornado("IAC127", "CON"))},
       one + "1#KDMX.TO.W.0043 IAC127 21:45 "},
      {"cancelled for one, continued for one",
       {Issued("2110", Tornado("IAC127", "CAN") + Tornado("IAC169", "CON"))},
       "1#KDMX.TO.W.0043 IAC169 21:45 "},
      {"expired", {Issued("2110", Tornado("IAC127-169", "EXP"))}, ""},
      {"upgraded to another",
       {Issued("2110", Tornado("IAC127-169", "UPG") +
                           Segment("IAC127", "NEW.KDMX.TO.W.0044", "180719T2110Z-180719T2200Z"))},
       "1#KDMX.TO.W.0044 IAC127 22:00 "},
      {"of the whole state", {Issued("2110", Tornado("IAC000", "CAN"))}, ""},
      {"nobody knows where", {Issued("2110", Tornado("IAQ127", "CAN"))}, ""},
      {"longer",
       {Issued("2110", Tornado("IAC127-169", "EXT", "000000T0000Z-180719T2215Z"))},
       "1#KDMX.TO.W.0043 IAC127,IAC169 22:15 "},
      {"longer by a time that is none",
       {Issued("2110", Tornado("IAC127-169", "EXT", "000000T0000Z-180719T2599Z"))},
       both},
      {"the older one came late", {Issued("2040", Tornado("IAC127", "CAN"))}, both},
      {"goes on after its end",
       {Issued("2110", Tornado("IAC127", "CAN")), Issued("2111", Tornado("IAC127", "CON"))},
       one},
      {"comes back to an area",
       {Issued("2110", Tornado("IAC127", "CAN")), Issued("2111", Tornado("IAC127", "EXA"))},
       one + "2#KDMX.TO.W.0043 IAC127 21:45 "},
      {"until further notice",
       {Issued("2110", Tornado("IAC127-169", "EXT", "000000T0000Z-000000T0000Z"))},
       "1#KDMX.TO.W.0043 IAC127,IAC169 22:00? "},
      {"of another office",
       {Issued("2110", Segment("IAC127-169", "CAN.KDVN.TO.W.0043", "000000T0000Z-180719T2145Z"))},
       both},
      {"a damaged line beside it",
       {Issued("2110", Tornado("IAC127-169", "CON") + "IAC1?7-192200-\n\nTEXT\n\n$$\n")},
       "1#KDMX.TO.W.0043 IAC127,IAC169 21:45 uncertain "},
      {"routine", {Issued("2110", Tornado("IAC127", "ROU"))}, both},
      {"an exercise",
       {Issued("2110", "IAC127-192200-\n/T.CAN.KDMX.TO.W.0043.000000T0000Z-180719T2145Z/\n")},
       both},
  };
  for (const auto& row : rows) {
    std::vector bulletins{first};
    bulletins.insert(bulletins.end(), row.later.begin(), row.later.end());
    EXPECT_EQ(Told(FindInForce(bulletins, At(2018, 7, 19, 21, 15))), row.left) << row.what;
    EXPECT_EQ(Told(FindInForce(bulletins, At(2018, 7, 19, 22, 15))), "") << row.what;
  }
}

TEST(InForce, TakesTheSameNumberOfAnotherYearForAnotherEvent) {
  const auto text = [](const char* year) {
    return fmt::format(
        "WFUS53 KDMX 192110\nTORDMX\n\nIAC127-192200-\n"
        "/O.{}.KDMX.TO.W.0043.000000T0000Z-{}0719T2145Z/\n$$\n",
        year == std::string("17") ? "CAN" : "CON", year);
  };
  const std::vector<ReceivedBulletin> bulletins{
      {ReadBulletin(text("17"), At(2017, 7, 19, 21, 0)), At(2017, 7, 19, 21, 0)},
      {ReadBulletin(text("18"), At(2018, 7, 19, 21, 0)), At(2018, 7, 19, 21, 0)}};
  const auto found = FindInForce(bulletins, At(2018, 7, 19, 21, 15));
  ASSERT_EQ(Told(found), "1#KDMX.TO.W.0043 IAC127 21:45 ");
  EXPECT_EQ(found.front().since, At(2018, 7, 19, 21, 10));
}

TEST(InForce, FollowsTheReferencesOfCapBeforeEventCodes) {
  const std::string fresh = "/O.NEW.KDMX.TO.W.0043.180719T2054Z-180719T2145Z/";
  const std::string going = "/O.CON.KDMX.TO.W.0043.000000T0000Z-180719T2145Z/";
  const std::string references = "s,1,2018-07-19T20:54:00-00:00";
  const struct {
    const char* what;
    std::vector<CapSay> messages;
    std::string left;
  } rows[] = {
      {"no codes", {{"1", "Alert", ""}}, "0#s 1 IAC127 22:00? "},
      {"replaced", {{"1", "Alert", ""}, {"2", "Update", references}}, "1#s 2 IAC127 22:00? "},
      {"the later one came first",
       {{"2", "Update", references}, {"1", "Alert", ""}},
       "0#s 2 IAC127 22:00? "},
      {"cancelled", {{"1", "Alert", ""}, {"2", "Cancel", references}}, ""},
      {"cancelled, though the code goes on",
       {{"1", "Alert", "", "Actual", fresh}, {"2", "Cancel", references, "Actual", going}},
       ""},
      {"cancelled by an exercise",
       {{"1", "Alert", ""}, {"2", "Cancel", references, "Exercise"}},
       "0#s 1 IAC127 22:00? "},
      {"an exercise", {{"1", "Alert", "", "Exercise"}}, ""},
      {"continued by its code",
       {{"1", "Alert", "", "Actual", fresh}, {"2", "Update", "", "Actual", going}},
       "1#KDMX.TO.W.0043 IAC127 21:45 "},
      {"an acknowledgement", {{"1", "Ack", "", "Actual", fresh}}, ""},
  };
  for (const auto& row : rows) {
    std::vector<ReceivedBulletin> bulletins;
    for (const auto& message : row.messages) bulletins.push_back(Cap(message));
    EXPECT_EQ(Told(FindInForce(bulletins, At(2018, 7, 19, 21, 15))), row.left) << row.what;
  }
}

}  // namespace
}  // namespace ostrel
