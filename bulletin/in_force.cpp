#include "bulletin/in_force.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <set>
#include <tuple>

namespace ostrel {
namespace {

/// Numbers of events begin anew every year. One that goes on is heard of far more often.
constexpr std::chrono::days kLongestPause{60};

/// What is known of an event in one area.
struct Word {
  std::size_t bulletin, segment, event;
  std::optional<UtcTime> until;
  bool isOver;
};

struct Life {
  UtcTime since, last;  // when the first and the last product of the event were issued
  std::map<std::string, Word> areas;  // "" for a segment that has but an outline
};

using MessageName = std::tuple<std::string, std::string>;  // sender, identifier

UtcTime IssuedAt(const ReceivedBulletin& received) {
  return received.bulletin.issued.value_or(received.received);
}

std::vector<std::size_t> InOrderOfIssue(std::span<const ReceivedBulletin> bulletins) {
  std::vector<std::size_t> order(bulletins.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::ranges::stable_sort(order, {}, [&](std::size_t i) { return IssuedAt(bulletins[i]); });
  return order;
}

/// An exercise changes nothing of what is real.
bool IsReal(const CapMessage& message) {
  return message.status == "Actual";
}

/// The messages that later ones continue, replace or cancel.
std::set<MessageName> ReferencedMessages(std::span<const ReceivedBulletin> bulletins) {
  std::set<MessageName> names;
  for (const auto& [bulletin, received] : bulletins) {
    if (!bulletin.message || !IsReal(*bulletin.message)) continue;
    if (bulletin.message->type != "Update" && bulletin.message->type != "Cancel") continue;
    for (const auto& reference : bulletin.message->references)
      names.emplace(reference.sender, reference.identifier);
  }
  return names;
}

/// Empty for an event that nothing names.
std::string IdentityOf(const Event& event, const std::optional<CapMessage>& message) {
  if (event.number && !event.office.empty())
    return fmt::format("{}.{}.{}.{:04}", event.office, event.phenomenon, event.significance,
                       *event.number);
  return message ? message->sender + " " + message->identifier : "";
}

class Lives {
 public:
  explicit Lives(std::span<const ReceivedBulletin> bulletins)
      : bulletins_(bulletins), replaced_(ReferencedMessages(bulletins)) {}

  void Take(std::size_t index) {
    const auto& bulletin = bulletins_[index].bulletin;
    if (bulletin.message) {
      const auto& message = *bulletin.message;
      const bool isOfUse =
          message.type == "Alert" || message.type == "Update" || message.type == "Cancel";
      if (!isOfUse || !IsReal(message)) return;
      if (replaced_.contains({message.sender, message.identifier})) return;
    }
    for (std::size_t segment = 0; segment < bulletin.segments.size(); ++segment) {
      const auto& events = bulletin.segments[segment].events;
      for (std::size_t event = 0; event < events.size(); ++event) Take(index, segment, event);
    }
  }

  std::vector<EventInForce> At(UtcTime now) const {
    std::map<std::tuple<std::size_t, std::size_t, std::size_t>, EventInForce> rows;
    for (const auto& [identity, life] : lives_) {
      for (const auto& [area, word] : life.areas) {
        if (word.isOver || !word.until || *word.until <= now) continue;
        auto& row = rows[{word.bulletin, word.segment, word.event}];
        row = RowOf(word, identity, life.since, std::move(row.areas));
        if (!area.empty()) row.areas.push_back(area);
      }
    }
    std::vector<EventInForce> found;
    found.reserve(rows.size());
    for (auto& [place, row] : rows) found.push_back(std::move(row));
    std::ranges::stable_sort(found, {},
                             [&](const auto& row) { return IssuedAt(bulletins_[row.bulletin]); });
    return found;
  }

 private:
  void Take(std::size_t index, std::size_t segmentIndex, std::size_t eventIndex) {
    const auto& bulletin = bulletins_[index].bulletin;
    const auto& segment = bulletin.segments[segmentIndex];
    const auto& event = segment.events[eventIndex];
    const auto identity = IdentityOf(event, bulletin.message);
    if (event.isTest.value_or(true) || identity.empty() || event.action == "ROU") return;
    auto& life = LifeOf(identity, IssuedAt(bulletins_[index]));
    const bool isCancel = bulletin.message && bulletin.message->type == "Cancel";
    if (isCancel || event.action == "CAN" || event.action == "EXP" || event.action == "UPG")
      return End(life, segment.areas);
    // With a time that is none, what was said before is all that is certain.
    if (!event.isWhole) return;
    const Word word{index, segmentIndex, eventIndex, event.ends ? event.ends : segment.until,
                    false};
    const bool addsAreas = event.action == "NEW" || event.action == "EXA" || event.action == "EXB";
    const auto say = [&](const std::string& area) {
      const auto known = life.areas.try_emplace(area, word).first;
      // What has ended does not go on: this one was written before it knew.
      if (!known->second.isOver || addsAreas) known->second = word;
    };
    for (const auto& area : segment.areas) say(area);
    if (segment.areas.empty() && !(segment.polygons.empty() && segment.circles.empty())) say("");
  }

  Life& LifeOf(const std::string& identity, UtcTime issued) {
    auto& life = lives_.try_emplace(identity, Life{issued, issued, {}}).first->second;
    if (issued - life.last > kLongestPause) life = {issued, issued, {}};
    life.last = issued;
    return life;
  }

  /// Without areas it ends everywhere: nobody knows where else.
  static void End(Life& life, const std::vector<std::string>& areas) {
    if (areas.empty())
      for (auto& [area, word] : life.areas) word.isOver = true;
    for (const auto& code : areas) {
      const bool isWholeState = code.ends_with("000");
      life.areas.try_emplace(code, Word{}).first->second.isOver = true;
      for (auto& [area, word] : life.areas)
        if (isWholeState && area.starts_with(code.substr(0, 3))) word.isOver = true;
    }
  }

  EventInForce RowOf(const Word& word, const std::string& identity, UtcTime since,
                     std::vector<std::string> areas) const {
    const auto& bulletin = bulletins_[word.bulletin].bulletin;
    const auto& event = bulletin.segments[word.segment].events[word.event];
    return {word.bulletin, word.segment, word.event,  identity,           std::move(areas),
            since,         *word.until,  !event.ends, !bulletin.isDamaged};
  }

  std::span<const ReceivedBulletin> bulletins_;
  std::set<MessageName> replaced_;
  std::map<std::string, Life> lives_;
};

}  // namespace

std::vector<EventInForce> FindInForce(std::span<const ReceivedBulletin> bulletins, UtcTime now) {
  Lives lives(bulletins);
  for (const auto index : InOrderOfIssue(bulletins)) lives.Take(index);
  return lives.At(now);
}

}  // namespace ostrel
