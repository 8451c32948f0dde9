// A small database file, and one statement of it. Whoever shares the station's folder may share the
// file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace ostrel {

class SqliteDatabase {
 public:
  /// Opens the file at `path`, which is made when missing. `whose` names the store in failures.
  /// Throws Failure 57, as everything here does.
  SqliteDatabase(const std::string& path, std::string whose);

  sqlite3* Get() const { return database_.get(); }
  void Execute(const char* command);
  /// Readers do not wait for a writer from now on. When another process is just doing the same, its
  /// doing suffices.
  void UseWriteAheadLog();
  /// Runs `step`; what it did to the store stands whole or not at all.
  template <typename Step>
  void InTransaction(Step&& step) {
    Execute("BEGIN IMMEDIATE");
    try {
      step();
      Execute("COMMIT");
    } catch (...) {
      RollBack();
      throw;
    }
  }
  [[noreturn]] void Fail() const;

 private:
  void RollBack();

  struct Close {
    void operator()(sqlite3* database) const;
  };
  std::unique_ptr<sqlite3, Close> database_;
  std::string whose_;
};

/// One statement with its values; a query's rows come one by one.
class SqliteStatement {
 public:
  SqliteStatement(SqliteDatabase& database, const char* text);
  ~SqliteStatement();
  SqliteStatement(const SqliteStatement&) = delete;
  SqliteStatement& operator=(const SqliteStatement&) = delete;

  // The values, in the order of their places in the statement.
  void Bind(std::int64_t number);
  void Bind(std::string_view text);
  /// True when there is a row; the columns are those of it.
  bool Step();
  std::string Text(int column) const;
  std::int64_t Number(int column) const;

 private:
  SqliteDatabase& database_;
  sqlite3_stmt* statement_ = nullptr;
  int bound_ = 0;
};

}  // namespace ostrel
