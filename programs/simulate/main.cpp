// Will it keep up? Runs a station in virtual time over a day's arrivals, before its rules go on the
// air.
#include <CLI/CLI.hpp>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <iterator>

#include "base/failure.h"
#include "base/text.h"
#include "programs/command_line.h"
#include "programs/simulate/arrivals.h"
#include "programs/simulate/report.h"
#include "programs/simulate/simulation.h"
#include "programs/simulate/station_copy.h"

namespace {

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file)
    throw ostrel::Failure(ostrel::failure_number::kFileNotFound, "There is no file " + path);
  return {std::istreambuf_iterator<char>(file), {}};
}

void WriteFile(const std::string& path, const std::string& content) {
  if (!(std::ofstream(path, std::ios::binary) << content))
    throw ostrel::Failure(ostrel::failure_number::kPathAccess, path + " cannot be written");
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Runs an Ostrel station in virtual time and tells how long products wait.");
  std::string folder, list, products, csv, plot;
  int days = 0, baud = 0;
  app.add_option("--station", folder, "The station whose rules and settings count")->required();
  auto* source = app.add_option_group("Arrivals", "What arrives")->require_option(1);
  source->add_option("--arrivals", list, "A list: time, name and size, a line each");
  source->add_option("--products", products, "A folder; its files arrive spread over the day");
  app.add_option("--days", days, "How often the day is repeated; by default the list runs once")
      ->check(CLI::Range(1, 366));
  app.add_option("--baud", baud, "Another data rate than the station's");
  app.add_option("--csv", csv, "Also write the figures to this file");
  app.add_option("--plot", plot, "Also draw the depth of the queues, as an SVG picture");
  ostrel::Describe(app, "ostrel-simulate",
                   "ostrel-simulate --station my-station --products samples/products");
  if (const auto status = ostrel::Parse(app, argc, argv)) return *status;
  try {
    const auto arrivals =
        list.empty() ? ostrel::ArrivalsFromFolder(products) : ostrel::ParseArrivals(ReadFile(list));
    ostrel::StationCopy station(std::filesystem::weakly_canonical(folder).string());
    if (baud != 0) station.Set("ComBaud", fmt::format("{}", baud));
    for (const auto& remark : station.remarks())
      fmt::print(stderr, "{}\n", ostrel::Printable(remark));
    const auto length = ostrel::WholeDays(arrivals, days);
    const auto measures = ostrel::Simulate(station, arrivals, length);
    fmt::print("{}", ostrel::TableOf(measures));
    if (!csv.empty()) WriteFile(csv, ostrel::CsvOf(measures));
    if (!plot.empty()) WriteFile(plot, ostrel::SvgOf(measures));
    return 0;
  } catch (const std::exception& error) {
    fmt::print(stderr, "ostrel-simulate: {}\n", ostrel::Printable(error.what()));
    return 1;
  }
}
