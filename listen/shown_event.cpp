#include "listen/shown_event.h"

#include <algorithm>

#include "bulletin/areas.h"
#include "bulletin/codes.h"
#include "listen/page_texts.h"

namespace ostrel {
namespace {

std::string MeaningOr(CodeTable table, const std::string& code) {
  return std::string(MeaningOf(table, code).value_or(code));
}

std::string TitleOf(const Event& event, const Segment& segment, const Bulletin& bulletin) {
  if (!event.phenomenon.empty())
    return MeaningOr(CodeTable::kPhenomenon, event.phenomenon) + " " +
           MeaningOr(CodeTable::kSignificance, event.significance);
  if (segment.words && !segment.words->event.empty()) return segment.words->event;
  if (const auto kind = MeaningOf(CodeTable::kKind, bulletin.kind)) return std::string(*kind);
  return std::string(page_texts::kUnnamedEvent);
}

/// Each name once: a zone often has the name of its county.
std::string NamesOf(const std::vector<std::string>& codes) {
  std::vector<std::string> names;
  for (const auto& code : codes) {
    const auto* const area = Areas::Built().Find(code);
    auto name = area != nullptr ? area->name + " " + code.substr(0, 2) : code;
    if (std::ranges::find(names, name) == names.end()) names.push_back(std::move(name));
  }
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    // The state stands behind the last of its names.
    const bool isSameState = i + 1 < names.size() && names[i].size() > 3 &&
                             names[i + 1].ends_with(names[i].substr(names[i].size() - 3));
    text += isSameState ? names[i].substr(0, names[i].size() - 3) : names[i];
    if (i + 1 < names.size()) text += ", ";
  }
  return text;
}

}  // namespace

const char* ClassOf(const ShownEvent& event) {
  switch (event.significance) {
    case 'W':
      return "warning";
    case 'A':
      return "watch";
    default:
      return "advisory";
  }
}

ShownEvent Describe(const EventInForce& row, const ReceivedBulletin& told, UtcTime now) {
  const auto& segment = told.bulletin.segments[row.segment];
  const auto& event = segment.events[row.event];
  ShownEvent shown;
  shown.identity = row.identity;
  shown.title = TitleOf(event, segment, told.bulletin);
  shown.codes = row.areas;
  shown.areas = NamesOf(row.areas);
  shown.since = row.since;
  shown.heard = told.received;
  shown.isCertain = row.isCertain;
  shown.polygons = segment.polygons;
  if (event.significance.size() == 1) shown.significance = event.significance.front();
  if (!segment.headlines.empty()) shown.headline = segment.headlines.front();
  if (event.begins && *event.begins > now) shown.begins = event.begins;
  if (!row.isUntilFurtherNotice) shown.until = row.until;
  return shown;
}

}  // namespace ostrel
