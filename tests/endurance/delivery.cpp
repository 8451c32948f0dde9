#include "tests/endurance/delivery.h"

#include <algorithm>
#include <filesystem>
#include <variant>

#include "base/text.h"
#include "platform/linux/linux_files.h"
#include "platform/linux/zip_archives.h"
#include "platform/virtual/virtual_clock.h"
#include "tests/support/temp_folder.h"

namespace ostrel {

namespace {

constexpr const char* kFillName = "FILLFILE.TXT";

struct Workbench {
  TempFolder folder;
  VirtualClock clock{UtcTime{}};
  LinuxFiles files{clock};
  ZipArchives archives{files};
};

}  // namespace

void Delivery::Expect(const std::string& content, const std::string& title) {
  known_.insert(content);
  awaited_.insert(content);
  if (title.empty()) return;
  const auto before = latest_.find(title);
  if (before != latest_.end()) awaited_.erase(before->second);
  latest_[title] = content;
}

void Delivery::Hear(std::string_view bytes) {
  for (const auto& event : decoder_.Feed(bytes)) {
    const auto* const packet = std::get_if<ReceivedPacket>(&event);
    if (packet == nullptr) continue;
    const auto outcome = assembler_.Accept(*packet);
    if (outcome.product && outcome.product->name != kFillName) Take(*outcome.product);
  }
}

void Delivery::Take(const ReceivedProduct& product) {
  ++received_;
  if (!TakeContent(product.data) && !TakeArchive(product.data)) foreign_.push_back(product.name);
}

bool Delivery::TakeContent(const std::string& content) {
  awaited_.erase(content);
  return known_.contains(content);
}

bool Delivery::TakeArchive(const std::string& bytes) {
  const auto members = MembersOf(bytes);
  return !members.empty() &&
         std::all_of(members.begin(), members.end(),
                     [this](const std::string& content) { return TakeContent(content); });
}

std::string Delivery::Missing() const {
  constexpr std::size_t kEnough = 24;
  std::string missing;
  for (const auto& content : awaited_) missing += content.substr(0, kEnough) + "... ";
  return missing;
}

std::vector<std::string> MembersOf(const std::string& archive) {
  Workbench bench;
  const auto path = bench.folder / ".archive";
  bench.files.WriteAll(path, archive);
  const auto result = bench.archives.Extract(path, bench.folder.path(), {});
  if (!result.remark.empty()) return {};
  std::vector<std::string> members;
  for (const auto& name : bench.files.ListFiles(bench.folder.path()))
    members.push_back(bench.files.ReadAll(bench.folder / name));
  return members;
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

std::vector<std::string> LeftBehind(const std::string& dataRoot) {
  namespace fs = std::filesystem;
  std::vector<std::string> left;
  for (const auto& entry : fs::recursive_directory_iterator(dataRoot)) {
    const auto path = fs::relative(entry.path(), dataRoot).string();
    const bool isHidden = entry.path().filename().string().starts_with('.');
    if (entry.is_directory() || ToUpper(path).find("FILLFILE") != std::string::npos) continue;
    if (!path.starts_with("RtSent/") || isHidden) left.push_back(path);
  }
  return left;
}

}  // namespace ostrel
