#include "bulletin/text_reader.h"

#include "bulletin/area_line.h"
#include "bulletin/codes.h"
#include "bulletin/event_code.h"
#include "bulletin/letters.h"
#include "bulletin/position.h"
#include "bulletin/wording.h"

namespace ostrel {
namespace {

/// More than any bulletin has.
constexpr std::size_t kMostSegments = 1000, kMostInAll = 20000;

/// A line that begins like an event's code and is none.
bool IsLikeEventCode(std::string_view line) {
  return line.size() > 20 && line[2] == '.' && IsUpper(line[1]) && line[6] == '.';
}

/// A line that begins and ends like one of areas and is none.
bool IsLikeAreaLine(std::string_view line) {
  return line.size() > 7 && IsUpper(line[0]) && IsUpper(line[1]) &&
         (line[2] == 'C' || line[2] == 'Z') && (line[6] == '-' || line[6] == '>') &&
         line.ends_with('-') && line.find(' ') == std::string_view::npos;
}

void AddSpans(const Segment& segment, std::vector<Dates::Span>& spans) {
  for (const auto& event : segment.events) {
    if (event.begins || event.ends) spans.push_back({event.begins, event.ends});
  }
}

}  // namespace

Segment& TextReader::Current() {
  if (!isOpen_) {
    bulletin_->segments.emplace_back();
    untils_.emplace_back();
    isOpen_ = true;
  }
  return bulletin_->segments.back();
}

std::optional<Hemispheres> TextReader::Signs() const {
  if (isOpen_ && !bulletin_->segments.back().events.empty())
    return HemispheresOf(bulletin_->segments.back().events.front().office);
  if (const auto signs = HemispheresOf(heading_.office)) return signs;
  const bool hasAreas = isOpen_ && !bulletin_->segments.back().areas.empty();
  return hasAreas ? HemispheresOf(bulletin_->segments.back().areas.front()) : std::nullopt;
}

bool TextReader::TakeAreas() {
  auto read = ReadAreaLine(Rest());
  if (!read && IsLikeAreaLine(Rest().front())) read.emplace().lines = 1;
  if (!read) return false;
  next_ += read->lines;
  areas_ += read->named;
  isOpen_ = false;
  if (!read->isWhole) {
    bulletin_->isDamaged = true;
    return true;
  }
  Current().areas = std::move(read->areas);
  untils_.back() = read->until;
  isBelowAreas_ = true;
  return true;
}

bool TextReader::TakeEvents() {
  auto text = Rest().front();
  if (!text.starts_with('/')) return false;
  ++next_;
  auto event = TakeEventCode(text);
  auto flood = event ? std::nullopt : TakeFloodCode(text);
  if (!event && !flood) {
    bulletin_->isDamaged |= IsLikeEventCode(text);
    return true;
  }
  if (flood) {
    if (isBelowAreas_ && isOpen_ && !Current().events.empty())
      Current().events.back().flood = std::move(flood);
    return true;
  }
  if (!isBelowAreas_) isOpen_ = false;
  while (event) {
    bulletin_->isDamaged |= !event->isWhole;
    Current().events.push_back(std::move(*event));
    isBelowAreas_ = true;
    event = TakeEventCode(text);
  }
  bulletin_->isDamaged |= !text.empty();
  return true;
}

bool TextReader::TakePlaces() {
  if (auto polygon = ReadPolygon(Rest(), Signs())) {
    next_ += polygon->lines;
    bulletin_->isDamaged |= !polygon->what;
    if (polygon->what) Current().polygons.push_back(std::move(*polygon->what));
    return true;
  }
  if (auto motion = ReadMotion(Rest(), Signs())) {
    next_ += motion->lines;
    bulletin_->isDamaged |= !motion->what;
    if (motion->what) Current().motion = std::move(motion->what);
    return true;
  }
  return false;
}

void TextReader::TakeWording() {
  if (!timeLine_) timeLine_ = ReadTimeLine(Rest().front());
  if (auto headline = ReadHeadline(Rest())) {
    auto& headlines = isOpen_ ? Current().headlines : bulletin_->headlines;
    headlines.push_back(std::move(*headline));
  } else if (auto tag = isOpen_ ? ReadTag(Rest()) : std::nullopt) {
    Current().tags.push_back(std::move(*tag));
  }
  ++next_;
}

void TextReader::TakeNext() {
  if (Rest().front().empty()) {
    ++next_;
  } else if (Rest().front().starts_with("$$")) {
    isOpen_ = isBelowAreas_ = false;
    ++next_;
  } else if (!TakeAreas() && !TakeEvents()) {
    isBelowAreas_ = false;
    if (!TakePlaces()) TakeWording();
  }
}

void TextReader::SetTimes(Bulletin& bulletin, UtcTime now) const {
  std::vector<Dates::Span> all;
  for (const auto& segment : bulletin.segments) AddSpans(segment, all);
  const Dates dates(std::move(all), timeLine_, now);
  if (heading_.time) bulletin.issued = dates.FullTime(*heading_.time);
  for (std::size_t i = 0; i < untils_.size(); ++i) {
    if (!untils_[i]) continue;
    bulletin.segments[i].until =
        bulletin.issued ? Nearest(*untils_[i], *bulletin.issued) : dates.FullTime(*untils_[i]);
  }
}

void TextReader::Read(Bulletin& bulletin, UtcTime now) {
  bulletin_ = &bulletin;
  while (next_ < lines_.size()) {
    TakeNext();
    if (bulletin.segments.size() <= kMostSegments && areas_ <= kMostInAll) continue;
    bulletin.segments.clear();
    bulletin.isDamaged = true;
    return;
  }
  SetTimes(bulletin, now);
}

}  // namespace ostrel
