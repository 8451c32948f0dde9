#include "tests/endurance/delivery.h"

#include <algorithm>
#include <variant>

#include "base/text.h"

namespace ostrel {

namespace {

struct Workbench {
  TemporaryFolder folder;
  VirtualClock clock{UtcTime{}};
  LinuxFiles files{clock};
  ZipArchives archives{files, clock};
};

}  // namespace

void Delivery::Expect(const std::string& content, const std::string& title) {
  if (repeats_ == Repeats::kExpected) known_.insert(content);
  awaited_.insert(content);
  if (title.empty()) return;
  awaited_.erase(latest_[title]);
  latest_[title] = content;
}

void Delivery::Hear(std::string_view bytes) {
  for (const auto& event : decoder_.Feed(bytes)) {
    const auto* const packet = std::get_if<ReceivedPacket>(&event);
    if (packet == nullptr) continue;
    const bool isFill = packet->name == "FILLFILE.TXT";
    files += packet->block == 1;
    fills += packet->block == 1 && isFill;
    const auto product = assembler_.Accept(*packet).product;
    if (!product || isFill) continue;
    ++received;
    if (!TakeContent(product->data) && !TakeArchive(product->data))
      foreign.push_back(product->name);
  }
}

bool Delivery::TakeContent(const std::string& content) {
  const bool isOurs = awaited_.erase(content) > 0 || known_.contains(content);
  if (isOurs) ++times[content];
  return isOurs;
}

bool Delivery::TakeArchive(const std::string& bytes) {
  Workbench bench;
  const auto path = bench.folder / ".archive";
  bench.files.WriteAll(path, bytes);
  if (!bench.archives.Extract(path, bench.folder.path(), {}).remark.empty()) return false;
  const auto members = bench.files.ListFiles(bench.folder.path());
  return !members.empty() && std::ranges::all_of(members, [&](const std::string& name) {
    return TakeContent(bench.files.ReadAll(bench.folder / name));
  });
}

Lines Delivery::Missing() const {
  constexpr std::size_t kEnough = 24;
  Lines missing;
  for (const auto& content : awaited_) missing.push_back(content.substr(0, kEnough));
  return missing;
}

std::string MakeArchive(const std::map<std::string, std::string>& members) {
  Workbench bench;
  const auto created = bench.archives.Create(bench.folder / "A.ZIP");
  for (const auto& [name, content] : members) {
    bench.files.WriteAll(bench.folder / name, content);
    created.writer->Add(bench.folder.path(), name);
  }
  created.writer->Close();
  return bench.files.ReadAll(bench.folder / "A.ZIP");
}

Lines LeftBehind(const std::string& dataRoot) {
  namespace fs = std::filesystem;
  Lines left;
  for (const auto& entry : fs::recursive_directory_iterator(dataRoot)) {
    const auto path = entry.path().lexically_relative(dataRoot).string();
    const bool isHidden = entry.path().filename().string().starts_with('.');
    if (entry.is_directory() || ToUpper(path).find("FILLFILE") != std::string::npos) continue;
    if (!path.starts_with("RtSent/") || isHidden) left.push_back(path);
  }
  return left;
}

}  // namespace ostrel
