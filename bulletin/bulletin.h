// What a weather product says: for which areas, which events, until when. Read from the service's
// bulletins (their lines for machines) or from a CAP message; both have this one shape. Every field
// is there or it is not: what cannot be read for certain is left out.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/time.h"

namespace ostrel {

/// Degrees, north and east positive.
struct Position {
  double latitude = 0, longitude = 0;
  friend bool operator==(const Position&, const Position&) = default;
};
using Polygon = std::vector<Position>;  // at least three corners, as they stand

/// CAP: kilometres around a place.
struct Circle {
  Position centre;
  double radius = 0;
};

/// Of a flood: where the gauge is, how severe, why, and when the river rises above flood stage,
/// crests and falls (NWS directive 10-1703, H-VTEC).
struct Flood {
  std::string gauge;          // "HOPC1"; "00000" where there is none
  char severity = '0';        // N none, 0 areal, 1 minor, 2 moderate, 3 major, U unknown
  std::string cause, record;  // "ER", "NO"
  std::optional<UtcTime> rises, crests, falls;
};

/// One event and what the product does to it. An empty text says that the product does not tell.
struct Event {
  std::string action;         // "NEW", "CON", "CAN" ...
  std::string office;         // "KDMX"
  std::string phenomenon;     // "TO"
  std::string significance;   // "W"
  std::optional<int> number;  // 0 to 9999, of the office's events of this kind in a year
  /// Nothing where the event has begun already, or ends "until further notice".
  std::optional<UtcTime> begins, ends;
  std::optional<bool> isTest;
  bool isWhole = true;  // false when a time stands there that is none
  std::optional<Flood> flood = {};
};

/// TIME...MOT...LOC: where the storm was, and how it moves.
struct Motion {
  TimeOfDay at{};  // UTC
  int from = 0;    // degrees, 0 to 360
  int knots = 0;
  std::vector<Position> places;
};

/// "HAIL" "1.00IN"
struct Tag {
  std::string name, value;
};

/// What CAP says of an event in words.
struct CapWords {
  std::string event, urgency, severity, certainty, description, instruction;
  std::optional<UtcTime> effective, onset;
};

struct Segment {
  std::vector<std::string> areas;  // "IAC153", "IAZ048", "IAC000": sorted, each once
  std::optional<UtcTime> until;    // when the text is out of date
  std::vector<Event> events;
  std::vector<Polygon> polygons;
  std::vector<Circle> circles;
  std::optional<Motion> motion;
  std::vector<Tag> tags;
  std::vector<std::string> headlines;
  std::shared_ptr<const CapWords> words;  // of a CAP message; its areas share them
};

/// A CAP message as such. References name the earlier messages that it continues, replaces or
/// cancels: they come before event codes.
struct CapMessage {
  struct Reference {
    std::string sender, identifier;
    std::optional<UtcTime> sent;
  };
  std::string identifier, sender, status, type;
  std::optional<UtcTime> sent;
  std::vector<Reference> references;
};

enum class BulletinSource { kBulletin, kCap };

struct Bulletin {
  BulletinSource source = BulletinSource::kBulletin;
  std::string heading;                 // "WFUS53 KDMX 192054", as it stands
  std::string awips;                   // "TORDMX"
  std::string kind;                    // "TOR"
  std::optional<UtcTime> issued;       // as the heading has it
  std::vector<std::string> headlines;  // in front of the first segment
  std::vector<Segment> segments;
  std::optional<CapMessage> message;
  /// A line for machines stands there that could not be read for certain: what is read is right,
  /// but it is not all.
  bool isDamaged = false;
};

/// A longer text, in bytes, is read up to its identifier and no further, and is damaged.
inline constexpr std::size_t kLongestBulletin = std::size_t{2} << 20;

/// Reads `text`. `now` is when it came: day, hour and minute of headings and area lines are of the
/// month that the events' times or the bulletin's own date tell, and only where there are none of
/// the one nearest to `now`. Never throws for what the text holds; linear in its length.
Bulletin ReadBulletin(std::string_view text, UtcTime now);

}  // namespace ostrel
