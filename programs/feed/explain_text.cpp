#include <fmt/chrono.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/text.h"
#include "bulletin/codes.h"
#include "programs/feed/explain.h"

namespace ostrel {
namespace {

std::string Stamp(UtcTime time) {
  return fmt::format("{:%Y-%m-%d %H:%M} UTC", fmt::gmtime(time));
}

std::string MeaningOr(CodeTable table, const std::string& code) {
  return std::string(MeaningOf(table, code).value_or(code));
}

std::string AreaText(const std::string& code, const Areas& areas) {
  const auto* const area = areas.Find(code);
  if (area != nullptr) return fmt::format("{} ({})", area->name, code);
  const bool isAll = code.ends_with("000") || code.ends_with("ALL");
  return isAll ? fmt::format("all of {} ({})", code.substr(0, 2), code) : code;
}

std::string PlaceText(const Position& place) {
  return fmt::format("{:.2f} {:.2f}", place.latitude, place.longitude);
}

template <typename Items, typename Text>
std::string Joined(const Items& items, Text&& text) {
  std::vector<std::string> texts;
  texts.reserve(items.size());
  for (const auto& item : items) texts.push_back(text(item));
  return fmt::format("{}", fmt::join(texts, ", "));
}

/// "Tornado Warning 43 of Des Moines IA"
std::string EventName(const Event& event) {
  if (event.phenomenon.empty()) return "The event of the message";
  auto name = fmt::format("{} {}", MeaningOr(CodeTable::kPhenomenon, event.phenomenon),
                          MeaningOr(CodeTable::kSignificance, event.significance));
  if (event.number) name += fmt::format(" {}", *event.number);
  if (!event.office.empty()) name += " of " + MeaningOr(CodeTable::kOffice, event.office);
  return name;
}

std::string EventText(const Event& event) {
  auto text = event.isTest.value_or(false) ? "Test: " + EventName(event) : EventName(event);
  if (!event.action.empty()) text += ", " + MeaningOr(CodeTable::kAction, event.action);
  if (event.begins) text += ", from " + Stamp(*event.begins);
  if (event.ends) text += ", until " + Stamp(*event.ends);
  if (event.flood && event.flood->crests) text += ", crest " + Stamp(*event.flood->crests);
  return text + (event.isWhole ? "." : ", with a time that is none.");
}

std::string MotionText(const Motion& motion) {
  return fmt::format("From {} degrees at {} knots, at {:02}:{:02} UTC at {}.", motion.from,
                     motion.knots, motion.at.hour, motion.at.minute,
                     Joined(motion.places, PlaceText));
}

std::vector<std::string> WordsOf(const CapWords& words) {
  std::vector<std::string> lines{fmt::format("{}: urgency {}, severity {}, certainty {}.",
                                             words.event, words.urgency, words.severity,
                                             words.certainty)};
  for (const auto* text : {&words.description, &words.instruction}) {
    if (!text->empty()) lines.push_back(*text);
  }
  return lines;
}

std::vector<std::string> LinesOf(const Segment& segment, const Areas& areas) {
  std::vector<std::string> lines;
  const auto until = segment.until ? "Until " + Stamp(*segment.until) : "Until a time not known";
  const auto names = Joined(segment.areas, [&](const auto& code) { return AreaText(code, areas); });
  lines.push_back(until + (names.empty() ? ", for areas not known." : ", for " + names + "."));
  for (const auto& event : segment.events) lines.push_back(EventText(event));
  for (const auto& headline : segment.headlines) lines.push_back("\"" + headline + "\"");
  if (segment.words) {
    for (auto& line : WordsOf(*segment.words)) lines.push_back(std::move(line));
  }
  for (const auto& polygon : segment.polygons)
    lines.push_back("Within " + Joined(polygon, PlaceText) + ".");
  for (const auto& circle : segment.circles)
    lines.push_back(fmt::format("Within {} km of {}.", circle.radius, PlaceText(circle.centre)));
  if (segment.motion) lines.push_back(MotionText(*segment.motion));
  for (const auto& tag : segment.tags)
    lines.push_back(fmt::format("{}: {}", MeaningOr(CodeTable::kTag, tag.name), tag.value));
  return lines;
}

std::string TitleOf(const Bulletin& bulletin) {
  std::string title = bulletin.source == BulletinSource::kCap ? "CAP message" : "bulletin";
  if (!bulletin.awips.empty())
    title = fmt::format("{} ({})", MeaningOr(CodeTable::kKind, bulletin.kind), bulletin.awips);
  if (!bulletin.heading.empty()) title += ", " + bulletin.heading;
  if (bulletin.issued) title += ", issued " + Stamp(*bulletin.issued);
  return title;
}

}  // namespace

std::string ExplainAsText(std::string_view name, const Bulletin& bulletin, const Areas& areas) {
  auto text = fmt::format("{}: {}.\n", Printable(name), Printable(TitleOf(bulletin)));
  for (const auto& headline : bulletin.headlines)
    text += fmt::format("  \"{}\"\n", Printable(headline));
  for (const auto& segment : bulletin.segments) {
    const char* indent = "  ";
    for (const auto& line : LinesOf(segment, areas)) {
      text += fmt::format("{}{}\n", indent, Printable(line));
      indent = "    ";
    }
  }
  if (bulletin.isDamaged) text += "  Something in it could not be read for certain.\n";
  return text;
}

}  // namespace ostrel
