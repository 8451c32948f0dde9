// A small database file of the station, shared with its group, and statements over it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/failure.h"

struct sqlite3;
struct sqlite3_stmt;

namespace ostrel {

enum class DatabaseUse {
  kReadAndWrite,  // the file is made when missing
  kExisting,      // it is not; where it may not be written, it is only read
  kReadOnly,
};

/// Failure 57 of a database that is none, or is not whole. One that is held, may not be read or has
/// no room fails with a plain Failure.
class DamagedDatabase : public Failure {
 public:
  enum class Kind { kContent, kUnread };
  DamagedDatabase(const std::string& called, const std::string& why, Kind kind = Kind::kContent)
      : Failure(failure_number::kDeviceError, called + ": " + why), why_(why), kind_(kind) {}
  const std::string& why() const { return why_; }
  /// The disk could not read it, which it may do later.
  bool MayPass() const { return kind_ == Kind::kUnread; }

 private:
  std::string why_;
  Kind kind_;
};

/// One opening. Every call throws Failure 57, which begins with what the database is called.
class SqliteDatabase {
 public:
  /// Its folder is never made. Nothing but a regular file is opened; a link may lead to one.
  SqliteDatabase(const std::string& path, std::string called, DatabaseUse use);

  void Execute(const char* command);
  /// Throws for a database that a later version of the program has made: one whose user_version is
  /// beyond `newest`.
  void CheckFormat(std::int64_t newest) const;
  /// Runs `steps` all or none.
  template <typename Steps>
  void InTransaction(Steps&& steps) {
    Execute("BEGIN IMMEDIATE");
    try {
      steps();
      Execute("COMMIT");
    } catch (...) {
      RollBack();
      throw;
    }
  }
  /// Rows that the last statement changed.
  int Changes() const;
  sqlite3* Handle() const { return database_.get(); }
  [[noreturn]] void Fail() const;

 private:
  void RollBack();

  struct Close {
    void operator()(sqlite3* database) const;
  };
  std::string called_;
  std::unique_ptr<sqlite3, Close> database_;
};

/// One statement with its values; a query's rows come one by one. Throws Failure 57.
class SqliteStatement {
 public:
  SqliteStatement(const SqliteDatabase& database, const char* text);
  ~SqliteStatement();
  SqliteStatement(const SqliteStatement&) = delete;
  SqliteStatement& operator=(const SqliteStatement&) = delete;

  // Values, in the order of the statement's parameters
  SqliteStatement& Bind(std::int64_t number);
  SqliteStatement& Bind(const std::string& text);
  SqliteStatement& Bind(std::optional<std::int64_t> number);
  SqliteStatement& BindBytes(std::string_view bytes);
  SqliteStatement& BindNothing();

  /// Runs it, or goes to its next row; false when there is none.
  bool Step();
  /// Ready for its next values.
  void Reset();

  // Columns of the row, from 0
  std::int64_t Number(int column) const;
  std::string Text(int column) const;
  std::string Bytes(int column) const;
  bool IsNothing(int column) const;

 private:
  const SqliteDatabase& database_;
  sqlite3_stmt* statement_ = nullptr;
  int bound_ = 0;
};

}  // namespace ostrel
