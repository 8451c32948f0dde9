// A file system that meets trouble at one chosen change: the power fails there, or it and what
// follows for a while is refused.
#pragma once

#include <fstream>
#include <functional>

#include "base/failure.h"
#include "base/names.h"
#include "platform/clock.h"
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
  };
  Kind kind = Kind::kNone;
  int at = 0;  // the change that it strikes, the first is 1
  milliseconds lasting{0};
  int copyCode = 0;
  std::int32_t failure = 0;
};

class TroubledFiles : public FaultyFiles {
 public:
  TroubledFiles(Files& real, const Clock& clock) : FaultyFiles(real), clock_(clock) {}

  /// From here on, changes are counted anew.
  void Meet(const Trouble& trouble) {
    trouble_ = trouble;
    changes_ = 0;
    refusedUntil_ = {};
  }
  /// How often the file system was changed.
  int changes() const { return changes_; }

  int Copy(const std::string& s, const std::string& d) override {
    if (IsRefused()) return trouble_.copyCode;
    Amidst(d);
    const int code = real_.Copy(s, d);
    After();
    return code;
  }
  void WriteAll(const std::string& p, std::string_view c) override {
    Change([&](Files& real) {
      Amidst(p);
      real.WriteAll(p, c);
    });
  }
  void SetLastWriteTime(const std::string& p, UtcTime t) override {
    Change(&Files::SetLastWriteTime, p, t);
  }
  void Delete(const std::string& p) override { Change(&Files::Delete, p); }
  void Rename(const std::string& s, const std::string& d) override { Change(&Files::Rename, s, d); }
  void Link(const std::string& e, const std::string& l) override { Change(&Files::Link, e, l); }
  void CreateFolder(const std::string& p) override { Change(&Files::CreateFolder, p); }
  void RemoveTemporaries(const std::string& f) override { Change(&Files::RemoveTemporaries, f); }
  void Append(const std::string& p, std::string_view c) override { Change(&Files::Append, p, c); }

 private:
  void Change(auto action, const auto&... arguments) {
    if (IsRefused()) throw Failure(trouble_.failure, "Refused");
    std::invoke(action, real_, arguments...);
    After();
  }
  bool IsRefused() {
    const bool isStruck = ++changes_ == trouble_.at;
    if (trouble_.kind != Trouble::Kind::kRefused) return false;
    if (isStruck) refusedUntil_ = clock_.Monotonic() + trouble_.lasting;
    return isStruck || clock_.Monotonic() < refusedUntil_;
  }
  void Amidst(const std::string& path) {
    if (changes_ != trouble_.at || trouble_.kind != Trouble::Kind::kPowerFailsAmidst) return;
    std::ofstream(JoinPath(FolderOf(path), ".ostrel-0-1.part")) << "half of";
    throw PowerFailure{};
  }
  void After() {
    if (changes_ == trouble_.at && trouble_.kind == Trouble::Kind::kPowerFailsAfter)
      throw PowerFailure{};
  }

  const Clock& clock_;
  Trouble trouble_;
  int changes_ = 0;
  milliseconds refusedUntil_{0};
};

}  // namespace ostrel
