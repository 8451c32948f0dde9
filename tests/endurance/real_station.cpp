#include "tests/endurance/real_station.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <signal.h>
#include <sstream>
#include <sys/wait.h>

#include "config/settings_table.h"
#include "platform/linux/sqlite_settings_store.h"
#include "tests/support/virtual_station.h"

namespace ostrel {

namespace fs = std::filesystem;

RealStation::RealStation(const Settings& settings) : folder_(OSTREL_BINARY_DIR) {
  fs::create_directories(Path("KvData/RxFiles"));
  fs::create_directory(Path("ports"));
  fs::create_hard_link(OSTREL_BINARY_DIR "/ostrel", Path("ostrel"));
  fs::copy_file(OSTREL_SOURCE_DIR "/packaging/station/RtMorse.txt", Path("RtMorse.txt"));
  std::ofstream(Path("FillFile.txt")) << SampleText(3000, 99);
  Settings all = {{"ComBaud", "115200"},
                  {"CWIDTime", "0"},
                  {"TxUpTime", "0"},
                  {"TxDelay", "0"},
                  {"LogProgram", "1"}};
  all.insert(all.end(), settings.begin(), settings.end());
  const auto store = SqliteSettingsStores(Path("KvRegistry.db")).Open();
  store->SetRootKey(kHkeyLocalMachine);
  store->WriteSetting(KeyPath(Section::kShared), "ShowErrors", "0");
  for (const auto& [key, value] : all) store->WriteSetting(KeyPath(Section::kSettings), key, value);
}

RealStation::~RealStation() {
  if (process_ == 0) return;
  Signal(SIGKILL);
  waitpid(process_, nullptr, 0);
}

void RealStation::Rule(int list, const std::string& keyword) {
  std::ofstream(Path("RtList" + std::to_string(list) + ".txt"), std::ios::app) << keyword << "\r\n";
}

void RealStation::Drop(const std::string& name, const std::string& content) {
  std::ofstream(Path("arriving"), std::ios::binary) << content;
  fs::rename(Path("arriving"), Path("KvData/RxFiles/" + name));
}

void RealStation::Start(std::chrono::seconds ahead) {
  process_ = fork();
  if (process_ != 0) return;
  setenv("QT_QPA_PLATFORM", "offscreen", 1);
  setenv("LD_PRELOAD", OSTREL_BINARY_DIR "/libkeying_shim.so", 1);
  setenv("KEYING_LOG", Path("keying").c_str(), 1);
  setenv("CLOCK_AHEAD", std::to_string(ahead.count()).c_str(), 1);
  setenv("ASAN_OPTIONS", "verify_asan_link_order=0:handle_abort=0", 1);
  execl(Path("ostrel").c_str(), "ostrel", nullptr);
  _exit(127);
}

void RealStation::Signal(int number) {
  kill(process_, number);
}

std::optional<int> RealStation::WaitForEnd(std::chrono::milliseconds longest) {
  int status = 0;
  if (!WaitUntil(longest, [&] { return waitpid(process_, &status, WNOHANG) == process_; }))
    return std::nullopt;
  process_ = 0;
  return status;
}

std::vector<Keying> RealStation::KeyingRecord() {
  std::vector<Keying> record;
  std::ifstream file(Path("keying"));
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    long long wall = 0, monotonic = 0;
    std::string process, device, event, line1, line2, drops;
    words >> wall >> monotonic >> process >> device >> event >> line1 >> line2 >> drops;
    record.push_back({std::chrono::microseconds(monotonic), event, line1 == "RTS=1",
                      line2 == "DTR=1", drops == "hupcl"});
  }
  return record;
}

std::string RealStation::Log() {
  std::ifstream file(Path("RtLog.txt"), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace ostrel
