// Repeats warnings that are in force through a running station.
#pragma once

#include <string>

#include "programs/repeat/station_products.h"
#include "repeat/plan.h"

namespace ostrel {

class Repeater {
 public:
  /// `station` is its folder.
  Repeater(std::string station, RepeatConfig config)
      : station_(std::move(station)), config_(std::move(config)), products_(station_) {}

  /// Looks once: sends again what is due and has room in its share of the air, and deletes what is
  /// over, if told. Says on standard output what it does, and leaves the list for the status page.
  /// Throws std::exception when the history
  /// cannot be read or the station does not answer.
  void Look(UtcTime now);

  /// What is in force, since and until when, when it went out last and goes out next.
  std::string List(UtcTime now);
  /// The same as JSON, one object a line.
  std::string ListAsJson(UtcTime now);

 private:
  void Repeat(const StationProducts::Known& known, const std::vector<Repetition>& repetitions,
              UtcTime now);
  void Publish(const StationProducts::Known& known, const std::vector<Repetition>& repetitions,
               UtcTime now) const;
  void DeleteObsolete(const std::vector<KnownProduct>& products, UtcTime now);

  std::string station_;
  RepeatConfig config_;
  StationProducts products_;
};

}  // namespace ostrel
