// The history in a database file, written by a thread of its own with its own connection. What
// waits to be written is one row a product; a store that is held or full delays them and is tried
// again.
#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <thread>

#include "platform/history.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/sqlite_database.h"

namespace ostrel {

class SqliteHistory : public History {
 public:
  /// The database file; it is made when missing, its folder is not.
  explicit SqliteHistory(std::string path) : path_(std::move(path)) {}
  ~SqliteHistory() override { End(); }
  SqliteHistory(const SqliteHistory&) = delete;
  SqliteHistory& operator=(const SqliteHistory&) = delete;

  Earlier Begin(const HistoryTerms& terms) override;
  void End() override;
  std::unique_ptr<ProductContent> Open(const std::string& path) override;
  void Put(const ProductRow& row, std::unique_ptr<ProductContent> content) override;
  std::optional<HistoryNews> TakeNews() override;

 private:
  class OpenFile;
  /// What was read of a product.
  struct Digest {
    std::int64_t size = 0;
    std::string hash;    // SHA-256, in hexadecimal digits
    std::string packed;  // empty: the bytes are not kept
  };
  struct Change {
    ProductRow row;
    std::unique_ptr<ProductContent> content;
    std::optional<Digest> digest;
  };
  using Changes = std::map<std::int64_t, Change>;  // by id: the last one is the one that counts

  /// Opens the store, which is made when missing; what it knows of earlier.
  Earlier Open();
  void SetAside(const DamagedDatabase& damage);
  void Run();
  void CheckAndWrite(const Changes& changes);
  void CheckOnce();
  void WriteAndExpire(const Changes& changes);
  Changes TakeWaiting();
  void Read(Change& change) const;
  void Write(const Changes& changes);
  void WriteRow(const Change& change);
  void WriteContent(std::int64_t id, const Digest& digest);
  void Expire();
  /// Deletes at most a share of the rows of `table`, by a statement that takes a time and a number.
  void ExpireShare(const char* table, const char* statement, std::chrono::days age);
  void PutBack(Changes changes);
  void Tell(HistoryNews::Kind kind, const std::string& text);
  void UseDatabase(std::unique_ptr<SqliteDatabase> database);

  std::string path_;
  HistoryTerms terms_;
  /// The writer's, once it runs; it comes and goes under the mutex. None where there is no other in
  /// the place of one that was set aside.
  std::unique_ptr<SqliteDatabase> database_;

  std::mutex mutex_;
  std::condition_variable changed_;
  Changes waiting_;
  bool isDone_ = false;
  std::deque<HistoryNews> news_;
  std::atomic<bool> isEnding_ = false;
  std::atomic<int> openFiles_ = 0;

  bool isFailing_ = false;          // the writer's
  int readsInVain_ = 0;             // the writer's: in a row
  bool isChecked_ = false;          // the writer's: the whole store was looked through
  UtcTime now_{};                   // the writer's: of the last change
  std::optional<UtcTime> expired_;  // the writer's: when old rows were last looked for
  std::thread writer_;
};

}  // namespace ostrel
