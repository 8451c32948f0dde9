// A file system in front of another one, so that a test overrides only the call that fails.
#pragma once

#include "platform/files.h"

namespace ostrel {

class ForwardingFiles : public Files {
 public:
  explicit ForwardingFiles(Files& real) : real_(real) {}

  std::optional<std::string> FirstFile(const std::string& f) override { return real_.FirstFile(f); }
  std::vector<std::string> ListFiles(const std::string& f) override { return real_.ListFiles(f); }
  bool Exists(const std::string& p) override { return real_.Exists(p); }
  std::string ActualPath(const std::string& p) override { return real_.ActualPath(p); }
  FileStatus Status(const std::string& p) override { return real_.Status(p); }
  void SetLastWriteTime(const std::string& p, UtcTime t) override { real_.SetLastWriteTime(p, t); }
  void TestExclusive(const std::string& p) override { real_.TestExclusive(p); }
  int Copy(const std::string& s, const std::string& d) override { return real_.Copy(s, d); }
  void Delete(const std::string& p) override { real_.Delete(p); }
  void Rename(const std::string& s, const std::string& d) override { real_.Rename(s, d); }
  void Link(const std::string& e, const std::string& l) override { real_.Link(e, l); }
  void CreateFolder(const std::string& p) override { real_.CreateFolder(p); }
  void RemoveTemporaries(const std::string& f) override { real_.RemoveTemporaries(f); }
  std::size_t ReadBlock(const std::string& p, std::int64_t o, std::span<char> b) override {
    return real_.ReadBlock(p, o, b);
  }
  std::string ReadAll(const std::string& p) override { return real_.ReadAll(p); }
  void WriteAll(const std::string& p, std::string_view c) override { real_.WriteAll(p, c); }
  void Append(const std::string& p, std::string_view c) override { real_.Append(p, c); }

 protected:
  Files& real_;
};

}  // namespace ostrel
