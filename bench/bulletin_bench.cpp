// What reading a bulletin costs: the sample products, one of 3 kB, and what an attacker would
// write.
#include <benchmark/benchmark.h>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "bulletin/bulletin.h"

namespace ostrel {
namespace {

const UtcTime kNow{std::chrono::sys_days{std::chrono::year(2026) / 5 / 15}};

std::string Content(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void ReadAll(benchmark::State& state, const std::vector<std::string>& texts) {
  std::size_t bytes = 0, count = 0;
  for (auto _ : state) {
    for (const auto& text : texts) {
      benchmark::DoNotOptimize(ReadBulletin(text, kNow));
      bytes += text.size();
    }
    count += texts.size();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
  state.SetItemsProcessed(static_cast<std::int64_t>(count));
}

void Samples(benchmark::State& state) {
  std::vector<std::string> texts;
  for (const auto& entry :
       std::filesystem::directory_iterator(OSTREL_SOURCE_DIR "/samples/products"))
    if (entry.path().extension() == ".TXT") texts.push_back(Content(entry.path()));
  ReadAll(state, texts);
}
BENCHMARK(Samples);

void Warning(benchmark::State& state) {
  auto text = Content(OSTREL_SOURCE_DIR "/samples/products/TORDMXIA.TXT");
  text.resize(3000, '\n');
  ReadAll(state, {text});
}
BENCHMARK(Warning);

/// The time of a byte stays the same from 4 kB to 2 MB.
void Repeated(benchmark::State& state, const char* line) {
  std::string text = "WFUS53 KDMX 192054\nTORDMX\n";
  while (text.size() < static_cast<std::size_t>(state.range(0))) text += line;
  ReadAll(state, {text});
}
#define REPEATED(name, line) \
  BENCHMARK_CAPTURE(Repeated, name, line)->Arg(4 << 10)->Arg(64 << 10)->Arg(2000 << 10)
REPEATED(areas, "IAC001-\n");
REPEATED(ranges, "IAC001>900-\n");
REPEATED(segments, "IAC001-151500-\n");
REPEATED(headlines, "...A\n");
REPEATED(tags, "IAC001-151500-\nSOURCE...A\nB\n");
REPEATED(polygons, "LAT...LON 4206 9336 4224 9336\n\n");
REPEATED(numbers, "4206 9336 \n");
REPEATED(events, "/O.NEW.KDMX.TO.W.0043.180719T2054Z-180719T2145Z/\n");
REPEATED(dates, "354 PM CDT MON JUL 32 2018\n");
REPEATED(elements, "<alert xmlns=\"urn:oasis:names:tc:emergency:cap:1.2\">\n");

}  // namespace
}  // namespace ostrel

BENCHMARK_MAIN();
