#include "station/queue_operations.h"

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
    if (isOnAir) Refuse(fmt::format("{} is on the air.", ToUpper(name)));
    parts_.queue.Remove(entry->p, {entry->position});
    return fmt::format("{} of priority {} is deleted.", ToUpper(name), entry->p.number());
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
