// What single lines of bulletins and values of messages tell: readings.txt holds the rows.
#include <gtest/gtest.h>

#include "bulletin/area_line.h"
#include "bulletin/cap_values.h"
#include "bulletin/event_code.h"
#include "bulletin/heading.h"
#include "bulletin/lines.h"
#include "bulletin/position.h"
#include "bulletin/wording.h"
#include "programs/feed/explain.h"
#include "tests/bulletin/reading.h"
#include "tests/support/rows.h"

namespace ostrel {
namespace {

/// The fields of a row, without the empty ones at its end.
std::string Fields(std::vector<std::string> fields) {
  while (!fields.empty() && fields.back().empty()) fields.pop_back();
  return fmt::format("{}", fmt::join(fields, " | "));
}

std::string ToldHeading(const std::string& text) {
  const auto read = ReadHeading(BulletinLines(text));
  return Fields({std::string(read.line), std::string(read.identifier), std::string(read.kind)});
}

std::string ToldAreaLine(const std::string& text) {
  const auto read = ReadAreaLine(BulletinLines(text));
  if (!read) return "none";
  const auto& until = read->until;
  return Fields(
      {read->isWhole ? Told(read->areas) : "?",
       until ? fmt::format("{:02}{:02}{:02}", until->day, until->hour, until->minute) : "",
       std::to_string(read->lines)});
}

std::string ToldEventCode(const std::string& text) {
  std::string_view rest = text;
  const auto event = TakeEventCode(rest);
  EXPECT_EQ(rest, event ? "" : text);
  return event ? Told(*event) : "none";
}

std::string ToldFloodCode(const std::string& text) {
  std::string_view rest = text;
  const auto read = TakeFloodCode(rest);
  if (!read) return "none";
  return Fields({fmt::format("{} {} {} {}", read->gauge, read->severity, read->cause, read->record),
                 Told(read->rises), Told(read->crests), Told(read->falls)});
}

/// `text` begins with the office, by which east and west are told apart.
std::string ToldOutline(const std::string& text) {
  const auto read = ReadPolygon(BulletinLines(std::string_view(text).substr(5)),
                                HemispheresOf(text.substr(0, 4)));
  if (!read) return "none";
  return Fields({read->what ? Told(*read->what) : "?", std::to_string(read->lines)});
}

std::string ToldMotion(const std::string& text) {
  const auto line = "TIME...MOT...LOC " + text;
  const auto read = ReadMotion(BulletinLines(line), HemispheresOf("KDMX")).value();
  if (!read.what) return "?";
  const auto& motion = *read.what;
  return fmt::format("{:02}:{:02} {} {} {}", motion.at.hour, motion.at.minute, motion.from,
                     motion.knots, Told(motion.places));
}

std::string ToldTimeLine(const std::string& text) {
  const auto line = ReadTimeLine(text);
  if (!line) return "none";
  if (!line->moment) return std::to_string(line->year);
  return (line->isCertain ? "" : "~") + Told(line->moment);  // "~": its weekday is another one's
}

TEST(Readings, OfLines) {
  ExpectRows(
      "bulletin/readings.txt",
      {{"lines",
        [](auto& text) { return fmt::format("{}", fmt::join(BulletinLines(text), " | ")); }},
       {"heading", ToldHeading},
       {"area line", ToldAreaLine},
       {"event code", ToldEventCode},
       {"flood code", ToldFloodCode},
       {"outline", ToldOutline},
       {"motion", ToldMotion},
       {"headline", [](auto& text) { return ReadHeadline(BulletinLines(text)).value_or("none"); }},
       {"tag",
        [](auto& text) {
          const auto tag = ReadTag(BulletinLines(text));
          return tag ? tag->name + "=" + tag->value : "none";
        }},
       {"time line", ToldTimeLine},
       {"nearest",
        [](auto& text) {
          return Told(Nearest(ReadDayTime(text.substr(0, 6)).value(), ReadNow(text.substr(7))));
        }},
       {"message time", [](auto& text) { return Told(ReadCapTime(text)); }},
       {"message circle", [](auto& text) {
          const auto circle = ReadCapCircle(text);
          return circle ? Fields({Told(Polygon{circle->centre}), fmt::format("{}", circle->radius)})
                        : "none";
        }}});
}

}  // namespace
}  // namespace ostrel
