#include "tests/support/virtual_station.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

#include "base/text.h"

namespace ostrel {

namespace fs = std::filesystem;

namespace {

constexpr const char* kMorseTable = OSTREL_MORSE_TABLE;
constexpr const char* kFillName = "FILLFILE.TXT";

}  // namespace

VirtualStation::VirtualStation(UtcTime start, std::vector<ZoneRule> zone)
    : machine(start, std::move(zone)) {
  fs::create_directories(folder.path() + "/KvData/RxFiles");
  fs::copy_file(kMorseTable, folder.path() + "/RtMorse.txt");
  WriteFile(Path("FillFile.txt"), "FILL\r\n");
  MakeStation();
}

void VirtualStation::MakeStation() {
  station.reset();
  station = std::make_unique<Station>(machine.For(folder.path(), files, archives, stores));
}

VirtualStation::~VirtualStation() {
  EXPECT_EQ(machine.line.releases, 0);
}

void VirtualStation::Start() {
  ASSERT_TRUE(station->Start()) << machine.dialogs.messages.back().text;
}

void VirtualStation::Restart() {
  MakeAnew();
  Start();
}

void VirtualStation::MakeAnew() {
  if (!machine.dialogs.hasEnded) station->Stop();
  machine.clock.stopRequested = machine.clock.shutdownBegun = false;
  machine.dialogs.hasEnded = false;
  MakeStation();
}

void VirtualStation::StartBusy() {
  Start();
  Hold(1, "BUSY.TXT", SampleText(60'000));
}

void VirtualStation::Rule(std::size_t list, const std::string& keyword) {
  for (std::size_t i = 0; i < kRuleListCount; ++i)
    std::ofstream(Path(fmt::format("RtList{}.txt", i)), std::ios::app)
        << (i == list ? keyword + "\r\n" : "");
}

void VirtualStation::Set(const std::string& key, const std::string& value, Section section) {
  const auto store = stores.Open();
  store->SetRootKey(kHkeyLocalMachine);
  ASSERT_TRUE(store->WriteSetting(KeyPath(section), key, value));
}

void VirtualStation::Set(const std::map<std::string, std::string>& settings) {
  for (const auto& [key, value] : settings) Set(key, value);
}

void VirtualStation::Drop(const std::string& name, const std::string& content) {
  WriteFile(Path("KvData/RxFiles/" + name), content);
}

void VirtualStation::Hold(int priority, const std::string& name, const std::string& content) {
  WriteFile(Path(fmt::format("KvData/RtPri{}/{}", priority, name)), content);
  Run(kCyclePeriod);
}

Lines VirtualStation::Queue(int priority) {
  return Entries(window().PriorityList[Priority(priority)]);
}

void VirtualStation::WriteFile(const std::string& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
  realFiles.SetLastWriteTime(path, machine.clock.UtcNow());
}

std::string VirtualStation::ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

Lines VirtualStation::Names(const std::string& name) {
  auto names = realFiles.ListFiles(Path(name));
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<ReceivedPacket> VirtualStation::Packets() {
  StreamDecoder decoder;
  auto events = decoder.Feed(machine.line.carried);
  for (auto& event : decoder.Finish()) events.push_back(std::move(event));
  std::vector<ReceivedPacket> packets;
  for (auto& event : events) {
    if (auto* packet = std::get_if<ReceivedPacket>(&event)) packets.push_back(std::move(*packet));
    EXPECT_FALSE(std::holds_alternative<DamagedPacket>(event));
    EXPECT_FALSE(std::holds_alternative<Noise>(event));
  }
  return packets;
}

Lines VirtualStation::Blocks() {
  Lines blocks;
  for (const auto& packet : Packets()) {
    if (packet.name != kFillName)
      blocks.push_back(fmt::format("{} {}/{}", packet.name, packet.block, packet.count));
  }
  return blocks;
}

std::vector<ReceivedProduct> VirtualStation::Products() {
  ProductAssembler assembler;
  std::vector<ReceivedProduct> products;
  for (const auto& packet : Packets()) {
    auto outcome = assembler.Accept(packet);
    if (outcome.product && packet.name != kFillName)
      products.push_back(std::move(*outcome.product));
  }
  return products;
}

Lines VirtualStation::Log() {
  Lines lines;
  ForEachLine(ReadFile(Path("RtLog.txt")),
              [&](std::string_view line) { lines.emplace_back(line); });
  return lines;
}

Lines VirtualStation::LogOf(const std::string& category) {
  constexpr std::size_t kStamp = 18;
  auto lines = Log();
  std::erase_if(lines, [&](const std::string& line) {
    return line.substr(std::min(kStamp, line.size())).rfind(category + " ", 0) != 0;
  });
  return lines;
}

Lines VirtualStation::Messages(const std::string& category) {
  auto lines = category.empty() ? Log() : LogOf(category);
  const auto start = LogLine({}, category, "").size() - kLineEnd.size();
  for (auto& line : lines) line = line.substr(std::min(start, line.size()));
  return lines;
}

std::string SampleText(std::size_t length, int seed) {
  std::string text;
  for (int line = 0; text.size() < length; ++line)
    text += "PRODUCT " + std::to_string(seed) + " LINE " + std::to_string(line) + "\r\n";
  text.resize(length, '.');
  return text;
}

}  // namespace ostrel
