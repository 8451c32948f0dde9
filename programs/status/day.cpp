#include "programs/status/day.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace ostrel {

namespace {

constexpr double kDay = 24 * 60 * 60;  // seconds
constexpr double kInstant = 1 / kDay;  // a second, as a part of the day
constexpr int kTickHours = 6;

/// For what is not known: told from bars without a colour.
constexpr std::string_view kHatch =
    R"(<svg class="patterns" width="0" height="0" aria-hidden="true"><defs><pattern id="hatch" )"
    R"svg(width="7" height="7" patternUnits="userSpaceOnUse" patternTransform="rotate(45)">)svg"
    R"(<line x1="0" y1="0" x2="0" y2="7"/></pattern></defs></svg>)";

enum class Measure {
  kMost,   // bytes: the most that waited
  kCount,  // of what came or went
  kTime,   // seconds
};

struct Figure {
  const char* field;
  const char* title;
  Measure measure;
};
constexpr std::array kFigures = {Figure{"offAir", "Off the air", Measure::kTime},
                                 Figure{"urgentBytes", "Urgent bytes waiting", Measure::kMost},
                                 Figure{"otherBytes", "Other bytes waiting", Measure::kMost},
                                 Figure{"arrived", "Products received", Measure::kCount},
                                 Figure{"sent", "Products sent", Measure::kCount}};

std::string Grouped(double number) {
  auto text = fmt::format("{:.0f}", number);
  for (auto at = static_cast<int>(text.size()) - 3; at > 0; at -= 3)
    text.insert(static_cast<std::size_t>(at), ",");
  return text;
}

std::string Spell(double duration) {
  const auto text = SpellDuration(std::chrono::duration<double>(duration));
  return text.substr(0, text.find(" 0 "));
}

std::string ValueOf(Measure measure, double value) {
  return measure == Measure::kTime ? Spell(value) : Grouped(value);
}

std::string Minutes(double seconds) {
  return fmt::format("{:g} minutes", seconds / 60);
}

std::tm LocalAt(UtcTime time) {
  return fmt::localtime(std::chrono::system_clock::to_time_t(time));
}

class Day {
 public:
  Day(const Status& answer, UtcTime now)
      : answer_(answer), now_(now), stretch_(answer.at("stretch")) {
    for (std::size_t i = 0; i < kFigures.size(); ++i) courses_[i] = CourseOf(kFigures[i].field);
  }

  std::string Html() const {
    auto html = fmt::format("<p>{}</p>{}", Summary(), kHatch);
    const auto ticks = Ticks();
    for (std::size_t i = 0; i < kFigures.size(); ++i) {
      const auto& [field, title, measure] = kFigures[i];
      html += fmt::format("<figure><figcaption><b>{}</b> {}</figcaption>{}</figure>", title,
                          Caption(i), Draw(DrawingOf(i), ticks));
    }
    return html;
  }

 private:
  using Course = std::vector<Stretch>;

  /// What begins before the day is cut off; before the first stretch nothing is known.
  Course CourseOf(const char* field) const {
    const auto& values = answer_.at(field);
    Course course;
    double to = 1, from = 1 - std::max(answer_.at("present").get<double>() / kDay, kInstant);
    for (auto value = values.rbegin(); value != values.rend() && to > kInstant; ++value) {
      course.push_back({std::max(from, 0.0), to, std::nullopt});
      if (!value->is_null()) course.back().value = value->get<double>();
      to = from;
      from -= stretch_ / kDay;
    }
    if (to > kInstant) course.push_back({0, to, std::nullopt});
    std::ranges::reverse(course);
    return course;
  }

  std::string ClockAt(double part) const {
    const auto since = std::chrono::duration<double>((part - 1) * kDay);
    return fmt::format("{:%H:%M}", LocalAt(now_ + std::chrono::round<milliseconds>(since)));
  }

  /// Where the clock on the wall shows a full hour that can be divided by six.
  std::vector<Tick> Ticks() const {
    using Quarters = std::chrono::duration<int, std::ratio<15 * 60>>;  // as zones differ
    std::vector<Tick> ticks;
    const auto begin = now_ - std::chrono::hours(24);
    for (auto time = std::chrono::ceil<Quarters>(begin); time <= now_; time += Quarters(1)) {
      const auto local = LocalAt(time);
      if (local.tm_min != 0 || local.tm_hour % kTickHours != 0) continue;
      const double at = std::chrono::duration<double>(time - begin).count() / kDay;
      ticks.push_back({at, fmt::format("{:%H:%M}", local)});
    }
    return ticks;
  }

  /// Of what belongs to that part of the day; nothing where nothing is known.
  static std::optional<double> Sum(const Course& course, Measure measure, double from, double to) {
    std::optional<double> sum;
    for (const auto& stretch : course) {
      const double middle = (stretch.from + stretch.to) / 2;
      if (!stretch.value || middle < from || middle >= to) continue;
      const double before = sum.value_or(0);
      sum = measure == Measure::kMost ? std::max(before, *stretch.value) : before + *stretch.value;
    }
    return sum;
  }
  double Whole(std::size_t i) const {
    return Sum(courses_[i], kFigures[i].measure, 0, 1).value_or(0);
  }

  const Stretch& Highest(std::size_t i) const {
    return *std::ranges::max_element(
        courses_[i], {}, [](const Stretch& stretch) { return stretch.value.value_or(-1); });
  }

  const Stretch& Last(std::size_t i) const {
    return *std::find_if(courses_[i].rbegin(), courses_[i].rend(),
                         [](const Stretch& stretch) { return stretch.value.value_or(0) > 0; });
  }

  std::string Caption(std::size_t i) const {
    const auto& highest = Highest(i);
    const auto measure = kFigures[i].measure;
    if (highest.value.value_or(0) <= 0) return measure == Measure::kTime ? "never" : "none";
    if (measure == Measure::kTime)
      return fmt::format("{} in all, the last at {}", Spell(Whole(i)), ClockAt(Last(i).from));
    const auto at = ClockAt(highest.from);
    const auto most = Grouped(*highest.value);
    if (measure == Measure::kMost) return fmt::format("at most {}, at {}", most, at);
    return fmt::format("{} in all, at most {} in {}, at {}", Grouped(Whole(i)), most,
                       Minutes(stretch_), at);
  }

  /// For who cannot see it: the quarters of the day.
  std::string Description(std::size_t i) const {
    constexpr int kQuarters = 4;
    std::string words;
    for (int quarter = 0; quarter < kQuarters; ++quarter) {
      const double from = 1.0 * quarter / kQuarters, to = 1.0 * (quarter + 1) / kQuarters;
      const auto measure = kFigures[i].measure;
      const auto sum = Sum(courses_[i], measure, from, to);
      words += fmt::format("{} to {}: {}{}. ", ClockAt(from), ClockAt(to),
                           sum && measure == Measure::kMost ? "at most " : "",
                           sum ? ValueOf(measure, *sum) : "no figures");
    }
    words.pop_back();
    return words;
  }

  Drawing DrawingOf(std::size_t i) const {
    const auto& [field, title, measure] = kFigures[i];
    // A bar of full height is a whole stretch off the air, or a round number.
    if (measure == Measure::kTime)
      return {field, title, Description(i), courses_[i], stretch_, Minutes(stretch_)};
    const double top = RoundedUp(Highest(i).value.value_or(0));
    const auto in = measure == Measure::kMost ? "" : " in " + Minutes(stretch_);
    return {field, title, Description(i), courses_[i], top, Grouped(top) + in};
  }

  /// To 1, 2 or 5 with noughts behind it.
  static double RoundedUp(double value) {
    double power = 1;
    while (power * 10 <= value) power *= 10;
    for (const double digit : {1, 2, 5}) {
      if (digit * power >= value) return digit * power;
    }
    return 10 * power;
  }

  double KnownPart() const {
    double known = 0;
    for (const auto& stretch : courses_.front())
      known += stretch.value ? stretch.to - stretch.from : 0;
    return known;
  }

  std::string TimeTold() const {
    auto zone = fmt::format("{:%z}", LocalAt(now_));
    zone.insert(zone.size() - 2, ":");
    const auto day = fmt::format("the 24 hours until {} (UTC{})", ClockAt(1), zone);
    const double known = KnownPart();
    if (known > 1 - kInstant) return "In " + day;
    return fmt::format(
        "There are figures of {} of {}; the rest is hatched. They begin when the station starts. "
        "In that time",
        Spell(known * kDay), day);
  }

  std::string Summary() const {
    enum { kOffAir, kUrgent, kOthers, kArrived, kSent };
    auto words = fmt::format("{} {} products came and {} were sent. ", TimeTold(),
                             Grouped(Whole(kArrived)), Grouped(Whole(kSent)));
    const double offAir = Whole(kOffAir);
    words += offAir > 0 ? fmt::format("The station was off the air for {}. ", Spell(offAir))
                        : "The station was never off the air. ";
    return words +
           fmt::format("At most {} urgent bytes waited (priorities 1 to {}), and {} others.",
                       Grouped(Whole(kUrgent)), answer_.at("urgentTo").get<int>(),
                       Grouped(Whole(kOthers)));
  }

  const Status& answer_;
  UtcTime now_;
  double stretch_;  // seconds
  std::array<Course, kFigures.size()> courses_;
};

}  // namespace

std::string DayOf(const Status& day, UtcTime now) {
  return Day(day, now).Html();
}

}  // namespace ostrel
