#include "bulletin/cap.h"

#include <algorithm>

#include "bulletin/cap_values.h"
#include "bulletin/codes.h"
#include "bulletin/event_code.h"
#include "bulletin/heading.h"
#include "bulletin/letters.h"
#include "bulletin/xml.h"

namespace ostrel {
namespace {

/// More than any message has.
constexpr std::size_t kMostEvents = 100, kMostAreas = 1000;
constexpr std::string_view kNameSpace = "urn:oasis:names:tc:emergency:cap:1.";

/// The values of parameters, event codes or geocodes of that name.
std::vector<std::string_view> ValuesOf(const XmlElement& element, std::string_view list,
                                       std::string_view name) {
  std::vector<std::string_view> values;
  for (const auto* one : element.All(list)) {
    if (one->TextOf("valueName") == name) values.push_back(one->TextOf("value"));
  }
  return values;
}

std::string_view ParameterOf(const XmlElement& info, std::string_view name) {
  const auto values = ValuesOf(info, "parameter", name);
  return values.size() == 1 ? values.front() : std::string_view{};
}

std::optional<std::string> AreaOfUgc(std::string_view code) {
  const bool isArea = code.size() == 6 && ConsistsOf(code.substr(0, 2), IsUpper) &&
                      (code[2] == 'C' || code[2] == 'Z') && ConsistsOf(code.substr(3), IsDigit);
  return isArea ? std::optional(std::string(code)) : std::nullopt;
}

/// An area by its codes: UGC where there are any, else SAME, which has counties only. Nothing of
/// them when one is damaged.
std::vector<std::string> ReadAreas(const XmlElement& area, bool& isDamaged) {
  auto codes = ValuesOf(area, "geocode", "UGC");
  auto* read = &AreaOfUgc;
  if (codes.empty()) {
    codes = ValuesOf(area, "geocode", "SAME");
    read = &AreaOfSame;
  }
  std::vector<std::string> areas;
  for (const auto code : codes) {
    auto name = read(code);
    if (!name) {
      isDamaged = true;
      return {};
    }
    areas.push_back(std::move(*name));
  }
  std::sort(areas.begin(), areas.end());
  areas.erase(std::unique(areas.begin(), areas.end()), areas.end());
  return areas;
}

std::optional<bool> IsTestStatus(std::string_view status) {
  if (status == "Actual") return false;
  for (const auto* other : {"Exercise", "System", "Test", "Draft"}) {
    if (status == other) return true;
  }
  return std::nullopt;
}

std::string_view ActionOf(std::string_view type) {
  return type == "Alert" ? "NEW" : type == "Update" ? "CON" : type == "Cancel" ? "CAN" : "";
}

/// The service's own event code has the letters of an event: "TOW" is a tornado warning.
void SetKind(const XmlElement& info, Event& event) {
  const auto codes = ValuesOf(info, "eventCode", "NationalWeatherService");
  if (codes.size() != 1 || codes.front().size() != 3) return;
  const auto phenomenon = codes.front().substr(0, 2), significance = codes.front().substr(2);
  if (!MeaningOf(CodeTable::kPhenomenon, phenomenon) ||
      !MeaningOf(CodeTable::kSignificance, significance))
    return;
  event.phenomenon = phenomenon;
  event.significance = significance;
}

std::vector<Event> ReadEvents(const XmlElement& info, const CapMessage& message) {
  const auto isTest = IsTestStatus(message.status);
  std::vector<Event> events;
  for (auto codes : ValuesOf(info, "parameter", "VTEC")) {
    for (auto line = TakeCapPart(codes); !line.empty(); line = TakeCapPart(codes)) {
      if (auto event = TakeEventCode(line)) {
        if (isTest.value_or(false)) event->isTest = true;
        events.push_back(std::move(*event));
      } else if (auto flood = TakeFloodCode(line); flood && !events.empty()) {
        events.back().flood = std::move(flood);
      }
    }
  }
  const auto action = ActionOf(message.type);
  if (!events.empty() || action.empty()) return events;
  auto& event = events.emplace_back();
  event.action = action;
  event.begins = ReadCapTime(info.TextOf("onset"));
  event.ends = ReadCapTime(ParameterOf(info, "eventEndingTime"));
  event.isTest = isTest;
  SetKind(info, event);
  return events;
}

/// What all areas of an information share.
Segment ReadInfo(const XmlElement& info, const CapMessage& message) {
  const auto text = [&](std::string_view child) { return std::string(info.TextOf(child)); };
  Segment segment;
  segment.until = ReadCapTime(info.TextOf("expires"));
  segment.events = ReadEvents(info, message);
  constexpr std::size_t kLongestHeadline = 1000;
  if (auto headline = text("headline"); !headline.empty() && headline.size() <= kLongestHeadline)
    segment.headlines.push_back(std::move(headline));
  segment.words =
      std::make_shared<const CapWords>(CapWords{.event = text("event"),
                                                .urgency = text("urgency"),
                                                .severity = text("severity"),
                                                .certainty = text("certainty"),
                                                .description = text("description"),
                                                .instruction = text("instruction"),
                                                .effective = ReadCapTime(info.TextOf("effective")),
                                                .onset = ReadCapTime(info.TextOf("onset"))});
  return segment;
}

void AddArea(const XmlElement& area, Segment segment, Bulletin& bulletin) {
  segment.areas = ReadAreas(area, bulletin.isDamaged);
  for (const auto* polygon : area.All("polygon")) {
    auto corners = ReadCapPolygon(polygon->text);
    bulletin.isDamaged |= !corners;
    if (corners) segment.polygons.push_back(std::move(*corners));
  }
  for (const auto* circle : area.All("circle")) {
    const auto read = ReadCapCircle(circle->text);
    bulletin.isDamaged |= !read;
    if (read) segment.circles.push_back(*read);
  }
  bulletin.segments.push_back(std::move(segment));
}

bool IsEnglish(const XmlElement& info) {
  const auto language = info.TextOf("language");
  return language.empty() || language.starts_with("en");
}

/// Those in English; all where none is.
std::vector<const XmlElement*> InfosOf(const XmlElement& alert) {
  auto infos = alert.All("info");
  const auto others = std::stable_partition(
      infos.begin(), infos.end(), [](const XmlElement* info) { return IsEnglish(*info); });
  if (others != infos.begin()) infos.erase(others, infos.end());
  return infos;
}

/// "sender,identifier,sent", with blanks between several.
std::vector<CapMessage::Reference> ReadReferences(std::string_view text) {
  std::vector<CapMessage::Reference> references;
  for (auto part = TakeCapPart(text); !part.empty(); part = TakeCapPart(text)) {
    const auto first = part.find(','), last = part.rfind(',');
    if (first == std::string_view::npos || first == last) continue;
    references.push_back({.sender = std::string(part.substr(0, first)),
                          .identifier = std::string(part.substr(first + 1, last - first - 1)),
                          .sent = ReadCapTime(part.substr(last + 1))});
  }
  return references;
}

CapMessage ReadMessage(const XmlElement& alert) {
  return {.identifier = std::string(alert.TextOf("identifier")),
          .sender = std::string(alert.TextOf("sender")),
          .status = std::string(alert.TextOf("status")),
          .type = std::string(alert.TextOf("msgType")),
          .sent = ReadCapTime(alert.TextOf("sent")),
          .references = ReadReferences(alert.TextOf("references"))};
}

/// Heading and identifier of the bulletin that the message is about, where the file has none.
void SetHeading(const XmlElement& info, Bulletin& bulletin) {
  const auto heading =
      ReadHeading(ParameterOf(info, "WMOidentifier"), ParameterOf(info, "AWIPSidentifier"));
  if (bulletin.heading.empty()) bulletin.heading = heading.line;
  if (!bulletin.awips.empty()) return;
  bulletin.awips = heading.identifier;
  bulletin.kind = heading.kind;
}

/// Without what stands around the message: a heading, the signs of a transmission's end.
std::string_view MessageIn(std::string_view text) {
  const auto start = std::min(text.find("<?xml"), text.find('<'));
  const auto end = text.rfind('>');
  return start > end || end == text.npos ? std::string_view{} : text.substr(start, end + 1 - start);
}

}  // namespace

bool IsCap(std::string_view text) {
  constexpr std::size_t kSearched = 4096;
  const auto front = text.substr(0, kSearched);
  return front.find("alert") != front.npos && front.find(kNameSpace) != front.npos;
}

void ReadCap(std::string_view text, Bulletin& bulletin) {
  bulletin.source = BulletinSource::kCap;
  const auto alert = ReadXml(MessageIn(text));
  if (!alert || alert->name != "alert" || !alert->nameSpace.starts_with(kNameSpace)) {
    bulletin.isDamaged = true;
    return;
  }
  bulletin.message = ReadMessage(*alert);
  bulletin.issued = bulletin.message->sent;
  for (const auto* info : InfosOf(*alert)) {
    SetHeading(*info, bulletin);
    const auto shared = ReadInfo(*info, *bulletin.message);
    const auto areas = info->All("area");
    if (shared.events.size() > kMostEvents ||
        bulletin.segments.size() + areas.size() > kMostAreas) {
      bulletin.segments.clear();
      bulletin.isDamaged = true;
      return;
    }
    for (const auto* area : areas) AddArea(*area, shared, bulletin);
    if (areas.empty()) bulletin.segments.push_back(shared);
  }
}

}  // namespace ostrel
