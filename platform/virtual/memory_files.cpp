#include "platform/virtual/memory_files.h"

#include <algorithm>

#include "base/failure.h"
#include "base/names.h"
#include "base/text.h"

namespace ostrel {

namespace {

std::string_view WithoutSeparator(std::string_view path) {
  while (path.ends_with('/')) path.remove_suffix(1);
  return path;
}

class MemoryFileHold : public FileHold {
 public:
  MemoryFileHold(Files& files, std::string path) : files_(files), path_(std::move(path)) {}

  bool Delete() override {
    files_.Delete(path_);
    return true;
  }

 private:
  Files& files_;
  std::string path_;
};

}  // namespace

const MemoryFiles::FilePointer* MemoryFiles::Folder::Find(std::string_view name) const {
  const auto entry = entries_.find(name);
  return entry == entries_.end() ? nullptr : &entry->second.file;
}

void MemoryFiles::Folder::Put(const std::string& name, FilePointer file) {
  const auto [entry, isNew] = entries_.try_emplace(name, Entry{next_, nullptr});
  entry->second.file = std::move(file);
  if (isNew) names_.emplace(next_++, name);
}

void MemoryFiles::Folder::Erase(const std::string& name) {
  const auto entry = entries_.find(name);
  names_.erase(entry->second.order);
  entries_.erase(entry);
}

/// Shows `see` each name that is not hidden, until it returns false.
template <typename See>
void MemoryFiles::Folder::ForEachPlain(See&& see) const {
  for (const auto& [order, name] : names_) {
    if (name.front() != '.' && !see(name)) return;
  }
}

MemoryFiles::Folder* MemoryFiles::FindFolder(std::string_view path) {
  const auto folder = folders_.find(WithoutSeparator(path));
  return folder == folders_.end() ? nullptr : &folder->second;
}

MemoryFiles::Folder& MemoryFiles::FolderAround(const std::string& path) {
  if (auto* const folder = FindFolder(FolderOf(path))) return *folder;
  throw Failure(failure_number::kPathNotFound, "Path not found: " + path);
}

MemoryFiles::File& MemoryFiles::FileAt(const std::string& path) {
  const auto* const file = FolderAround(path).Find(FileNameOf(path));
  if (!file) throw Failure(failure_number::kFileNotFound, "File not found: " + path);
  return **file;
}

MemoryFiles::FilePointer MemoryFiles::Take(const std::string& path) {
  FileAt(path);
  return *FolderAround(path).Find(FileNameOf(path));
}

void MemoryFiles::Lay(const std::string& path, std::string_view content) {
  for (auto end = path.find('/'); end != std::string::npos; end = path.find('/', end + 1))
    folders_[path.substr(0, end)];
  WriteAll(path, content);
}

std::optional<std::string> MemoryFiles::FirstFile(const std::string& folder,
                                                  const NameTest& passedOver) {
  std::optional<std::string> first;
  if (const auto* const found = FindFolder(folder)) {
    found->ForEachPlain([&](const std::string& name) {
      if (passedOver && passedOver(name)) return true;
      first = name;
      return false;
    });
  }
  return first;
}

std::vector<std::string> MemoryFiles::ListFiles(const std::string& folder) {
  std::vector<std::string> names;
  if (const auto* const found = FindFolder(folder)) {
    found->ForEachPlain([&](const std::string& name) {
      names.push_back(name);
      return true;
    });
  }
  return names;
}

bool MemoryFiles::Exists(const std::string& path) {
  if (FindFolder(path)) return true;
  const auto* const folder = FindFolder(FolderOf(path));
  return folder && folder->Find(FileNameOf(path));
}

std::string MemoryFiles::ActualPath(const std::string& path) {
  if (Exists(path)) return path;
  const auto wanted = ToUpper(path);
  for (const auto& [folderPath, folder] : folders_) {
    if (ToUpper(folderPath) != FolderOf(wanted)) continue;
    std::optional<std::string> found;
    folder.ForEachPlain([&, &at = folderPath](const std::string& name) {
      if (ToUpper(JoinPath(at, name)) == wanted) found = JoinPath(at, name);
      return !found;
    });
    return found.value_or(JoinPath(folderPath, FileNameOf(path)));
  }
  return path;
}

FileStatus MemoryFiles::Status(const std::string& path) {
  const auto& file = FileAt(path);
  return {static_cast<std::int64_t>(file.content.size()), file.written};
}

void MemoryFiles::SetLastWriteTime(const std::string& path, UtcTime time) {
  FileAt(path).written = time;
}

std::unique_ptr<FileHold> MemoryFiles::HoldAlone(const std::string& path,
                                                 WhenUnknown /*whenUnknown*/) {
  FileAt(path);
  return std::make_unique<MemoryFileHold>(*this, path);
}

int MemoryFiles::Copy(const std::string& source, const std::string& destination, Links /*links*/,
                      Flush /*flush*/) {
  if (!Exists(source)) return copy_code::kFileNotFound;
  if (!FindFolder(FolderOf(destination))) return copy_code::kPathNotFound;
  WriteAll(destination, std::string(FileAt(source).content));
  return copy_code::kDone;
}

int MemoryFiles::Place(const std::string& source, const std::string& destination) {
  if (!Exists(source)) return copy_code::kFileNotFound;
  if (!FindFolder(FolderOf(destination))) return copy_code::kPathNotFound;
  Link(source, destination);
  FileAt(destination).written = clock_.UtcNow();
  return copy_code::kDone;
}

void MemoryFiles::Delete(const std::string& path) {
  FileAt(path);
  FolderAround(path).Erase(std::string(FileNameOf(path)));
}

void MemoryFiles::Rename(const std::string& source, const std::string& destination) {
  auto file = Take(source);
  const auto* const replaced = FolderAround(destination).Find(FileNameOf(destination));
  if (replaced && *replaced == file) return;  // two names of one file both stay
  FolderAround(destination).Put(std::string(FileNameOf(destination)), std::move(file));
  Delete(source);
}

void MemoryFiles::Link(const std::string& existing, const std::string& link) {
  auto file = Take(existing);
  FolderAround(link).Put(std::string(FileNameOf(link)), std::move(file));
}

void MemoryFiles::CreateFolder(const std::string& path) {
  FolderAround(path);
  const auto [folder, isNew] = folders_.try_emplace(std::string(WithoutSeparator(path)));
  if (!isNew) throw Failure(failure_number::kPathAccess, "File exists: " + path);
}

std::uint64_t MemoryFiles::FolderId(const std::string& path) {
  if (!FindFolder(path)) throw Failure(failure_number::kPathNotFound, "Path not found: " + path);
  return 1;
}

int MemoryFiles::NameCount(const std::string& path) {
  FileAt(path);
  return static_cast<int>(FolderAround(path).Find(FileNameOf(path))->use_count());
}

std::size_t MemoryFiles::ReadBlock(const std::string& path, std::int64_t offset,
                                   std::span<char> buffer) {
  const auto& content = FileAt(path).content;
  const auto start = std::min(static_cast<std::size_t>(offset), content.size());
  return content.copy(buffer.data(), buffer.size(), start);
}

std::string MemoryFiles::ReadAll(const std::string& path) {
  return FileAt(path).content;
}

void MemoryFiles::WriteAll(const std::string& path, std::string_view content) {
  const File file{std::string(content), clock_.UtcNow()};
  FolderAround(path).Put(std::string(FileNameOf(path)), std::make_shared<File>(file));
}

void MemoryFiles::Append(const std::string& path, std::string_view content) {
  if (!Exists(path)) return WriteAll(path, content);
  auto& file = FileAt(path);
  file.content += content;
  file.written = clock_.UtcNow();
}

}  // namespace ostrel
