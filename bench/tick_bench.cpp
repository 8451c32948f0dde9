// What a tick costs: idle, with full folders and full queues, and when it builds a packet. Real
// files in memory, virtual time.
#include <QCoreApplication>
#include <benchmark/benchmark.h>
#include <chrono>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <unistd.h>

#include "platform/qt/qt_local_socket.h"
#include "platform/qt/sqlite_history.h"
#include "seam/seam.h"
#include "tests/support/crowd.h"
#include "tests/support/virtual_station.h"

namespace ostrel {
namespace {

/// A station whose history is written as a real one's, or, after 0 days, not at all.
struct WrittenStation : VirtualStation {
  explicit WrittenStation(std::int64_t days) {
    Set("HistoryDays", std::to_string(days));
    Set("TxUpTime", "0");
    Set("CWIDTime", "0");
    const auto p = machine.For(folder.path(), files, archives, stores);
    station = std::make_unique<Station>(Platform{
        p.programFolder, p.hostName, p.clock, p.events, p.cycleTimer, p.purgeTimer, p.port,
        p.datagrams, p.files, p.archives, p.stores, history, p.dialogs, p.desktop, p.instance});
  }
  ~WrittenStation() override { station.reset(); }

  SqliteHistory history{folder.path() + "/KvHistory.db"};
};

/// A station whose line is busy, so that a tick does its bookkeeping and builds nothing.
struct IdleStation : VirtualStation {
  explicit IdleStation(int queued = 0) {
    Set("TxUpTime", "0");
    Set("CWIDTime", "0");
    Set("PurgeTime", "0");  // once a minute it looks at every queued file: no part of a tick
    Start();
    for (int i = 0; i < queued; ++i) {
      const auto name = "P" + std::to_string(i) + ".TXT";
      std::ofstream(InTransmitFolder(name)) << i;
      station->queue().Add(Priority(5), {name}, Path(name));
    }
    Run(2s);
  }

  void Tick() {
    machine.loop.RunFor(kCyclePeriod);
    if (machine.line.BytesWaiting() < 2000) machine.line.Write(std::string(5000, '\0'));
  }
};

void EmptyFolders(benchmark::State& state) {
  IdleStation station;
  for (auto _ : state) station.Tick();
}
BENCHMARK(EmptyFolders);

/// The first file of the listing is held by another process, so that each tick finds it and lets it
/// be: what the number of files behind it costs.
void FullFolders(benchmark::State& state) {
  IdleStation station(static_cast<int>(state.range(1)));
  station.files.lockFault = [](const std::string&) {
    throw Failure(failure_number::kPermissionDenied, "Permission denied");
  };
  for (int i = 0; i < state.range(0); ++i)
    std::ofstream(station.Path("KvData/RxFiles/F" + std::to_string(i) + ".TXT")) << i;
  for (auto _ : state) station.Tick();
}
BENCHMARK(FullFolders)
    ->ArgNames({"files", "queued"})
    ->Args({10, 10})
    ->Args({1000, 1000})
    ->Args({1000, 10000})
    ->Args({100000, 10000})
    ->Args({100000, 100000});

/// Each tick takes one file from the ingest folder and moves it into its queue.
void TakingFiles(benchmark::State& state) {
  WrittenStation station(state.range(1));
  station.Rule(4, "AFD*");
  station.Start();
  station.machine.line.Write(std::string(9000, '\0'));
  const auto content = SampleText(2500);
  int files = 0;
  const auto fill = [&] {
    for (int i = 0; i < state.range(0); ++i)
      std::ofstream(station.Path("KvData/RxFiles/AFD" + std::to_string(files++) + ".TXT"))
          << content;
  };
  fill();
  for (auto _ : state) {
    station.machine.loop.RunFor(kCyclePeriod);
    if (station.machine.line.BytesWaiting() < 2000)
      station.machine.line.Write(std::string(7000, '\0'));
  }
}
BENCHMARK(TakingFiles)
    ->ArgNames({"files", "history"})
    ->ArgsProduct({{20000, 100000}, {0, 400}})
    ->Iterations(10000);

/// Each tick builds and sends a packet of a long file: at a rate at which the line is free by then.
void SendingPackets(benchmark::State& state) {
  WrittenStation station(state.range(0));
  station.Set("ComBaud", "115200");
  station.Rule(4, "AFD*");
  station.Drop("AFDLONG.TXT", SampleText(64 * 1024 * 1024));
  station.machine.line.onWrite = [](std::string_view) {};
  station.Start();
  station.Run(2s);
  long long packets = 0;
  station.machine.line.onWrite = [&](std::string_view) { ++packets; };
  for (auto _ : state) station.machine.loop.RunFor(kCyclePeriod);
  state.counters["packets"] =
      benchmark::Counter(static_cast<double>(packets), benchmark::Counter::kAvgIterations);
}
BENCHMARK(SendingPackets)->ArgName("history")->Arg(0)->Arg(400);

/// The longest tick while a product of 100 MB goes from the ingest folder into its queue and on the
/// air, with what waits for the disk: the flush of a fill text that is copied meanwhile.
void TakingALargeFile(benchmark::State& state) {
  WrittenStation station(400);
  station.Rule(0, "TOR*");
  station.Drop("TORBIG.TXT", SampleText(100'000'000));
  station.Start();
  double longest = 0;
  for (auto _ : state) {
    const auto before = std::chrono::steady_clock::now();
    station.machine.loop.RunFor(kCyclePeriod);
    const std::chrono::duration<double, std::milli> took =
        std::chrono::steady_clock::now() - before;
    longest = std::max(longest, took.count());
  }
  state.counters["longest, ms"] = longest;
  state.counters["on the air"] = station.station->status().block ? 1 : 0;
}
BENCHMARK(TakingALargeFile)->Iterations(80);

/// What this process has given the disk so far.
double BytesWritten() {
  std::ifstream counters("/proc/self/io");
  std::string key, value;
  while (counters >> key >> value && key != "write_bytes:") continue;
  return std::stod(value);
}

/// What the disk is given for products on their way from the ingest folder until they are sent.
void WritingToDisk(benchmark::State& state) {
  WrittenStation station(400);
  station.Set("ComBaud", "115200");
  station.Rule(4, "AFD*");
  constexpr int kFiles = 20;
  const auto size = static_cast<std::size_t>(state.range(0));
  for (int i = 0; i < kFiles; ++i)
    station.Drop("AFD" + std::to_string(i) + ".TXT", SampleText(size));
  station.Start();
  const double before = BytesWritten();
  for (auto _ : state)
    while (station.station->status().sentSinceStart < kFiles) station.Run(10s);
  const double written = (BytesWritten() - before) / kFiles;
  state.counters["a product"] = written;
  state.counters["a byte"] = written / static_cast<double>(size);
}
BENCHMARK(WritingToDisk)->ArgName("size")->Arg(3000)->Arg(100'000)->Arg(2'000'000)->Iterations(1);

/// Seconds that this thread has worked, whatever else the machine does.
double Worked() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// What a tick costs while a crowd presses at the socket. What it costs to serve the crowd between
/// two ticks is told beside it; the longest pass of the event loop is how late a tick can come.
void AmongClients(benchmark::State& state) {
  IdleStation station;
  QtLocalSocket socket;
  const Seam seam(*station.station, socket);
  std::optional<Crowd> crowd;
  if (state.range(0) > 0) crowd.emplace(station.Path("station.sock"));
  double longest = 0;
  for (auto _ : state) {
    const double before = Worked();
    station.Tick();
    const double after = Worked();
    state.SetIterationTime(after - before);
    QCoreApplication::processEvents();
    longest = std::max(longest, Worked() - after);
  }
  state.counters["longest pass, ms"] = longest * 1000;
}
BENCHMARK(AmongClients)->ArgName("pressed")->Arg(0)->Arg(1)->UseManualTime()->Iterations(20000);

/// The yardstick for the packet: one block by plain open, seek, read and close.
void PlainBlockRead(benchmark::State& state) {
  TemporaryFolder folder;
  const auto path = folder / "FILE";
  std::ofstream(path) << SampleText(64 * 1024);
  char block[1024];
  for (auto _ : state) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    lseek(file, 4096, SEEK_SET);
    benchmark::DoNotOptimize(read(file, block, sizeof block));
    close(file);
  }
}
BENCHMARK(PlainBlockRead);

/// The yardstick for the idle tick: eleven empty folders listed.
void PlainListings(benchmark::State& state) {
  TemporaryFolder folder;
  std::vector<std::string> folders;
  for (int i = 0; i < 11; ++i) {
    folders.push_back(folder / std::to_string(i));
    std::filesystem::create_directory(folders.back());
  }
  for (auto _ : state) {
    for (const auto& path : folders) {
      for (const auto& entry : std::filesystem::directory_iterator(path))
        benchmark::DoNotOptimize(entry.path().c_str());
    }
  }
}
BENCHMARK(PlainListings);

}  // namespace
}  // namespace ostrel

int main(int count, char** arguments) {
  const QCoreApplication application(count, arguments);
  benchmark::Initialize(&count, arguments);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
