#include "intake/quarantine.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>

#include "base/names.h"
#include "base/numbers.h"
#include "base/text.h"

namespace ostrel {

namespace {

constexpr const char* kCategory = "Quarantine";
constexpr const char* kFolderBeside = ".RtQuarantine";

/// A field of a line, whatever strangers put into a name.
std::string Escaped(std::string_view text) {
  std::string field;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    field += byte < 0x20 || c == '%' ? fmt::format("%{:02X}", byte) : std::string(1, c);
  }
  return field;
}

std::string Unescaped(std::string_view field) {
  std::string text;
  for (std::size_t i = 0; i < field.size(); ++i) {
    unsigned char byte = 0;
    const auto* const digits = field.data() + i + 1;
    const bool isCode = field[i] == '%' && i + 2 < field.size() &&
                        std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2;
    text += isCode ? static_cast<char>(byte) : field[i];
    if (isCode) i += 2;
  }
  return text;
}

std::vector<std::string> FieldsOf(std::string_view line) {
  std::vector<std::string> fields;
  for (;;) {
    const auto end = line.find('\t');
    fields.push_back(Unescaped(line.substr(0, end)));
    if (end == std::string_view::npos) return fields;
    line.remove_prefix(end + 1);
  }
}

}  // namespace

std::string Quarantine::Take(const std::string& path, std::optional<Priority> p,
                             const std::string& name, const std::string& reason) {
  auto there = Move(path, p, name, reason);
  if (p && FolderOf(path) == parts_.values.HoldingFolder(p->number()))
    parts_.handedBack.Taken(*p, std::string(FileNameOf(path)));
  parts_.history.SetAside(path, there, name);
  return there;
}

std::string Quarantine::Move(const std::string& path, std::optional<Priority> p,
                             const std::string& name, const std::string& reason) {
  const Item item{
      .path = "", .origin = path, .p = p, .reason = reason, .since = parts_.clock.UtcNow()};
  try {
    return MoveTo(parts_.values.QuarantineFolder(), item, name);
  } catch (const Failure& failure) {
    if (failure.IsMissing()) throw;
    return MoveTo(JoinPath(FolderOf(path), kFolderBeside), item, name);
  }
}

/// What is noted comes first: a file that a power failure leaves here has its reason.
std::string Quarantine::MoveTo(const std::string& folder, Item item, const std::string& name) {
  if (!parts_.files.Exists(folder)) parts_.files.CreateFolder(folder);
  auto& notes = KnownNotes();
  const auto freeName = FirstFreeName(name, [&](const std::string& candidate) {
    const auto isOfThatName = [&](const auto& note) { return note.second.name() == candidate; };
    return parts_.files.Exists(JoinPath(folder, candidate)) ||
           std::any_of(notes.begin(), notes.end(), isOfThatName);
  });
  item.path = JoinPath(folder, freeName);
  Write(item);
  parts_.files.Rename(item.origin, item.path);
  notes[item.path] = item;
  return item.path;
}

std::vector<Quarantine::Item> Quarantine::List() {
  const auto& notes = KnownNotes();
  std::vector<Item> items;
  for (const auto& folder : Folders()) {
    for (const auto& name : parts_.files.ListFiles(folder)) {
      const auto path = JoinPath(folder, name);
      const auto note = notes.find(path);
      items.push_back(note != notes.end() ? note->second : Item{path, "", {}, "", {}});
    }
  }
  std::ranges::sort(items, {}, &Item::name);
  return items;
}

std::set<std::string> Quarantine::Folders() {
  std::set<std::string> folders = {parts_.values.QuarantineFolder()};
  const auto& ingestPath = parts_.values.ingestPath;
  if (!ingestPath.empty()) folders.insert(ingestPath + kFolderBeside);
  for (const auto& [path, item] : KnownNotes()) folders.emplace(FolderOf(path));
  return folders;
}

std::optional<Quarantine::Item> Quarantine::Find(const std::string& name) {
  for (auto& item : List()) {
    if (ToUpper(item.name()) == ToUpper(name)) return item;
  }
  return std::nullopt;
}

std::string Quarantine::Restore(const Item& item) {
  const auto origin = item.origin.empty() ? parts_.values.ingestPath + item.name() : item.origin;
  const std::string name(FileNameOf(origin));
  std::string placed;
  if (item.p) {
    // Its age begins anew, unless another account laid it there.
    TryStep([&] { parts_.files.SetLastWriteTime(item.path, parts_.clock.UtcNow()); });
    placed = parts_.handedBack.GiveBack(item.path, *item.p, name);
  } else {
    const std::string folder(FolderOf(origin));
    placed = JoinPath(folder, FirstFreeName(name, [&](const std::string& candidate) {
                        return parts_.files.Exists(JoinPath(folder, candidate));
                      }));
    parts_.copy.MoveFile(item.path, placed);
  }
  KnownNotes().erase(item.path);
  return placed;
}

void Quarantine::Delete(const Item& item) {
  parts_.files.Delete(item.path);
  KnownNotes().erase(item.path);
}

Quarantine::Notes& Quarantine::KnownNotes() {
  if (!notes_) {
    notes_.emplace();
    RunStep(parts_.reporting, kCategory, [this] { ReadNotes(); });
  }
  return *notes_;
}

/// The lines of files that are gone are dropped, so that the text does not grow for ever.
void Quarantine::ReadNotes() {
  if (!parts_.files.Exists(NotesPath())) return;
  bool isOutdated = false;
  ForEachLine(parts_.files.ReadAll(NotesPath()), [&](std::string_view line) {
    const auto item = ItemIn(line);
    bool isThere = item.has_value();
    if (item) TryStep([&] { isThere = parts_.files.Exists(item->path); });
    if (isThere) notes_->insert_or_assign(item->path, *item);
    isOutdated = isOutdated || !isThere;
  });
  if (!isOutdated) return;
  std::string text;
  for (const auto& [path, item] : *notes_) text += LineOf(item);
  parts_.files.WriteAll(NotesPath(), text);
}

/// A file whose reason cannot be written is put out of the way all the same.
void Quarantine::Write(const Item& item) {
  RunStep(parts_.reporting, kCategory, [&] {
    const auto folder = parts_.values.QuarantineFolder();
    if (!parts_.files.Exists(folder)) parts_.files.CreateFolder(folder);
    parts_.files.Append(NotesPath(), LineOf(item));
  });
}

std::string Quarantine::NotesPath() const {
  return JoinPath(parts_.values.QuarantineFolder(), ".reasons");
}

/// Paths in the data root are those from there on: a station's folder can be moved.
std::string Quarantine::LineOf(const Item& item) const {
  const auto since = item.since.value_or(UtcTime{}).time_since_epoch().count();
  return fmt::format("{}\t{}\t{}\t{}\t{}\n", Escaped(parts_.values.InDataRoot(item.path)),
                     Escaped(parts_.values.InDataRoot(item.origin)), item.p ? item.p->number() : 0,
                     since, Escaped(item.reason));
}

std::optional<Quarantine::Item> Quarantine::ItemIn(std::string_view line) const {
  const auto fields = FieldsOf(line);
  if (fields.size() != 5) return std::nullopt;
  const auto priority = LeadingInteger(fields[2]);
  std::int64_t since = 0;
  std::from_chars(fields[3].data(), fields[3].data() + fields[3].size(), since);
  return Item{.path = parts_.values.FromDataRoot(fields[0]),
              .origin = parts_.values.FromDataRoot(fields[1]),
              .p = priority >= 1 && priority <= kPriorityCount ? std::optional(Priority(priority))
                                                               : std::nullopt,
              .reason = fields[4],
              .since = UtcTime(milliseconds(since))};
}

}  // namespace ostrel
