// Reads the segments of a bulletin of the weather service.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "bulletin/bulletin.h"
#include "bulletin/codes.h"
#include "bulletin/dates.h"
#include "bulletin/heading.h"

namespace ostrel {

/// Reads a bulletin line by line (NWS directive 10-1701). A segment begins with its area line and
/// ends with "$$". Events stand right below the area line; what is found elsewhere is a segment
/// without areas: nobody knows whose it is.
class TextReader {
 public:
  TextReader(std::span<const std::string_view> lines, const BulletinHeading& heading)
      : lines_(lines), heading_(heading) {}

  /// Adds segments and headlines to `bulletin`.
  void Read(Bulletin& bulletin, UtcTime now);

 private:
  /// Takes what stands at the front of the rest.
  void TakeNext();
  bool TakeAreas();
  bool TakeEvents();
  bool TakePlaces();
  void TakeWording();
  Segment& Current();
  std::optional<Hemispheres> Signs() const;
  std::span<const std::string_view> Rest() const { return lines_.subspan(next_); }
  void SetTimes(Bulletin& bulletin, UtcTime now) const;

  std::span<const std::string_view> lines_;
  const BulletinHeading& heading_;
  Bulletin* bulletin_ = nullptr;
  std::size_t next_ = 0, areas_ = 0;
  bool isOpen_ = false;                         // the last segment goes on
  bool isBelowAreas_ = false;                   // nothing but event codes since its area line
  std::vector<std::optional<DayTime>> untils_;  // of each segment
  std::optional<TimeLine> timeLine_;
};

}  // namespace ostrel
