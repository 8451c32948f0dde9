#include "tests/endurance/real_station.h"

#include <fstream>
#include <signal.h>
#include <sys/wait.h>

namespace ostrel {

namespace fs = std::filesystem;

RealStation::RealStation(const std::map<std::string, std::string>& settings)
    : folder_(OSTREL_BINARY_DIR) {
  fs::create_directories(Path("KvData/RxFiles"));
  fs::create_directory(Path("ports"));
  Replug();
  fs::create_hard_link(OSTREL_BINARY_DIR "/ostrel", Path("ostrel"));
  fs::copy_file(OSTREL_SOURCE_DIR "/packaging/station/RtMorse.txt", Path("RtMorse.txt"));
  std::ofstream(Path("FillFile.txt")) << SampleText(3000, 99);
  for (std::size_t list = 0; list < kRuleListCount; ++list)
    std::ofstream(Path(fmt::format("RtList{}.txt", list)))
        << (kManyRules.contains(list) ? kManyRules.at(list) : "");
  const auto store = OpenSettings();
  store->WriteSetting(KeyPath(Section::kShared), "ShowErrors", "0");
  for (const auto* const some : {&kManySettings, &kNoWaits, &settings}) {
    for (const auto& [key, value] : *some)
      store->WriteSetting(KeyPath(Section::kSettings), key, value);
  }
}

RealStation::~RealStation() {
  if (process_ != 0) End(SIGKILL);
}

void RealStation::Drop(const std::string& name, const std::string& content) {
  std::ofstream(Path("arriving"), std::ios::binary) << content;
  fs::rename(Path("arriving"), Path("KvData/RxFiles/" + name));
}

std::unique_ptr<SettingsStore> RealStation::OpenSettings() {
  auto store = SqliteSettingsStores(Path("KvRegistry.db")).Open();
  store->SetRootKey(kHkeyLocalMachine);
  return store;
}

void RealStation::Start(int second) {
  process_ = fork();
  if (process_ != 0) return;
  setenv("QT_QPA_PLATFORM", "offscreen", 1);
  setenv("LD_PRELOAD", OSTREL_BINARY_DIR "/libkeying_shim.so", 1);
  setenv("KEYING_LOG", Path("keying").c_str(), 1);
  setenv("CLOCK_AHEAD", std::to_string(60 + second - time(nullptr) % 60).c_str(), 1);
  setenv("ASAN_OPTIONS", "verify_asan_link_order=0:handle_abort=0", 1);
  execl(Path("ostrel").c_str(), "ostrel", nullptr);
  _exit(127);
}

int RealStation::End(int signal) {
  int status = -1;
  Signal(signal);
  const auto ends = [&] { return waitpid(process_, &status, WNOHANG) == process_; };
  if (!ListenUntil(20s, ends)) return -1;
  process_ = 0;
  return status;
}

void RealStation::SignalGuard(int signal) {
  pid_t guard = 0;  // its only child
  std::ifstream(fmt::format("/proc/{0}/task/{0}/children", process_)) >> guard;
  if (guard > 0) kill(guard, signal);
}

void RealStation::Replug() {
  line.emplace();
  line->LinkAt(Path("ports/COM1"));
}

bool RealStation::ListenUntil(std::chrono::milliseconds longest,
                              const std::function<bool()>& done) {
  const auto end = std::chrono::steady_clock::now() + longest;
  while (true) {
    const auto bytes = line->Read();
    heard += bytes;
    delivery.Hear(bytes);
    if (done()) return true;
    if (std::chrono::steady_clock::now() > end) return false;
    poll(nullptr, 0, 10);
  }
}

Keying RealStation::KeyingRecord() {
  Keying record;
  std::ifstream file(Path("keying"));
  for (std::string change; std::getline(file, change);) {
    long long at = 0;
    char rts = 0, dtr = 0;
    std::sscanf(change.c_str(), "%*d %lld %*s RTS=%c DTR=%c", &at, &rts, &dtr);
    record.steps += {rts, dtr, ' '};
    record.last = std::chrono::microseconds(at);
    record.dropsAtClose = change.ends_with("hupcl");
  }
  return record;
}

std::string RealStation::Log() {
  return VirtualStation::ReadFile(Path("RtLog.txt"));
}

}  // namespace ostrel
