// Lines that strangers send to the station's socket: each gets one answer, an object in one line.
#include <nlohmann/json.hpp>

#include "platform/linux/sqlite_settings_store.h"
#include "platform/linux/zip_archives.h"
#include "platform/virtual/virtual_machine.h"
#include "seam/seam.h"
#include "tests/fuzz/fuzz_support.h"

namespace {

using namespace ostrel;

struct FuzzedSocket : LocalSocket {
  void OnLine(std::function<void(Asker, std::string_view)> call) override { ask = call; }
  void Open(const std::string& /*path*/) override {}
  std::string AccountOf(Asker /*asker*/) override { return "alice"; }
  void Close() override {}
  void Send(Asker /*asker*/, std::string_view line) override { answers.emplace_back(line); }
  std::function<void(Asker, std::string_view)> ask;
  std::vector<std::string> answers;
};

struct Asked {
  VirtualMachine machine{UtcTime{} + std::chrono::hours(8)};
  MemoryFiles files{machine.clock};
  ZipArchives archives{files, machine.clock};
  SqliteSettingsStores stores{"/nowhere"};
  Station station{machine.For("/station", files, archives, stores)};
  FuzzedSocket socket;
  Seam seam{station, socket};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Asked asked;
  asked.socket.answers.clear();
  auto input = AsText(data, size);
  while (!input.empty()) {
    const auto line = TakePart(input);
    const auto before = asked.socket.answers.size();
    asked.socket.ask(1, line);
    const auto count = asked.socket.answers.size() - before;
    Demand(count <= 1, "one answer a question");
    if (count == 0) continue;  // one that waits for a silence
    const auto& answer = asked.socket.answers.back();
    Demand(answer.find('\n') == std::string::npos, "one line an answer");
    Demand(nlohmann::json::parse(answer).is_object(), "an object");
  }
  return 0;
}
