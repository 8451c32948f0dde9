#include "repeat/plan.h"

#include <algorithm>
#include <functional>
#include <map>
#include <set>

#include "base/text.h"

namespace ostrel {
namespace {

constexpr std::int64_t kBlock = 1024, kPacket = 1116;
constexpr int kBitsPerByte = 11;  // start, eight of data, two stop bits

/// The bulletins of the products that have one, and whose they are.
struct Bulletins {
  std::vector<ReceivedBulletin> all;
  std::vector<std::size_t> product;

  template <typename Test>
  Bulletins(std::span<const KnownProduct> products, Test&& counts) {
    for (std::size_t i = 0; i < products.size(); ++i) {
      if (!products[i].bulletin || !counts(products[i])) continue;
      all.push_back({*products[i].bulletin, products[i].arrived});
      product.push_back(i);
    }
  }
};

bool IsEnding(const Event& event) {
  return event.action == "CAN" || event.action == "EXP" || event.action == "UPG";
}

/// True when all that the bulletin announces is in force for all areas that it names.
bool IsWhollyInForce(const Bulletin& bulletin, const std::vector<EventInForce>& rows) {
  std::size_t announced = 0;
  for (const auto& segment : bulletin.segments) {
    if (segment.events.empty()) return false;  // nobody knows until when
    announced +=
        static_cast<std::size_t>(std::ranges::count_if(segment.events, std::not_fn(IsEnding)));
  }
  return announced == rows.size() && std::ranges::all_of(rows, [&](const EventInForce& row) {
           return row.isCertain && row.areas == bulletin.segments[row.segment].areas;
         });
}

/// The office's letters of a name, "DMX" of "TORDMXIA.TXT".
std::string OfficeIn(const std::string& name) {
  return name.size() < 6 ? "" : ToUpper(name.substr(3, 3));
}

}  // namespace

bool IsPicture(const std::string& name) {
  const auto upper = ToUpper(name);
  return upper.ends_with(".GIF") || upper.ends_with(".JPG") || upper.ends_with(".PNG");
}

namespace {

/// A later product of the office that could not be read may have cancelled what this one says.
bool MayBeCancelled(const KnownProduct& product, std::span<const KnownProduct> products) {
  return std::ranges::any_of(products, [&](const KnownProduct& other) {
    return !other.bulletin && other.arrived >= product.arrived && !IsPicture(other.name) &&
           OfficeIn(other.name) == OfficeIn(product.name);
  });
}

/// The place of the first rule for the kind; the number of rules where there is none.
std::size_t RuleFor(const std::string& kind, const RepeatConfig& config) {
  const auto rule = std::ranges::find_if(config.rules, [&](const RepeatRule& each) {
    return std::ranges::any_of(each.kinds,
                               [&](const auto& name) { return name == "*" || name == kind; });
  });
  return static_cast<std::size_t>(rule - config.rules.begin());
}

/// Decides when the repetition goes out, or why it does not.
void Schedule(Repetition& repetition, std::span<const KnownProduct> products,
              const RepeatConfig& config) {
  const auto& product = products[repetition.product];
  const auto rule = RuleFor(product.bulletin->kind, config);
  if (product.waits) {
    repetition.whyNot = "It waits in a queue.";
  } else if (rule == config.rules.size()) {
    repetition.whyNot = "No rule repeats its kind.";
  } else if (!product.lastOut) {
    repetition.whyNot = "It has never gone out.";
  } else if (!IsWhollyInForce(*product.bulletin, repetition.events)) {
    repetition.whyNot = "Part of it is over, or could not be read for certain.";
  } else if (MayBeCancelled(product, products)) {
    repetition.whyNot = "A later product of its office could not be read.";
  } else {
    repetition.next = *product.lastOut + config.rules[rule].every;
  }
}

/// "KDMX.TO.W.43" of an event with all that it takes.
std::string IdentityOf(const Event& event) {
  if (!event.number || event.office.empty()) return {};
  return event.office + "." + event.phenomenon + "." + event.significance + "." +
         std::to_string(*event.number);
}

/// When a product was issued, and of those of one minute, when it came.
using Told = std::pair<UtcTime, UtcTime>;
Told ToldAt(const KnownProduct& product) {
  return {product.bulletin->issued.value_or(product.arrived), product.arrived};
}

/// A product that has been heard or will be, and of which all was read.
bool IsHeard(const KnownProduct& product) {
  return (product.waits || product.lastOut) && product.bulletin && !product.bulletin->isDamaged;
}

/// When an event was told last.
std::map<std::string, Told> LastTold(std::span<const KnownProduct> products) {
  std::map<std::string, Told> told;
  for (const auto& product : products) {
    if (!IsHeard(product)) continue;
    for (const auto& segment : product.bulletin->segments) {
      for (const auto& event : segment.events) {
        if (event.isTest.value_or(true) || !event.isWhole) continue;
        auto& last = told[IdentityOf(event)];
        last = std::max(last, ToldAt(product));
      }
    }
  }
  return told;
}

bool IsOver(const KnownProduct& product, const std::map<std::string, Told>& lastTold, UtcTime now) {
  const auto& bulletin = *product.bulletin;
  if (bulletin.segments.empty()) return false;
  for (const auto& segment : bulletin.segments) {
    if (segment.events.empty()) return false;
    for (const auto& event : segment.events) {
      // That something is over must be heard, and of a test nobody knows.
      if (IsEnding(event) || event.isTest.value_or(true) || !event.isWhole) return false;
      const bool isExpired = event.ends && *event.ends <= now;
      const auto told = lastTold.find(IdentityOf(event));
      const bool isToldAnew =
          !IdentityOf(event).empty() && told != lastTold.end() && told->second > ToldAt(product);
      if (!isExpired && !isToldAnew) return false;
    }
  }
  return true;
}

}  // namespace

std::vector<Repetition> FindRepetitions(std::span<const KnownProduct> products,
                                        const RepeatConfig& config, UtcTime now) {
  const Bulletins bulletins(products, [](const KnownProduct&) { return true; });
  std::map<std::size_t, Repetition> byProduct;
  for (auto& row : FindInForce(bulletins.all, now)) {
    const auto product = bulletins.product[row.bulletin];
    auto& repetition = byProduct[product];
    repetition.product = product;
    const bool isFirst = repetition.events.empty();
    repetition.since = isFirst ? row.since : std::min(repetition.since, row.since);
    repetition.until = isFirst ? row.until : std::min(repetition.until, row.until);
    repetition.events.push_back(std::move(row));
  }
  std::vector<Repetition> found;
  found.reserve(byProduct.size());
  for (auto& [product, repetition] : byProduct) {
    Schedule(repetition, products, config);
    found.push_back(std::move(repetition));
  }
  std::ranges::stable_sort(found, {}, [&](const Repetition& each) {
    return std::pair(RuleFor(products[each.product].bulletin->kind, config),
                     each.next.value_or(UtcTime::max()));
  });
  return found;
}

std::vector<std::size_t> FindObsolete(std::span<const KnownProduct> products, UtcTime now) {
  const Bulletins heard(products, IsHeard);
  std::set<std::size_t> inForce;  // still the last word on some area
  for (const auto& row : FindInForce(heard.all, now)) inForce.insert(heard.product[row.bulletin]);
  const auto lastTold = LastTold(products);
  std::vector<std::size_t> found;
  for (std::size_t i = 0; i < products.size(); ++i) {
    const auto& product = products[i];
    if (product.waits && IsHeard(product) && !inForce.contains(i) && IsOver(product, lastTold, now))
      found.push_back(i);
  }
  return found;
}

std::int64_t OnTheLine(std::int64_t bytes) {
  return std::max<std::int64_t>((bytes + kBlock - 1) / kBlock, 1) * kPacket;
}

std::int64_t HourlyShare(const RepeatConfig& config, int rate) {
  return std::int64_t{3600} * rate / kBitsPerByte * config.share / 100;
}

}  // namespace ostrel
