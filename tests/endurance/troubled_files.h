// A file system that meets trouble at one chosen change: the power fails there, or it and what
// follows for a while is refused. Or the trouble comes at a chosen question, and it and those that
// follow for a while get no answer. A part of it may lie on a second disk: then no link and no
// rename leads across, and one of the two may lose with the power what it was not asked to flush.
#pragma once

#include <filesystem>
#include <fstream>
#include <functional>
#include <vector>

#include "base/failure.h"
#include "base/names.h"
#include "platform/clock.h"
#include "platform/linux/temporary_folder.h"
#include "tests/support/faulty_files.h"

namespace ostrel {

/// The power is gone. No std::exception, so that no handler of failures goes on after it.
struct PowerFailure {};

struct Trouble {
  enum class Kind {
    kNone,
    kPowerFailsAfter,   // the change is done, nothing more is
    kPowerFailsAmidst,  // half of what is being written lies in its hidden place
    kRefused,           // the change fails, and all of them until `lasting` has passed
    kUnanswered,        // the same with a question
  };
  Kind kind = Kind::kNone;
  int at = 0;  // the change or question that it strikes, the first is 1
  milliseconds lasting{0};
  int copyCode = 0;
  std::int32_t failure = 0;
  int losing = -1;  // the disk that loses what was not flushed when the power fails
};

class TroubledFiles : public FaultyFiles {
 public:
  /// Paths with `second` in them are on disk 1, others on disk 0.
  TroubledFiles(Files& real, const Clock& clock, std::string second)
      : FaultyFiles(real), clock_(clock), second_(std::move(second)) {}

  /// From here on, changes are counted anew; all before them are on their disks.
  void Meet(const Trouble& trouble) {
    for (auto& undo : undo_) undo.clear();
    trouble_ = trouble;
    changes_ = questions_ = 0;
    refusedUntil_ = {};
  }
  /// How often the file system was changed.
  int changes() const { return changes_; }
  /// How often it was asked.
  int questions() const { return questions_; }

  std::optional<std::string> FirstFile(const std::string& f, const NameTest& t) override {
    return Asked().FirstFile(f, t);
  }
  std::vector<std::string> ListFiles(const std::string& f) override { return Asked().ListFiles(f); }
  bool Exists(const std::string& p) override { return Asked().Exists(p); }
  std::string ActualPath(const std::string& p) override { return Asked().ActualPath(p); }
  std::string RealPath(const std::string& p) override { return Asked().RealPath(p); }
  FileStatus Status(const std::string& p) override { return Asked().Status(p); }
  std::unique_ptr<FileHold> HoldAlone(const std::string& p, WhenUnknown w) override {
    Asked();
    return FaultyFiles::HoldAlone(p, w);
  }
  std::uint64_t FolderId(const std::string& p) override { return Asked().FolderId(p); }
  int NameCount(const std::string& p) override { return Asked().NameCount(p); }
  std::int64_t FreeBytes(const std::string& f) override { return Asked().FreeBytes(f); }
  std::size_t ReadBlock(const std::string& p, std::int64_t o, std::span<char> b) override {
    return Asked().ReadBlock(p, o, b);
  }
  std::string ReadAll(const std::string& p) override { return Asked().ReadAll(p); }

  int Copy(const std::string& s, const std::string& d, Links l, Flush f) override {
    if (IsRefused()) return trouble_.copyCode;
    Amidst(d);
    Remember(d);
    const int code = real_.Copy(s, d, l, f);
    After();
    return code;
  }
  /// Leads across as a copy.
  int Place(const std::string& s, const std::string& d) override {
    if (DiskOf(s) != DiskOf(d)) return Copy(s, d, Links::kRefused, Flush::kFirst);
    if (IsRefused()) return trouble_.copyCode;
    Amidst(d);
    Remember(d);
    const int code = real_.Place(s, d);
    After();
    return code;
  }
  void WriteAll(const std::string& p, std::string_view c) override {
    Change(
        [&](Files& real, const auto&) {
          Amidst(p);
          real.WriteAll(p, c);
        },
        p);
  }
  void SetLastWriteTime(const std::string& p, UtcTime t) override {
    Change(&Files::SetLastWriteTime, p, t);
  }
  void Delete(const std::string& p) override { Change(&Files::Delete, p); }
  void Rename(const std::string& s, const std::string& d) override { Across(&Files::Rename, s, d); }
  void Link(const std::string& e, const std::string& l) override { Across(&Files::Link, e, l); }
  void Secure(const std::string& made, const std::string& source) override {
    if (DiskOf(made) != DiskOf(source)) Flush(made);
  }
  void CreateFolder(const std::string& p) override { Change(&Files::CreateFolder, p); }
  void RemoveTemporaries(const std::string& f) override { Change(&Files::RemoveTemporaries, f); }
  void Append(const std::string& p, std::string_view c) override { Change(&Files::Append, p, c); }

  bool DeleteHeld(const std::string& p, FileHold& held) override {
    bool isGone = false;
    Change([&](Files&, const auto&) { isGone = held.Delete(); }, p);
    return isGone;
  }
  void Flush(const std::string& path) { undo_[DiskOf(path)].clear(); }

 private:
  void Change(auto action, const auto&... arguments) {
    if (IsRefused()) throw Failure(trouble_.failure, "Refused");
    (Remember(arguments), ...);
    std::invoke(action, real_, arguments...);
    After();
  }
  void Across(auto action, const std::string& from, const std::string& to) {
    const auto move = [&](Files& real, const auto&...) {
      if (DiskOf(from) != DiskOf(to)) throw Failure(18, "Another disk");
      std::invoke(action, real, from, to);
    };
    Change(move, from, to);
  }
  std::size_t DiskOf(const std::string& path) const { return path.find(second_) != path.npos; }
  void Remember(const auto&) {}
  /// As it is now it comes back when its disk loses what follows.
  void Remember(const std::string& path) {
    namespace fs = std::filesystem;
    if (fs::is_directory(path)) return;
    auto& undo = undo_[DiskOf(path)];
    if (!fs::exists(path)) return undo.push_back([=] { fs::remove(path); });
    const auto kept = kept_ / std::to_string(++remembered_);
    fs::create_hard_link(path, kept);
    undo.push_back([=] { fs::rename(kept, path); });
  }
  [[noreturn]] void FailPower() {
    if (trouble_.losing >= 0) {
      auto& undo = undo_[trouble_.losing];
      for (; !undo.empty(); undo.pop_back()) undo.back()();
    }
    throw PowerFailure{};
  }
  bool IsRefused() { return IsStruck(Trouble::Kind::kRefused, ++changes_); }
  Files& Asked() {
    if (IsStruck(Trouble::Kind::kUnanswered, ++questions_))
      throw Failure(trouble_.failure, "Unanswered");
    return real_;
  }
  bool IsStruck(Trouble::Kind kind, int count) {
    if (trouble_.kind != kind) return false;
    if (count == trouble_.at) refusedUntil_ = clock_.Monotonic() + trouble_.lasting;
    return count == trouble_.at || clock_.Monotonic() < refusedUntil_;
  }
  void Amidst(const std::string& path) {
    if (changes_ != trouble_.at || trouble_.kind != Trouble::Kind::kPowerFailsAmidst) return;
    std::ofstream(JoinPath(FolderOf(path), ".ostrel-0-1.part")) << "half of";
    FailPower();
  }
  void After() {
    if (changes_ == trouble_.at && trouble_.kind == Trouble::Kind::kPowerFailsAfter) FailPower();
  }

  const Clock& clock_;
  Trouble trouble_;
  int changes_ = 0, questions_ = 0;
  std::string second_;
  TemporaryFolder kept_;
  std::vector<std::function<void()>> undo_[2];
  int remembered_ = 0;
  milliseconds refusedUntil_{0};
};

}  // namespace ostrel
