// Which products are sent again, and which need not be sent any more: decided from what the
// station's history knows and from what the products say. Certain or nothing: what could not be
// read for certain is neither repeated nor deleted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "bulletin/bulletin.h"
#include "bulletin/in_force.h"
#include "repeat/repeat_config.h"

namespace ostrel {

/// A product that was received, with all its sendings.
struct KnownProduct {
  std::int64_t id = 0;  // in the history, of its arrival
  std::string name;     // "TORDMXIA.TXT"
  std::int64_t bytes = 0;
  UtcTime arrived;
  std::optional<UtcTime> lastOut = {};  // of its last block; nothing while it was never sent whole
  bool waits = false;                   // in a queue, on its way there, on hold, or on the air
  std::optional<Bulletin> bulletin = {};  // nothing where its bytes are not to be had
};

/// A warning in force, and when it goes out.
struct Repetition {
  std::size_t product = 0;  // index of the product
  std::vector<EventInForce> events;
  UtcTime since, until;         // until the first of its events ends
  std::optional<UtcTime> next;  // when it is to be sent again; may be past
  std::string whyNot;           // why it is not, where `next` is nothing; a sentence
};

/// True for the name of a product that says nothing in words.
bool IsPicture(const std::string& name);

/// What is in force of `products`, in the order of the rules; what no rule repeats comes last.
std::vector<Repetition> FindRepetitions(std::span<const KnownProduct> products,
                                        const RepeatConfig& config, UtcTime now);

/// Products that wait although all their events are over: expired, or told anew by a newer product
/// that was sent or waits. Indexes.
std::vector<std::size_t> FindObsolete(std::span<const KnownProduct> products, UtcTime now);

/// Bytes that a product takes on the line: its packets.
std::int64_t OnTheLine(std::int64_t bytes);

/// Bytes of repetitions that an hour of a line of `rate` bits a second has room for.
std::int64_t HourlyShare(const RepeatConfig& config, int rate);

}  // namespace ostrel
