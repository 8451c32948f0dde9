// Outlines of counties for the map (listen/outlines.tsv).
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "bulletin/bulletin.h"

namespace ostrel {

/// A part of the world, in degrees.
struct Bounds {
  double south = 90, north = -90, west = 180, east = -180;

  bool IsEmpty() const { return south > north; }
  void Include(Position place);
  void Include(const Bounds& other);
  bool Touches(const Bounds& other) const;
  Position Middle() const { return {(south + north) / 2, (west + east) / 2}; }
};

/// What lies between two counties, or between one and something else.
struct Border {
  bool isOfState = false;
  std::vector<Position> corners;
  Bounds bounds;
};

class CountyOutlines {
 public:
  /// The table that the program brings along.
  static const CountyOutlines& Built();

  /// Its form stands in its first lines. Throws std::runtime_error with the line's number.
  explicit CountyOutlines(std::string_view table);

  const std::vector<Border>& borders() const { return borders_; }
  std::vector<std::string> Counties() const;  // their codes
  /// Of "IAC169": each of its parts, in a ring. Empty for an unknown county.
  std::vector<Polygon> PartsOf(const std::string& county) const;

 private:
  void AddBorder(std::string_view line);
  void AddCounty(std::string_view line);

  std::vector<Border> borders_;
  std::map<std::string, std::vector<std::vector<int>>> counties_;
};

}  // namespace ostrel
