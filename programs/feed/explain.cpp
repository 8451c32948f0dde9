#include "programs/feed/explain.h"

#include <fmt/chrono.h>
#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "bulletin/cap_values.h"

namespace ostrel {
namespace {

using Json = nlohmann::ordered_json;

Json OrNull(const std::string& text) {
  return text.empty() ? Json(nullptr) : Json(text);
}

template <typename Value>
Json OrNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json(nullptr);
}

Json OrNull(const std::optional<UtcTime>& time) {
  return time ? Json(fmt::format("{:%FT%TZ}", fmt::gmtime(*time))) : Json(nullptr);
}

Json AsJson(const Event& event) {
  return {{"action", OrNull(event.action)},
          {"office", OrNull(event.office)},
          {"phenomenon", OrNull(event.phenomenon)},
          {"significance", OrNull(event.significance)},
          {"number", OrNull(event.number)},
          {"begins", OrNull(event.begins)},
          {"ends", OrNull(event.ends)},
          {"test", OrNull(event.isTest)}};
}

/// The one polygon; of several nobody could tell which.
Json PolygonOf(const Segment& segment) {
  if (segment.polygons.size() != 1) return nullptr;
  auto corners = Json::array();
  for (const auto& [latitude, longitude] : segment.polygons.front())
    corners.push_back(Json::array({latitude, longitude}));
  return corners;
}

Json AsJson(const Segment& segment) {
  auto events = Json::array();
  // Of a damaged time nobody could tell whether it stands for "until further notice".
  for (const auto& event : segment.events) {
    if (event.isWhole) events.push_back(AsJson(event));
  }
  return {{"areas", Json(segment.areas)},
          {"until", OrNull(segment.until)},
          {"events", std::move(events)},
          {"polygon", PolygonOf(segment)}};
}

}  // namespace

std::string ExplainAsJson(std::string_view name, const Bulletin& bulletin) {
  auto segments = Json::array();
  for (const auto& segment : bulletin.segments) segments.push_back(AsJson(segment));
  const Json product = {{"name", name},
                        {"heading", OrNull(bulletin.heading)},
                        {"awips", OrNull(bulletin.awips)},
                        {"kind", OrNull(bulletin.kind)},
                        {"source", bulletin.source == BulletinSource::kCap ? "cap" : "bulletin"},
                        {"segments", std::move(segments)}};
  return product.dump(-1, ' ', true, Json::error_handler_t::replace);
}

UtcTime ReadNow(std::string_view text) {
  std::string whole(text);
  if (whole.size() == std::string_view("2026-05-16T15:00Z").size()) whole.insert(16, ":00");
  const auto time = ReadCapTime(whole);
  if (!time)
    throw Failure(failure_number::kTypeMismatch,
                  "\"" + whole + "\" is no time: say \"2026-05-16T15:00Z\".");
  return *time;
}

}  // namespace ostrel
