#include "intake/compression.h"

#include <fmt/format.h>

#include "base/names.h"
#include "base/numbers.h"

namespace ostrel {

namespace {

constexpr const char* kFileProcedure = "CompressFile";
constexpr const char* kBlockProcedure = "CompressBlock";

/// Archives are made in memory, and receivers unpack no larger ones.
constexpr std::int64_t kLargestArchive = ExtractLimits{}.bytes;

std::string BlockName(LocalTime now) {
  const auto time = Calendar(now);
  return fmt::format("Comp{:02}{:02}.ZIP", time.hour, time.minute);
}

}  // namespace

std::optional<TransmitQueue::Placed> Compression::CompressFile(const std::string& source,
                                                               const std::string& name) {
  std::optional<TransmitQueue::Placed> placed;
  RunStep(parts_.reporting, kFileProcedure, [&] {
    const auto archive = parts_.queue.FreeName(std::string(StripExtension(name)) + ".ZIP");
    const auto uncompressed = SizeOrZero(source);
    if (uncompressed > kLargestArchive || !MakeArchive(source, archive)) {
      placed = parts_.queue.Place(source, name);
      return;
    }
    const auto compressed = SizeOrZero(parts_.queue.PathOf(archive));
    if (compressed <= uncompressed) {
      Count(compressed, uncompressed);
      placed = TransmitQueue::Placed{archive};
      return;
    }
    Count(uncompressed, uncompressed);
    parts_.queue.TakeBack({archive}, source);
    placed = parts_.queue.Place(source, name);
  });
  return placed;
}

CreateResult Compression::CreateArchive(const std::string& name, const char* procedure) {
  auto created = parts_.archives.Create(parts_.queue.PathOf(name));
  if (created.error != 0) {
    parts_.reporting.WriteLog(procedure, fmt::format("Create Zip Error {}", created.error));
    parts_.queue.RestoreFolder();
  }
  return created;
}

bool Compression::MakeArchive(const std::string& source, const std::string& archiveName) {
  const auto created = CreateArchive(archiveName, kFileProcedure);
  if (created.error != 0) return false;
  return RunStep(parts_.reporting, kFileProcedure, [&] {
    created.writer->Add(std::string(FolderOf(source)), std::string(FileNameOf(source)));
    created.writer->Close();
  });
}

void Compression::RefreshCompressList() {
  auto names = parts_.files.ListFiles(BlockFolder());
  std::erase_if(names, [this](const std::string& name) {
    const auto path = JoinPath(BlockFolder(), name);
    if (!placed_.Contains(path)) return false;
    TryStep([&] { placed_.Delete(path); });
    return true;
  });
  parts_.setup.CompressList.Assign(names);
}

void Compression::CompressBlock() {
  std::string why;
  if (const auto failure = FailureIn([&] { why = MakeBlock(); })) {
    parts_.reporting.ReportError(*failure, kBlockProcedure);
    why = failure->text();
  }
  const auto folder = JoinPath(BlockFolder(), "");
  why.empty() ? parts_.obstacles.Accept(folder) : parts_.obstacles.Refuse(folder, why);
}

/// Returns why the archive cannot be created; empty when it was.
std::string Compression::MakeBlock() {
  const auto name = parts_.queue.FreeName(BlockName(parts_.clock.Now()));
  const auto created = CreateArchive(name, kBlockProcedure);
  if (created.error != 0) return fmt::format("Create Zip Error {}", created.error);
  std::int64_t uncompressed = 0;
  const auto archived = AddListedFiles(*created.writer, uncompressed);
  created.writer->Close();  // a failure ends here: all files stay, nothing is queued
  const int priority = LeadingInteger(parts_.setup.BlockPriority.Get());
  parts_.queue.Add(Priority(priority), {name}, JoinPath(BlockFolder(), name));
  Count(SizeOrZero(parts_.queue.PathOf(name)), uncompressed);
  const auto id = parts_.queue.Entries(Priority(priority)).back().product.id;
  for (const auto& file : archived)
    parts_.history.EndAt(JoinPath(BlockFolder(), file), Fate::kArchived, id);
  DeleteArchived(archived);
  return {};
}

std::vector<std::string> Compression::AddListedFiles(ArchiveWriter& archive, std::int64_t& bytes) {
  std::vector<std::string> added;
  for (const auto& file : parts_.setup.CompressList) {
    const auto size = SizeOrZero(JoinPath(BlockFolder(), file));
    if (!added.empty() && bytes + size > kLargestArchive) break;
    if (const auto failure = FailureIn([&] { archive.Add(BlockFolder(), file); })) {
      parts_.reporting.ReportError(*failure, kBlockProcedure);
      parts_.obstacles.Refuse(JoinPath(BlockFolder(), file), failure->text());
      continue;
    }
    bytes += size;
    added.push_back(file);
  }
  return added;
}

void Compression::DeleteArchived(const std::vector<std::string>& names) {
  for (auto name = names.rbegin(); name != names.rend(); ++name) {
    RunStep(parts_.reporting, kBlockProcedure,
            [&] { placed_.Delete(JoinPath(BlockFolder(), *name)); });
  }
  RefreshCompressList();
}

void Compression::Count(std::int64_t compressed, std::int64_t uncompressed) {
  auto& totals = parts_.status.compression;
  totals.compressed += compressed;
  totals.uncompressed += uncompressed;
  if (totals.compressed > 0) {
    totals.ratio = static_cast<float>(static_cast<double>(totals.uncompressed) /
                                      static_cast<double>(totals.compressed));
  }
}

std::int64_t Compression::SizeOrZero(const std::string& path) {
  std::int64_t size = 0;
  TryStep([&] { size = parts_.files.Status(path).size; });
  return size;
}

}  // namespace ostrel
