#include "platform/linux/sqlite_database.h"

#include <fcntl.h>
#include <sqlite3.h>

#include "base/failure.h"
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

void UseOwnOpen() {
  auto* const system = sqlite3_vfs_find(nullptr);
  system->xSetSystemCall(system, "open", reinterpret_cast<sqlite3_syscall_ptr>(OpenForLibrary));
}

}  // namespace

void SqliteDatabase::Close::operator()(sqlite3* database) const {
  sqlite3_close(database);
}

SqliteDatabase::SqliteDatabase(const std::string& path, std::string whose)
    : whose_(std::move(whose)) {
  UseOwnOpen();
  MakeForGroup(path);
  sqlite3* opened = nullptr;
  const int result = sqlite3_open(path.c_str(), &opened);
  database_.reset(opened);
  if (result != SQLITE_OK) Fail();
}

void SqliteDatabase::Fail() const {
  throw Failure(failure_number::kDeviceError, whose_ + ": " + sqlite3_errmsg(Get()));
}

void SqliteDatabase::Execute(const char* command) {
  if (sqlite3_exec(Get(), command, nullptr, nullptr, nullptr) != SQLITE_OK) Fail();
}

void SqliteDatabase::UseWriteAheadLog() {
  sqlite3_exec(Get(), "PRAGMA journal_mode = WAL", nullptr, nullptr, nullptr);
}

void SqliteDatabase::RollBack() {
  sqlite3_exec(Get(), "ROLLBACK", nullptr, nullptr, nullptr);
}

SqliteStatement::SqliteStatement(SqliteDatabase& database, const char* text) : database_(database) {
  if (sqlite3_prepare_v2(database.Get(), text, -1, &statement_, nullptr) != SQLITE_OK)
    database.Fail();
}

SqliteStatement::~SqliteStatement() {
  sqlite3_finalize(statement_);
}

void SqliteStatement::Bind(std::int64_t number) {
  sqlite3_bind_int64(statement_, ++bound_, number);
}

void SqliteStatement::Bind(std::string_view text) {
  sqlite3_bind_text(statement_, ++bound_, text.data(), static_cast<int>(text.size()),
                    SQLITE_TRANSIENT);
}

bool SqliteStatement::Step() {
  const int result = sqlite3_step(statement_);
  if (result != SQLITE_ROW && result != SQLITE_DONE) database_.Fail();
  return result == SQLITE_ROW;
}

std::string SqliteStatement::Text(int column) const {
  const auto* const text = sqlite3_column_text(statement_, column);
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_, column));
  return text == nullptr ? std::string{} : std::string(reinterpret_cast<const char*>(text), size);
}

std::int64_t SqliteStatement::Number(int column) const {
  return sqlite3_column_int64(statement_, column);
}

}  // namespace ostrel
