#include "platform/linux/sqlite_database.h"

#include <algorithm>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include "platform/linux/descriptor.h"
#include "platform/linux/file_io.h"

namespace ostrel {
namespace {

/// The library always asks to create its journal; see OpenOrMake for the folder where that fails.
int OpenForLibrary(const char* path, int flags, int mode) {
  const bool mayBePresent = (flags & (O_CREAT | O_EXCL)) == O_CREAT;
  if (!mayBePresent) return open(path, flags, mode);
  return OpenOrMake(path, flags & ~O_CREAT, static_cast<unsigned>(mode));
}

// The library would close the file of a new store to the station's group. The file is shut again
// before the library opens it: shutting it later would end every lock that the library holds on it.
void MakeForGroup(const std::string& path) {
  const Descriptor made(OpenOrMake(path.c_str(), O_RDWR));
}

/// A pipe would be waited for, a device do something, and what a link that leads nowhere names
/// would be made.
void CheckKind(const std::string& path, const std::string& called) {
  struct stat status;
  if (lstat(path.c_str(), &status) != 0) return;  // is made, or cannot be opened
  const bool isLink = S_ISLNK(status.st_mode);
  if (isLink && stat(path.c_str(), &status) != 0 && (errno == ENOENT || errno == ELOOP))
    throw DamagedDatabase(called, "it is a link that leads nowhere");
  if (!S_ISREG(status.st_mode) && !S_ISLNK(status.st_mode))
    throw DamagedDatabase(called, "it is no file");
}

/// What a whole database never fails with, by a statement of ours.
std::optional<DamagedDatabase::Kind> DamageIn(int extendedCode) {
  using Kind = DamagedDatabase::Kind;
  constexpr int kCodes[] = {SQLITE_ERROR, SQLITE_CORRUPT, SQLITE_NOTADB, SQLITE_TOOBIG,
                            SQLITE_MISMATCH};
  constexpr int kPlainCode = 0xFF;
  if (std::ranges::count(kCodes, extendedCode & kPlainCode) > 0) return Kind::kContent;
  if (extendedCode == SQLITE_IOERR_SHORT_READ) return Kind::kContent;
  if (extendedCode == SQLITE_IOERR_READ || extendedCode == SQLITE_IOERR_CORRUPTFS)
    return Kind::kUnread;
  return std::nullopt;
}

/// Once: another thread may be about to open a file.
void UseOwnOpen() {
  static const int result = [] {
    auto* const system = sqlite3_vfs_find(nullptr);
    return system->xSetSystemCall(system, "open",
                                  reinterpret_cast<sqlite3_syscall_ptr>(OpenForLibrary));
  }();
  static_cast<void>(result);
}

}  // namespace

SqliteDatabase::SqliteDatabase(const std::string& path, std::string called, DatabaseUse use)
    : called_(std::move(called)) {
  UseOwnOpen();
  CheckKind(path, called_);
  int flags = use == DatabaseUse::kReadOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
  if (use == DatabaseUse::kReadAndWrite) {
    flags |= SQLITE_OPEN_CREATE;
    MakeForGroup(path);
  }
  sqlite3* opened = nullptr;
  const int result = sqlite3_open_v2(path.c_str(), &opened, flags, nullptr);
  database_.reset(opened);
  if (result != SQLITE_OK) Fail();
}

void SqliteDatabase::Close::operator()(sqlite3* database) const {
  sqlite3_close(database);
}

void SqliteDatabase::Execute(const char* command) {
  if (sqlite3_exec(Handle(), command, nullptr, nullptr, nullptr) != SQLITE_OK) Fail();
}

void SqliteDatabase::RollBack() {
  sqlite3_exec(Handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

int SqliteDatabase::Changes() const {
  return sqlite3_changes(Handle());
}

void SqliteDatabase::Fail() const {
  const std::string why = sqlite3_errmsg(Handle());
  if (const auto damage = DamageIn(sqlite3_extended_errcode(Handle())))
    throw DamagedDatabase(called_, why, *damage);
  throw Failure(failure_number::kDeviceError, called_ + ": " + why);
}

void SqliteDatabase::CheckFormat(std::int64_t newest) const {
  SqliteStatement version(*this, "PRAGMA user_version");
  if (version.Step() && version.Number(0) > newest)
    throw Failure(failure_number::kDeviceError, called_ + ": a later version has made it");
}

SqliteStatement::SqliteStatement(const SqliteDatabase& database, const char* text)
    : database_(database) {
  if (sqlite3_prepare_v2(database.Handle(), text, -1, &statement_, nullptr) != SQLITE_OK)
    database.Fail();
}

SqliteStatement::~SqliteStatement() {
  sqlite3_finalize(statement_);
}

SqliteStatement& SqliteStatement::Bind(std::int64_t number) {
  sqlite3_bind_int64(statement_, ++bound_, number);
  return *this;
}

SqliteStatement& SqliteStatement::Bind(const std::string& text) {
  sqlite3_bind_text(statement_, ++bound_, text.data(), static_cast<int>(text.size()),
                    SQLITE_TRANSIENT);
  return *this;
}

SqliteStatement& SqliteStatement::Bind(std::optional<std::int64_t> number) {
  return number ? Bind(*number) : BindNothing();
}

SqliteStatement& SqliteStatement::BindBytes(std::string_view bytes) {
  sqlite3_bind_blob64(statement_, ++bound_, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
  return *this;
}

SqliteStatement& SqliteStatement::BindNothing() {
  sqlite3_bind_null(statement_, ++bound_);
  return *this;
}

bool SqliteStatement::Step() {
  const int result = sqlite3_step(statement_);
  if (result != SQLITE_ROW && result != SQLITE_DONE) database_.Fail();
  return result == SQLITE_ROW;
}

void SqliteStatement::Reset() {
  sqlite3_reset(statement_);
  bound_ = 0;
}

std::int64_t SqliteStatement::Number(int column) const {
  return sqlite3_column_int64(statement_, column);
}

std::string SqliteStatement::Text(int column) const {
  const auto* const text = sqlite3_column_text(statement_, column);
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_, column));
  return text == nullptr ? std::string{} : std::string(reinterpret_cast<const char*>(text), size);
}

std::string SqliteStatement::Bytes(int column) const {
  const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(statement_, column));
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_, column));
  return bytes == nullptr ? std::string{} : std::string(bytes, size);
}

bool SqliteStatement::IsNothing(int column) const {
  return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

}  // namespace ostrel
