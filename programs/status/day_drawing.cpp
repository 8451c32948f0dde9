#include <algorithm>
#include <fmt/format.h>

#include "programs/status/day.h"

namespace ostrel {

namespace {

// In units of the drawing, of which a pixel is one upwards.
constexpr double kTop = 16, kHeight = 48, kLabels = 16;
constexpr double kWidth = 1440;     // across: a minute is one
constexpr double kLeastHeight = 3;  // of what is more than nothing
constexpr double kEdge = 0.06;      // where a label would stick out
constexpr double kRoomForWords = 0.25;

/// Across, of which nothing but lengths in percent is independent of the width of the screen.
std::string Percent(double part) {
  return fmt::format("{:.2f}%", 100 * part);
}

double HeightOf(double value, double top) {
  return value <= 0 ? 0 : std::max(kHeight * value / top, kLeastHeight);
}

/// The outline of the bars: neighbours share their sides, so that no light shines between them.
std::string OutlineOf(const Drawing& drawing) {
  std::string path;
  for (const auto& stretch : drawing.course) {
    const double height = HeightOf(stretch.value.value_or(0), drawing.top);
    if (path.empty()) path = fmt::format("M{:.1f} {}", kWidth * stretch.from, kHeight);
    path += fmt::format("V{:.1f}H{:.1f}", kHeight - height, kWidth * stretch.to);
  }
  return path.empty() ? path : path + fmt::format("V{}Z", kHeight);
}

/// Neighbouring stretches of which nothing is known are one gap.
std::vector<Stretch> GapsOf(const std::vector<Stretch>& course) {
  std::vector<Stretch> gaps;
  bool isInGap = false;
  for (const auto& stretch : course) {
    if (!stretch.value && isInGap) gaps.back().to = stretch.to;
    if (!stretch.value && !isInGap) gaps.push_back(stretch);
    isInGap = !stretch.value;
  }
  return gaps;
}

std::string GapOf(const Stretch& gap) {
  auto drawn = fmt::format(R"(<rect class="gap" x="{}" y="{}" width="{}" height="{}"/>)",
                           Percent(gap.from), kTop, Percent(gap.to - gap.from), kHeight);
  if (gap.to - gap.from > kRoomForWords)
    drawn += fmt::format(R"(<text class="unknown" x="{}" y="{}">no figures</text>)",
                         Percent((gap.from + gap.to) / 2), kTop + kHeight / 2 + 4);
  return drawn;
}

std::string TickOf(const Tick& tick) {
  const auto x = Percent(tick.at);
  const auto* const anchor = tick.at < kEdge ? "start" : tick.at > 1 - kEdge ? "end" : "middle";
  return fmt::format(R"(<line class="grid" x1="{0}" y1="{1}" x2="{0}" y2="{2}"/>)"
                     R"(<text text-anchor="{3}" x="{0}" y="{4}">{5}</text>)",
                     x, kTop, kTop + kHeight, anchor, kTop + kHeight + kLabels - 3, tick.label);
}

std::string LevelOf(double y) {
  return fmt::format(R"(<line class="grid" x1="0" y1="{0}" x2="100%" y2="{0}"/>)", y);
}

}  // namespace

std::string Draw(const Drawing& drawing, const std::vector<Tick>& ticks) {
  auto svg =
      fmt::format(R"(<svg class="course" id="day-{0}" width="100%" height="{1}" role="img" )"
                  R"(aria-labelledby="day-{0}-title day-{0}-words">)"
                  R"(<title id="day-{0}-title">{2}</title><desc id="day-{0}-words">{3}</desc>)"
                  R"(<text x="0" y="{4}">{5}</text>)",
                  drawing.id, kTop + kHeight + kLabels, drawing.title, drawing.description,
                  kTop - 4, drawing.topLabel);
  svg += LevelOf(kTop);
  for (const auto& tick : ticks) svg += TickOf(tick);
  for (const auto& gap : GapsOf(drawing.course)) svg += GapOf(gap);
  svg += fmt::format(
      R"(<svg y="{}" width="100%" height="{}" viewBox="0 0 {} {}" preserveAspectRatio="none">)"
      R"(<path class="bars" d="{}"/></svg>)",
      kTop, kHeight, kWidth, kHeight, OutlineOf(drawing));
  return svg + LevelOf(kTop + kHeight) + "</svg>";
}

}  // namespace ostrel
