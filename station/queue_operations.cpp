#include "station/queue_operations.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

#include "base/names.h"
#include "base/text.h"

namespace ostrel {

namespace {

constexpr const char* kCategory = "Operator";

[[noreturn]] void Refuse(const std::string& why) {
  throw Failure(failure_number::kInvalidArgument, why);
}

/// A name is no path: it leads nowhere but into its folder.
std::string CheckedName(const std::string& name) {
  if (name.empty() || name.front() == '.' || name.find('/') != std::string::npos)
    Refuse(fmt::format("\"{}\" is no file's name.", name));
  return name;
}

}  // namespace

std::string QueueOperations::Run(const std::string& account,
                                 const std::function<std::string()>& operation) {
  std::string done;
  std::optional<Failure> failure;
  parts_.activity.Run([&] {
    try {
      done = operation();
      parts_.reporting.WriteLog(kCategory, fmt::format("{} ({})", done, account));
    } catch (const std::exception& error) {
      failure = AsFailure(error);
    }
  });
  if (failure) throw Failure(*failure);
  if (done.empty()) Refuse("The station ends.");
  return done;
}

TransmitQueue::Listed QueueOperations::FindQueued(const std::string& name) const {
  const auto found = parts_.queue.Find(CheckedName(name));
  if (!found) Refuse(fmt::format("No queue lists {}.", ToUpper(name)));
  return *found;
}

/// Of two files of a product the intake would keep the one that is queued first, be it the older.
void QueueOperations::CheckThatItIsAlone(Priority p, const std::string& name) const {
  if (!IsChecked(parts_.setup.chkOverWrite[p])) return;
  if (parts_.queue.HoldsProduct(p, ToUpper(name)) || parts_.handedBack.HoldsProduct(p, name))
    Refuse(fmt::format("Priority {} has another file of the product of {}.", p.number(), name));
}

std::string QueueOperations::Hold(const std::string& account, const std::string& name) {
  return Run(account, [&] {
    const auto entry = FindQueued(name);
    const auto held = parts_.queue.Hold(entry);
    const auto as = ToUpper(held) == ToUpper(name) ? "" : " as " + held;
    return fmt::format("{} of priority {} is held{}.", ToUpper(name), entry.p.number(), as);
  });
}

std::string QueueOperations::Release(const std::string& account, const std::string& name) {
  return Run(account, [&] {
    const auto held = parts_.held.Find(CheckedName(name));
    if (!held) Refuse(fmt::format("{} is not held.", ToUpper(name)));
    CheckThatItIsAlone(held->p, held->name);
    parts_.held.Release(*held);
    return fmt::format("{} of priority {} is released.", held->name, held->p.number());
  });
}

std::string QueueOperations::Move(const std::string& account, const std::string& name, Priority p) {
  return Run(account, [&] {
    const auto entry = FindQueued(name);
    if (entry.p == p) Refuse(fmt::format("{} has priority {}.", ToUpper(name), p.number()));
    CheckThatItIsAlone(p, ToUpper(name));
    parts_.queue.Move(entry, p);
    return fmt::format("{} moves from priority {} to {}.", ToUpper(name), entry.p.number(),
                       p.number());
  });
}

std::string QueueOperations::PutFirst(const std::string& account, const std::string& name) {
  return Run(account, [&] {
    const auto entry = FindQueued(name);
    parts_.queue.PutFirst(entry);
    return fmt::format("{} is the next of priority {}.", ToUpper(name), entry.p.number());
  });
}

std::string QueueOperations::Stop(const std::string& account, const std::string& name) {
  return Run(account, [&] {
    const auto p = FindOnAir(name);
    parts_.queue.Stop(p);
    return fmt::format("{} of priority {} ends at its next block.",
                       parts_.queue.Entries(p).front().name, p.number());
  });
}

/// An interrupted one is on the air, too. Without a name it is the one that has its turn.
Priority QueueOperations::FindOnAir(const std::string& name) const {
  for (const Priority p : AllPriorities()) {
    if (!parts_.queue.IsOnAir(p)) continue;
    const auto& file = parts_.queue.Entries(p).front().name;
    if (name.empty() ? parts_.status.block && parts_.status.block->priority == p
                     : ToUpper(file) == ToUpper(name))
      return p;
  }
  Refuse(name.empty() ? "Nothing is on the air." : ToUpper(name) + " is not on the air.");
}

std::string QueueOperations::Delete(const std::string& account, const std::string& name) {
  return Run(account, [&] {
    const auto entry = parts_.queue.Find(CheckedName(name));
    const bool isOnAir = entry && entry->position == 0 && parts_.queue.IsOnAir(entry->p);
    if (const auto held = parts_.held.Find(name)) {
      if (entry)
        Refuse(fmt::format("{} {}, and another one is held. {}", ToUpper(name),
                           isOnAir ? "is on the air" : "waits",
                           isOnAir ? "Wait until it is out."
                                   : "Hold this one too: then each has a name of its own."));
      parts_.held.Delete(*held);
      return fmt::format("{}, which was held, is deleted.", held->name);
    }
    if (!entry) Refuse(fmt::format("{} is neither queued nor held.", ToUpper(name)));
    if (isOnAir) Refuse(fmt::format("{} is on the air: ostrel-queue stop ends it.", ToUpper(name)));
    parts_.queue.Remove(entry->p, {entry->position});
    return fmt::format("{} of priority {} is deleted.", ToUpper(name), entry->p.number());
  });
}

std::string QueueOperations::SetAside(const std::string& account, const std::string& name) {
  return Run(account, [&] {
    const auto path = name.empty() ? FindBlocker() : FindOutside(CheckedName(name));
    auto reason = parts_.obstacles.ReasonOf(path);
    if (reason.empty()) reason = "An operator wanted it so.";
    const std::string file(FileNameOf(path));
    const auto there = parts_.quarantine.Take(path, PriorityOf(path), file, reason);
    const auto as = FileNameOf(there) == file ? "" : fmt::format(" as {}", FileNameOf(there));
    return fmt::format("{} of {} is set aside{}: {}", file, FileNameOf(FolderOf(path)), as, reason);
  });
}

/// The path of a file that no queue lists yet.
std::string QueueOperations::FindOutside(const std::string& name) const {
  const auto& values = parts_.values;
  std::vector<std::string> folders = {values.ingestPath};
  for (int n = 1; n <= kCompressFolder; ++n) folders.push_back(values.HoldingFolder(n));
  folders.push_back(values.KeptFolder());
  for (const auto& folder : folders) {
    const auto isAnother = [&](const std::string& other) {
      return ToUpper(other) != ToUpper(name);
    };
    if (folder.empty()) continue;
    if (const auto found = parts_.files.FirstFile(folder, isAnother))
      return JoinPath(folder, *found);
  }
  if (parts_.queue.Find(name)) Refuse(fmt::format("{} is queued: hold or delete it.", name));
  Refuse(fmt::format("{} waits in no folder.", name));
}

/// The path of the file that has been kept from going on the longest, the ingest folder's first.
std::string QueueOperations::FindBlocker() const {
  auto obstacles = parts_.obstacles.refused();
  if (const auto blocking = parts_.obstacles.blocking())
    obstacles.insert(obstacles.begin(), *blocking);
  if (obstacles.empty()) Refuse("Nothing is kept from going on.");
  for (const auto& [path, obstacle] : obstacles) {
    if (HasOwnTrouble(path)) return path;
  }
  const auto& [path, obstacle] = obstacles.front();
  Refuse(
      fmt::format("{} is not to blame for what keeps it: {} Name it to set it aside all the same.",
                  path, obstacle.reason));
}

/// What keeps a file that can be taken and read would keep any other in its place, and so does a
/// disk of which nothing can be read.
bool QueueOperations::HasOwnTrouble(const std::string& path) const {
  if (path.ends_with('/')) return false;
  const auto read = [this](const std::string& file) {
    std::array<char, 1> byte;
    parts_.files.ReadBlock(file, 0, byte);
  };
  const auto trouble = FailureIn([&] {
    read(path);
    parts_.files.HoldAlone(path, WhenUnknown::kTake);
  });
  if (!trouble || trouble->IsInUse()) return trouble.has_value();
  const std::string folder(FolderOf(path));
  return TryStep([&] {
    const auto other = parts_.files.FirstFile(
        folder, [&](const std::string& name) { return name == FileNameOf(path); });
    read(JoinPath(folder, other.value()));
  });
}

/// The one whose holding folder that is.
std::optional<Priority> QueueOperations::PriorityOf(const std::string& path) const {
  for (const Priority p : AllPriorities()) {
    if (FolderOf(path) == parts_.values.HoldingFolder(p.number())) return p;
  }
  return std::nullopt;
}

Quarantine::Item QueueOperations::FindSetAside(const std::string& name) const {
  const auto found = parts_.quarantine.Find(CheckedName(name));
  if (!found) Refuse(fmt::format("{} is not in the quarantine.", name));
  return *found;
}

std::string QueueOperations::Restore(const std::string& account, const std::string& name) {
  return Run(account, [&] {
    const auto item = FindSetAside(name);
    const auto path = parts_.quarantine.Restore(item);
    return fmt::format("{} is restored to {} as {}.", item.name(), FileNameOf(FolderOf(path)),
                       FileNameOf(path));
  });
}

std::string QueueOperations::DeleteSetAside(const std::string& account, const std::string& name) {
  return Run(account, [&] {
    const auto item = FindSetAside(name);
    parts_.quarantine.Delete(item);
    return fmt::format("{}, which was set aside, is deleted.", item.name());
  });
}

std::string QueueOperations::SendAgain(const std::string& account, const Resend& resend) {
  return Run(account, [&] {
    const auto file = CheckedName(resend.file);
    const auto source = resend.isHeld ? JoinPath(parts_.values.HeldFolder(resend.p), file)
                                      : parts_.values.InSentFolder(file);
    if (!parts_.files.Exists(source)) Refuse(fmt::format("{} is gone.", file));
    CheckThatItIsAlone(resend.p, file);
    const auto placed = resend.isHeld ? parts_.handedBack.GiveBack(source, resend.p, file)
                                      : GiveCopy(source, resend.p, file);
    parts_.history.Repeat(resend.p, resend.name, resend.id, placed);
    return fmt::format("{} is sent again with priority {}.", file, resend.p.number());
  });
}

std::string QueueOperations::GiveCopy(const std::string& source, Priority p,
                                      const std::string& file) {
  const auto copy = parts_.records.MakeOf(p, source, file);
  try {
    return parts_.handedBack.GiveBack(copy, p, file);
  } catch (const std::exception&) {
    parts_.records.Delete(copy);  // the next start would send it
    throw;
  }
}

std::string QueueOperations::PauseIntake(const std::string& account) {
  return Run(account, [this] {
    parts_.status.intakeIsPaused = true;
    return std::string("The intake pauses: received files stay in their folder.");
  });
}

std::string QueueOperations::ResumeIntake(const std::string& account) {
  return Run(account, [this] {
    parts_.status.intakeIsPaused = false;
    return std::string("The intake goes on.");
  });
}

}  // namespace ostrel
