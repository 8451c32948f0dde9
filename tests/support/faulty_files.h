// A file system in front of another one. Its steps fail where a test says so; a test that wants
// more overrides them.
#pragma once

#include <algorithm>
#include <functional>

#include "platform/files.h"

namespace ostrel {

class FaultyFiles : public Files {
 public:
  /// Called with the file before its step; throws to fail it.
  using Fault = std::function<void(const std::string& path)>;
  Fault listFault, lookFault, statusFault, lockFault, deleteFault, readFault, writeFault,
      appendFault, renameFault, linkFault;
  /// Returns a copy code, 0 to let the copy happen.
  std::function<int(const std::string& source, const std::string& destination)> copyFault;
  /// False while the way of a large file is being made; all are ready when it is not set.
  std::function<bool(const std::string& source, Means means)> isReady;
  std::function<void(std::string_view content)> onAppend;
  /// A folder's own order is another one on each file system.
  bool isSorted = false;

  explicit FaultyFiles(Files& real) : real_(real) {}

  std::optional<std::string> FirstFile(const std::string& f, const NameTest& t) override {
    if (!isSorted) return real_.FirstFile(f, t);
    for (const auto& name : ListFiles(f))
      if (!t || !t(name)) return name;
    return std::nullopt;
  }
  std::vector<std::string> ListFiles(const std::string& f) override {
    auto names = Past(listFault, f).ListFiles(f);
    if (isSorted) std::sort(names.begin(), names.end());
    return names;
  }
  bool Exists(const std::string& p) override { return Past(lookFault, p).Exists(p); }
  std::string ActualPath(const std::string& p) override { return real_.ActualPath(p); }
  std::string RealPath(const std::string& p) override { return real_.RealPath(p); }
  FileStatus Status(const std::string& p) override { return Past(statusFault, p).Status(p); }
  void SetLastWriteTime(const std::string& p, UtcTime t) override { real_.SetLastWriteTime(p, t); }
  std::unique_ptr<FileHold> HoldAlone(const std::string& p, WhenUnknown w) override {
    return std::make_unique<Hold>(*this, p, Past(lockFault, p).HoldAlone(p, w));
  }
  int Copy(const std::string& s, const std::string& d, Links l, Flush f) override {
    const int code = copyFault ? copyFault(s, d) : copy_code::kDone;
    return code != copy_code::kDone ? code : real_.Copy(s, d, l, f);
  }
  int Place(const std::string& s, const std::string& d) override {
    const int code = copyFault ? copyFault(s, d) : copy_code::kDone;
    return code != copy_code::kDone ? code : real_.Place(s, d);
  }
  bool IsReady(const std::string& s, const std::string& f, Means m) override {
    return isReady ? isReady(s, m) : real_.IsReady(s, f, m);
  }
  void Secure(const std::string& m, const std::string& s) override { real_.Secure(m, s); }
  void Delete(const std::string& p) override { Past(deleteFault, p).Delete(p); }
  void Rename(const std::string& s, const std::string& d) override {
    Past(renameFault, s).Rename(s, d);
  }
  void Link(const std::string& e, const std::string& l) override { Past(linkFault, l).Link(e, l); }
  void CreateFolder(const std::string& p) override { real_.CreateFolder(p); }
  std::uint64_t FolderId(const std::string& p) override { return Past(lookFault, p).FolderId(p); }
  int NameCount(const std::string& p) override { return real_.NameCount(p); }
  std::int64_t FreeBytes(const std::string& f) override { return real_.FreeBytes(f); }
  void RemoveTemporaries(const std::string& f) override { real_.RemoveTemporaries(f); }
  std::size_t ReadBlock(const std::string& p, std::int64_t o, std::span<char> b) override {
    return Past(readFault, p).ReadBlock(p, o, b);
  }
  std::string ReadAll(const std::string& p) override { return Past(readFault, p).ReadAll(p); }
  void WriteAll(const std::string& p, std::string_view c) override {
    Past(writeFault, p).WriteAll(p, c);
  }
  void Append(const std::string& p, std::string_view c) override {
    Past(appendFault, p).Append(p, c);
    if (onAppend) onAppend(c);
  }

 protected:
  struct Hold : FileHold {
    Hold(FaultyFiles& f, std::string p, std::unique_ptr<FileHold> r)
        : files(f), path(std::move(p)), real(std::move(r)) {}
    bool Delete() override { return files.DeleteHeld(path, *real); }
    FaultyFiles& files;
    std::string path;
    std::unique_ptr<FileHold> real;
  };
  virtual bool DeleteHeld(const std::string& path, FileHold& held) {
    Past(deleteFault, path);
    return held.Delete();
  }

  Files& Past(const Fault& fault, const std::string& path) {
    if (fault) fault(path);
    return real_;
  }

  Files& real_;
};

}  // namespace ostrel
