// What operators hold back: files of the queues in folders of their own, KvData/RtHeld/<priority>/,
// where they rest until they are released, whatever becomes of the station. Nothing purges them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/priority.h"
#include "intake/file_copy.h"
#include "intake/handed_back_files.h"
#include "intake/product_history.h"
#include "platform/files.h"
#include "state/program_values.h"

namespace ostrel {

class HeldFiles {
 public:
  struct Parts {
    Files& files;
    Clock& clock;
    FileCopy& copy;
    HandedBackFiles& handedBack;
    ProductHistory& history;
    const ProgramValues& values;
  };
  explicit HeldFiles(const Parts& parts) : parts_(parts) {}

  struct Held {
    Priority p;
    std::string name;
  };
  /// All of them, by priority and name.
  std::vector<Held> List() const;
  /// A name is held once, of whatever priority.
  std::optional<Held> Find(const std::string& name) const;

  /// The file at `path` moves to those that are held. Returns its path there. Throws Failure.
  std::string Take(const std::string& path, Priority p, const std::string& name);
  /// It goes through the intake again. Throws Failure.
  void Release(const Held& held);
  /// Throws Failure.
  void Delete(const Held& held);

 private:
  std::string PathOf(const Held& held) const;

  Parts parts_;
};

}  // namespace ostrel
