#include "programs/simulate/report.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>

namespace ostrel {

namespace {

double Seconds(milliseconds time) {
  return std::chrono::duration<double>(time).count();
}

/// The wait that `share` of the products did not exceed. `waits` is sorted.
milliseconds Percentile(const std::vector<milliseconds>& waits, double share) {
  if (waits.empty()) return milliseconds(0);
  const auto rank =
      static_cast<std::size_t>(std::lround(share * static_cast<double>(waits.size() - 1)));
  return waits[rank];
}

std::string Duration(milliseconds time) {
  const auto whole = std::chrono::round<seconds>(time).count();
  return fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

constexpr std::array kColours = {"#b40426", "#dd6b20", "#d4a017", "#6b8e23", "#2e8b57",
                                 "#20808d", "#1f6fb2", "#5b4bb5", "#8e44ad", "#7f8c8d"};

// The picture, in pixels
constexpr double kWidth = 960, kHeight = 420, kLeft = 60, kRight = 850, kTop = 50, kBottom = 370;

std::string Curve(const Measures& measures, Priority p, double deepest) {
  std::string points;
  for (const auto& sample : measures.depths) {
    const double x = kLeft + (kRight - kLeft) * Seconds(sample.at) / Seconds(measures.length);
    const double y = kBottom - (kBottom - kTop) * static_cast<double>(sample.depth[p]) / deepest;
    points += fmt::format("{:.1f},{:.1f} ", x, y);
  }
  return fmt::format(
      "<polyline fill='none' stroke='{}' stroke-width='1.5' points='{}'/>\n"
      "<text x='{}' y='{}' fill='{}'>Priority {}</text>\n",
      kColours[p.index()], points, kRight + 15, kTop + 12 + 22 * static_cast<double>(p.index()),
      kColours[p.index()], p.number());
}

std::string Axes(const Measures& measures, double deepest) {
  std::string axes;
  const auto text = [&](double x, double y, const char* anchor, const std::string& label) {
    axes += fmt::format("<text x='{:.0f}' y='{:.0f}' text-anchor='{}'>{}</text>\n", x, y, anchor,
                        label);
  };
  for (int part = 0; part <= 4; ++part) {
    const double y = kBottom - (kBottom - kTop) * part / 4;
    const double x = kLeft + (kRight - kLeft) * part / 4;
    axes += fmt::format("<line x1='{}' x2='{}' y1='{:.0f}' y2='{:.0f}' stroke='#ddd'/>\n", kLeft,
                        kRight, y, y);
    text(kLeft - 8, y + 4, "end", fmt::format("{:.0f}", deepest * part / 4));
    text(x, kBottom + 20, "middle",
         fmt::format("{:.1f} h", Seconds(measures.length) * part / 4 / 3600));
  }
  text(kLeft, kTop - 20, "start", "Files waiting, by priority");
  return axes;
}

}  // namespace

std::string TableOf(const Measures& measures) {
  std::string table = fmt::format("{:>8} {:>7} {:>11} {:>10} {:>10} {:>10} {:>8}\n", "Priority",
                                  "Files", "Bytes", "Median", "95 %", "Worst", "Deepest");
  for (const Priority p : AllPriorities()) {
    const auto& m = measures.priorities[p];
    if (m.files == 0 && m.deepestQueue == 0) continue;
    table +=
        fmt::format("{:>8} {:>7} {:>11} {:>10} {:>10} {:>10} {:>8}\n", p.number(), m.files, m.bytes,
                    Duration(Percentile(m.waits, 0.5)), Duration(Percentile(m.waits, 0.95)),
                    Duration(Percentile(m.waits, 1)), m.deepestQueue);
  }
  return table + fmt::format(
                     "\n{} arrivals in {}: {} sent; never sent: {} thrown away or unpacked by the "
                     "rules, {} replaced by newer ones, {} purged, {} still waiting\n"
                     "Line use {:.1f} %, fill share {:.1f} % of the packets\n",
                     measures.arrivals, Duration(measures.length), measures.sent, measures.ruledOut,
                     measures.replaced, measures.purged, measures.waiting, 100 * measures.lineUse,
                     100 * measures.fillShare);
}

std::string CsvOf(const Measures& measures) {
  std::string csv =
      "priority,files,bytes,wait_median,wait_95,wait_worst,deepest,line_use,fill_share\n";
  for (const Priority p : AllPriorities()) {
    const auto& m = measures.priorities[p];
    csv += fmt::format("{},{},{},{:.3f},{:.3f},{:.3f},{},{:.4f},{:.4f}\n", p.number(), m.files,
                       m.bytes, Seconds(Percentile(m.waits, 0.5)),
                       Seconds(Percentile(m.waits, 0.95)), Seconds(Percentile(m.waits, 1)),
                       m.deepestQueue, measures.lineUse, measures.fillShare);
  }
  return csv;
}

std::string SvgOf(const Measures& measures) {
  std::size_t deepest = 4;
  for (const auto& m : measures.priorities) deepest = std::max(deepest, m.deepestQueue);
  const auto fourths = (deepest + 3) / 4;
  const auto top = static_cast<double>(4 * fourths);
  std::string svg = fmt::format(
      "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 {0} {1}' width='{0}' height='{1}' "
      "font-family='sans-serif' font-size='13'>\n"
      "<rect width='{0}' height='{1}' fill='white'/>\n",
      kWidth, kHeight);
  svg += Axes(measures, top);
  for (const Priority p : AllPriorities()) svg += Curve(measures, p, top);
  return svg + "</svg>\n";
}

}  // namespace ostrel
