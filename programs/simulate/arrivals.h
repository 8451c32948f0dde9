// What arrives at a simulated station, and when.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/time.h"

namespace ostrel {

struct Arrival {
  milliseconds at{0};  // from the beginning of the simulation
  std::string name;
  std::string content;
};

/// Reads a list of arrivals, a line each: time, name, size in bytes, separated by blanks, tabs or
/// commas. The time is "hh:mm:ss" or "hh:mm" of the first day, or "yyyy-mm-dd hh:mm:ss" (also with
/// a T), counted from midnight of the earliest date. Empty lines and lines that begin with # are
/// passed over. The contents are made up. Throws Failure 13 with the line number for any other
/// line.
std::vector<Arrival> ParseArrivals(std::string_view list);

/// The files of a folder as arrivals, in the order of their names, spread evenly over a day. Throws
/// Failure 76 when there is no such folder.
std::vector<Arrival> ArrivalsFromFolder(const std::string& folder);

/// The arrivals again on each of `days` days, in order of time.
std::vector<Arrival> RepeatDaily(const std::vector<Arrival>& arrivals, int days);

/// The time to simulate: `days` days, or as many whole days as hold every arrival, at least one.
milliseconds WholeDays(const std::vector<Arrival>& arrivals, int days);

}  // namespace ostrel
